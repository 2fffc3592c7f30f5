#include "core/strings.h"

#include "core/base16.h"
#include "core/error.h"
#include "core/raii.h"

#include <array>
#include <cctype>
#include <cstring>
#include <string_view>

namespace
{

// ---------------------------------------------------------------------------
// Assertions

const char *assert_ascii(const char *text)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    for (const char *p = text; *p != '\0'; ++p) {
        if (static_cast<guchar>(*p) >= 0x80) {
            ov_error_set("Non-ascii byte found where not allowed.");
            return nullptr;
        }
    }
    return text;
}

const char *assert_nonempty(const char *text)
{
    if (text == nullptr) {
        ov_error_set("Text content does not exist.");
        return nullptr;
    }
    if (*text == '\0') {
        ov_error_set("Text content is empty.");
        return nullptr;
    }
    return text;
}

char *assert_nonempty_or_free(char *text)
{
    if (assert_nonempty(text) == nullptr) {
        g_free(text);
        return nullptr;
    }
    return text;
}

// ---------------------------------------------------------------------------
// Object ids as file names

// Characters that every file system accepts in a name, besides digits and
// ASCII letters.
constexpr std::string_view kFatSafePunctuation = " $%'-_@~!{}()#&+,;=[].";

constexpr std::array<bool, 256> make_fat_safe_table()
{
    std::array<bool, 256> table{};
    for (int c = '0'; c <= '9'; ++c)
        table[c] = true;
    for (int c = 'A'; c <= 'Z'; ++c)
        table[c] = true;
    for (int c = 'a'; c <= 'z'; ++c)
        table[c] = true;
    for (char c : kFatSafePunctuation)
        table[static_cast<guchar>(c)] = true;
    return table;
}

constexpr std::array<bool, 256> make_ntfs_allowed_table()
{
    std::array<bool, 256> table = make_fat_safe_table();
    table['^'] = true;
    table['`'] = true;
    // Bytes 0x80..0xA0 are controls and the no-break space; 0xAD is the
    // invisible soft hyphen.
    for (int c = 0xA1; c <= 0xFF; ++c)
        table[c] = c != 0xAD;
    return table;
}

constexpr std::array<bool, 256> kFatSafe = make_fat_safe_table();
constexpr std::array<bool, 256> kNtfsAllowed = make_ntfs_allowed_table();

// Appends the UTF-8 form of one Latin-1 byte at out; returns the new end.
char *put_latin1_as_utf8(guchar b, char *out)
{
    if (b < 0x80) {
        *out++ = static_cast<char>(b);
    } else {
        *out++ = static_cast<char>(0xC0 | (b >> 6));
        *out++ = static_cast<char>(0x80 | (b & 0x3F));
    }
    return out;
}

// ---------------------------------------------------------------------------
// Whitespace normalisers
//
// Each rule walks the text once, reading at r and writing at w <= r, and
// remembers where the last character that is not white space ended; the
// terminator goes there, which drops trailing white space.

enum class Rule { Detabify, Spacify, SpacifyCompactly };

// Every C library locale agrees on the ASCII white space, so only the upper
// half asks the locale.
bool latin1_is_space(guchar c)
{
    if (c < 0x80)
        return c == ' ' || (c >= '\t' && c <= '\r');
    return std::isspace(c) != 0;
}

char *normalise_latin1(char *text, Rule rule)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    char *start = text;
    while (*start != '\0' && latin1_is_space(static_cast<guchar>(*start)))
        ++start;
    char *w = start;
    char *end = start;
    bool in_space = false;
    for (const char *r = start; *r != '\0'; ++r) {
        const char c = *r;
        if (!latin1_is_space(static_cast<guchar>(c))) {
            *w++ = c;
            end = w;
            in_space = false;
        } else if (rule == Rule::Detabify) {
            *w++ = c == '\n' ? '\n' : ' ';
        } else if (rule == Rule::Spacify || !in_space) {
            *w++ = ' ';
            in_space = true;
        }
    }
    *end = '\0';
    return start;
}

