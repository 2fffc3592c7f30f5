// Number parsers and formatters, file checks and small helpers.
#include "core/util.h"

#include "core/raii.h"
#include "core_test.h"

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
        {"uint 3..9", parser(ov_util_parse_uint_in_range, 3u, 9u)},
        {"double", parser(ov_util_parse_double)},
        {"double -1.5..2.5", parser(ov_util_parse_double_in_range, -1.5, 2.5)},
    };
    const struct {
        const char *parser, *expected;
        std::vector<const char *> texts;
    } cases[] = {
        // clang-format off
        {"int64", "=-9223372036854775808", {"-9223372036854775808"}},
        {"int64", "Empty integer value.", {"", nullptr}},
        {"int64", "Integer value must not begin with whitespace.", {" 12", "\u00a012", "\v1"}},
        {"int64", "Integer value out of range (overflow or underflow).", {"-9223372036854775809", "99999999999999999999x"}},
        {"int64", "Invalid characters in integer value.", {"12 ", "0x10", "+-1", "\xd9\xa3" /* Arabic-Indic 3 */}},
        {"int", "Integer value out of valid range (too large).", {"2147483648"}},
        {"double", "=12.5", {"+12.5", "1.25e1"}}, {"double", "Empty value.", {"", nullptr}},
        {"double", "Value must not begin with whitespace.", {" 1", "\u00a01", "\v1", "\v1.5"}},
        {"double", "Floating-point value overflow.", {"-1e999"}},
        {"double", "Floating-point value is not finite.", {"nan", "-infinity"}},
        {"double", "Invalid floating-point value.", {"1 ", "1,5", "12.5mm"}},
        {"double -1.5..2.5", "Floating-point value out of valid range (too large).", {"2.50001"}},
        // Either bound itself is in the range.
        {"int -5..10", "=-5", {"-5"}}, {"int -5..10", "=10", {"+10"}}, {"uint 3..9", "=3", {"3"}}, {"uint 3..9", "=9", {"9"}},
        // clang-format on
    };
    for (const auto &c : cases)
        for (const char *text : c.texts)
            EXPECT_EQ(parsers.at(c.parser)(text), c.expected) << c.parser << " " << (text ? text : "(null)");

    double value = 7;
    const char *text = "-2e1 cm", *rest = nullptr;
    ASSERT_TRUE(ov_util_parse_double_with_unit(&value, &rest, text));
    EXPECT_TRUE(value == -20 && rest == text + 4);
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
        for (double original : {-0.0, 1.0 / 3.0, DBL_MAX, 4.9e-324}) {
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

TEST_F(UtilTest, FilesAreMeasuredComparedAndSummed)
{
    TempDir dir;
    const std::string a = dir.file("a"), b = dir.file("b"), big(10000, 'a');
    std::string changed = big;
    changed[4096] = 'b';
    write_file(a, big);
    write_file(b, changed);
    ov::FilePtr file(std::fopen(a.c_str(), "rb"));
    std::fseek(file.get(), 123, SEEK_SET);
    EXPECT_EQ(ov_util_get_file_length(file.get()), 10000);
    EXPECT_EQ(std::ftell(file.get()), 123); // the position is kept
    EXPECT_TRUE(ov_util_test_if_files_are_identical(a.c_str(), a.c_str()));
    EXPECT_FALSE(ov_util_test_if_files_are_identical(a.c_str(), b.c_str()));
    guint8 digest[16] = {};
    ASSERT_TRUE(ov_util_get_file_md5sum(b.c_str(), digest));
    const std::string sum =
        str(g_compute_checksum_for_string(G_CHECKSUM_MD5, changed.data(), changed.size()));
    EXPECT_TRUE(ov_util_verify_md5sum(digest, sum.c_str()));
    EXPECT_STREQ(ov_error_get(), "");
    // A folder opens but cannot be read.
    EXPECT_EQ(result(ov_util_get_file_md5sum(dir.path().c_str(), digest)),
              std::string("Cannot open file.\n\nError 21: ") + g_strerror(EISDIR));
}

} // namespace
