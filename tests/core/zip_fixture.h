// Builds zip archives with libzip itself, for the stream, zip and XML tests.
#pragma once

#include "support/test_support.h"

#include <zip.h>

#include <string>
#include <vector>

namespace ov::test
{

struct ZipEntry {
    std::string name;
    std::string data;
    bool stored = false; // uncompressed, so tests can find and damage the bytes
};

// The bytes of an archive holding the entries in order.
inline std::string make_zip(const std::vector<ZipEntry> &entries)
{
    TempDir folder;
    const std::string path = folder.file("made.zip");
    zip_t *archive = zip_open(path.c_str(), ZIP_CREATE, nullptr);
    for (const ZipEntry &entry : entries) {
        zip_source_t *source = zip_source_buffer(archive, entry.data.data(), entry.data.size(), 0);
        const zip_int64_t index = zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 entry.stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
    }
    if (zip_close(archive) != 0)
        zip_discard(archive);
    return read_file(path);
}

// A copy of the archive with the first occurrence of needle replaced by a
// text of the same length.
inline std::string damage(std::string bytes, const std::string &needle, const std::string &replacement)
{
    if (const size_t at = bytes.find(needle); at != std::string::npos)
        bytes.replace(at, needle.size(), replacement);
    return bytes;
}

} // namespace ov::test
