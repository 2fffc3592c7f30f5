// Text encodings, string utilities, base 16 and natural order.
#include "core/strings.h"

#include "core/base16.h"
#include "core/error.h"
#include "core/natcmp.h"
#include "core/raii.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

std::string str(char *text)
{
    ov::GStr owned(text);
    return text != nullptr ? text : "(null)";
}

std::string printable(const char *text)
{
    return testing::PrintToString(text ? text : "(null)");
}

// Every byte 1..255 once, in order.
std::string all_nonzero_bytes()
{
    std::string bytes;
    for (int b = 1; b <= 255; ++b)
        bytes += static_cast<char>(b);
    return bytes;
}

class Strings : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

// The argument back, or the error text.
template <class Assertion> std::string asserted(Assertion assertion, const char *text)
{
    ov_error_clear();
    const char *result = assertion(text);
    if (result == nullptr)
        return ov_error_get();
    return result == text ? std::string("(same)") + ov_error_get() : "(other pointer)";
}

TEST_F(Strings, AssertionsSayWhatIsWrong)
{
    const char *non_ascii = "Non-ascii byte found where not allowed.";
    for (auto assertion : {ov_ascii_assert_in_latin1, ov_ascii_assert_in_utf8}) {
        for (auto [text, expected] : {std::pair{"", "(same)"},
                                      {"Plain 123 ~\x7f", "(same)"},
                                      {"caf\xe9", non_ascii},
                                      {"caf\xc3\xa9", non_ascii},
                                      {"\x80", non_ascii}})
            EXPECT_EQ(asserted(assertion, text), expected) << printable(text);
    }
    for (auto assertion : {ov_latin1_assert_nonempty, ov_utf8_assert_nonempty}) {
        EXPECT_EQ(asserted(assertion, "x"), "(same)");
        EXPECT_EQ(asserted(assertion, nullptr), "Text content does not exist.");
        EXPECT_EQ(asserted(assertion, ""), "Text content is empty.");
    }
    // Frees only on failure: a leak or a double free shows in the sanitizer run.
    for (auto assertion : {ov_latin1_assert_nonempty_or_free, ov_utf8_assert_nonempty_or_free}) {
        char *kept = g_strdup("kept");
        EXPECT_EQ(assertion(kept), kept);
        g_free(kept);
        EXPECT_EQ(assertion(g_strdup("")), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content is empty.");
        EXPECT_EQ(assertion(nullptr), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content does not exist.");
    }
    EXPECT_TRUE(ov_utf8_validate("ok\xff", 2));
    for (auto [text, length] :
         {std::pair{"caf\xe9", -1}, {"\xed\xa0\x80", -1}, {"\xc0\x80", -1}, {"\xc3\xa9", 1}}) {
        ov_error_clear();
        EXPECT_FALSE(ov_utf8_validate(text, length)) << printable(text);
        EXPECT_STREQ(ov_error_get(), "Invalid UTF-8 data.");
    }
}

TEST_F(Strings, ReplaceCatAndSuffix)
{
    char text[] = "a.b.c";
    EXPECT_EQ(ov_char_replace_char(text, '.', '/'), text);
    EXPECT_STREQ(text, "a/b/c");
    for (auto [text, search, replacement, expected] : {std::tuple{"a,b,,c", ",", "--", "a--b----c"},
                                                       {",a,", ",", "", "a"},
                                                       {"aaa", "aa", "b", "ba"},
                                                       {"", "x", "y", ""},
                                                       {"same", "", "y", "same"},
                                                       {"\xe9t\xe9", "\xe9", "e", "ete"}}) {
        EXPECT_EQ(str(ov_char_strdup_replace(text, search, replacement)), expected) << text;
        EXPECT_EQ(str(ov_char_strdup_replace_and_free(g_strdup(text), search, replacement)), expected)
            << text;
    }
    const char *parts[] = {"a", nullptr, "", "b\xc3\xa9", nullptr};
    EXPECT_EQ(str(ov_utf8_cat_(parts, 5)), "ab\xc3\xa9");
    EXPECT_EQ(str(ov_utf8_cat_(nullptr, 0)), "");
    EXPECT_EQ(str(ov_utf8_cat("/tmp", "/", nullptr, "x.xml")), "/tmp/x.xml");
    EXPECT_EQ(str(ov_utf8_cat()), "");

    for (auto [text, suffix, expected] : {std::tuple{"photo.JPG", ".jpg", TRUE},
                                          {"photo.jpg", ".JpG", TRUE},
                                          {"photo.jpeg", ".jpg", FALSE},
                                          {"jpg", ".jpg", FALSE},
                                          {"", "", TRUE},
                                          {"caf\xc3\x89", "\xc3\xa9", FALSE} /* only ASCII folds */})
        EXPECT_EQ(ov_utf8_has_suffix_case_insensitive_ascii(text, suffix), expected) << text << " " << suffix;
}

TEST_F(Strings, AllWhitespaceUsesUnicodeSpaces)
{
    // No-break, ideographic and line-separator spaces are white space; \v is
    // not in Unicode's sense; a Latin-1 no-break space or a cut character is
    // broken UTF-8.
    for (auto [text, expected] : {std::pair{"", TRUE},
                                  {" \t\n\r\f", TRUE},
                                  {"\xc2\xa0\xe3\x80\x80\xe2\x80\xa8", TRUE},
                                  {" a ", FALSE},
                                  {"\v", FALSE},
                                  {"\xa0", FALSE},
                                  {" \xe3\x80", FALSE}})
        EXPECT_EQ(ov_utf8_is_all_whitespace(text), expected) << printable(text);
}

TEST_F(Strings, AppendedRawBytesKeepTheTerminator)
{
    // Crosses several capacity boundaries with bytes that are no characters.
    GString *string = g_string_sized_new(1);
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        expected += static_cast<char>(i % 3 == 0 ? 0xc3 : 'a' + i % 26);
        EXPECT_EQ(ov_utf8_string_append_byte(string, expected.back()), string);
        ASSERT_EQ(string->str[string->len], '\0');
    }
    EXPECT_EQ(std::string(string->str, string->len), expected);
    g_string_free(string, TRUE);
}

TEST_F(Strings, Utf16HelpersAndConversions)
{
    const gunichar2 source[] = {'a', 0xD83D, 0xDE00, 'a', 0};
    gunichar2 copy[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(ov_utf16_strcpy(copy, source), copy);
    EXPECT_EQ(copy[5], 9); // nothing written past the terminator
    EXPECT_EQ(ov_utf16_replace_code_unit(copy, 'a', 'b'), copy);
    EXPECT_EQ(std::vector<gunichar2>(copy, copy + 5), (std::vector<gunichar2>{'b', 0xD83D, 0xDE00, 'b', 0}));
    EXPECT_EQ(ov_utf16_strlen(copy), 4u);

    ov::Owned<gunichar2, g_free> utf16(ov_convert_utf8_to_utf16("a\xc3\xa9\xf0\x9f\x98\x80"));
    ASSERT_NE(utf16, nullptr);
    EXPECT_EQ(ov_utf16_strlen(utf16.get()), 4u);
    EXPECT_EQ(str(ov_convert_utf16_to_utf8(utf16.get())), "a\xc3\xa9\xf0\x9f\x98\x80");
    EXPECT_EQ(ov_convert_utf8_to_utf16("a\xff"), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "GError ")) << ov_error_get();
    ov_error_clear();
    const gunichar2 lone_surrogate[] = {'a', 0xD800, 0};
    EXPECT_EQ(ov_convert_utf16_to_utf8(lone_surrogate), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "GError ")) << ov_error_get();
}

