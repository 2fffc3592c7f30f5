#include "core/util.h"

#include "core/base16.h"
#include "core/error.h"
#include "core/fs_utils.h"
#include "core/platform.h"
#include "core/raii.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace
{

// The texts of one integer parser family, in the order of its checks.
struct IntegerMessages {
    const char *empty;
    const char *leading_whitespace;
    const char *parser_error;
    const char *out_of_range;
    const char *invalid_characters;
    const char *too_small;
    const char *too_large;
};

constexpr IntegerMessages signed_messages{
    "Empty integer value.",
    "Integer value must not begin with whitespace.",
    "Integer parser error.",
    "Integer value out of range (overflow or underflow).",
    "Invalid characters in integer value.",
    "Integer value out of valid range (too small).",
    "Integer value out of valid range (too large).",
};

constexpr IntegerMessages unsigned_messages{
    "Empty unsigned integer value.",
    "Unsigned integer value must not begin with whitespace.",
    "Unsigned integer parser error.",
    "Unsigned integer value overflow.",
    "Invalid characters in unsigned integer value.",
    "Unsigned integer value out of valid range (too small).",
    "Unsigned integer value out of valid range (too large).",
};

constexpr const char *invalid_double_message = "Invalid floating-point value.";

// Invalid UTF-8 is left for the later checks to refuse. GLib's Unicode
// test leaves out the vertical tab that its number parsers skip.
bool begins_with_whitespace(const char *text)
{
    if (*text == '\v')
        return true;
    gunichar c = g_utf8_get_char_validated(text, -1);
    return c != static_cast<gunichar>(-1) && c != static_cast<gunichar>(-2) && g_unichar_isspace(c);
}

// Checks shared by both integer families before conversion. Returns FALSE
// with the error set.
bool check_integer_start(const char *text, const IntegerMessages &messages)
{
    if (text == nullptr || *text == '\0') {
        ov_error_set(messages.empty);
        return false;
    }
    if (begins_with_whitespace(text)) {
        ov_error_set(messages.leading_whitespace);
        return false;
    }
    return true;
}

// After a conversion: errno and the unconsumed rest decide.
bool check_integer_end(const char *end, const IntegerMessages &messages)
{
    if (errno == EINVAL) {
        ov_error_set(messages.parser_error);
        return false;
    }
    if (errno == ERANGE) {
        ov_error_set(messages.out_of_range);
        return false;
    }
    if (*end != '\0') {
        ov_error_set(messages.invalid_characters);
        return false;
    }
    return true;
}

template <class T> bool check_range(T value, T minimum, T maximum, const IntegerMessages &messages)
{
    if (value < minimum) {
        ov_error_set(messages.too_small);
        return false;
    }
    if (value > maximum) {
        ov_error_set(messages.too_large);
        return false;
    }
    return true;
}

bool parse_signed(gint64 *out, const char *text)
{
    if (!check_integer_start(text, signed_messages))
        return false;
    char *end = nullptr;
    errno = 0;
    gint64 value = g_ascii_strtoll(text, &end, 10);
    if (!check_integer_end(end, signed_messages))
        return false;
    *out = value;
    return true;
}

bool parse_unsigned(guint64 *out, const char *text)
{
    if (!check_integer_start(text, unsigned_messages))
        return false;
    if (*text == '-') {
        ov_error_set("Unsigned integer value underflow (is negative).");
        return false;
    }
    char *end = nullptr;
    errno = 0;
    guint64 value = g_ascii_strtoull(text, &end, 10);
    if (!check_integer_end(end, unsigned_messages))
        return false;
    *out = value;
    return true;
}

// Conversion of a number at the start of text, without a check of what
// follows it. A text that does not begin with a number gives 0 and rest ==
// text.
bool parse_double_prefix(double *out_value, const char **out_rest, const char *text)
{
    if (text == nullptr || *text == '\0') {
        ov_error_set("Empty value.");
        return false;
    }
    if (begins_with_whitespace(text)) {
        ov_error_set("Value must not begin with whitespace.");
        return false;
    }
    char *end = nullptr;
    errno = 0;
    double value = g_ascii_strtod(text, &end);
    if (errno == EINVAL) {
        ov_error_set("Floating-point parser error.");
        return false;
    }
    if (errno == ERANGE && std::isinf(value)) {
        ov_error_set("Floating-point value overflow.");
        return false;
    }
    if (!std::isfinite(value)) {
        ov_error_set("Floating-point value is not finite.");
        return false;
    }
    *out_value = value;
    *out_rest = end;
    return true;
}

char decimal_character = '\0';

using FsFilePtr = ov::Owned<FILE, ov_fs_utils_close_file>;

constexpr size_t read_piece_size = 4096;

} // namespace

