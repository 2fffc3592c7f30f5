// Text encodings and small string utilities.
//
// Two encodings are kept apart: texts of the document model and of the
// suite's files are ISO-8859-1 (Latin-1), texts shown in the GUI, given to
// libxml2 trees and to the error buffer are UTF-8. Each operation exists
// under a name that says which encoding its caller holds, even where the
// work is the same.
//
// Ownership: returned new strings are GLib-allocated (g_free). `_and_free`
// always consumes its string argument, `_or_free` consumes it on failure.
// `_within_original` works in the caller's buffer and returns a pointer into
// it; `_in_new` returns a fresh allocation.
#pragma once

#include <glib.h>

#include <concepts>
#include <cstdarg>

// ---------------------------------------------------------------------------
// Assertions: return the argument, or nullptr with the error buffer set.

// Every byte below 0x80, else "Non-ascii byte found where not allowed."
const char *ov_ascii_assert_in_latin1(const char *text);
const char *ov_ascii_assert_in_utf8(const char *text);

// Not null ("Text content does not exist.") and not empty ("Text content is
// empty.").
const char *ov_latin1_assert_nonempty(const char *text);
const char *ov_utf8_assert_nonempty(const char *text);

// As above; on failure the text (if any) is freed and nullptr returned.
char *ov_latin1_assert_nonempty_or_free(char *text);
char *ov_utf8_assert_nonempty_or_free(char *text);

// g_utf8_validate over length bytes (negative: up to the NUL); FALSE with
// "Invalid UTF-8 data."
gboolean ov_utf8_validate(const char *text, gssize length);

// ---------------------------------------------------------------------------
// Plain string operations.

// Replaces every byte from with to, in place; returns text.
char *ov_char_replace_char(char *text, char from, char to);
// New string with every occurrence of search replaced by replacement.
// An empty search leaves the text as it is.
char *ov_char_strdup_replace(const char *text, const char *search, const char *replacement);
char *ov_char_strdup_replace_and_free(char *text, const char *search, const char *replacement);

// New string: the count strings concatenated in order, null entries skipped.
char *ov_utf8_cat_(const char *const *strings, gsize count);

// ov_utf8_cat("a", b, nullptr_or_text, "c"): the variadic form of
// ov_utf8_cat_; null arguments are skipped.
template <class... Parts>
requires(std::convertible_to<Parts, const char *> &&...) char *ov_utf8_cat(Parts... parts)
{
    if constexpr (sizeof...(Parts) == 0) {
        return g_strdup("");
    } else {
        const char *const strings[] = {static_cast<const char *>(parts)...};
        return ov_utf8_cat_(strings, sizeof...(Parts));
    }
}

// TRUE when text ends with suffix, ASCII letters compared without case.
gboolean ov_utf8_has_suffix_case_insensitive_ascii(const char *text, const char *suffix);
// TRUE when every character is Unicode white space; "" is all white space.
// Invalid UTF-8 is not white space.
gboolean ov_utf8_is_all_whitespace(const char *text);

// GString wrappers (GLib printf formatting).
GString *ov_latin1_string_new(const char *init);
GString *ov_latin1_string_append(GString *string, const char *text);
GString *ov_latin1_string_append_printf(GString *string, const char *format, ...) G_GNUC_PRINTF(2, 3);
GString *ov_latin1_string_append_vprintf(GString *string, const char *format, va_list args)
    G_GNUC_PRINTF(2, 0);
// Frees the GString; returns its character data when free_segment is FALSE.
char *ov_latin1_string_free(GString *string, gboolean free_segment);

GString *ov_utf8_string_new(const char *init);
GString *ov_utf8_string_append(GString *string, const char *text);
GString *ov_utf8_string_append_printf(GString *string, const char *format, ...) G_GNUC_PRINTF(2, 3);
GString *ov_utf8_string_append_vprintf(GString *string, const char *format, va_list args) G_GNUC_PRINTF(2, 0);
char *ov_utf8_string_free(GString *string, gboolean free_segment);

