// Number parsers and formatters, file checks and small helpers.
#include "core/util.h"

#include "core/raii.h"
#include "core_test.h"

#include <glib/gstdio.h>
#include <unistd.h>

#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <map>

namespace
{

using namespace ov::test;
using UtilTest = CoreTest;

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
        {"uint64 7..8", parser(ov_util_parse_uint64_in_range, guint64(7), guint64(8))},
        {"double", parser(ov_util_parse_double)},
        {"double -1.5..2.5", parser(ov_util_parse_double_in_range, -1.5, 2.5)},
    };
    const struct {
        const char *parser, *expected;
        std::vector<const char *> texts;
    } cases[] = {
        // clang-format off
        // clang-format off
        {"int64", "=-9223372036854775808", {"-9223372036854775808"}},
        {"int64", "Empty integer value.", {"", nullptr}},
        {"int64", "Integer value must not begin with whitespace.", {" 12", "\u00a012", "\v1"}},
        // Overflow is found before the characters behind the digits.
        {"int64", "Integer value out of range (overflow or underflow).", {"-9223372036854775809", "99999999999999999999x"}},
        {"int64", "Invalid characters in integer value.", {"12 ", "0x10", "+-1", "\xd9\xa3" /* Arabic-Indic 3 */}},
        {"int", "Integer value out of valid range (too large).", {"2147483648"}},
        {"int", "Integer value out of valid range (too small).", {"-2147483649"}},
        {"int -5..10", "Integer value out of valid range (too small).", {"-6"}},
        {"int64 -5e9..0", "Integer value out of valid range (too large).", {"1"}},
        {"uint64", "=18446744073709551615", {"+18446744073709551615"}},
        {"uint64", "Empty unsigned integer value.", {""}},
        {"uint64", "Unsigned integer value underflow (is negative).", {"-0", "-"}},
        {"uint64", "Unsigned integer value overflow.", {"18446744073709551616"}},
        {"uint 3..9", "Unsigned integer value out of valid range (too large).", {"10"}},
        {"double", "=12.5", {"+12.5", "1.25e1"}}, {"double", "Empty value.", {"", nullptr}},
        {"double", "Value must not begin with whitespace.", {" 1", "\u00a01", "\v1", "\v1.5"}},
        {"double", "Floating-point value overflow.", {"-1e999"}},
        {"double", "Floating-point value is not finite.", {"nan", "-infinity"}},
        {"double", "Invalid floating-point value.", {"1 ", "1,5", "12.5mm"}},
        {"double -1.5..2.5", "Floating-point value out of valid range (too large).", {"2.50001"}},
        {"double -1.5..2.5", "Floating-point value out of valid range (too small).", {"-1.50001"}},
        // Either bound itself is in the range.
        {"int -5..10", "=-5", {"-5"}}, {"int -5..10", "=10", {"+10"}}, {"uint 3..9", "=3", {"3"}}, {"uint 3..9", "=9", {"9"}},
        {"int64 -5e9..0", "=-5000000000", {"-5000000000"}}, {"int64 -5e9..0", "=0", {"0"}},
        {"uint64 7..8", "=7", {"7"}}, {"uint64 7..8", "=8", {"8"}},
        {"double -1.5..2.5", "=-1.5", {"-1.5"}}, {"double -1.5..2.5", "=2.5", {"2.5"}},
        // clang-format on
        // clang-format on
    };
    for (const auto &c : cases)
        for (const char *text : c.texts)
            EXPECT_EQ(parsers.at(c.parser)(text), c.expected) << c.parser << " " << (text ? text : "(null)");

    double value = 7;
    const char *text = "-2e1 cm", *rest = nullptr;
    ASSERT_TRUE(ov_util_parse_double_with_unit(&value, &rest, text));
    EXPECT_TRUE(value == -20 && rest == text + 4);
    // A unit without a number in front of it is not read as zero.
    for (auto [input, message] : {std::pair{"mm", "Invalid floating-point value."},
                                  {"nanmm", "Floating-point value is not finite."}}) {
        EXPECT_FALSE(ov_util_parse_double_with_unit(&value, &rest, input));
        EXPECT_STREQ(ov_error_get(), message);
        EXPECT_TRUE(value == -20 && rest == text + 4);
    }
}

// Only the locale forms follow the decimal character; the file forms keep the
// point. Both read back their own texts exactly.
TEST_F(UtilTest, FormattedDoublesReadBackInEveryLocale)
{
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    for (auto [name, decimal, good, bad] :
         {std::tuple{"C", '.', "-1.5", "1,5"}, {"sv_SE.UTF-8", ',', "-1,5", "1.5"}}) {
        SCOPED_TRACE(name);
        if (std::setlocale(LC_NUMERIC, name) == nullptr) {
            ADD_FAILURE() << "not generated on this machine";
            continue;
        }
        ov_util_forget_decimal_character_for_locale();
        EXPECT_EQ(ov_util_get_decimal_character_for_locale(), decimal);
        EXPECT_EQ(str(ov_util_format_double_for_locale(-1.5)), good);
        EXPECT_EQ(parser(ov_util_parse_double_for_locale)(good), "=-1.5");
        EXPECT_EQ(parser(ov_util_parse_double_for_locale)(bad), "Invalid floating-point value.");
        // The fewest digits that read back as the same number.
        EXPECT_EQ(str(ov_util_format_double(0.1)) + " " + str(ov_util_format_double(0.1 + 0.2)) + " " +
                      str(ov_util_format_double_with_unit(12.5, "mm")),
                  "0.1 0.30000000000000004 12.5mm");
        for (double original : {-0.0, 1.0 / 3.0, -1e-300, DBL_MAX, 4.9e-324, 9007199254740993.0}) {
            double back = 0, back_in_locale = 0;
            EXPECT_TRUE(ov_util_parse_double(&back, str(ov_util_format_double(original)).c_str()) &&
                        ov_util_parse_double_for_locale(
                            &back_in_locale, str(ov_util_format_double_for_locale(original)).c_str()));
            EXPECT_TRUE(back == original && back_in_locale == original &&
                        std::signbit(back) == std::signbit(original))
                << original;
        }
    }
    std::setlocale(LC_NUMERIC, previous.c_str());
    ov_util_forget_decimal_character_for_locale();
}