gboolean ov_util_parse_int64(gint64 *out, const char *text)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    return parse_signed(out, text);
}

gboolean ov_util_parse_int64_in_range(gint64 *out, const char *text, gint64 minimum, gint64 maximum)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    gint64 value = 0;
    if (!parse_signed(&value, text) || !check_range(value, minimum, maximum, signed_messages))
        return FALSE;
    *out = value;
    return TRUE;
}

gboolean ov_util_parse_int(int *out, const char *text)
{
    return ov_util_parse_int_in_range(out, text, std::numeric_limits<int>::min(),
                                      std::numeric_limits<int>::max());
}

gboolean ov_util_parse_int_in_range(int *out, const char *text, int minimum, int maximum)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    gint64 value = 0;
    if (!ov_util_parse_int64_in_range(&value, text, minimum, maximum))
        return FALSE;
    *out = static_cast<int>(value);
    return TRUE;
}

gboolean ov_util_parse_uint64(guint64 *out, const char *text)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    return parse_unsigned(out, text);
}

gboolean ov_util_parse_uint64_in_range(guint64 *out, const char *text, guint64 minimum, guint64 maximum)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    guint64 value = 0;
    if (!parse_unsigned(&value, text) || !check_range(value, minimum, maximum, unsigned_messages))
        return FALSE;
    *out = value;
    return TRUE;
}

gboolean ov_util_parse_uint(unsigned int *out, const char *text)
{
    return ov_util_parse_uint_in_range(out, text, 0, std::numeric_limits<unsigned int>::max());
}

gboolean ov_util_parse_uint_in_range(unsigned int *out, const char *text, unsigned int minimum,
                                     unsigned int maximum)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    guint64 value = 0;
    if (!ov_util_parse_uint64_in_range(&value, text, minimum, maximum))
        return FALSE;
    *out = static_cast<unsigned int>(value);
    return TRUE;
}

gboolean ov_util_parse_double_with_unit(double *out_value, const char **out_rest, const char *text)
{
    g_return_val_if_fail(out_value != nullptr && out_rest != nullptr, FALSE);
    double value = 0.0;
    const char *rest = nullptr;
    if (!parse_double_prefix(&value, &rest, text))
        return FALSE;
    // A unit alone ("mm") is not a number followed by a unit.
    if (rest == text) {
        ov_error_set(invalid_double_message);
        return FALSE;
    }
    *out_value = value;
    *out_rest = rest;
    return TRUE;
}

gboolean ov_util_parse_double(double *out, const char *text)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    double value = 0.0;
    const char *rest = nullptr;
    if (!parse_double_prefix(&value, &rest, text))
        return FALSE;
    if (*rest != '\0') {
        ov_error_set(invalid_double_message);
        return FALSE;
    }
    *out = value;
    return TRUE;
}

gboolean ov_util_parse_double_in_range(double *out, const char *text, double minimum, double maximum)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    double value = 0.0;
    if (!ov_util_parse_double(&value, text))
        return FALSE;
    if (value < minimum) {
        ov_error_set("Floating-point value out of valid range (too small).");
        return FALSE;
    }
    if (value > maximum) {
        ov_error_set("Floating-point value out of valid range (too large).");
        return FALSE;
    }
    *out = value;
    return TRUE;
}