// One character of a UTF-8 text. A byte that does not start a valid
// character counts as a character of its own that is not white space, so
// broken input is kept and the walk never passes the terminator.
struct Utf8Char {
    gsize length;
    gunichar value;
    bool space;
};

// remaining is the number of bytes from p up to the terminator (at least 1).
Utf8Char read_utf8_char(const char *p, gsize remaining)
{
    const guchar lead = static_cast<guchar>(*p);
    if (lead < 0x80)
        return {1, lead, g_unichar_isspace(lead) != FALSE};
    const gunichar c = g_utf8_get_char_validated(p, static_cast<gssize>(remaining));
    if (c == static_cast<gunichar>(-1) || c == static_cast<gunichar>(-2))
        return {1, 0, false};
    return {static_cast<gsize>(g_utf8_skip[lead]), c, g_unichar_isspace(c) != FALSE};
}

// Skips the leading white space of a UTF-8 text that ends at limit.
const char *skip_utf8_space(const char *text, const char *limit)
{
    while (text < limit) {
        const Utf8Char c = read_utf8_char(text, static_cast<gsize>(limit - text));
        if (!c.space)
            break;
        text += c.length;
    }
    return text;
}

char *normalise_utf8(char *text, Rule rule)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    const char *const limit = text + std::strlen(text);
    char *const start = text + (skip_utf8_space(text, limit) - text);
    char *w = start;
    char *end = start;
    bool in_space = false;
    for (const char *r = start; r < limit;) {
        const Utf8Char c = read_utf8_char(r, static_cast<gsize>(limit - r));
        if (!c.space) {
            std::memmove(w, r, c.length);
            w += c.length;
            end = w;
            in_space = false;
        } else if (rule == Rule::Detabify) {
            *w++ = c.value == '\n' ? '\n' : ' ';
        } else if (rule == Rule::Spacify || !in_space) {
            *w++ = ' ';
            in_space = true;
        }
        r += c.length;
    }
    *end = '\0';
    return start;
}

// Skips the leading white space, copies the rest and normalises the copy.
char *normalise_latin1_in_new(const char *text, Rule rule)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    while (*text != '\0' && latin1_is_space(static_cast<guchar>(*text)))
        ++text;
    return normalise_latin1(g_strdup(text), rule);
}

char *normalise_utf8_in_new(const char *text, Rule rule)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    return normalise_utf8(g_strdup(skip_utf8_space(text, text + std::strlen(text))), rule);
}

} // namespace

// ---------------------------------------------------------------------------
// Assertions

const char *ov_ascii_assert_in_latin1(const char *text)
{
    return assert_ascii(text);
}
const char *ov_ascii_assert_in_utf8(const char *text)
{
    return assert_ascii(text);
}
const char *ov_latin1_assert_nonempty(const char *text)
{
    return assert_nonempty(text);
}
const char *ov_utf8_assert_nonempty(const char *text)
{
    return assert_nonempty(text);
}
char *ov_latin1_assert_nonempty_or_free(char *text)
{
    return assert_nonempty_or_free(text);
}
char *ov_utf8_assert_nonempty_or_free(char *text)
{
    return assert_nonempty_or_free(text);
}

gboolean ov_utf8_validate(const char *text, gssize length)
{
    g_return_val_if_fail(text != nullptr || length == 0, FALSE);
    if (!g_utf8_validate(text, length, nullptr)) {
        ov_error_set("Invalid UTF-8 data.");
        return FALSE;
    }
    return TRUE;
}

// ---------------------------------------------------------------------------
// Plain string operations

char *ov_char_replace_char(char *text, char from, char to)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    for (char *p = text; *p != '\0'; ++p) {
        if (*p == from)
            *p = to;
    }
    return text;
}

char *ov_char_strdup_replace(const char *text, const char *search, const char *replacement)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    g_return_val_if_fail(search != nullptr, nullptr);
    if (replacement == nullptr)
        replacement = "";
    const std::string_view haystack(text);
    const std::string_view needle(search);
    if (needle.empty())
        return g_strdup(text);
    GString *result = g_string_sized_new(haystack.size());
    std::string_view::size_type from = 0;
    for (auto at = haystack.find(needle); at != std::string_view::npos; at = haystack.find(needle, from)) {
        g_string_append_len(result, text + from, static_cast<gssize>(at - from));
        g_string_append(result, replacement);
        from = at + needle.size();
    }
    g_string_append_len(result, text + from, static_cast<gssize>(haystack.size() - from));
    return g_string_free(result, FALSE);
}

