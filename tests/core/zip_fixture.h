// Builds zip archives in memory with libzip itself, for the stream and zip
// tests.
#pragma once

#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace ov::test
{

struct ZipEntry {
    std::string name;
    std::string data;
    bool stored = false; // uncompressed, so tests can find and damage the bytes
};

// The bytes of an archive holding the entries in order; empty if libzip
// failed.
inline std::string make_zip(const std::vector<ZipEntry> &entries)
{
    zip_error_t error;
    zip_error_init(&error);
    std::string bytes;
    zip_source_t *target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t *archive = target != nullptr ? zip_open_from_source(target, ZIP_TRUNCATE, &error) : nullptr;
    if (archive == nullptr) {
        zip_source_free(target);
        zip_error_fini(&error);
        return bytes;
    }
    zip_source_keep(target); // survives zip_close so its bytes can be read
    bool ok = true;
    for (const ZipEntry &entry : entries) {
        zip_source_t *source = zip_source_buffer(archive, entry.data.data(), entry.data.size(), 0);
        const zip_int64_t index =
            source != nullptr ? zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8) : -1;
        if (index < 0) {
            zip_source_free(source);
            ok = false;
            break;
        }
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 entry.stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
    }
    if (!ok || zip_close(archive) != 0) {
        zip_discard(archive);
        ok = false;
    }
    if (ok && zip_source_open(target) == 0) {
        char piece[4096];
        zip_int64_t read;
        while ((read = zip_source_read(target, piece, sizeof piece)) > 0)
            bytes.append(piece, static_cast<size_t>(read));
        zip_source_close(target);
    }
    zip_source_free(target);
    zip_error_fini(&error);
    return bytes;
}

// A copy of the archive with the first occurrence of needle replaced by a
// text of the same length.
inline std::string damage(std::string bytes, const std::string &needle, const std::string &replacement)
{
    const size_t at = bytes.find(needle);
    if (at != std::string::npos)
        bytes.replace(at, needle.size(), replacement);
    return bytes;
}

// A libzip function source over a string that can be told to fail, and
// counts how often it was opened and closed.
struct FakeSource {
    std::string data;
    int open_failures = 0; // this many opens fail before one succeeds
    bool fail_read = false;
    bool fail_stat = false;
    int opens = 0;
    int closes = 0;
    size_t position = 0;
    zip_error_t error;

    FakeSource() { zip_error_init(&error); }
    FakeSource(const FakeSource &) = delete;
    FakeSource &operator=(const FakeSource &) = delete;
    ~FakeSource() { zip_error_fini(&error); }

    static zip_int64_t callback(void *user, void *buffer, zip_uint64_t length, zip_source_cmd_t command)
    {
        auto *self = static_cast<FakeSource *>(user);
        switch (command) {
        case ZIP_SOURCE_OPEN:
            if (self->open_failures > 0) {
                --self->open_failures;
                zip_error_set(&self->error, ZIP_ER_OPEN, ENOENT);
                return -1;
            }
            ++self->opens;
            self->position = 0;
            return 0;
        case ZIP_SOURCE_READ: {
            if (self->fail_read) {
                zip_error_set(&self->error, ZIP_ER_READ, EIO);
                return -1;
            }
            const size_t count = std::min<size_t>(length, self->data.size() - self->position);
            std::memcpy(buffer, self->data.data() + self->position, count);
            self->position += count;
            return static_cast<zip_int64_t>(count);
        }
        case ZIP_SOURCE_CLOSE:
            ++self->closes;
            return 0;
        case ZIP_SOURCE_STAT: {
            if (self->fail_stat) {
                zip_error_set(&self->error, ZIP_ER_INTERNAL, 0);
                return -1;
            }
            auto *stat = static_cast<zip_stat_t *>(buffer);
            zip_stat_init(stat);
            stat->size = self->data.size();
            stat->valid |= ZIP_STAT_SIZE;
            return sizeof(zip_stat_t);
        }
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&self->error, buffer, length);
        case ZIP_SOURCE_FREE:
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                                  ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
        default:
            zip_error_set(&self->error, ZIP_ER_OPNOTSUPP, 0);
            return -1;
        }
    }
};

} // namespace ov::test