gboolean ov_util_parse_double_for_locale(double *out, const char *text)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    const char decimal = ov_util_get_decimal_character_for_locale();
    if (decimal == '.' || text == nullptr)
        return ov_util_parse_double(out, text);
    // A point typed in a comma locale is refused rather than misread.
    if (std::strchr(text, '.') != nullptr) {
        ov_error_set(invalid_double_message);
        return FALSE;
    }
    ov::GStr converted(g_strdup(text));
    for (char *c = converted.get(); *c != '\0'; ++c) {
        if (*c == decimal)
            *c = '.';
    }
    return ov_util_parse_double(out, converted.get());
}

const char *ov_util_format_double_into(char *buffer, gsize size, double value)
{
    // g_ascii_dtostr always gives 17 digits (0.1 as 0.10000000000000001):
    // take the fewest digits that still read back as the same number.
    for (int digits = 1; digits < 17; ++digits) {
        char format[8];
        g_snprintf(format, sizeof format, "%%.%dg", digits);
        g_ascii_formatd(buffer, static_cast<gint>(size), format, value);
        if (g_ascii_strtod(buffer, nullptr) == value)
            return buffer;
    }
    return g_ascii_dtostr(buffer, static_cast<gint>(size), value);
}

char *ov_util_format_double(double value)
{
    std::array<char, G_ASCII_DTOSTR_BUF_SIZE> buffer{};
    return g_strdup(ov_util_format_double_into(buffer.data(), buffer.size(), value));
}

char *ov_util_format_double_for_locale(double value)
{
    char *text = ov_util_format_double(value);
    const char decimal = ov_util_get_decimal_character_for_locale();
    if (decimal != '.') {
        if (char *point = std::strchr(text, '.'); point != nullptr)
            *point = decimal;
    }
    return text;
}

char *ov_util_format_double_with_unit(double value, const char *unit)
{
    std::array<char, G_ASCII_DTOSTR_BUF_SIZE> buffer{};
    return g_strconcat(ov_util_format_double_into(buffer.data(), buffer.size(), value), unit, nullptr);
}

char ov_util_get_decimal_character_for_locale()
{
    if (decimal_character == '\0') {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%f", 1.2);
        decimal_character = std::strchr(buffer, ',') != nullptr ? ',' : '.';
    }
    return decimal_character;
}

void ov_util_forget_decimal_character_for_locale()
{
    decimal_character = '\0';
}

char *ov_util_get_memory_string(guint64 byte_count)
{
    constexpr guint64 mebi = 1048576;
    constexpr guint64 kibi = 1024;
    if (byte_count >= mebi) {
        // Round to the nearest tenth (mebi / 20 = 52428); split first so that
        // the largest counts do not wrap around.
        guint64 whole = byte_count / mebi;
        guint64 remainder = byte_count % mebi + 52428;
        if (remainder >= mebi) {
            ++whole;
            remainder -= mebi;
        }
        return g_strdup_printf("%" G_GUINT64_FORMAT ".%u MB", whole,
                               static_cast<unsigned int>(remainder * 10 / mebi));
    }
    guint64 rounded = byte_count + 51;
    return g_strdup_printf("%u.%u KB", static_cast<unsigned int>(rounded / kibi),
                           static_cast<unsigned int>(rounded % kibi * 10 / kibi));
}

char *ov_util_get_pixels_string(int width, int height)
{
    return g_strdup_printf("%d x %d pixels", width, height);
}

gint64 ov_util_get_file_length(FILE *stream)
{
    g_return_val_if_fail(stream != nullptr, -1);
    off_t position = ftello(stream);
    if (position < 0 || fseeko(stream, 0, SEEK_END) != 0) {
        ov_error_set_from_errno();
        return -1;
    }
    off_t length = ftello(stream);
    if (length < 0) {
        ov_error_set_from_errno();
        fseeko(stream, position, SEEK_SET);
        return -1;
    }
    if (fseeko(stream, position, SEEK_SET) != 0) {
        ov_error_set_from_errno();
        return -1;
    }
    return length;
}