char *ov_char_strdup_replace_and_free(char *text, const char *search, const char *replacement)
{
    char *result = ov_char_strdup_replace(text, search, replacement);
    g_free(text);
    return result;
}

char *ov_utf8_cat_(const char *const *strings, gsize count)
{
    g_return_val_if_fail(strings != nullptr || count == 0, nullptr);
    gsize total = 0;
    for (gsize i = 0; i < count; ++i) {
        if (strings[i] != nullptr)
            total += std::strlen(strings[i]);
    }
    char *result = static_cast<char *>(g_malloc(total + 1));
    char *out = result;
    for (gsize i = 0; i < count; ++i) {
        if (strings[i] != nullptr)
            out = g_stpcpy(out, strings[i]);
    }
    *out = '\0';
    return result;
}

gboolean ov_utf8_has_suffix_case_insensitive_ascii(const char *text, const char *suffix)
{
    g_return_val_if_fail(text != nullptr, FALSE);
    g_return_val_if_fail(suffix != nullptr, FALSE);
    const gsize text_length = std::strlen(text);
    const gsize suffix_length = std::strlen(suffix);
    if (text_length < suffix_length)
        return FALSE;
    return g_ascii_strcasecmp(text + text_length - suffix_length, suffix) == 0;
}

gboolean ov_utf8_is_all_whitespace(const char *text)
{
    g_return_val_if_fail(text != nullptr, FALSE);
    const char *const limit = text + std::strlen(text);
    return skip_utf8_space(text, limit) == limit;
}

GString *ov_latin1_string_new(const char *init)
{
    return g_string_new(init);
}

GString *ov_latin1_string_append(GString *string, const char *text)
{
    return g_string_append(string, text);
}

GString *ov_latin1_string_append_vprintf(GString *string, const char *format, va_list args)
{
    g_string_append_vprintf(string, format, args);
    return string;
}

GString *ov_latin1_string_append_printf(GString *string, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov_latin1_string_append_vprintf(string, format, args);
    va_end(args);
    return string;
}

char *ov_latin1_string_free(GString *string, gboolean free_segment)
{
    return g_string_free(string, free_segment);
}

GString *ov_utf8_string_new(const char *init)
{
    return g_string_new(init);
}

GString *ov_utf8_string_append(GString *string, const char *text)
{
    return g_string_append(string, text);
}

GString *ov_utf8_string_append_vprintf(GString *string, const char *format, va_list args)
{
    g_string_append_vprintf(string, format, args);
    return string;
}

GString *ov_utf8_string_append_printf(GString *string, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov_utf8_string_append_vprintf(string, format, args);
    va_end(args);
    return string;
}

char *ov_utf8_string_free(GString *string, gboolean free_segment)
{
    return g_string_free(string, free_segment);
}

GString *ov_utf8_string_append_byte(GString *string, char byte)
{
    g_return_val_if_fail(string != nullptr, nullptr);
    // allocated_len counts the terminator, so there is room for one more
    // byte and a new terminator while len + 2 <= allocated_len.
    if (string->len + 2 <= string->allocated_len) {
        string->str[string->len++] = byte;
        string->str[string->len] = '\0';
        return string;
    }
    return g_string_append_c(string, byte);
}

void ov_latin1_strfreev(char **strings)
{
    g_strfreev(strings);
}
void ov_utf8_strfreev(char **strings)
{
    g_strfreev(strings);
}

