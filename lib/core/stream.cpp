#include "core/stream.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "core/zip.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace
{

enum class InputKind { file, memory, zip_file, zip_source };
enum class OutputKind { file, memory };

// Zip kinds skip by reading into a scratch buffer of this size.
constexpr gsize skip_piece_size = 1024;

constexpr const char *no_input_file = "Opening input file failed.";
constexpr const char *no_zip_file = "Opening compressed input file failed.";
constexpr const char *no_zip_source = "Opening compressed source failed.";

} // namespace

struct OvInputStream {
    InputKind kind = InputKind::memory;

    // file
    FILE *file = nullptr;
    bool owns_file = false;

    // zip file
    zip_file_t *zip_file = nullptr;
    bool owns_zip_file = false;

    // zip source
    zip_source_t *source = nullptr;
    bool source_needs_open = false;
    bool manages_source = false;

    // memory (borrowed)
    const guint8 *data = nullptr;
    gsize length = 0;
    gsize position = 0;

    // Behind get_some for every kind but memory; made on first use.
    std::unique_ptr<guint8[]> buffer;
};

struct OvOutputStream {
    OutputKind kind = OutputKind::memory;

    // file; a stream made for a path keeps the path and owns the file
    FILE *file = nullptr;
    ov::GStr path;
    // Set when a copy failed, so that destroying removes the target even
    // without a stdio error.
    bool discard = false;

    // memory
    GByteArray *bytes = nullptr;
    gsize written = 0;
};

namespace
{

using InputStreamPtr = ov::Owned<OvInputStream, ov_input_stream_destroy>;
using OutputStreamPtr = ov::Owned<OvOutputStream, ov_output_stream_destroy>;

gboolean read_file(OvInputStream *stream, void *buffer, gsize count, gsize *out_read)
{
    if (stream->file == nullptr) {
        ov_error_set(no_input_file);
        return FALSE;
    }
    const gsize read = fread(buffer, 1, count, stream->file);
    if (read < count && ferror(stream->file)) {
        ov_error_set("File read error.");
        return FALSE;
    }
    *out_read = read;
    return TRUE;
}

gboolean read_memory(OvInputStream *stream, void *buffer, gsize count, gsize *out_read)
{
    const gsize read = std::min(count, stream->length - stream->position);
    if (read > 0)
        std::memcpy(buffer, stream->data + stream->position, read);
    stream->position += read;
    *out_read = read;
    return TRUE;
}

gboolean read_zip_file(OvInputStream *stream, void *buffer, gsize count, gsize *out_read)
{
    if (stream->zip_file == nullptr) {
        ov_error_set(no_zip_file);
        return FALSE;
    }
    if (!ov_zip_read_from_file(stream->zip_file, buffer, count, out_read)) {
        ov_error_append("Compressed file read error.");
        return FALSE;
    }
    return TRUE;
}

gboolean read_zip_source(OvInputStream *stream, void *buffer, gsize count, gsize *out_read)
{
    if (stream->source == nullptr) {
        ov_error_set(no_zip_source);
        return FALSE;
    }
    if (stream->source_needs_open) {
        // A failed open is tried again by the next read.
        if (!ov_zip_open_source(stream->source)) {
            ov_error_set(no_zip_source);
            return FALSE;
        }
        stream->source_needs_open = false;
    }
    if (!ov_zip_read_from_source(stream->source, buffer, count, out_read)) {
        ov_error_append("Compressed source read error.");
        return FALSE;
    }
    return TRUE;
}

gboolean skip_file(OvInputStream *stream, gsize count)
{
    if (stream->file == nullptr) {
        ov_error_set(no_input_file);
        return FALSE;
    }
    if (count > static_cast<gsize>(std::numeric_limits<off_t>::max())) {
        errno = EOVERFLOW;
        ov_error_set_from_errno();
        return FALSE;
    }
    if (fseeko(stream->file, static_cast<off_t>(count), SEEK_CUR) != 0) {
        ov_error_set_from_errno();
        return FALSE;
    }
    return TRUE;
}

gboolean skip_by_reading(OvInputStream *stream, gsize count)
{
    guint8 scratch[skip_piece_size];
    while (count > 0) {
        gsize read = 0;
        if (!ov_input_stream_read(stream, scratch, std::min(count, skip_piece_size), &read))
            return FALSE;
        if (read == 0) {
            ov_error_set("Premature end of data stream.");
            return FALSE;
        }
        count -= read;
    }
    return TRUE;
}

// Makes sure every byte written so far reached the file.
gboolean flush_output(OvOutputStream *stream)
{
    if (stream->kind == OutputKind::file && stream->file != nullptr && fflush(stream->file) != 0) {
        ov_error_set("File write error.");
        return FALSE;
    }
    return TRUE;
}

} // namespace