gboolean ov_util_test_if_files_are_identical(const char *path_a, const char *path_b)
{
    g_return_val_if_fail(path_a != nullptr && path_b != nullptr, FALSE);
    FsFilePtr file_a(ov_fs_utils_open_file(path_a, "rb"));
    if (!file_a)
        return FALSE;
    FsFilePtr file_b(ov_fs_utils_open_file(path_b, "rb"));
    if (!file_b)
        return FALSE;

    // Whole pieces compare the same bytes as a byte-wise walk; fread only
    // returns short at the end or on an error.
    std::array<unsigned char, read_piece_size> buffer_a;
    std::array<unsigned char, read_piece_size> buffer_b;
    for (;;) {
        size_t count_a = std::fread(buffer_a.data(), 1, buffer_a.size(), file_a.get());
        size_t count_b = std::fread(buffer_b.data(), 1, buffer_b.size(), file_b.get());
        if (count_a != count_b || std::memcmp(buffer_a.data(), buffer_b.data(), count_a) != 0)
            return FALSE;
        if (count_a < buffer_a.size())
            return !std::ferror(file_a.get()) && !std::ferror(file_b.get());
    }
}

gboolean ov_util_get_file_md5sum(const char *path, guint8 digest[16])
{
    g_return_val_if_fail(path != nullptr && digest != nullptr, FALSE);
    FsFilePtr file(ov_fs_utils_open_file(path, "rb"));
    if (!file)
        return FALSE;

    using ChecksumPtr = ov::Owned<GChecksum, g_checksum_free>;
    ChecksumPtr checksum(g_checksum_new(G_CHECKSUM_MD5));
    std::array<guchar, read_piece_size> buffer;
    size_t count = 0;
    do {
        count = std::fread(buffer.data(), 1, buffer.size(), file.get());
        g_checksum_update(checksum.get(), buffer.data(), static_cast<gssize>(count));
    } while (count == buffer.size());
    if (!std::feof(file.get())) {
        ov_error_set("File read error.");
        return FALSE;
    }
    gsize length = 16;
    g_checksum_get_digest(checksum.get(), digest, &length);
    return TRUE;
}

gboolean ov_util_verify_md5sum(const guint8 digest[16], const char *text)
{
    g_return_val_if_fail(digest != nullptr && text != nullptr, FALSE);
    // Walks byte by byte; a short text meets its terminator as a bad digit.
    for (int i = 0; i < 16; ++i) {
        int high = ov_util_base16_digit_value(text[2 * i]);
        int low = high < 0 ? -1 : ov_util_base16_digit_value(text[2 * i + 1]);
        if (low < 0) {
            ov_error_set("Illegal base 16 character.");
            return FALSE;
        }
        if (((high << 4) | low) != digest[i])
            return FALSE;
    }
    return text[32] == '\0';
}

gboolean ov_util_fprintf(FILE *stream, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    gboolean ok = ov_util_vfprintf(stream, format, args);
    va_end(args);
    return ok;
}

gboolean ov_util_vfprintf(FILE *stream, const char *format, va_list args)
{
    g_return_val_if_fail(stream != nullptr && format != nullptr, FALSE);
    if (std::vfprintf(stream, format, args) < 0) {
        ov_error_set_file_io_writing();
        return FALSE;
    }
    return TRUE;
}

gboolean ov_util_is_file_path_in_folder(const char *folder_path, const char *file_path)
{
    g_return_val_if_fail(folder_path != nullptr && file_path != nullptr, FALSE);
    ov::GStr parent(g_strdup(file_path));
    ov_fs_utils_strip_entry_name_from_path(parent.get());
    return ov_platform_compare_file_system_paths(folder_path, parent.get());
}

char *ov_util_format_input_field_label_markup(const char *label, gboolean required)
{
    g_return_val_if_fail(label != nullptr, nullptr);
    ov::GStr escaped(g_markup_escape_text(label, -1));
    return g_strconcat(escaped.get(), ":",
                       required ? " <span style=\"italic\" alpha=\"50%\">(Required)</span>" : "", nullptr);
}

void ov_util_free_glist_with_data(GList *list)
{
    g_list_free_full(list, g_free);
}