gsize ov_utf16_strlen(const gunichar2 *text)
{
    g_return_val_if_fail(text != nullptr, 0);
    gsize length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

gunichar2 *ov_utf16_strcpy(gunichar2 *destination, const gunichar2 *source)
{
    g_return_val_if_fail(destination != nullptr && source != nullptr, destination);
    std::memcpy(destination, source, (ov_utf16_strlen(source) + 1) * sizeof(gunichar2));
    return destination;
}

gunichar2 *ov_utf16_replace_code_unit(gunichar2 *text, gunichar2 from, gunichar2 to)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    for (gunichar2 *p = text; *p != 0; ++p) {
        if (*p == from)
            *p = to;
    }
    return text;
}

// ---------------------------------------------------------------------------
// Conversions

char *ov_convert_utf8_to_latin1(const char *utf8)
{
    g_return_val_if_fail(utf8 != nullptr, nullptr);
    // Computed directly: opening an iconv converter for every text made
    // reading large files several times slower. Latin-1 is U+0000..U+00FF,
    // so a text converts exactly when it holds only ASCII bytes and the
    // two-byte forms of U+0080..U+00FF (lead 0xC2 or 0xC3); anything else is
    // either invalid or beyond Latin-1, and both fail alike.
    const gsize length = std::strlen(utf8);
    ov::GStr latin1(static_cast<char *>(g_malloc(length + 1)));
    char *out = latin1.get();
    for (const auto *in = reinterpret_cast<const guchar *>(utf8); *in != '\0'; ++in) {
        if (*in < 0x80) {
            *out++ = static_cast<char>(*in);
        } else if ((*in == 0xC2 || *in == 0xC3) && (in[1] & 0xC0) == 0x80) {
            *out++ = static_cast<char>(((*in & 0x03) << 6) | (in[1] & 0x3F));
            ++in;
        } else {
            ov_error_set("Character incompatible with ISO-8859-1 found where not allowed.");
            return nullptr;
        }
    }
    *out = '\0';
    return latin1.release();
}

gboolean ov_convert_test_utf8_char_for_latin1(const char *utf8_char)
{
    g_return_val_if_fail(utf8_char != nullptr, FALSE);
    // Latin-1 covers U+0000..U+00FF: one ASCII byte, or the lead byte 0xC2
    // or 0xC3 with one continuation byte.
    const guchar lead = static_cast<guchar>(utf8_char[0]);
    if (lead < 0x80)
        return TRUE;
    if (lead != 0xC2 && lead != 0xC3)
        return FALSE;
    const guchar next = static_cast<guchar>(utf8_char[1]);
    return (next & 0xC0) == 0x80;
}

char *ov_convert_latin1_to_utf8_buf(const char *latin1, char *destination)
{
    g_return_val_if_fail(latin1 != nullptr && destination != nullptr, destination);
    char *out = destination;
    for (const char *p = latin1; *p != '\0'; ++p)
        out = put_latin1_as_utf8(static_cast<guchar>(*p), out);
    *out = '\0';
    return destination;
}

char *ov_convert_latin1_to_utf8(const char *latin1)
{
    g_return_val_if_fail(latin1 != nullptr, nullptr);
    char *utf8 = static_cast<char *>(g_malloc(2 * std::strlen(latin1) + 1));
    return ov_convert_latin1_to_utf8_buf(latin1, utf8);
}

char *ov_convert_utf16_to_utf8(const gunichar2 *utf16)
{
    g_return_val_if_fail(utf16 != nullptr, nullptr);
    GError *error = nullptr;
    char *utf8 = g_utf16_to_utf8(utf16, -1, nullptr, nullptr, &error);
    if (utf8 == nullptr)
        ov_error_set_from_gerror_and_free(error);
    return utf8;
}

gunichar2 *ov_convert_utf8_to_utf16(const char *utf8)
{
    g_return_val_if_fail(utf8 != nullptr, nullptr);
    GError *error = nullptr;
    gunichar2 *utf16 = g_utf8_to_utf16(utf8, -1, nullptr, nullptr, &error);
    if (utf16 == nullptr)
        ov_error_set_from_gerror_and_free(error);
    return utf16;
}

