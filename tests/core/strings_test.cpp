// Text encodings, string utilities, base 16 and natural order.
#include "core/strings.h"

#include "core/base16.h"
#include "core/natcmp.h"
#include "core/raii.h"
#include "core_test.h"

namespace
{

using ov::test::str;
using Strings = ov::test::CoreTest;

std::string printable(const char *text)
{
    return testing::PrintToString(text ? text : "(null)");
}

// The argument back ("(same)"), or the error text.
template <class Assertion> std::string asserted(Assertion assertion, const char *text)
{
    ov_error_clear();
    const char *result = assertion(text);
    return result == nullptr ? ov_error_get() : result == text ? "(same)" : "(other pointer)";
}

TEST_F(Strings, AssertionsSayWhatIsWrong)
{
    EXPECT_EQ(asserted(ov_ascii_assert_in_latin1, "Plain 123 ~\x7f"), "(same)");
    EXPECT_EQ(asserted(ov_ascii_assert_in_utf8, "caf\xc3\xa9"), "Non-ascii byte found where not allowed.");
    // Frees only on failure: a leak or a double free shows in the sanitizer run.
    for (auto assertion : {ov_latin1_assert_nonempty_or_free, ov_utf8_assert_nonempty_or_free}) {
        ov::GStr kept(g_strdup("kept"));
        EXPECT_EQ(assertion(kept.get()), kept.get());
        EXPECT_EQ(assertion(g_strdup("")), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content is empty.");
    }
    EXPECT_TRUE(ov_utf8_validate("ok\xff", 2));
    for (auto [text, length] : {std::pair{"\xed\xa0\x80", -1}, {"\xc3\xa9", 1}}) {
        EXPECT_FALSE(ov_utf8_validate(text, length)) << printable(text);
        EXPECT_STREQ(ov_error_get(), "Invalid UTF-8 data.");
    }
}

TEST_F(Strings, ReplaceCatSuffixAndWhitespace)
{
    char text[] = "a.b.c";
    EXPECT_EQ(ov_char_replace_char(text, '.', '/'), text);
    EXPECT_STREQ(text, "a/b/c");
    EXPECT_EQ(str(ov_char_strdup_replace("a,b,,c", ",", "--")), "a--b----c");
    EXPECT_EQ(str(ov_char_strdup_replace("aaa", "aa", "b")), "ba");
    const char *parts[] = {"a", nullptr, "", "b\xc3\xa9", nullptr};
    EXPECT_EQ(str(ov_utf8_cat_(parts, 5)) + str(ov_utf8_cat()), "ab\xc3\xa9");
    for (auto [text, suffix, expected] : {std::tuple{"photo.JPG", ".jpg", TRUE},
                                          {"photo.jpeg", ".jpg", FALSE},
                                          {"caf\xc3\x89", "\xc3\xa9", FALSE} /* only ASCII folds */})
        EXPECT_EQ(ov_utf8_has_suffix_case_insensitive_ascii(text, suffix), expected) << text;
    // Unicode spaces count, \v does not; a Latin-1 or cut character is broken UTF-8.
    for (auto [text, expected] : {std::pair{"", TRUE},
                                  {" \t\n\xc2\xa0\xe3\x80\x80\xe2\x80\xa8", TRUE},
                                  {"\v", FALSE},
                                  {" \xe3\x80", FALSE}})
        EXPECT_EQ(ov_utf8_is_all_whitespace(text), expected) << printable(text);
}

TEST_F(Strings, Conversions)
{
    std::string bytes; // every byte but NUL
    for (int b = 1; b <= 255; ++b)
        bytes += static_cast<char>(b);
    const std::string utf8 =
        str(g_convert(bytes.c_str(), -1, "UTF-8", "ISO-8859-1", nullptr, nullptr, nullptr));
    EXPECT_EQ(str(ov_convert_latin1_to_utf8(bytes.c_str())), utf8);
    EXPECT_EQ(str(ov_convert_utf8_to_latin1(utf8.c_str())), bytes);
    for (const char *bad : {"\xe2\x82\xac", "a\xe9"}) {
        EXPECT_EQ(ov_convert_utf8_to_latin1(bad), nullptr) << printable(bad);
        EXPECT_STREQ(ov_error_get(), "Character incompatible with ISO-8859-1 found where not allowed.");
        ov_error_clear();
    }
    // Overlong forms and lone continuation bytes are no characters; no error text.
    for (auto [character, expected] :
         {std::pair{"\xc3\xbf rest", TRUE}, {"\xc4\x80", FALSE}, {"\xc1\xbf", FALSE}, {"\xa9", FALSE}})
        EXPECT_EQ(ov_convert_test_utf8_char_for_latin1(character), expected) << printable(character);
    EXPECT_STREQ(ov_error_get(), "");

    ov::Owned<gunichar2, g_free> utf16(ov_convert_utf8_to_utf16("a\xc3\xa9\xf0\x9f\x98\x80"));
    EXPECT_EQ(str(ov_convert_utf16_to_utf8(utf16.get())), "a\xc3\xa9\xf0\x9f\x98\x80");
    const gunichar2 lone_surrogate[] = {'a', 0xD800, 0};
    EXPECT_EQ(ov_convert_utf16_to_utf8(lone_surrogate), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "GError ")) << ov_error_get();
}

TEST_F(Strings, FileNameForms)
{
    EXPECT_EQ(str(ov_convert_object_id_to_fat_safe_file_name_format("a/b:`\x01")), "a`2fb`3a`60`01");
    // Decoding reads only the given length (a NUL ends it early); needless
    // escapes are accepted, upper-case digits and cut escapes are not.
    for (auto [text, length, expected] :
         {std::tuple{"A`2fB.obj", 5, "A/B"}, {"A`2FB", 5, "(null)"}, {"a`2fb", 3, "(null)"}})
        EXPECT_EQ(str(ov_convert_fat_safe_file_name_format_to_object_id(text, length)), expected) << text;
    EXPECT_STREQ(ov_error_get(), "");
    // Runs of unsafe bytes become one hyphen; a hyphen of the input is kept.
    for (auto [id, expected] :
         {std::pair{"A/-B", "A--B"}, {"\xa1\xff", "\xc2\xa1\xc3\xbf"}, {"x\xad\x80\x9fy", "x-y"}})
        EXPECT_EQ(str(ov_convert_object_id_to_ntfs_safe_file_name_format(id)), expected) << printable(id);
}

// Runs the in-place form, whose result starts at offset in the buffer, and
// the copying form.
void check(char *(*in_place)(char *), char *(*copy)(const char *), const char *input, const char *expected,
           gsize offset)
{
    SCOPED_TRACE(printable(input));
    ov::GStr buffer(g_strdup(input));
    EXPECT_EQ(in_place(buffer.get()), buffer.get() + offset);
    EXPECT_STREQ(buffer.get() + offset, expected);
    EXPECT_EQ(str(copy(input)), expected);
}

#define OV_CHECK(kind, encoding, ...)                                                                        \
    check(ov_strip_surrounding_and_##kind##_within_original_for_##encoding,                                  \
          ov_strip_surrounding_and_##kind##_in_new_for_##encoding, __VA_ARGS__)

TEST_F(Strings, WhitespaceNormalisers)
{
    OV_CHECK(spacify_compactly, latin1, " caf\xe9\v\vx ", "caf\xe9 x", 1);
    OV_CHECK(detabify, latin1, "  a\t\nb ", "a \nb", 2);
    OV_CHECK(spacify, utf8, "a\r\n\fb", "a   b", 0);
    OV_CHECK(spacify, utf8, " \t\n ", "", 4);
    // Multi-byte spaces become one byte and the text behind moves up; broken
    // UTF-8 is kept byte for byte and never read past its end; \v is no space.
    OV_CHECK(spacify_compactly, utf8,
             "\xe3\x80\x80"
             "a\xc2\xa0\xc2\xa0"
             "b\xe2\x80\xa8",
             "a b", 3);
    OV_CHECK(spacify, utf8, "a\vb", "a\vb", 0);
    OV_CHECK(spacify_compactly, utf8, " a\xff  b\xe3\x80", "a\xff b\xe3\x80", 1);
}

TEST_F(Strings, Base16)
{
    const guint8 bytes[] = {0, 0x7f, 0xff};
    EXPECT_EQ(str(ov_util_encode_base16(bytes, 3)), "007fff");
    gsize length = 0;
    // The empty text decodes to no buffer, a length of 0 and no error.
    EXPECT_TRUE(ov_util_decode_base16("", &length) == nullptr && length == 0 && !*ov_error_get());
    // Upper case is never written, so never read.
    for (auto [text, message] : {
             std::pair{"abc", "Illegal base 16 string length."},
             {"0A", "Illegal base 16 character."},
         }) {
        EXPECT_EQ(ov_util_decode_base16(text, nullptr), nullptr) << text;
        EXPECT_STREQ(ov_error_get(), message) << text;
        ov_error_clear();
    }
}

constexpr int (*kNatural[])(const char *, const char *) = {strnatcmp, strnatcasecmp, strnatzerocmp,
                                                           strnatzerocasecmp};

TEST(NaturalOrder, EachVariantOnTheCasesThatTellThemApart)
{
    // The order of a and b for strnatcmp, strnatcasecmp, strnatzerocmp and
    // strnatzerocasecmp. Digit runs starting with 0 are fractions; bytes
    // compare unsigned; case folding goes to upper case; in runs of equal
    // length the first differing digit decides.
    const struct {
        const char *a, *b, *order;
    } cases[] = {
        {"r2", "R10", "><><"},     {"r02", "R2", "><>="},       {"R010", "R9", "<<>>"},
        {"1.010", "1.01", ">>>>"}, {"  a\tb\n", "a b", "===="}, {"z", "\xe9", "<<<<"},
        {"[", "a", "<><>"},        {nullptr, "", "<<<<"},       {"p1239b", "p1322a", "<<<<"},
    };
    for (const auto &c : cases) {
        std::string forward, backward;
        for (auto compare : kNatural) {
            forward += "<=>"[1 + (compare(c.a, c.b) > 0) - (compare(c.a, c.b) < 0)];
            backward += "<=>"[1 + (compare(c.b, c.a) < 0) - (compare(c.b, c.a) > 0)];
        }
        EXPECT_EQ(forward + " " + backward, std::string(c.order) + " " + c.order)
            << printable(c.a) << " " << printable(c.b);
    }
    // Equal digit runs are passed once, not digit by digit from every position.
    const std::string digits(200000, '7'), a = "x" + digits + "a", b = "x" + digits + "b";
    for (auto compare : kNatural)
        EXPECT_LT(compare(a.c_str(), b.c_str()), 0);
}

} // namespace
