// Uniform byte streams: input from a stdio file, a memory block, an open
// zip entry or a libzip data source; output to a stdio file or to memory.
// Streams stay valid after a failed read or write and must still be
// destroyed.
#pragma once

#include <glib.h>
#include <zip.h>

#include <cstdio>

typedef struct OvInputStream OvInputStream;
typedef struct OvOutputStream OvOutputStream;

// Size of the buffer behind ov_input_stream_get_some for non-memory kinds.
inline constexpr gsize OV_INPUT_STREAM_BUFFER_SIZE = 4096;

// Input streams.

// Borrows the stdio stream.
OvInputStream *ov_input_stream_new_for_file(FILE *file);
// Opens the path with "rb" and owns the stream. Never fails: when the file
// cannot be opened, the first read reports it.
OvInputStream *ov_input_stream_new_for_file_path(const char *path);
// Reads the caller's bytes in place (not copied).
OvInputStream *ov_input_stream_new_for_memory(const void *data, gsize length);
// Borrows the open entry.
OvInputStream *ov_input_stream_new_for_zip_file(zip_file_t *file);
// Opens the entry and owns it. Never fails: when the entry cannot be
// opened, the first read reports it.
OvInputStream *ov_input_stream_new_for_zip_file_path(zip_t *archive, const char *entry_name);
// With manage set, the stream opens the source on its first read and closes
// it, if opened, when destroyed; otherwise the caller opens and closes it.
// The source itself is never freed by the stream.
OvInputStream *ov_input_stream_new_for_zip_source(zip_source_t *source, gboolean manage);

// Reads up to count bytes. The end of the data is a successful read of 0.
gboolean ov_input_stream_read(OvInputStream *stream, void *buffer, gsize count, gsize *out_read);
// Hands out the next piece of data without the caller providing a buffer:
// all remaining bytes of a memory stream, otherwise up to
// OV_INPUT_STREAM_BUFFER_SIZE bytes in the stream's own buffer, valid until
// the next call. A piece of 0 bytes means the end.
gboolean ov_input_stream_get_some(OvInputStream *stream, const guint8 **out_data, gsize *out_count);
gboolean ov_input_stream_skip(OvInputStream *stream, gsize count);
// Closes what the stream owns. Null is ignored.
void ov_input_stream_destroy(OvInputStream *stream);

// Output streams.

// Borrows the stdio stream.
OvOutputStream *ov_output_stream_new_for_file(FILE *file);
// Deletes an existing file at the path, creates it with "wb" and owns it.
// Never fails: when the file cannot be created, the first write reports it.
OvOutputStream *ov_output_stream_new_for_file_path(const char *path);
OvOutputStream *ov_output_stream_new_for_memory();

gboolean ov_output_stream_write(OvOutputStream *stream, const void *data, gsize count);
// Hands over the bytes collected by a memory stream, with one NUL byte
// appended that out_length does not count, and empties the stream. A file
// stream or an empty memory stream gives a new empty text. Free with g_free.
char *ov_output_stream_get_memory_data(OvOutputStream *stream, gsize *out_length);
// A file stream made for a path whose writes failed deletes the file, so a
// half-written file is never left behind. Null is ignored.
void ov_output_stream_destroy(OvOutputStream *stream);

// Copies. Data handed out is NUL-terminated (not counted in the length) and
// freed with g_free; on failure it is null and the length 0.

gboolean ov_stream_copy(OvInputStream *input, OvOutputStream *output);
gboolean ov_stream_copy_to_memory(OvInputStream *input, char **out_data, gsize *out_length);
// Identical path texts succeed without touching the file. A failed copy
// leaves no target file behind.
gboolean ov_stream_copy_from_file_path_to_file_path(const char *from_path, const char *to_path);
gboolean ov_stream_copy_from_file_path_to_memory(const char *path, char **out_data, gsize *out_length);
gboolean ov_stream_copy_from_zip_file_path_to_memory(zip_t *archive, const char *entry_name, char **out_data,
                                                     gsize *out_length);
gboolean ov_stream_copy_from_zip_source_to_memory(zip_source_t *source, gboolean manage, char **out_data,
                                                  gsize *out_length);
