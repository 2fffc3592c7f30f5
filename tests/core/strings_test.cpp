#include "core/strings.h"

#include "core/error.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Strings : public ::testing::Test {
protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

std::string owned(char *text)
{
    ov::GStr holder(text);
    return text != nullptr ? std::string(text) : std::string("(null)");
}

// Every byte 1..255 once, in order.
std::string all_nonzero_bytes()
{
    std::string bytes;
    for (int b = 1; b <= 255; ++b)
        bytes += static_cast<char>(b);
    return bytes;
}

TEST_F(Strings, AsciiAssertionsRejectAnyHighByteInBothEncodings)
{
    const struct {
        const char *text;
        bool ascii;
    } cases[] = {
        {"", true}, {"Plain text 123 ~\x7f", true}, {"caf\xe9", false}, {"caf\xc3\xa9", false}, {"\x80", false},
    };
    for (const auto &c : cases) {
        for (auto assertion : {ov_ascii_assert_in_latin1, ov_ascii_assert_in_utf8}) {
            ov_error_clear();
            const char *result = assertion(c.text);
            if (c.ascii) {
                EXPECT_EQ(result, c.text);
                EXPECT_STREQ(ov_error_get(), "");
            } else {
                EXPECT_EQ(result, nullptr) << c.text;
                EXPECT_STREQ(ov_error_get(), "Non-ascii byte found where not allowed.");
            }
        }
    }
}

