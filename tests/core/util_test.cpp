#include "core/util.h"

#include "core/error.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>
#include <unistd.h>

#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace
{

std::string str(char *text)
{
    ov::GStr owned(text);
    return text != nullptr ? text : "(null)";
}

// A parser with its bounds bound: gives "=value" (with any error text behind
// it) on success, else the error text; a failure leaves the out-parameter.
template <class T, class... Bounds>
std::function<std::string(const char *)> parser(gboolean (*parse)(T *, const char *, Bounds...),
                                                Bounds... bounds)
{
    return [=](const char *text) {
        ov_error_clear();
        T out = T(77);
        if (!parse(&out, text, bounds...))
            return std::string(out == T(77) ? ov_error_get() : "(out-parameter written)");
        char digits[40];
        return "=" + std::string(digits, std::to_chars(digits, digits + sizeof digits, out).ptr) +
               ov_error_get();
    };
}

// Switches the numeric locale for one scope, making the decimal character be
// looked up again both times.
class NumericLocale
{
  public:
    explicit NumericLocale(const char *name) : previous_(std::setlocale(LC_NUMERIC, nullptr))
    {
        ok_ = std::setlocale(LC_NUMERIC, name) != nullptr;
        ov_util_forget_decimal_character_for_locale();
    }
    ~NumericLocale()
    {
        std::setlocale(LC_NUMERIC, previous_.c_str());
        ov_util_forget_decimal_character_for_locale();
    }
    bool ok() const { return ok_; }

  private:
    std::string previous_;
    bool ok_ = false;
};

class UtilTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

TEST_F(UtilTest, ParsersFollowTheirOrderOfChecks)
{
    const std::map<std::string, std::function<std::string(const char *)>> parsers = {
        {"int64", parser(ov_util_parse_int64)},
        {"int", parser(ov_util_parse_int)},
        {"int -5..10", parser(ov_util_parse_int_in_range, -5, 10)},
        {"int64 -5e9..0", parser(ov_util_parse_int64_in_range, G_GINT64_CONSTANT(-5000000000), gint64(0))},
        {"uint64", parser(ov_util_parse_uint64)},
        {"uint", parser(ov_util_parse_uint)},
        {"uint 3..9", parser(ov_util_parse_uint_in_range, 3u, 9u)},
        {"double", parser(ov_util_parse_double)},
        {"double -1.5..2.5", parser(ov_util_parse_double_in_range, -1.5, 2.5)},
    };
    const struct {
        const char *parser, *expected;
        std::vector<const char *> texts;
    } cases[] = {
        {"int64", "=12", {"12", "+12"}},
        {"int64", "=-9223372036854775808", {"-9223372036854775808"}},
        {"int64", "Empty integer value.", {"", nullptr}},
        {"int64", "Integer value must not begin with whitespace.", {" 12", "\u00a012"}},
        // Overflow is found before the characters behind the digits.
        {"int64",
         "Integer value out of range (overflow or underflow).",
         {"9223372036854775808", "-9223372036854775809", "99999999999999999999x"}},
        {"int64",
         "Invalid characters in integer value.",
         {"12 ", "1.5", "0x10", "+", "+-1", "\xff", "\xd9\xa3" /* Arabic-Indic three */}},
        {"int", "=-2147483648", {"-2147483648"}},
        {"int", "Integer value out of valid range (too large).", {"2147483648"}},
        {"int", "Integer value out of valid range (too small).", {"-2147483649"}},
        {"int", "Integer value out of range (overflow or underflow).", {"9223372036854775808"}},
        {"int -5..10", "=10", {"10"}},
        {"int -5..10", "Integer value out of valid range (too small).", {"-6"}},
        {"int64 -5e9..0", "Integer value out of valid range (too small).", {"-5000000001"}},
        {"int64 -5e9..0", "Integer value out of valid range (too large).", {"1"}},
        {"uint64", "=18446744073709551615", {"18446744073709551615", "+18446744073709551615"}},
        {"uint64", "Empty unsigned integer value.", {""}},
        {"uint64", "Unsigned integer value must not begin with whitespace.", {" 1"}},
        {"uint64", "Unsigned integer value underflow (is negative).", {"-0", "-"}},
        {"uint64", "Unsigned integer value overflow.", {"18446744073709551616"}},
        {"uint64", "Invalid characters in unsigned integer value.", {"1-", "+-1", "1\n"}},
        {"uint", "Unsigned integer value out of valid range (too large).", {"4294967296"}},
        {"uint 3..9", "=3", {"3"}},
        {"uint 3..9", "Unsigned integer value out of valid range (too small).", {"2"}},
        {"uint 3..9", "Unsigned integer value out of valid range (too large).", {"10"}},
        {"double", "=12.5", {"+12.5", "1.25e1"}},
        {"double", "=0.5", {".5"}},
        {"double", "=0", {"1e-999"}}, // underflow towards zero is accepted
        {"double", "Empty value.", {"", nullptr}},
        {"double", "Value must not begin with whitespace.", {" 1", "\u00a01"}},
        {"double", "Floating-point value overflow.", {"1e999", "-1e999"}},
        {"double", "Floating-point value is not finite.", {"nan", "-infinity"}},
        {"double", "Invalid floating-point value.", {"1 ", "1,5", "12.5mm"}},
        {"double -1.5..2.5", "=-1.5", {"-1.5"}},
        {"double -1.5..2.5", "Floating-point value out of valid range (too large).", {"2.50001"}},
        {"double -1.5..2.5", "Floating-point value out of valid range (too small).", {"-1.50001"}},
    };
    for (const auto &c : cases)
        for (const char *text : c.texts)
            EXPECT_EQ(parsers.at(c.parser)(text), c.expected) << c.parser << " " << (text ? text : "(null)");
}

TEST_F(UtilTest, DoublesWithUnitsAndTheirTexts)
{
    double value = 7;
    const char *text = "-2e1 cm", *rest = nullptr;
    ASSERT_TRUE(ov_util_parse_double_with_unit(&value, &rest, text));
    EXPECT_EQ(value, -20);
    EXPECT_EQ(rest, text + 4);
    // A unit without a number in front of it is not read as zero.
    for (auto [input, message] : {std::pair{"mm", "Invalid floating-point value."},
                                  {"nanmm", "Floating-point value is not finite."}}) {
        EXPECT_FALSE(ov_util_parse_double_with_unit(&value, &rest, input));
        EXPECT_STREQ(ov_error_get(), message);
        EXPECT_EQ(value, -20);
        EXPECT_EQ(rest, text + 4);
    }
    for (double original : {-0.0, 1.0 / 3.0, -1e-300, DBL_MAX, 4.9e-324, 9007199254740993.0}) {
        const std::string formatted = str(ov_util_format_double(original));
        ASSERT_TRUE(ov_util_parse_double(&value, formatted.c_str())) << formatted;
        EXPECT_TRUE(value == original && std::signbit(value) == std::signbit(original)) << formatted;
    }
    // The fewest digits that read back as the same number.
    EXPECT_EQ(str(ov_util_format_double(0.1)) + " " + str(ov_util_format_double(0.1 + 0.2)),
              "0.1 0.30000000000000004");
    EXPECT_EQ(str(ov_util_format_double_with_unit(-3, "%")), "-3%");
}

TEST_F(UtilTest, OnlyTheLocaleFormsFollowTheDecimalCharacter)
{
    for (auto [name, decimal, good, bad] :
         {std::tuple{"C", '.', "-1.5", "1,5"}, {"sv_SE.UTF-8", ',', "-1,5", "1.5"}}) {
        NumericLocale locale(name);
        if (!locale.ok()) {
            ADD_FAILURE() << name << " is not generated on this machine";
            continue;
        }
        SCOPED_TRACE(name);
        EXPECT_EQ(ov_util_get_decimal_character_for_locale(), decimal);
        EXPECT_EQ(str(ov_util_format_double_for_locale(-1.5)), good);
        EXPECT_EQ(parser(ov_util_parse_double_for_locale)(good), "=-1.5");
        EXPECT_EQ(parser(ov_util_parse_double_for_locale)(bad), "Invalid floating-point value.");
        EXPECT_EQ(parser(ov_util_parse_double_for_locale)(""), "Empty value.");
        // The file forms keep the point.
        EXPECT_EQ(str(ov_util_format_double(1.5)), "1.5");
        EXPECT_EQ(str(ov_util_format_double_with_unit(12.5, "mm")), "12.5mm");
        EXPECT_EQ(parser(ov_util_parse_double)("2.25"), "=2.25");
        for (double original : {0.1, -123.456, 1e-7, 5e20}) {
            double back = 0;
            EXPECT_TRUE(ov_util_parse_double_for_locale(
                &back, str(ov_util_format_double_for_locale(original)).c_str()));
            EXPECT_EQ(back, original);
        }
    }
}

TEST_F(UtilTest, SizeTextsRoundToTenths)
{
    for (auto [bytes, text] : {std::pair{guint64(51), "0.0 KB"},
                               {52, "0.1 KB"},
                               {1048575, "1024.0 KB"},
                               {1048576 + 52429, "1.0 MB"},
                               {1048576 + 52430, "1.1 MB"},
                               {G_MAXUINT64, "17592186044416.0 MB"}})
        EXPECT_EQ(str(ov_util_get_memory_string(bytes)), text) << bytes;
    EXPECT_EQ(str(ov_util_get_pixels_string(640, 480)), "640 x 480 pixels");
}

TEST_F(UtilTest, FileLengthKeepsThePosition)
{
    ov::test::TempDir dir;
    ov::test::write_file(dir.file("data"), std::string(5000, 'x'));
    ov::FilePtr file(std::fopen(dir.file("data").c_str(), "rb"));
    std::fseek(file.get(), 123, SEEK_SET);
    EXPECT_EQ(ov_util_get_file_length(file.get()), 5000);
    EXPECT_EQ(std::ftell(file.get()), 123);

    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    close(fds[1]);
    ov::FilePtr pipe_end(fdopen(fds[0], "rb"));
    EXPECT_EQ(ov_util_get_file_length(pipe_end.get()), -1);
    EXPECT_TRUE(g_str_has_suffix(ov_error_get(), g_strerror(ESPIPE))) << ov_error_get();
}

TEST_F(UtilTest, FilesAreComparedAndSummedByteForByte)
{
    ov::test::TempDir dir;
    const std::string big(10000, 'a'), nul("a\0b", 3);
    std::string changed_at_piece = big;
    changed_at_piece[4096] = 'b';
    for (auto [a, b, identical] : {std::tuple{std::string(), std::string(), true},
                                   {big, big, true},
                                   {nul, std::string("a\0c", 3), false},
                                   {"", "a", false},
                                   {big, changed_at_piece, false},
                                   {big, big.substr(0, 4096), false}}) {
        ov::test::write_file(dir.file("a"), a);
        ov::test::write_file(dir.file("b"), b);
        EXPECT_EQ(ov_util_test_if_files_are_identical(dir.file("a").c_str(), dir.file("b").c_str()),
                  identical);
        EXPECT_EQ(ov_util_test_if_files_are_identical(dir.file("b").c_str(), dir.file("a").c_str()),
                  identical);
        // The digest of every piece, the last one short.
        guint8 digest[16] = {};
        ASSERT_TRUE(ov_util_get_file_md5sum(dir.file("a").c_str(), digest));
        EXPECT_TRUE(ov_util_verify_md5sum(
            digest, str(g_compute_checksum_for_string(G_CHECKSUM_MD5, a.data(), a.size())).c_str()));
    }
    EXPECT_STREQ(ov_error_get(), "");
    guint8 digest[16] = {1};
    for (auto [a, b] : {std::pair{"a", "missing"}, {"missing", "a"}}) {
        EXPECT_FALSE(ov_util_test_if_files_are_identical(dir.file(a).c_str(), dir.file(b).c_str()));
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot open file.")) << ov_error_get();
    }
    EXPECT_FALSE(ov_util_get_file_md5sum(dir.file("missing").c_str(), digest));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot open file.") && digest[0] == 1) << ov_error_get();
    // A folder opens but cannot be read: no text for a read error, or one.
    ov_error_clear();
    EXPECT_FALSE(ov_util_test_if_files_are_identical(dir.path().c_str(), dir.path().c_str()));
    EXPECT_STREQ(ov_error_get(), "");
    EXPECT_FALSE(ov_util_get_file_md5sum(dir.path().c_str(), digest));
    EXPECT_STREQ(ov_error_get(), "File read error.");

    // md5("The quick brown fox jumps over the lazy dog"); the check stops at
    // the first difference, before a bad digit further on.
    const guint8 fox[16] = {0x9e, 0x10, 0x7d, 0x9d, 0x37, 0x2b, 0xb6, 0x82,
                            0x6b, 0xd8, 0x1d, 0x35, 0x42, 0xa4, 0x19, 0xd6};
    for (auto [text, outcome] : {std::pair{"9e107d9d372bb6826bd81d3542a419d6", "ok"},
                                 {"9e107d9d372bb6826bd81d3542a419d60", ""},
                                 {"8e107d9d372bb6826bd81d3542a419zz", ""},
                                 {"9e107d9d372bb6826bd81d3542a419d", "Illegal base 16 character."},
                                 {"9E107d9d372bb6826bd81d3542a419d6", "Illegal base 16 character."}}) {
        ov_error_clear();
        EXPECT_EQ(ov_util_verify_md5sum(fox, text) ? "ok" : ov_error_get(), std::string(outcome)) << text;
    }
}

TEST_F(UtilTest, FprintfReportsFailedWrites)
{
    ov::test::TempDir dir;
    const std::string path = dir.file("out.txt");
    ov::FilePtr file(std::fopen(path.c_str(), "wb"));
    EXPECT_TRUE(ov_util_fprintf(file.get(), "%s=%d;", "a", 12));
    EXPECT_TRUE(ov_util_fprintf(file.get(), "%s", ""));
    file.reset();
    EXPECT_EQ(ov::test::read_file(path), "a=12;");

    ov::FilePtr full(std::fopen("/dev/full", "wb")), read_only(std::fopen(path.c_str(), "rb"));
    std::setvbuf(full.get(), nullptr, _IONBF, 0); // fails at the write itself
    for (FILE *stream : {full.get(), read_only.get()}) {
        ov_error_clear();
        EXPECT_FALSE(ov_util_fprintf(stream, "%d", 1));
        EXPECT_STREQ(ov_error_get(), "File I/O error when writing to file.");
    }
}

TEST_F(UtilTest, FilePathInFolderComparesTheParentFolder)
{
    ov::test::TempDir dir;
    const std::string sub = dir.file("sub"), file = sub + "/a.txt";
    ASSERT_EQ(g_mkdir(sub.c_str(), 0700), 0);
    for (auto [folder, path, inside] : {std::tuple{sub + "/", sub + "//a.txt", true},
                                        {dir.path() + "/sub/../sub", file, true},
                                        {dir.path(), file, false},
                                        {sub, sub, false},
                                        {sub, std::string("a.txt"), false},
                                        {dir.file("missing"), dir.file("missing") + "/a.txt", false}})
        EXPECT_EQ(ov_util_is_file_path_in_folder(folder.c_str(), path.c_str()), inside)
            << folder << " | " << path;
}

TEST_F(UtilTest, GuiHelpers)
{
    EXPECT_EQ(str(ov_util_format_input_field_label_markup("A < B & \"C\"", FALSE)),
              "A &lt; B &amp; &quot;C&quot;:");
    EXPECT_EQ(str(ov_util_format_input_field_label_markup("Name", TRUE)),
              "Name: <span style=\"italic\" alpha=\"50%\">(Required)</span>");

    int runs = 0;
    g_idle_add([](gpointer data) -> gboolean { return ++*static_cast<int *>(data) < 3; }, &runs);
    ov_util_let_through_gtk_events();
    EXPECT_EQ(runs, 3);

    // The sanitizer build's leak checker watches the elements.
    ov_util_free_glist_with_data(g_list_prepend(g_list_prepend(nullptr, g_strdup("a")), g_strdup("b")));
    ov_util_free_glist_with_data(nullptr);
}

} // namespace