// Input streams.

OvInputStream *ov_input_stream_new_for_file(FILE *file)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::file;
    stream->file = file;
    return stream;
}

OvInputStream *ov_input_stream_new_for_file_path(const char *path)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::file;
    stream->file = ov_fs_utils_open_file(path, "rb");
    stream->owns_file = true;
    return stream;
}

OvInputStream *ov_input_stream_new_for_memory(const void *data, gsize length)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::memory;
    stream->data = static_cast<const guint8 *>(data);
    stream->length = data != nullptr ? length : 0;
    return stream;
}

OvInputStream *ov_input_stream_new_for_zip_file(zip_file_t *file)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::zip_file;
    stream->zip_file = file;
    return stream;
}

OvInputStream *ov_input_stream_new_for_zip_file_path(zip_t *archive, const char *entry_name)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::zip_file;
    stream->zip_file = ov_zip_open_file(archive, entry_name);
    stream->owns_zip_file = true;
    return stream;
}

OvInputStream *ov_input_stream_new_for_zip_source(zip_source_t *source, gboolean manage)
{
    auto *stream = new OvInputStream;
    stream->kind = InputKind::zip_source;
    stream->source = source;
    stream->manages_source = manage;
    stream->source_needs_open = manage;
    return stream;
}

gboolean ov_input_stream_read(OvInputStream *stream, void *buffer, gsize count, gsize *out_read)
{
    *out_read = 0;
    switch (stream->kind) {
    case InputKind::file:
        return read_file(stream, buffer, count, out_read);
    case InputKind::memory:
        return read_memory(stream, buffer, count, out_read);
    case InputKind::zip_file:
        return read_zip_file(stream, buffer, count, out_read);
    case InputKind::zip_source:
        return read_zip_source(stream, buffer, count, out_read);
    }
    return FALSE;
}

gboolean ov_input_stream_get_some(OvInputStream *stream, const guint8 **out_data, gsize *out_count)
{
    if (stream->kind == InputKind::memory) {
        *out_data = stream->data + stream->position;
        *out_count = stream->length - stream->position;
        stream->position = stream->length;
        return TRUE;
    }
    if (stream->buffer == nullptr)
        stream->buffer = std::make_unique_for_overwrite<guint8[]>(OV_INPUT_STREAM_BUFFER_SIZE);
    *out_data = stream->buffer.get();
    return ov_input_stream_read(stream, stream->buffer.get(), OV_INPUT_STREAM_BUFFER_SIZE, out_count);
}

gboolean ov_input_stream_skip(OvInputStream *stream, gsize count)
{
    switch (stream->kind) {
    case InputKind::memory:
        if (count > stream->length - stream->position) {
            ov_error_set("Memory buffer end reached prematurely.");
            return FALSE;
        }
        stream->position += count;
        return TRUE;
    case InputKind::file:
        return skip_file(stream, count);
    case InputKind::zip_file:
    case InputKind::zip_source:
        return skip_by_reading(stream, count);
    }
    return FALSE;
}

void ov_input_stream_destroy(OvInputStream *stream)
{
    if (stream == nullptr)
        return;
    if (stream->owns_file && stream->file != nullptr)
        fclose(stream->file);
    if (stream->owns_zip_file && stream->zip_file != nullptr)
        zip_fclose(stream->zip_file);
    if (stream->manages_source && !stream->source_needs_open && stream->source != nullptr)
        zip_source_close(stream->source);
    delete stream;
}

// Output streams.

OvOutputStream *ov_output_stream_new_for_file(FILE *file)
{
    auto *stream = new OvOutputStream;
    stream->kind = OutputKind::file;
    stream->file = file;
    return stream;
}

OvOutputStream *ov_output_stream_new_for_file_path(const char *path)
{
    auto *stream = new OvOutputStream;
    stream->kind = OutputKind::file;
    stream->path.reset(g_strdup(path));
    if (ov_fs_utils_delete_file_if_exists(path))
        stream->file = ov_fs_utils_open_file(path, "wb");
    return stream;
}

OvOutputStream *ov_output_stream_new_for_memory()
{
    auto *stream = new OvOutputStream;
    stream->kind = OutputKind::memory;
    return stream;
}

