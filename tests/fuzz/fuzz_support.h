// Shared by the fuzz targets: a private folder for the files a target
// writes, and a check that stops the run with a message (the fuzzer keeps
// the input that made it fail).
#pragma once

#include <glib.h>
#include <glib/gstdio.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#define OV_FUZZ_CHECK(condition)                                                                             \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition);               \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

namespace ov::fuzz
{

inline void remove_tree(const std::string &path)
{
    if (GDir *dir = g_dir_open(path.c_str(), 0, nullptr)) {
        while (const char *name = g_dir_read_name(dir)) {
            const std::string child = path + "/" + name;
            if (g_file_test(child.c_str(), G_FILE_TEST_IS_DIR) &&
                !g_file_test(child.c_str(), G_FILE_TEST_IS_SYMLINK))
                remove_tree(child);
            else
                g_remove(child.c_str());
        }
        g_dir_close(dir);
    }
    g_rmdir(path.c_str());
}

// A folder made on first use and removed when the process exits. Its name
// is kept outside any object that exit destroys first.
inline const std::string &folder()
{
    static gchar *made = nullptr;
    static const std::string path = [] {
        made = g_dir_make_tmp("ov-fuzz-XXXXXX", nullptr);
        OV_FUZZ_CHECK(made != nullptr);
        std::atexit([] { remove_tree(made); });
        return std::string(made);
    }();
    return path;
}

inline std::string path_in_folder(std::string_view name)
{
    return folder() + "/" + std::string(name);
}

inline void write_bytes(const std::string &path, const void *data, size_t size)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    OV_FUZZ_CHECK(file != nullptr);
    OV_FUZZ_CHECK(size == 0 || std::fwrite(data, 1, size, file) == size);
    OV_FUZZ_CHECK(std::fclose(file) == 0);
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

} // namespace ov::fuzz
