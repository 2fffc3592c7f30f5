// Builds zip archives with libzip itself, for the stream, zip and XML tests.
#pragma once

#include "support/test_support.h"

#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
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

// A libzip function source over a string whose open, read or stat can be
// made to fail; counts opens and closes.
struct FakeSource {
    std::string data;
    int open_failures = 0; // this many opens fail before one succeeds
    bool fail_read = false, fail_stat = false;
    int opens = 0, closes = 0;
    size_t position = 0;
    zip_error_t error{};

    ~FakeSource() { zip_error_fini(&error); }

    static zip_int64_t callback(void *user, void *buffer, zip_uint64_t length, zip_source_cmd_t command)
    {
        auto *self = static_cast<FakeSource *>(user);
        const auto fail = [&](int code, int system) {
            zip_error_set(&self->error, code, system);
            return zip_int64_t(-1);
        };
        switch (command) {
        case ZIP_SOURCE_OPEN:
            if (self->open_failures-- > 0)
                return fail(ZIP_ER_OPEN, ENOENT);
            ++self->opens;
            self->position = 0;
            return 0;
        case ZIP_SOURCE_READ: {
            if (self->fail_read)
                return fail(ZIP_ER_READ, EIO);
            const size_t count = std::min<size_t>(length, self->data.size() - self->position);
            std::memcpy(buffer, self->data.data() + self->position, count);
            self->position += count;
            return static_cast<zip_int64_t>(count);
        }
        case ZIP_SOURCE_CLOSE:
            return ++self->closes, 0;
        case ZIP_SOURCE_STAT:
            if (self->fail_stat)
                return fail(ZIP_ER_INTERNAL, 0);
            zip_stat_init(static_cast<zip_stat_t *>(buffer));
            static_cast<zip_stat_t *>(buffer)->size = self->data.size();
            static_cast<zip_stat_t *>(buffer)->valid |= ZIP_STAT_SIZE;
            return sizeof(zip_stat_t);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&self->error, buffer, length);
        case ZIP_SOURCE_FREE:
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                                  ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
        default:
            return fail(ZIP_ER_OPNOTSUPP, 0);
        }
    }
};

} // namespace ov::test