TEST_F(Strings, NonemptyAssertionsTellMissingFromEmpty)
{
    for (auto assertion : {ov_latin1_assert_nonempty, ov_utf8_assert_nonempty}) {
        ov_error_clear();
        const char *text = "x";
        EXPECT_EQ(assertion(text), text);
        EXPECT_STREQ(ov_error_get(), "");
        EXPECT_EQ(assertion(nullptr), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content does not exist.");
        EXPECT_EQ(assertion(""), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content is empty.");
    }
}

TEST_F(Strings, NonemptyOrFreeFreesOnlyOnFailure)
{
    // A leak or a double free here shows in the sanitizer run.
    for (auto assertion : {ov_latin1_assert_nonempty_or_free, ov_utf8_assert_nonempty_or_free}) {
        char *kept = g_strdup("kept");
        EXPECT_EQ(assertion(kept), kept);
        g_free(kept);
        EXPECT_EQ(assertion(g_strdup("")), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content is empty.");
        EXPECT_EQ(assertion(nullptr), nullptr);
        EXPECT_STREQ(ov_error_get(), "Text content does not exist.");
    }
}

TEST_F(Strings, Utf8ValidationHonoursTheLength)
{
    EXPECT_TRUE(ov_utf8_validate("caf\xc3\xa9", -1));
    EXPECT_TRUE(ov_utf8_validate("ok\xff", 2));
    EXPECT_STREQ(ov_error_get(), "");
    for (const char *bad : {"caf\xe9", "\xc3", "\xed\xa0\x80", "\xc0\x80"}) {
        ov_error_clear();
        EXPECT_FALSE(ov_utf8_validate(bad, -1)) << bad;
        EXPECT_STREQ(ov_error_get(), "Invalid UTF-8 data.");
    }
    EXPECT_FALSE(ov_utf8_validate("\xc3\xa9", 1));
}

TEST_F(Strings, ReplacingBytesAndSubstrings)
{
    char text[] = "a.b.c";
    EXPECT_EQ(ov_char_replace_char(text, '.', '/'), text);
    EXPECT_STREQ(text, "a/b/c");

    const struct {
        const char *text, *search, *replacement, *expected;
    } cases[] = {
        {"a,b,,c", ",", "--", "a--b----c"},
        {",a,", ",", "", "a"},
        {"aaa", "aa", "b", "ba"},
        {"none", "x", "y", "none"},
        {"", "x", "y", ""},
        {"same", "", "y", "same"},
        {"\xe9t\xe9", "\xe9", "e", "ete"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(owned(ov_char_strdup_replace(c.text, c.search, c.replacement)), c.expected) << c.text;
        EXPECT_EQ(owned(ov_char_strdup_replace_and_free(g_strdup(c.text), c.search, c.replacement)), c.expected);
    }
}

TEST_F(Strings, CatSkipsNullEntries)
{
    const char *parts[] = {"a", nullptr, "", "b\xc3\xa9", nullptr};
    EXPECT_EQ(owned(ov_utf8_cat_(parts, 5)), "ab\xc3\xa9");
    EXPECT_EQ(owned(ov_utf8_cat_(parts, 1)), "a");
    EXPECT_EQ(owned(ov_utf8_cat_(nullptr, 0)), "");

    const char *missing = nullptr;
    ov::GStr folder(g_strdup("/tmp"));
    EXPECT_EQ(owned(ov_utf8_cat(folder.get(), "/", missing, "x.xml", nullptr)), "/tmp/x.xml");
    EXPECT_EQ(owned(ov_utf8_cat()), "");
}

TEST_F(Strings, SuffixComparesAsciiWithoutCase)
{
    const struct {
        const char *text, *suffix;
        gboolean expected;
    } cases[] = {
        {"photo.JPG", ".jpg", TRUE},  {"photo.jpg", ".JpG", TRUE}, {"photo.jpeg", ".jpg", FALSE},
        {"jpg", ".jpg", FALSE},       {"x", "", TRUE},              {"", "", TRUE},
        {"caf\xc3\x89", "\xc3\xa9", FALSE}, // only ASCII letters fold
    };
    for (const auto &c : cases)
        EXPECT_EQ(ov_utf8_has_suffix_case_insensitive_ascii(c.text, c.suffix), c.expected) << c.text << " " << c.suffix;
}

TEST_F(Strings, AllWhitespaceUsesUnicodeSpaces)
{
    const struct {
        const char *text;
        gboolean expected;
    } cases[] = {
        {"", TRUE},
        {" \t\n\r\f", TRUE},
        {"\xc2\xa0\xe3\x80\x80\xe2\x80\xa8", TRUE}, // no-break, ideographic, line separator
        {" a ", FALSE},
        {"\v", FALSE},        // not white space in Unicode's sense
        {"\xa0", FALSE},      // the Latin-1 no-break space is broken UTF-8
        {" \xe3\x80", FALSE}, // truncated ideographic space
    };
    for (const auto &c : cases)
        EXPECT_EQ(ov_utf8_is_all_whitespace(c.text), c.expected) << testing::PrintToString(c.text);
}

TEST_F(Strings, GrowableStringsInBothEncodings)
{
    GString *latin1 = ov_latin1_string_new("caf");
    ov_latin1_string_append(latin1, "\xe9");
    ov_latin1_string_append_printf(latin1, " %d%s", 2, "x");
    EXPECT_EQ(owned(ov_latin1_string_free(latin1, FALSE)), "caf\xe9 2x");

    GString *utf8 = ov_utf8_string_new(nullptr);
    ov_utf8_string_append(utf8, "a");
    ov_utf8_string_append_printf(utf8, "%s=%u", "b", 5u);
    EXPECT_EQ(std::string(utf8->str), "ab=5");
    EXPECT_EQ(ov_utf8_string_free(utf8, TRUE), nullptr);
}

TEST_F(Strings, AppendByteKeepsTheTerminatorAcrossGrowth)
{
    // Crosses several capacity boundaries, with raw bytes that are not
    // characters on their own.
    GString *string = g_string_sized_new(1);
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const char byte = static_cast<char>(i % 3 == 0 ? 0xc3 : 'a' + i % 26);
        EXPECT_EQ(ov_utf8_string_append_byte(string, byte), string);
        expected += byte;
        ASSERT_EQ(string->len, expected.size());
        ASSERT_EQ(string->str[string->len], '\0');
    }
    EXPECT_EQ(std::string(string->str, string->len), expected);
    g_string_free(string, TRUE);
}

TEST_F(Strings, Utf16Helpers)
{
    const gunichar2 source[] = {'a', 0xD83D, 0xDE00, 'a', 0};
    EXPECT_EQ(ov_utf16_strlen(source), 4u);
    const gunichar2 empty[] = {0};
    EXPECT_EQ(ov_utf16_strlen(empty), 0u);

    gunichar2 copy[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(ov_utf16_strcpy(copy, source), copy);
    EXPECT_EQ(copy[4], 0);
    EXPECT_EQ(copy[5], 9); // nothing written past the terminator
    EXPECT_EQ(ov_utf16_replace_code_unit(copy, 'a', 'b'), copy);
    const gunichar2 expected[] = {'b', 0xD83D, 0xDE00, 'b', 0};
    EXPECT_EQ(std::vector<gunichar2>(copy, copy + 5), std::vector<gunichar2>(expected, expected + 5));
}

TEST_F(Strings, Utf8ToLatin1RefusesWhatLatin1CannotHold)
{
    EXPECT_EQ(owned(ov_convert_utf8_to_latin1("caf\xc3\xa9 \xc3\xbf")), "caf\xe9 \xff");
    EXPECT_EQ(owned(ov_convert_utf8_to_latin1("")), "");
    EXPECT_STREQ(ov_error_get(), "");
    for (const char *bad : {"\xe2\x82\xac", "a\xe9", "\xc3"}) {
        ov_error_clear();
        EXPECT_EQ(ov_convert_utf8_to_latin1(bad), nullptr) << bad;
        EXPECT_STREQ(ov_error_get(), "Character incompatible with ISO-8859-1 found where not allowed.");
    }
}

TEST_F(Strings, OneCharacterLatin1Test)
{
    const struct {
        const char *character;
        gboolean expected;
    } cases[] = {
        {"a", TRUE},          {"", TRUE},          {"\xc2\x80", TRUE}, {"\xc3\xbf rest", TRUE},
        {"\xc4\x80", FALSE},  {"\xe2\x82\xac", FALSE}, {"\xc3", FALSE}, {"\xc3x", FALSE},
        {"\xc1\xbf", FALSE}, // overlong form of an ASCII character
        {"\xa9", FALSE},     // a continuation byte on its own
    };
    for (const auto &c : cases)
        EXPECT_EQ(ov_convert_test_utf8_char_for_latin1(c.character), c.expected) << testing::PrintToString(c.character);
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(Strings, Latin1ToUtf8AgreesWithIconvForEveryByte)
{
    const std::string bytes = all_nonzero_bytes();
    ov::GStr reference(g_convert(bytes.c_str(), -1, "UTF-8", "ISO-8859-1", nullptr, nullptr, nullptr));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(owned(ov_convert_latin1_to_utf8(bytes.c_str())), reference.get());

    std::vector<char> buffer(2 * bytes.size() + 1, 'x');
    EXPECT_EQ(ov_convert_latin1_to_utf8_buf(bytes.c_str(), buffer.data()), buffer.data());
    EXPECT_STREQ(buffer.data(), reference.get());
    EXPECT_EQ(owned(ov_convert_latin1_to_utf8("")), "");
}

TEST_F(Strings, Utf16ConversionsRoundTripAndReportGErrors)
{
    const char *text = "a\xc3\xa9\xf0\x9f\x98\x80";
    ov::Owned<gunichar2, g_free> utf16(ov_convert_utf8_to_utf16(text));
    ASSERT_NE(utf16, nullptr);
    EXPECT_EQ(ov_utf16_strlen(utf16.get()), 4u);
    EXPECT_EQ(owned(ov_convert_utf16_to_utf8(utf16.get())), text);

    EXPECT_EQ(ov_convert_utf8_to_utf16("a\xff"), nullptr);
    EXPECT_EQ(std::string(ov_error_get()).rfind("GError ", 0), 0u) << ov_error_get();

    ov_error_clear();
    const gunichar2 lone_surrogate[] = {'a', 0xD800, 0};
    EXPECT_EQ(ov_convert_utf16_to_utf8(lone_surrogate), nullptr);
    EXPECT_EQ(std::string(ov_error_get()).rfind("GError ", 0), 0u) << ov_error_get();
}

TEST_F(Strings, FatSafeFormEscapesEverythingOutsideTheSafeSet)
{
    const struct {
        const char *id, *expected;
    } cases[] = {
        {"A/B", "A`2fB"},
        {"\xe9", "`e9"},
        {"`", "`60"},
        {"", ""},
        {"az AZ 09 $%'-_@~!{}()#&+,;=[].", "az AZ 09 $%'-_@~!{}()#&+,;=[]."},
        {"\x01\x7f\x80\xff", "`01`7f`80`ff"},
        {"a\\b:c*d?e\"f<g>h|i^", "a`5cb`3ac`2ad`3fe`22f`3cg`3eh`7ci`5e"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(owned(ov_convert_object_id_to_fat_safe_file_name_format(c.id)), c.expected) << c.id;
    EXPECT_EQ(ov_convert_object_id_to_fat_safe_file_name_format(nullptr), nullptr);
}

TEST_F(Strings, FatSafeFormRoundTripsEveryByte)
{
    const std::string bytes = all_nonzero_bytes();
    ov::GStr safe(ov_convert_object_id_to_fat_safe_file_name_format(bytes.c_str()));
    EXPECT_EQ(owned(ov_convert_fat_safe_file_name_format_to_object_id(safe.get(), strlen(safe.get()))), bytes);
}

TEST_F(Strings, FatSafeDecodingReadsOnlyTheGivenLength)
{
    const struct {
        const char *text;
        gsize length;
        const char *expected; // nullptr: not in the format
    } cases[] = {
        {"A`2fB.obj", 5, "A/B"},
        {"A`2fB", 5, "A/B"},
        {"anything", 0, ""},
        {"ab\0cd", 5, "ab"},
        {"`e9`60", 6, "\xe9`"},
        {"`41", 3, "A"}, // needless escapes are accepted
        {"A`2FB", 5, nullptr},
        {"ab`2", 4, nullptr},
        {"ab`", 3, nullptr},
        {"a`2fb", 3, nullptr}, // escape cut by the length
        {"a`\0" "0", 4, nullptr},
        {"a/b", 3, nullptr},
        {"a^b", 3, nullptr},
        {"\xe9", 1, nullptr},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(owned(ov_convert_fat_safe_file_name_format_to_object_id(c.text, c.length)),
                  c.expected != nullptr ? c.expected : "(null)")
            << testing::PrintToString(std::string(c.text, c.length));
    }
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(Strings, NtfsSafeFormCollapsesRunsToOneHyphen)
{
    const struct {
        const char *id, *expected;
    } cases[] = {
        {"A/B", "A-B"},
        {"A//B", "A-B"},
        {"A-/B", "A-B"},
        {"A/-B", "A--B"}, // a hyphen from the input is always kept
        {"A--B", "A--B"},
        {"/A:", "-A-"},
        {"\xe9", "\xc3\xa9"},
        {"\xa0", "-"},
        {"x\xad\x80\x9fy", "x-y"},
        {"\xa1\xff", "\xc2\xa1\xc3\xbf"},
        {"^`~ ", "^`~ "},
        {"", ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(owned(ov_convert_object_id_to_ntfs_safe_file_name_format(c.id)), c.expected) << c.id;
    EXPECT_EQ(ov_convert_object_id_to_ntfs_safe_file_name_format(nullptr), nullptr);
}

using Normaliser = char *(*)(char *);
using CopyingNormaliser = char *(*)(const char *);

struct NormaliserFamily {
    const char *name;
    Normaliser latin1_in_place, utf8_in_place;
    CopyingNormaliser latin1_copy, utf8_copy;
};

const NormaliserFamily kDetabify = {"detabify", ov_strip_surrounding_and_detabify_within_original_for_latin1,
                                    ov_strip_surrounding_and_detabify_within_original_for_utf8,
                                    ov_strip_surrounding_and_detabify_in_new_for_latin1,
                                    ov_strip_surrounding_and_detabify_in_new_for_utf8};
const NormaliserFamily kSpacify = {"spacify", ov_strip_surrounding_and_spacify_within_original_for_latin1,
                                   ov_strip_surrounding_and_spacify_within_original_for_utf8,
                                   ov_strip_surrounding_and_spacify_in_new_for_latin1,
                                   ov_strip_surrounding_and_spacify_in_new_for_utf8};
const NormaliserFamily kCompactly = {"compactly", ov_strip_surrounding_and_spacify_compactly_within_original_for_latin1,
                                     ov_strip_surrounding_and_spacify_compactly_within_original_for_utf8,
                                     ov_strip_surrounding_and_spacify_compactly_in_new_for_latin1,
                                     ov_strip_surrounding_and_spacify_compactly_in_new_for_utf8};

struct NormaliserCase {
    const NormaliserFamily *family;
    const char *input;
    const char *expected;
    gsize offset; // where the in-place result starts in the buffer
};

// Checks the in-place and the copying form of one encoding.
void check_normaliser(const NormaliserCase &c, Normaliser in_place, CopyingNormaliser copy, const char *encoding)
{
    SCOPED_TRACE(std::string(c.family->name) + " " + encoding + " " + testing::PrintToString(c.input));
    ov::GStr buffer(g_strdup(c.input));
    char *result = in_place(buffer.get());
    EXPECT_EQ(result, buffer.get() + c.offset);
    EXPECT_STREQ(result, c.expected);
    // The copy is a fresh allocation of its own: freeing it through owned()
    // would trip the sanitizer if it pointed into the middle of one.
    EXPECT_EQ(owned(copy(c.input)), c.expected);
}

TEST_F(Strings, NormalisersAgreeOnAsciiInBothEncodingsAndForms)
{
    const NormaliserCase cases[] = {
        {&kCompactly, "  a\t\nb ", "a b", 2},
        {&kDetabify, "  a\t\nb ", "a \nb", 2},
        {&kSpacify, "  a\t\nb ", "a  b", 2},
        {&kDetabify, "\n a\r\n\n", "a", 2},
        {&kDetabify, "a\n\nb", "a\n\nb", 0},
        {&kSpacify, "a\r\n\fb", "a   b", 0},
        {&kCompactly, "a \t \n b  c", "a b c", 0},
        {&kCompactly, "one", "one", 0},
        {&kSpacify, " \t\n ", "", 4},
        {&kDetabify, "", "", 0},
        {&kCompactly, "", "", 0},
    };
    for (const auto &c : cases) {
        check_normaliser(c, c.family->latin1_in_place, c.family->latin1_copy, "latin1");
        check_normaliser(c, c.family->utf8_in_place, c.family->utf8_copy, "utf8");
    }
}

TEST_F(Strings, NormalisersReadTheirOwnEncoding)
{
    const NormaliserCase latin1_cases[] = {
        {&kCompactly, " caf\xe9\v\vx ", "caf\xe9 x", 1},
        {&kSpacify, "\xe9\vx", "\xe9 x", 0},
    };
    for (const auto &c : latin1_cases)
        check_normaliser(c, c.family->latin1_in_place, c.family->latin1_copy, "latin1");

    const NormaliserCase utf8_cases[] = {
        // Multi-byte spaces become one byte; the text behind moves up.
        {&kCompactly, "\xe3\x80\x80" "a\xc2\xa0\xc2\xa0" "b\xe2\x80\xa8", "a b", 3},
        {&kSpacify, "a\xc2\xa0\xe3\x80\x80" "b", "a  b", 0},
        {&kDetabify, "a\xe2\x80\xa8\nb", "a \nb", 0},
        {&kCompactly, "caf\xc3\xa9 \xc3\xa9t\xc3\xa9", "caf\xc3\xa9 \xc3\xa9t\xc3\xa9", 0},
        {&kSpacify, "a\vb", "a\vb", 0}, // vertical tab is no Unicode space
        // Broken UTF-8 is kept byte for byte and never read past its end.
        {&kCompactly, " a\xff  b\xe3\x80", "a\xff b\xe3\x80", 1},
        {&kSpacify, "\xc3 x", "\xc3 x", 0},
    };
    for (const auto &c : utf8_cases)
        check_normaliser(c, c.family->utf8_in_place, c.family->utf8_copy, "utf8");
}

TEST_F(Strings, AsciiCompactSpacifierIsTheLatin1One)
{
    char text[] = " a \t b ";
    EXPECT_EQ(ov_strip_surrounding_and_spacify_compactly_within_original_for_ascii(text), text + 1);
    EXPECT_STREQ(text + 1, "a b");
}

} // namespace