TEST_F(Strings, Latin1AndUtf8ConvertBothWays)
{
    const std::string bytes = all_nonzero_bytes();
    const std::string reference =
        str(g_convert(bytes.c_str(), -1, "UTF-8", "ISO-8859-1", nullptr, nullptr, nullptr));
    EXPECT_EQ(str(ov_convert_latin1_to_utf8(bytes.c_str())), reference);
    std::vector<char> buffer(2 * bytes.size() + 1, 'x');
    EXPECT_EQ(ov_convert_latin1_to_utf8_buf(bytes.c_str(), buffer.data()), buffer.data());
    EXPECT_EQ(buffer.data(), reference);
    EXPECT_EQ(str(ov_convert_utf8_to_latin1(reference.c_str())), bytes);
    EXPECT_EQ(str(ov_convert_utf8_to_latin1("")), "");
    for (const char *bad : {"\xe2\x82\xac", "a\xe9", "\xc3"}) {
        EXPECT_EQ(ov_convert_utf8_to_latin1(bad), nullptr) << printable(bad);
        EXPECT_STREQ(ov_error_get(), "Character incompatible with ISO-8859-1 found where not allowed.");
        ov_error_clear();
    }
    // One character: overlong forms and lone continuation bytes are no
    // characters; the test sets no error text.
    for (auto [character, expected] : {std::pair{"", TRUE},
                                       {"\xc2\x80", TRUE},
                                       {"\xc3\xbf rest", TRUE},
                                       {"\xc4\x80", FALSE},
                                       {"\xc3x", FALSE},
                                       {"\xc1\xbf", FALSE},
                                       {"\xa9", FALSE}})
        EXPECT_EQ(ov_convert_test_utf8_char_for_latin1(character), expected) << printable(character);
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(Strings, FileNameForms)
{
    for (auto [id, expected] : {std::pair{"A/B", "A`2fB"},
                                {"`", "`60"},
                                {"\x01\x7f\x80\xff", "`01`7f`80`ff"},
                                {"az AZ 09 $%'-_@~!{}()#&+,;=[].", "az AZ 09 $%'-_@~!{}()#&+,;=[]."},
                                {"a\\b:c*d?e\"f<g>h|i^", "a`5cb`3ac`2ad`3fe`22f`3cg`3eh`7ci`5e"}})
        EXPECT_EQ(str(ov_convert_object_id_to_fat_safe_file_name_format(id)), expected) << id;
    EXPECT_EQ(ov_convert_object_id_to_fat_safe_file_name_format(nullptr), nullptr);
    const std::string bytes = all_nonzero_bytes();
    const std::string safe = str(ov_convert_object_id_to_fat_safe_file_name_format(bytes.c_str()));
    EXPECT_EQ(str(ov_convert_fat_safe_file_name_format_to_object_id(safe.c_str(), safe.size())), bytes);

    // Decoding reads only the given length (a NUL ends it early); needless
    // escapes are accepted, upper-case digits and cut escapes are not.
    for (auto [text, length, expected] : {std::tuple{"A`2fB.obj", 5, "A/B"},
                                          {"ab\0cd", 5, "ab"},
                                          {"`e9`60", 6, "\xe9`"},
                                          {"`41", 3, "A"},
                                          {"A`2FB", 5, "(null)"},
                                          {"a`2fb", 3, "(null)"},
                                          {"a`\0"
                                           "0",
                                           4, "(null)"},
                                          {"a^b", 3, "(null)"},
                                          {"\xe9", 1, "(null)"}})
        EXPECT_EQ(str(ov_convert_fat_safe_file_name_format_to_object_id(text, length)), expected)
            << testing::PrintToString(std::string(text, length));
    EXPECT_STREQ(ov_error_get(), "");

    // Runs of unsafe bytes become one hyphen; a hyphen of the input is kept.
    for (auto [id, expected] : {std::pair{"A-/B", "A-B"},
                                {"A/-B", "A--B"},
                                {"/A:", "-A-"},
                                {"\xa1\xff", "\xc2\xa1\xc3\xbf"},
                                {"x\xad\x80\x9fy", "x-y"},
                                {"^`~ ", "^`~ "}})
        EXPECT_EQ(str(ov_convert_object_id_to_ntfs_safe_file_name_format(id)), expected) << printable(id);
    EXPECT_EQ(ov_convert_object_id_to_ntfs_safe_file_name_format(nullptr), nullptr);
}

struct Normaliser {
    const char *name;
    char *(*in_place)(char *);
    char *(*copy)(const char *);
};

// The latin1 and the utf8 member of one family.
#define OV_NORMALISERS(kind)                                                                                 \
    {                                                                                                        \
        Normaliser{#kind " latin1", ov_strip_surrounding_and_##kind##_within_original_for_latin1,            \
                   ov_strip_surrounding_and_##kind##_in_new_for_latin1},                                     \
            Normaliser{#kind " utf8", ov_strip_surrounding_and_##kind##_within_original_for_utf8,            \
                       ov_strip_surrounding_and_##kind##_in_new_for_utf8},                                   \
    }

// Runs the in-place and the copying form; the in-place result starts at
// offset in the buffer.
void check(const Normaliser &n, const char *input, const char *expected, gsize offset)
{
    SCOPED_TRACE(std::string(n.name) + " " + printable(input));
    ov::GStr buffer(g_strdup(input));
    EXPECT_EQ(n.in_place(buffer.get()), buffer.get() + offset);
    EXPECT_STREQ(buffer.get() + offset, expected);
    EXPECT_EQ(str(n.copy(input)), expected); // a fresh allocation: freeing it must be fine
}

TEST_F(Strings, WhitespaceNormalisers)
{
    const Normaliser detabify[] = OV_NORMALISERS(detabify);
    const Normaliser spacify[] = OV_NORMALISERS(spacify);
    const Normaliser compactly[] = OV_NORMALISERS(spacify_compactly);
    for (int e = 0; e < 2; ++e) { // ASCII reads the same in both encodings
        check(compactly[e], "  a\t\nb  c ", "a b c", 2);
        check(detabify[e], "  a\t\nb ", "a \nb", 2);
        check(spacify[e], "a\r\n\fb", "a   b", 0);
        check(spacify[e], " \t\n ", "", 4);
        check(compactly[e], "", "", 0);
    }
    check(compactly[0], " caf\xe9\v\vx ", "caf\xe9 x", 1);
    check(spacify[0], "\xe9\vx", "\xe9 x", 0);
    // Multi-byte spaces become one byte and the text behind moves up; broken
    // UTF-8 is kept byte for byte and never read past its end.
    check(compactly[1],
          "\xe3\x80\x80"
          "a\xc2\xa0\xc2\xa0"
          "b\xe2\x80\xa8",
          "a b", 3);
    check(spacify[1],
          "a\xc2\xa0\xe3\x80\x80"
          "b",
          "a  b", 0);
    check(detabify[1], "a\xe2\x80\xa8\nb", "a \nb", 0);
    check(spacify[1], "a\vb", "a\vb", 0);
    check(compactly[1], " a\xff  b\xe3\x80", "a\xff b\xe3\x80", 1);
    check(spacify[1], "\xc3 x", "\xc3 x", 0);
    char text[] = " a \t b ";
    EXPECT_EQ(ov_strip_surrounding_and_spacify_compactly_within_original_for_ascii(text), text + 1);
    EXPECT_STREQ(text + 1, "a b");
}

TEST_F(Strings, Base16RoundTripsEveryByte)
{
    std::vector<guint8> bytes;
    for (int b = 0; b < 256; ++b)
        bytes.push_back(static_cast<guint8>(b));
    const std::string text = str(ov_util_encode_base16(bytes.data(), bytes.size()));
    EXPECT_EQ(text.substr(0, 8) + text.substr(504), "00010203fcfdfeff");
    gsize length = 0;
    ov::Owned<guint8, g_free> decoded(ov_util_decode_base16(text.c_str(), &length));
    ASSERT_EQ(length, 256u);
    EXPECT_EQ(std::vector<guint8>(decoded.get(), decoded.get() + length), bytes);
    EXPECT_EQ(str(ov_util_encode_base16(nullptr, 0)), "");
    char pair[3] = "xx";
    ov_util_encode_base16_byte(0xc4, pair);
    ov_util_encode_base16_nibble(11, pair + 1);
    EXPECT_STREQ(pair, "cb");

    // The empty text decodes to no buffer, a length of 0 and no error.
    length = 77;
    EXPECT_EQ(ov_util_decode_base16("", &length), nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_STREQ(ov_error_get(), "");
    ov::Owned<guint8, g_free> single(ov_util_decode_base16("7f", nullptr)); // no length wanted
    EXPECT_EQ(single ? single.get()[0] : 0, 0x7f);
}

TEST_F(Strings, Base16DecodingFailuresSayWhy)
{
    // Upper case is never written, so never read.
    for (auto [text, message] : {std::pair{"abc", "Illegal base 16 string length."},
                                 {"0G", "Illegal base 16 character."},
                                 {"0A", "Illegal base 16 character."},
                                 {"00ff00f ", "Illegal base 16 character."},
                                 {"\xc3\xa9", "Illegal base 16 character."}}) {
        ov_error_clear();
        EXPECT_EQ(ov_util_decode_base16(text, nullptr), nullptr) << text;
        EXPECT_STREQ(ov_error_get(), message) << text;
    }
    guint8 value = 0;
    for (const char bad : std::string("gG/:`@AF \x80")) {
        EXPECT_FALSE(ov_util_decode_base16_nibble(bad, &value)) << bad;
        EXPECT_STREQ(ov_error_get(), "Illegal base 16 character.");
        ov_error_clear();
    }
    EXPECT_TRUE(ov_util_decode_base16_byte("e9", &value));
    EXPECT_EQ(value, 0xe9);
    EXPECT_FALSE(ov_util_decode_base16_byte("e", &value)); // stops at the terminator
    EXPECT_STREQ(ov_error_get(), "Illegal base 16 character.");
}

constexpr int (*kNatural[])(const char *, const char *) = {strnatcmp, strnatcasecmp, strnatzerocmp,
                                                           strnatzerocasecmp};

TEST(NaturalOrder, EachVariantOnTheCasesThatTellThemApart)
{
    // The order of a and b for strnatcmp, strnatcasecmp, strnatzerocmp and
    // strnatzerocasecmp. Digit runs starting with 0 are fractions; bytes
    // compare unsigned; case folding goes to upper case.
    const struct {
        const char *a, *b, *order;
    } cases[] = {
        {"R2", "R10", "<<<<"},
        {"r2", "R10", "><><"},
        {"r02", "R2", "><>="},
        {"R007", "R7", "<<=="},
        {"R010", "R9", "<<>>"},
        {"a0", "a", ">>>>"},
        {"1.05", "1.5", "<<=="},
        {"1.010", "1.01", ">>>>"},
        {"  a\tb\n", "a b", "===="},
        {"x124", "x123y", ">>>>"},
        {"99999999999999999999999999999", "100000000000000000000000000000", "<<<<"},
        {"z", "\xe9", "<<<<"},
        {"[", "a", "<><>"},
        {nullptr, "", "<<<<"},
    };
    for (const auto &c : cases) {
        std::string forward, backward;
        for (auto compare : kNatural) {
            forward += "<=>"[1 + (compare(c.a, c.b) > 0) - (compare(c.a, c.b) < 0)];
            backward += "<=>"[1 + (compare(c.b, c.a) < 0) - (compare(c.b, c.a) > 0)];
        }
        EXPECT_EQ(forward, c.order) << printable(c.a) << " " << printable(c.b);
        EXPECT_EQ(backward, c.order) << "swapped: " << printable(c.a) << " " << printable(c.b);
    }
}

TEST(NaturalOrder, CascadeGivesATotalOrderOfCodes)
{
    // Remark codes are listed so: each comparison decides only on a tie of
    // the ones before it.
    std::vector<std::string> codes = {"R10", "r2", "R02", "R2",  "r02",  "A 1",
                                      "A1",  "R1", "R9b", "R9a", "R009", "B"};
    std::sort(codes.begin(), codes.end(), [](const std::string &a, const std::string &b) {
        for (auto compare : {strnatzerocasecmp, strnatcasecmp, strnatzerocmp, strnatcmp})
            if (const int result = compare(a.c_str(), b.c_str()); result != 0)
                return result < 0;
        return a < b;
    });
    EXPECT_EQ(codes, (std::vector<std::string>{"A 1", "A1", "B", "R1", "R02", "r02", "R2", "r2", "R009",
                                               "R9a", "R9b", "R10"}));
    // Equal digit runs are passed once, not digit by digit from every position.
    const std::string digits(200000, '7'), a = "x" + digits + "a", b = "x" + digits + "b";
    for (auto compare : kNatural)
        EXPECT_LT(compare(a.c_str(), b.c_str()), 0);
}

} // namespace