gboolean ov_output_stream_write(OvOutputStream *stream, const void *data, gsize count)
{
    if (count == 0)
        return TRUE;
    if (stream->kind == OutputKind::memory) {
        if (stream->bytes == nullptr)
            stream->bytes = g_byte_array_new();
        // GByteArray counts in guint; append larger blocks piecewise.
        const auto *bytes = static_cast<const guint8 *>(data);
        for (gsize left = count; left > 0;) {
            const guint piece = static_cast<guint>(std::min<gsize>(left, G_MAXUINT / 2));
            g_byte_array_append(stream->bytes, bytes, piece);
            bytes += piece;
            left -= piece;
        }
        stream->written += count;
        return TRUE;
    }
    if (stream->file == nullptr) {
        ov_error_set("Creating file failed.");
        return FALSE;
    }
    if (fwrite(data, 1, count, stream->file) != count) {
        ov_error_set("File write error.");
        return FALSE;
    }
    return TRUE;
}

char *ov_output_stream_get_memory_data(OvOutputStream *stream, gsize *out_length)
{
    if (stream->kind != OutputKind::memory || stream->bytes == nullptr) {
        if (out_length != nullptr)
            *out_length = 0;
        return g_strdup("");
    }
    const guint8 nul = 0;
    g_byte_array_append(stream->bytes, &nul, 1);
    if (out_length != nullptr)
        *out_length = stream->written;
    stream->written = 0;
    return reinterpret_cast<char *>(g_byte_array_free(std::exchange(stream->bytes, nullptr), FALSE));
}

void ov_output_stream_destroy(OvOutputStream *stream)
{
    if (stream == nullptr)
        return;
    if (stream->bytes != nullptr)
        g_byte_array_unref(stream->bytes);
    if (stream->path != nullptr && stream->file != nullptr) {
        // A failing final flush sets the error indicator too.
        fflush(stream->file);
        const bool failed = ferror(stream->file) != 0 || stream->discard;
        fclose(stream->file);
        if (failed) {
            // Removing the half-written file must not hide why it failed.
            const std::string reason = ov_error_get();
            if (!ov_fs_utils_delete_file_if_exists(stream->path.get()))
                ov_error_set(reason.c_str());
        }
    }
    delete stream;
}

// Copies.

gboolean ov_stream_copy(OvInputStream *input, OvOutputStream *output)
{
    for (;;) {
        const guint8 *data = nullptr;
        gsize count = 0;
        if (!ov_input_stream_get_some(input, &data, &count))
            return FALSE;
        if (count == 0)
            return TRUE;
        if (!ov_output_stream_write(output, data, count))
            return FALSE;
    }
}

gboolean ov_stream_copy_to_memory(OvInputStream *input, char **out_data, gsize *out_length)
{
    *out_data = nullptr;
    *out_length = 0;
    OutputStreamPtr output(ov_output_stream_new_for_memory());
    if (!ov_stream_copy(input, output.get()))
        return FALSE;
    *out_data = ov_output_stream_get_memory_data(output.get(), out_length);
    return TRUE;
}

gboolean ov_stream_copy_from_file_path_to_file_path(const char *from_path, const char *to_path)
{
    if (std::strcmp(from_path, to_path) == 0)
        return TRUE;
    InputStreamPtr input(ov_input_stream_new_for_file_path(from_path));
    OutputStreamPtr output(ov_output_stream_new_for_file_path(to_path));
    const gboolean copied = ov_stream_copy(input.get(), output.get()) && flush_output(output.get());
    output->discard = !copied;
    return copied;
}

gboolean ov_stream_copy_from_file_path_to_memory(const char *path, char **out_data, gsize *out_length)
{
    InputStreamPtr input(ov_input_stream_new_for_file_path(path));
    return ov_stream_copy_to_memory(input.get(), out_data, out_length);
}

gboolean ov_stream_copy_from_zip_file_path_to_memory(zip_t *archive, const char *entry_name, char **out_data,
                                                     gsize *out_length)
{
    InputStreamPtr input(ov_input_stream_new_for_zip_file_path(archive, entry_name));
    return ov_stream_copy_to_memory(input.get(), out_data, out_length);
}

gboolean ov_stream_copy_from_zip_source_to_memory(zip_source_t *source, gboolean manage, char **out_data,
                                                  gsize *out_length)
{
    InputStreamPtr input(ov_input_stream_new_for_zip_source(source, manage));
    return ov_stream_copy_to_memory(input.get(), out_data, out_length);
}
