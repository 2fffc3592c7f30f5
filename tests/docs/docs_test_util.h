// What the template and codeset file tests share: refused files and failed saves.
#pragma once

#include "core/error.h"
#include "support/test_support.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace ov::test
{

// The names in a folder, sorted.
inline std::vector<std::string> list_folder(const std::string &path)
{
    std::vector<std::string> names;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(path, error))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

struct BadFile {
    const char *what;
    std::string contents;
    // The whole error chain ("" for a file that reads), or for libxml2's
    // refusals the chain down to its message and a part of that.
    std::string message;
};

// The start of the chain for a file of the kind ("template") that libxml2 refused.
inline std::string libxml_refusal(const std::string &kind)
{
    return "Error loading " + kind + " file.\n\nCould not parse XML data.\n\n";
}

// Writes each case to a file in dir and reads it with reads (true when it
// read); then what is missing or no regular file is refused without waiting
// for a writer.
inline void expect_refusals(const std::string &kind, const TempDir &dir,
                            const std::function<bool(const char *)> &reads, const std::vector<BadFile> &cases)
{
    const std::string path = dir.file("bad." + kind), by_libxml = libxml_refusal(kind);
    for (const BadFile &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        write_file(path, c.contents);
        EXPECT_EQ(reads(path.c_str()), c.message.empty());
        const std::string error = ov_error_get();
        EXPECT_TRUE(c.message.starts_with(by_libxml)
                        ? error.starts_with(by_libxml) &&
                              error.find(c.message.substr(by_libxml.size())) != error.npos
                        : error == c.message)
            << error;
    }
    const std::string fifo = dir.file("fifo." + kind),
                      unopened = "Error loading " + kind + " file.\n\nCannot open file.";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const auto &[name, message] : {std::pair{dir.file("missing." + kind), unopened},
                                        {fifo, unopened + "\n\nNot a regular file."},
                                        {dir.path(), unopened}}) {
        EXPECT_FALSE(reads(name.c_str())) << name;
        EXPECT_TRUE(std::string(ov_error_get()).starts_with(message)) << ov_error_get();
    }
}

// A save that fails part-way through (writes beyond 4 kB fail) keeps the old
// file and leaves no temporary file behind.
inline void expect_failed_saves_keep_the_old_file(const std::string &name,
                                                  const std::function<bool(const char *)> &writes)
{
    TempDir dir;
    const std::string path = dir.file(name);
    write_file(path, "old");
    const auto fails = [&] {
        return !writes(path.c_str()) && std::string(ov_error_get()) == "File I/O error when writing to file.";
    };
    EXPECT_EQ(run_with_file_size_limit(4096, fails), 0);
    EXPECT_EQ(read_file(path), "old");
    EXPECT_EQ(list_folder(dir.path()), std::vector<std::string>{name});
}

} // namespace ov::test
