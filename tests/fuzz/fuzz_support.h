// Shared by the fuzz targets: a private folder for the files a target
// writes, and a check that stops the run with a message (the fuzzer keeps
// the input that made it fail).
#pragma once

#include "core/error.h"

#include <glib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

extern "C" void g_set_user_dirs(const gchar *first_dir_type, ...) G_GNUC_NULL_TERMINATED;

#define OV_FUZZ_CHECK(condition)                                                                             \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition);               \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

namespace ov::fuzz
{

// A file in a folder made on first use and removed when the process exits.
// The folder's name is kept outside any object that exit destroys first.
inline std::string path_in_folder(std::string_view name)
{
    static gchar *made = nullptr;
    static const std::string path = [] {
        made = g_dir_make_tmp("ov-fuzz-XXXXXX", nullptr);
        OV_FUZZ_CHECK(made != nullptr);
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(made, ignored);
        });
        return std::string(made);
    }();
    return path + "/" + std::string(name);
}

// Makes the fuzz folder's "home" and "config" the user's folders, with
// sub_folder made inside home; gives the configuration folder.
inline std::string use_private_home(const std::string &sub_folder)
{
    const std::string home = path_in_folder("home"), config = path_in_folder("config");
    g_mkdir_with_parents((home + "/" + sub_folder).c_str(), 0700);
    g_mkdir_with_parents((config + "/orvane").c_str(), 0700);
    g_setenv("HOME", home.c_str(), TRUE);
    g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
    g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
    return config;
}

inline void write_bytes(const std::string &path, const void *data, size_t size)
{
    OV_FUZZ_CHECK(g_file_set_contents(path.c_str(), static_cast<const gchar *>(data), gssize(size), nullptr));
}

inline std::string read_bytes(const std::string &path)
{
    gchar *contents = nullptr;
    gsize length = 0;
    OV_FUZZ_CHECK(g_file_get_contents(path.c_str(), &contents, &length, nullptr));
    std::string copy(contents, length);
    g_free(contents);
    return copy;
}

// The input as a string ended by its first NUL.
inline std::string text_of(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

// Reads the input as a file named name with read; what reads must write
// bytes that read back and write the same bytes again.
template <class Document>
void check_round_trip(const uint8_t *data, size_t size, const char *name, Document *(*read)(const char *),
                      gboolean (*write)(const Document *, const char *), void (*destroy)(Document *),
                      void (*also)(const Document *) = nullptr)
{
    const std::string in = path_in_folder(name), first = in + ".1", second = in + ".2";
    write_bytes(in, data, size);
    Document *document = read(in.c_str());
    ov_error_clear();
    if (document != nullptr) {
        if (also != nullptr)
            also(document);
        OV_FUZZ_CHECK(write(document, first.c_str()));
        destroy(document);
        document = read(first.c_str());
        OV_FUZZ_CHECK(document != nullptr && write(document, second.c_str()));
        OV_FUZZ_CHECK(read_bytes(first) == read_bytes(second));
        destroy(document);
    }
}

} // namespace ov::fuzz