TEST_F(UtilTest, SizeTexts)
{
    for (auto [bytes, text] : {std::pair{guint64(51), "0.0 KB"},
                               {1048576 + 52430, "1.1 MB"},
                               {G_MAXUINT64, "17592186044416.0 MB"}})
        EXPECT_EQ(str(ov_util_get_memory_string(bytes)), text) << bytes;
    EXPECT_EQ(str(ov_util_get_pixels_string(640, 480)), "640 x 480 pixels");
}

TEST_F(UtilTest, FilesAreMeasuredComparedAndSummed)
{
    TempDir dir;
    const std::string a = dir.file("a"), b = dir.file("b");
    write_file(a, std::string(5000, 'x'));
    ov::FilePtr file(std::fopen(a.c_str(), "rb"));
    std::fseek(file.get(), 123, SEEK_SET);
    EXPECT_EQ(ov_util_get_file_length(file.get()), 5000);
    EXPECT_EQ(std::ftell(file.get()), 123); // the position is kept
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    close(fds[1]);
    ov::FilePtr pipe_end(fdopen(fds[0], "rb"));
    EXPECT_EQ(ov_util_get_file_length(pipe_end.get()), -1);
    EXPECT_TRUE(g_str_has_suffix(ov_error_get(), g_strerror(ESPIPE))) << ov_error_get();
    ov_error_clear();

    const std::string big(10000, 'a');
    std::string changed = big;
    changed[4096] = 'b';
    for (auto [one, other, identical] : {std::tuple{std::string(), std::string(), true},
                                         {big, big, true},
                                         {big, changed, false},
                                         {big, big.substr(0, 4096), false}}) {
        write_file(a, one);
        write_file(b, other);
        EXPECT_EQ(ov_util_test_if_files_are_identical(a.c_str(), b.c_str()), identical);
        guint8 digest[16] = {};
        ASSERT_TRUE(ov_util_get_file_md5sum(a.c_str(), digest));
        EXPECT_TRUE(ov_util_verify_md5sum(
            digest, str(g_compute_checksum_for_string(G_CHECKSUM_MD5, one.data(), one.size())).c_str()));
    }
    EXPECT_STREQ(ov_error_get(), "");
    guint8 digest[16] = {1};
    EXPECT_FALSE(ov_util_test_if_files_are_identical(a.c_str(), dir.file("missing").c_str()));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot open file.")) << ov_error_get();
    // A folder opens but cannot be read.
    EXPECT_EQ(result(ov_util_get_file_md5sum(dir.path().c_str(), digest)),
              std::string("Cannot open file.\n\nError 21: ") + g_strerror(EISDIR));

    // md5("The quick brown fox jumps over the lazy dog"); the check stops at
    // the first difference, before a bad digit further on.
    const guint8 fox[16] = {0x9e, 0x10, 0x7d, 0x9d, 0x37, 0x2b, 0xb6, 0x82,
                            0x6b, 0xd8, 0x1d, 0x35, 0x42, 0xa4, 0x19, 0xd6};
    for (auto [text, outcome] : {std::pair{"8e107d9d372bb6826bd81d3542a419zz", ""},
                                 {"9E107d9d372bb6826bd81d3542a419d6", "Illegal base 16 character."}}) {
        EXPECT_FALSE(ov_util_verify_md5sum(fox, text));
        EXPECT_EQ(result(FALSE), outcome) << text;
    }
}

TEST_F(UtilTest, FprintfReportsFailedWrites)
{
    TempDir dir;
    const std::string path = dir.file("out.txt");
    ov::FilePtr file(std::fopen(path.c_str(), "wb"));
    EXPECT_TRUE(ov_util_fprintf(file.get(), "%s=%d;", "a", 12));
    file.reset();
    EXPECT_EQ(read_file(path), "a=12;");
    ov::FilePtr full(std::fopen("/dev/full", "wb")), read_only(std::fopen(path.c_str(), "rb"));
    std::setvbuf(full.get(), nullptr, _IONBF, 0); // fails at the write itself
    for (FILE *stream : {full.get(), read_only.get()})
        EXPECT_EQ(result(ov_util_fprintf(stream, "%d", 1)), "File I/O error when writing to file.");
}

TEST_F(UtilTest, SmallHelpers)
{
    TempDir dir;
    const std::string sub = dir.file("sub"), file = sub + "/a.txt";
    ASSERT_EQ(g_mkdir(sub.c_str(), 0700), 0);
    for (auto [folder, path, inside] : {std::tuple{sub + "/", sub + "//a.txt", true},
                                        {dir.path() + "/sub/../sub", file, true},
                                        {sub, std::string("a.txt"), false}})
        EXPECT_EQ(ov_util_is_file_path_in_folder(folder.c_str(), path.c_str()), inside)
            << folder << " | " << path;

    EXPECT_EQ(str(ov_util_format_input_field_label_markup("A < B & \"C\"", FALSE)),
              "A &lt; B &amp; &quot;C&quot;:");
    EXPECT_EQ(str(ov_util_format_input_field_label_markup("Name", TRUE)),
              "Name: <span style=\"italic\" alpha=\"50%\">(Required)</span>");
}

} // namespace
