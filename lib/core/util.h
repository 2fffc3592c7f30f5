// Strict number parsing with fixed messages, locale-independent number
// formatting, display texts for sizes, small file utilities (length,
// byte-wise comparison, MD5) and the checked fprintf used by every
// hand-written file writer.
//
// Parsers write through their out-parameter only on success; on failure the
// out-parameter is untouched and the error buffer says why.
#pragma once

#include <glib.h>

#include <cstdarg>
#include <cstdio>

// Integers: UTF-8 text, base 10, an optional leading '+', nothing else.
gboolean ov_util_parse_int64(gint64 *out, const char *text);
gboolean ov_util_parse_int64_in_range(gint64 *out, const char *text, gint64 minimum, gint64 maximum);
gboolean ov_util_parse_int(int *out, const char *text);
gboolean ov_util_parse_int_in_range(int *out, const char *text, int minimum, int maximum);
gboolean ov_util_parse_uint64(guint64 *out, const char *text);
gboolean ov_util_parse_uint64_in_range(guint64 *out, const char *text, guint64 minimum, guint64 maximum);
gboolean ov_util_parse_uint(unsigned int *out, const char *text);
gboolean ov_util_parse_uint_in_range(unsigned int *out, const char *text, unsigned int minimum,
                                     unsigned int maximum);

// Floating point, always with '.' as decimal separator. The unit form hands
// back a pointer into text just after the number (possibly "").
gboolean ov_util_parse_double_with_unit(double *out_value, const char **out_rest, const char *text);
gboolean ov_util_parse_double(double *out, const char *text);
gboolean ov_util_parse_double_in_range(double *out, const char *text, double minimum, double maximum);
// A number written with the user's locale's decimal character.
gboolean ov_util_parse_double_for_locale(double *out, const char *text);

// Formatting; every result is a new GLib string.
// Shortest text that reads back as the same number, always with '.', into a
// buffer of at least G_ASCII_DTOSTR_BUF_SIZE bytes; returns the buffer.
const char *ov_util_format_double_into(char *buffer, gsize size, double value);
char *ov_util_format_double(double value);
char *ov_util_format_double_for_locale(double value);
char *ov_util_format_double_with_unit(double value, const char *unit);
// ',' or '.', found once on first use.
char ov_util_get_decimal_character_for_locale();
// Makes the next call look at the locale again, after a setlocale.
void ov_util_forget_decimal_character_for_locale();
char *ov_util_get_memory_string(guint64 byte_count);
char *ov_util_get_pixels_string(int width, int height);

// Files.
// Length of a seekable stream; the position is kept. -1 on failure.
gint64 ov_util_get_file_length(FILE *stream);
gboolean ov_util_test_if_files_are_identical(const char *path_a, const char *path_b);
gboolean ov_util_get_file_md5sum(const char *path, guint8 digest[16]);
// TRUE if text is exactly the 32 lower-case hexadecimal digits of digest.
gboolean ov_util_verify_md5sum(const guint8 digest[16], const char *text);
gboolean ov_util_fprintf(FILE *stream, const char *format, ...) G_GNUC_PRINTF(2, 3);
gboolean ov_util_vfprintf(FILE *stream, const char *format, va_list args) G_GNUC_PRINTF(2, 0);
// TRUE if the file's parent folder is the same file-system object as folder.
gboolean ov_util_is_file_path_in_folder(const char *folder_path, const char *file_path);

// GUI side.
char *ov_util_format_input_field_label_markup(const char *label, gboolean required);
void ov_util_let_through_gtk_events();
void ov_util_free_glist_with_data(GList *list);
