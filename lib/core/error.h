// The process-wide error buffer: one UTF-8 text telling why the last
// operation failed. Setters replace it, appenders put a sentence of context
// on top of it, separated by a blank line.
#pragma once

#include <cairo.h>
#include <glib.h>
#include <zip.h>

#include <cstdarg>

extern const char *ov_error_message_unknown;

const char *ov_error_set(const char *text);
void ov_error_set_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_error_append(const char *text);
void ov_error_append_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_error_append_utf8_vprintf(const char *format, va_list args) G_GNUC_PRINTF(1, 0);
void ov_error_clear();
const char *ov_error_get();

void ov_error_set_unknown();
void ov_error_set_file_io_reading();
void ov_error_set_file_io_reading_broken_file();
void ov_error_set_file_io_writing();
void ov_error_set_not_enough_diskspace();
void ov_error_set_out_of_memory();
void ov_error_set_informative_out_of_memory();
void ov_error_set_from_errno();
void ov_error_set_from_gerror_and_free(GError *error);
void ov_error_set_from_zip_error(zip_error_t *error);
void ov_error_set_from_zip_error_code(int code);
void ov_error_set_from_cairo_status(cairo_status_t status);

gboolean ov_error_did_run_out_of_memory();
gboolean ov_error_make_more_informative_if_out_of_memory();
void ov_error_limit_line_count(int max_lines);