// Appends one raw byte (no UTF-8 encoding); writes it directly when the
// capacity allows.
GString *ov_utf8_string_append_byte(GString *string, char byte);

void ov_latin1_strfreev(char **strings);
void ov_utf8_strfreev(char **strings);

// UTF-16 (native byte order, zero-terminated).
gsize ov_utf16_strlen(const gunichar2 *text);
// Copies up to and including the terminating zero; returns destination.
gunichar2 *ov_utf16_strcpy(gunichar2 *destination, const gunichar2 *source);
// Replaces every unit from with to, in place; returns text.
gunichar2 *ov_utf16_replace_code_unit(gunichar2 *text, gunichar2 from, gunichar2 to);

// ---------------------------------------------------------------------------
// Conversions.

// nullptr with "Character incompatible with ISO-8859-1 found where not
// allowed." when a character has no Latin-1 form (or the input is not UTF-8).
char *ov_convert_utf8_to_latin1(const char *utf8);
// TRUE if the one UTF-8 character at utf8_char has a Latin-1 form. Sets no
// error.
gboolean ov_convert_test_utf8_char_for_latin1(const char *utf8_char);
// Never fails. The result is allocated at 2 * strlen + 1 bytes.
char *ov_convert_latin1_to_utf8(const char *latin1);
// destination must hold 2 * strlen(latin1) + 1 bytes; returns destination.
char *ov_convert_latin1_to_utf8_buf(const char *latin1, char *destination);
// nullptr with "GError %d: %s" on failure.
char *ov_convert_utf16_to_utf8(const gunichar2 *utf16);
gunichar2 *ov_convert_utf8_to_utf16(const char *utf8);

// Reversible file-name form of a Latin-1 object id: bytes outside the safe
// set become a backquote and two lower-case hex digits.
char *ov_convert_object_id_to_fat_safe_file_name_format(const char *object_id);
// Decodes at most length bytes of text (a NUL ends it early); nullptr
// without an error text when the text is not in that form.
char *ov_convert_fat_safe_file_name_format_to_object_id(const char *text, gsize length);
// One-way, readable file-name form (UTF-8): runs of unsafe bytes become "-".
char *ov_convert_object_id_to_ntfs_safe_file_name_format(const char *object_id);

// ---------------------------------------------------------------------------
// Whitespace normalisers. All remove leading and trailing white space.
//   detabify:          inner white space other than line feed -> one space each
//   spacify:           every inner white-space character -> one space
//   spacify_compactly: every inner run of white space -> one space
// Latin-1: white space is isspace() of the byte. UTF-8: g_unichar_isspace();
// a multi-byte white-space character becomes one ' '.
// _within_original writes into text and returns a pointer into it (at the
// first character that is not white space); _in_new returns a new string.

char *ov_strip_surrounding_and_detabify_within_original_for_latin1(char *text);
char *ov_strip_surrounding_and_detabify_within_original_for_utf8(char *text);
char *ov_strip_surrounding_and_detabify_in_new_for_latin1(const char *text);
char *ov_strip_surrounding_and_detabify_in_new_for_utf8(const char *text);

char *ov_strip_surrounding_and_spacify_within_original_for_latin1(char *text);
char *ov_strip_surrounding_and_spacify_within_original_for_utf8(char *text);
char *ov_strip_surrounding_and_spacify_in_new_for_latin1(const char *text);
char *ov_strip_surrounding_and_spacify_in_new_for_utf8(const char *text);

char *ov_strip_surrounding_and_spacify_compactly_within_original_for_latin1(char *text);
char *ov_strip_surrounding_and_spacify_compactly_within_original_for_utf8(char *text);
char *ov_strip_surrounding_and_spacify_compactly_in_new_for_latin1(const char *text);
char *ov_strip_surrounding_and_spacify_compactly_in_new_for_utf8(const char *text);
char *ov_strip_surrounding_and_spacify_compactly_within_original_for_ascii(char *text);