char *ov_convert_object_id_to_fat_safe_file_name_format(const char *object_id)
{
    if (object_id == nullptr)
        return nullptr;
    char *result = static_cast<char *>(g_malloc(3 * std::strlen(object_id) + 1));
    char *out = result;
    for (const char *p = object_id; *p != '\0'; ++p) {
        const guchar b = static_cast<guchar>(*p);
        if (kFatSafe[b]) {
            *out++ = *p;
        } else {
            *out++ = '`';
            ov_util_encode_base16_byte(b, out);
            out += 2;
        }
    }
    *out = '\0';
    return result;
}

char *ov_convert_fat_safe_file_name_format_to_object_id(const char *text, gsize length)
{
    if (text == nullptr)
        return nullptr;
    ov::GStr result(static_cast<char *>(g_malloc(length + 1)));
    char *out = result.get();
    gsize i = 0;
    while (i < length && text[i] != '\0') {
        const guchar b = static_cast<guchar>(text[i]);
        if (kFatSafe[b]) {
            *out++ = text[i++];
            continue;
        }
        if (b != '`' || length - i < 3)
            return nullptr;
        const int high = ov_util_base16_digit_value(text[i + 1]);
        const int low = high < 0 ? -1 : ov_util_base16_digit_value(text[i + 2]);
        if (low < 0)
            return nullptr;
        *out++ = static_cast<char>((high << 4) | low);
        i += 3;
    }
    *out = '\0';
    return result.release();
}

char *ov_convert_object_id_to_ntfs_safe_file_name_format(const char *object_id)
{
    if (object_id == nullptr)
        return nullptr;
    // Written straight in UTF-8; last is the Latin-1 byte written last.
    char *result = static_cast<char *>(g_malloc(2 * std::strlen(object_id) + 1));
    char *out = result;
    guchar last = 0;
    for (const char *p = object_id; *p != '\0'; ++p) {
        guchar b = static_cast<guchar>(*p);
        if (!kNtfsAllowed[b]) {
            if (last == '-')
                continue;
            b = '-';
        }
        out = put_latin1_as_utf8(b, out);
        last = b;
    }
    *out = '\0';
    return result;
}

// ---------------------------------------------------------------------------
// Whitespace normalisers

char *ov_strip_surrounding_and_detabify_within_original_for_latin1(char *text)
{
    return normalise_latin1(text, Rule::Detabify);
}
char *ov_strip_surrounding_and_detabify_within_original_for_utf8(char *text)
{
    return normalise_utf8(text, Rule::Detabify);
}
char *ov_strip_surrounding_and_detabify_in_new_for_latin1(const char *text)
{
    return normalise_latin1_in_new(text, Rule::Detabify);
}
char *ov_strip_surrounding_and_detabify_in_new_for_utf8(const char *text)
{
    return normalise_utf8_in_new(text, Rule::Detabify);
}

char *ov_strip_surrounding_and_spacify_within_original_for_latin1(char *text)
{
    return normalise_latin1(text, Rule::Spacify);
}
char *ov_strip_surrounding_and_spacify_within_original_for_utf8(char *text)
{
    return normalise_utf8(text, Rule::Spacify);
}
char *ov_strip_surrounding_and_spacify_in_new_for_latin1(const char *text)
{
    return normalise_latin1_in_new(text, Rule::Spacify);
}
char *ov_strip_surrounding_and_spacify_in_new_for_utf8(const char *text)
{
    return normalise_utf8_in_new(text, Rule::Spacify);
}

char *ov_strip_surrounding_and_spacify_compactly_within_original_for_latin1(char *text)
{
    return normalise_latin1(text, Rule::SpacifyCompactly);
}
char *ov_strip_surrounding_and_spacify_compactly_within_original_for_utf8(char *text)
{
    return normalise_utf8(text, Rule::SpacifyCompactly);
}
char *ov_strip_surrounding_and_spacify_compactly_in_new_for_latin1(const char *text)
{
    return normalise_latin1_in_new(text, Rule::SpacifyCompactly);
}
char *ov_strip_surrounding_and_spacify_compactly_in_new_for_utf8(const char *text)
{
    return normalise_utf8_in_new(text, Rule::SpacifyCompactly);
}
char *ov_strip_surrounding_and_spacify_compactly_within_original_for_ascii(char *text)
{
    return normalise_latin1(text, Rule::SpacifyCompactly);
}
