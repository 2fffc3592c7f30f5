// A thin wrapper over libzip that turns every failure into error-buffer
// text: libzip's own reason first, the wrapper's sentence on top.
#pragma once

#include <glib.h>
#include <zip.h>

#include <cstdio>

// Archives. The reading forms open read-only (ZIP_RDONLY).

// Opens the file with "rb"; the archive then owns the stdio stream.
zip_t *ov_zip_open_archive_for_reading(const char *path);
// The data is borrowed and must outlive the archive.
zip_t *ov_zip_open_archive_for_reading_from_buffer(const void *data, gsize length);
zip_t *ov_zip_open_archive_from_buffer(const void *data, gsize length, int flags);
// On success the archive owns the source; on failure the caller still does.
zip_t *ov_zip_open_archive_for_reading_from_source(zip_source_t *source);
zip_t *ov_zip_open_archive_from_source(zip_source_t *source, int flags);
// Writes pending changes and frees the archive. The archive is released
// even when writing fails (the changes are then discarded). Null succeeds.
gboolean ov_zip_close_archive(zip_t *archive);

// Data sources. A source not handed to an archive is freed with
// ov_zip_free_source.

// With free_data set, libzip frees the data with free() when the source goes.
zip_source_t *ov_zip_create_buffer_source(const void *data, gsize length, gboolean free_data);
// The source owns the stdio stream once created; length -1 reads to the end.
zip_source_t *ov_zip_create_filep_source(FILE *file, zip_uint64_t start, zip_int64_t length);
zip_source_t *ov_zip_create_function_source(zip_source_callback callback, void *user_data);
void ov_zip_free_source(zip_source_t *source);

// Adds an entry (UTF-8 name). On success the archive owns the source; on
// failure the caller still does.
gboolean ov_zip_add_file_to_archive_from_source(zip_t *archive, const char *entry_name, gboolean overwrite,
                                                zip_source_t *source);
// The data is borrowed until the archive is closed.
gboolean ov_zip_add_file_to_archive_from_buffer(zip_t *archive, const char *entry_name, gboolean overwrite,
                                                const void *data, gsize length);

// Entries.
zip_file_t *ov_zip_open_file(zip_t *archive, const char *entry_name);
// Null succeeds.
gboolean ov_zip_close_file(zip_file_t *file);
gboolean ov_zip_open_source(zip_source_t *source);
gboolean ov_zip_close_source(zip_source_t *source);

// Reads up to count bytes; 0 bytes read means the end. out_read is 0 on
// failure.
gboolean ov_zip_read_from_file(zip_file_t *file, void *buffer, gsize count, gsize *out_read);
gboolean ov_zip_read_from_source(zip_source_t *source, void *buffer, gsize count, gsize *out_read);

gboolean ov_zip_stat_file(zip_t *archive, const char *entry_name, zip_stat_t *out_stat);
gboolean ov_zip_stat_source(zip_source_t *source, zip_stat_t *out_stat);
