#include "core/util.h"

#include "core/error.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <glib/gstdio.h>
#include <unistd.h>

namespace {

std::string error_text()
{
    const char *text = ov_error_get();
    return text != nullptr ? text : "";
}

bool error_starts_with(std::string_view prefix)
{
    return std::string_view(error_text()).starts_with(prefix);
}

// Switches the numeric locale for one test and restores it afterwards,
// making the decimal character be looked up again both times.
class NumericLocale {
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

class UtilTest : public ::testing::Test {
protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

// One row: the text, and either the value or the expected message.
template <class T> struct ParseCase {
    const char *text;
    T value;
    const char *message; // nullptr when the parse succeeds
};

template <class T, class Parse> void check_cases(const std::vector<ParseCase<T>> &cases, Parse parse)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text != nullptr ? c.text : "(null)");
        ov_error_clear();
        const T untouched = T(77);
        T out = untouched;
        gboolean ok = parse(&out, c.text);
        if (c.message == nullptr) {
            EXPECT_TRUE(ok);
            EXPECT_EQ(out, c.value);
            EXPECT_EQ(error_text(), "");
        } else {
            EXPECT_FALSE(ok);
            EXPECT_EQ(out, untouched);
            EXPECT_EQ(error_text(), c.message);
        }
    }
}

constexpr const char *kEmpty = "Empty integer value.";
constexpr const char *kSpace = "Integer value must not begin with whitespace.";
constexpr const char *kRange = "Integer value out of range (overflow or underflow).";
constexpr const char *kChars = "Invalid characters in integer value.";
constexpr const char *kSmall = "Integer value out of valid range (too small).";
constexpr const char *kLarge = "Integer value out of valid range (too large).";
constexpr const char *kUEmpty = "Empty unsigned integer value.";
constexpr const char *kUSpace = "Unsigned integer value must not begin with whitespace.";
constexpr const char *kUNegative = "Unsigned integer value underflow (is negative).";
constexpr const char *kURange = "Unsigned integer value overflow.";
constexpr const char *kUChars = "Invalid characters in unsigned integer value.";
constexpr const char *kUSmall = "Unsigned integer value out of valid range (too small).";
constexpr const char *kULarge = "Unsigned integer value out of valid range (too large).";

TEST_F(UtilTest, ParseInt64FollowsItsOrderOfChecks)
{
    check_cases<gint64>(
        {
            {"12", 12, nullptr},
            {"+12", 12, nullptr},
            {"-12", -12, nullptr},
            {"007", 7, nullptr},
            {"9223372036854775807", G_MAXINT64, nullptr},
            {"-9223372036854775808", G_MININT64, nullptr},
            {"", 0, kEmpty},
            {nullptr, 0, kEmpty},
            {" 12", 0, kSpace},
            {"\t12", 0, kSpace},
            {"\u00a012", 0, kSpace}, // no-break space
            {"\u200312", 0, kSpace}, // em space
            {"9223372036854775808", 0, kRange},
            {"-9223372036854775809", 0, kRange},
            {"99999999999999999999x", 0, kRange}, // overflow is checked before the rest
            {"12 ", 0, kChars},
            {"12a", 0, kChars},
            {"1.5", 0, kChars},
            {"0x10", 0, kChars},
            {"abc", 0, kChars},
            {"+", 0, kChars},
            {"-", 0, kChars},
            {"+-1", 0, kChars},
            {"\xff", 0, kChars}, // invalid UTF-8
            {"\xd9\xa3", 0, kChars}, // Arabic-Indic digit three
        },
        ov_util_parse_int64);
}

TEST_F(UtilTest, ParseIntChecksTheNarrowerRangeLast)
{
    check_cases<int>(
        {
            {"2147483647", 2147483647, nullptr},
            {"-2147483648", std::numeric_limits<int>::min(), nullptr},
            {"2147483648", 0, kLarge},
            {"-2147483649", 0, kSmall},
            {"9223372036854775808", 0, kRange},
            {"", 0, kEmpty},
            {" 1", 0, kSpace},
            {"1 ", 0, kChars},
        },
        ov_util_parse_int);
}

TEST_F(UtilTest, RangedSignedParsersIncludeTheirBounds)
{
    auto int_in_range = [](int *out, const char *text) { return ov_util_parse_int_in_range(out, text, -5, 10); };
    check_cases<int>(
        {
            {"-5", -5, nullptr},
            {"10", 10, nullptr},
            {"-6", 0, kSmall},
            {"11", 0, kLarge},
            {"x", 0, kChars},
        },
        int_in_range);
    auto int64_in_range = [](gint64 *out, const char *text) {
        return ov_util_parse_int64_in_range(out, text, G_GINT64_CONSTANT(-5000000000), 0);
    };
    check_cases<gint64>(
        {
            {"-5000000000", G_GINT64_CONSTANT(-5000000000), nullptr},
            {"0", 0, nullptr},
            {"-5000000001", 0, kSmall},
            {"1", 0, kLarge},
        },
        int64_in_range);
}

TEST_F(UtilTest, UnsignedParsersFollowTheirOrderOfChecks)
{
    check_cases<guint64>(
        {
            {"0", 0, nullptr},
            {"+12", 12, nullptr},
            {"18446744073709551615", G_MAXUINT64, nullptr},
            {"", 0, kUEmpty},
            {" 1", 0, kUSpace},
            {"-0", 0, kUNegative},
            {"-1", 0, kUNegative},
            {"-", 0, kUNegative},
            {"18446744073709551616", 0, kURange},
            {"1-", 0, kUChars},
            {"+-1", 0, kUChars},
            {"1\n", 0, kUChars},
        },
        ov_util_parse_uint64);
    check_cases<unsigned int>(
        {
            {"4294967295", 4294967295U, nullptr},
            {"4294967296", 0, kULarge},
            {"-1", 0, kUNegative},
            {"18446744073709551616", 0, kURange},
        },
        ov_util_parse_uint);
    auto uint_in_range = [](unsigned int *out, const char *text) {
        return ov_util_parse_uint_in_range(out, text, 3, 9);
    };
    check_cases<unsigned int>({{"3", 3, nullptr}, {"9", 9, nullptr}, {"2", 0, kUSmall}, {"10", 0, kULarge}},
                              uint_in_range);
    auto uint64_in_range = [](guint64 *out, const char *text) {
        return ov_util_parse_uint64_in_range(out, text, 10, G_GUINT64_CONSTANT(10000000000));
    };
    check_cases<guint64>({{"10000000000", G_GUINT64_CONSTANT(10000000000), nullptr},
                          {"9", 0, kUSmall},
                          {"10000000001", 0, kULarge}},
                         uint64_in_range);
}

TEST_F(UtilTest, ParseDoubleFollowsItsOrderOfChecks)
{
    constexpr const char *kInvalid = "Invalid floating-point value.";
    check_cases<double>(
        {
            {"12.5", 12.5, nullptr},
            {"+12.5", 12.5, nullptr},
            {"-0.25", -0.25, nullptr},
            {"1e3", 1000.0, nullptr},
            {".5", 0.5, nullptr},
            {"1e-999", 0.0, nullptr}, // underflow towards zero is accepted
            {"", 0, "Empty value."},
            {nullptr, 0, "Empty value."},
            {" 1", 0, "Value must not begin with whitespace."},
            {"\u00a01", 0, "Value must not begin with whitespace."},
            {"1e999", 0, "Floating-point value overflow."},
            {"-1e999", 0, "Floating-point value overflow."},
            {"nan", 0, "Floating-point value is not finite."},
            {"inf", 0, "Floating-point value is not finite."},
            {"-infinity", 0, "Floating-point value is not finite."},
            {"1 ", 0, kInvalid},
            {"1,5", 0, kInvalid},
            {"12.5mm", 0, kInvalid},
            {"abc", 0, kInvalid},
        },
        ov_util_parse_double);
}

TEST_F(UtilTest, ParseDoubleInRangeIncludesItsBounds)
{
    auto in_range = [](double *out, const char *text) { return ov_util_parse_double_in_range(out, text, -1.5, 2.5); };
    check_cases<double>(
        {
            {"-1.5", -1.5, nullptr},
            {"2.5", 2.5, nullptr},
            {"-1.50001", 0, "Floating-point value out of valid range (too small)."},
            {"2.50001", 0, "Floating-point value out of valid range (too large)."},
            {"2.5x", 0, "Invalid floating-point value."},
            {"1e999", 0, "Floating-point value overflow."},
        },
        in_range);
}

TEST_F(UtilTest, ParseDoubleWithUnitHandsBackTheRest)
{
    struct Case {
        const char *text;
        double value;
        const char *rest;
    };
    for (const Case &c : {Case{"12.5mm", 12.5, "mm"}, Case{"3", 3.0, ""}, Case{"-2e1 cm", -20.0, " cm"},
                          Case{"0.5%", 0.5, "%"}}) {
        SCOPED_TRACE(c.text);
        double value = 0;
        const char *rest = nullptr;
        ASSERT_TRUE(ov_util_parse_double_with_unit(&value, &rest, c.text));
        EXPECT_EQ(value, c.value);
        EXPECT_STREQ(rest, c.rest);
        EXPECT_GE(rest, c.text);
        EXPECT_LE(rest, c.text + std::strlen(c.text));
    }

    // A unit without a number in front of it is not read as zero.
    double value = 7;
    const char *rest = "untouched";
    EXPECT_FALSE(ov_util_parse_double_with_unit(&value, &rest, "mm"));
    EXPECT_EQ(error_text(), "Invalid floating-point value.");
    EXPECT_EQ(value, 7);
    EXPECT_STREQ(rest, "untouched");
    EXPECT_FALSE(ov_util_parse_double_with_unit(&value, &rest, "nanmm"));
    EXPECT_EQ(error_text(), "Floating-point value is not finite.");
}

TEST_F(UtilTest, FormattedDoublesReadBackExactly)
{
    const double values[] = {0.0,     -0.0,         1.0,     -1.5,   0.1,     1.0 / 3.0, 12.5,
                             1e300,   -1e-300,      DBL_MAX, DBL_MIN, 4.9e-324, 123456789.0,
                             2.5e-10, 9007199254740993.0};
    for (double value : values) {
        ov::GStr text(ov_util_format_double(value));
        SCOPED_TRACE(text.get());
        EXPECT_EQ(std::strchr(text.get(), ','), nullptr);
        double back = 42;
        ASSERT_TRUE(ov_util_parse_double(&back, text.get()));
        EXPECT_EQ(back, value);
        EXPECT_EQ(std::signbit(back), std::signbit(value));
    }
    EXPECT_STREQ(ov::GStr(ov_util_format_double(1.5)).get(), "1.5");
    EXPECT_STREQ(ov::GStr(ov_util_format_double(0.1)).get(), "0.10000000000000001");
    EXPECT_STREQ(ov::GStr(ov_util_format_double_with_unit(12.5, "mm")).get(), "12.5mm");
    EXPECT_STREQ(ov::GStr(ov_util_format_double_with_unit(-3, "%")).get(), "-3%");
    EXPECT_STREQ(ov::GStr(ov_util_format_double_with_unit(2, "")).get(), "2");

    double value = 0;
    const char *rest = nullptr;
    ov::GStr with_unit(ov_util_format_double_with_unit(0.75, "pt"));
    ASSERT_TRUE(ov_util_parse_double_with_unit(&value, &rest, with_unit.get()));
    EXPECT_EQ(value, 0.75);
    EXPECT_STREQ(rest, "pt");
}

TEST_F(UtilTest, CommaLocaleChangesOnlyTheLocaleForms)
{
    NumericLocale locale("sv_SE.UTF-8");
    if (!locale.ok())
        GTEST_SKIP() << "sv_SE.UTF-8 is not generated on this machine";
    EXPECT_EQ(ov_util_get_decimal_character_for_locale(), ',');

    EXPECT_STREQ(ov::GStr(ov_util_format_double_for_locale(1.5)).get(), "1,5");
    EXPECT_STREQ(ov::GStr(ov_util_format_double_for_locale(-2)).get(), "-2");
    EXPECT_STREQ(ov::GStr(ov_util_format_double(1.5)).get(), "1.5");
    EXPECT_STREQ(ov::GStr(ov_util_format_double_with_unit(1.5, "mm")).get(), "1.5mm");

    double value = 0;
    EXPECT_TRUE(ov_util_parse_double_for_locale(&value, "1,5"));
    EXPECT_EQ(value, 1.5);
    EXPECT_TRUE(ov_util_parse_double_for_locale(&value, "-7"));
    EXPECT_EQ(value, -7);
    value = 9;
    EXPECT_FALSE(ov_util_parse_double_for_locale(&value, "1.5"));
    EXPECT_EQ(error_text(), "Invalid floating-point value.");
    EXPECT_FALSE(ov_util_parse_double_for_locale(&value, "1,5,0"));
    EXPECT_EQ(error_text(), "Invalid floating-point value.");
    EXPECT_FALSE(ov_util_parse_double_for_locale(&value, ""));
    EXPECT_EQ(error_text(), "Empty value.");
    EXPECT_EQ(value, 9);

    // The file forms keep the point.
    EXPECT_TRUE(ov_util_parse_double(&value, "2.25"));
    EXPECT_EQ(value, 2.25);

    for (double original : {0.1, -123.456, 1e-7, 5e20}) {
        ov::GStr text(ov_util_format_double_for_locale(original));
        double back = 0;
        ASSERT_TRUE(ov_util_parse_double_for_locale(&back, text.get())) << text.get();
        EXPECT_EQ(back, original);
    }
}

TEST_F(UtilTest, PointLocaleParsesAsTheFileForm)
{
    NumericLocale locale("C");
    ASSERT_TRUE(locale.ok());
    EXPECT_EQ(ov_util_get_decimal_character_for_locale(), '.');
    EXPECT_STREQ(ov::GStr(ov_util_format_double_for_locale(1.5)).get(), "1.5");
    double value = 0;
    EXPECT_TRUE(ov_util_parse_double_for_locale(&value, "1.5"));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(ov_util_parse_double_for_locale(&value, "1,5"));
    EXPECT_EQ(error_text(), "Invalid floating-point value.");
}

TEST_F(UtilTest, MemoryStringsRoundToTenths)
{
    struct Case {
        guint64 bytes;
        const char *text;
    };
    for (const Case &c : {
             Case{0, "0.0 KB"},
             Case{51, "0.0 KB"},
             Case{52, "0.1 KB"},
             Case{1024, "1.0 KB"},
             Case{1536, "1.5 KB"},
             Case{1048575, "1024.0 KB"},
             Case{1048576, "1.0 MB"},
             Case{1572864, "1.5 MB"},
             Case{1048576 + 52429, "1.0 MB"},
             Case{1048576 + 52430, "1.1 MB"},
             Case{10 * 1048576 - 1, "10.0 MB"},
             Case{G_GUINT64_CONSTANT(5000000000), "4768.4 MB"},
             Case{G_MAXUINT64, "17592186044416.0 MB"},
         }) {
        SCOPED_TRACE(c.bytes);
        EXPECT_STREQ(ov::GStr(ov_util_get_memory_string(c.bytes)).get(), c.text);
    }
    EXPECT_STREQ(ov::GStr(ov_util_get_pixels_string(640, 480)).get(), "640 x 480 pixels");
}

TEST_F(UtilTest, FileLengthKeepsThePosition)
{
    ov::test::TempDir dir;
    std::string path = dir.file("data");
    ov::test::write_file(path, std::string(5000, 'x'));
    ov::FilePtr file(std::fopen(path.c_str(), "rb"));
    ASSERT_TRUE(file);
    std::fseek(file.get(), 123, SEEK_SET);
    EXPECT_EQ(ov_util_get_file_length(file.get()), 5000);
    EXPECT_EQ(std::ftell(file.get()), 123);

    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ov::FilePtr pipe_read(fdopen(fds[0], "rb"));
    close(fds[1]);
    EXPECT_EQ(ov_util_get_file_length(pipe_read.get()), -1);
    EXPECT_TRUE(std::string_view(error_text()).ends_with(g_strerror(ESPIPE))) << error_text();
}

TEST_F(UtilTest, FilesAreIdenticalOnlyByteForByte)
{
    ov::test::TempDir dir;
    std::string big(10000, 'a');
    std::string big_changed_at_end = big;
    big_changed_at_end.back() = 'b';
    std::string big_changed_at_piece = big;
    big_changed_at_piece[4096] = 'b';
    struct Case {
        std::string a;
        std::string b;
        bool identical;
    };
    for (const Case &c : {
             Case{"", "", true},
             Case{"abc", "abc", true},
             Case{big, big, true},
             Case{std::string("a\0b", 3), std::string("a\0b", 3), true},
             Case{"", "a", false},
             Case{"abc", "abd", false},
             Case{"abc", "abcd", false},
             Case{std::string("a\0b", 3), std::string("a\0c", 3), false},
             Case{big, big_changed_at_end, false},
             Case{big, big_changed_at_piece, false},
             Case{big, big.substr(0, 4096), false},
         }) {
        SCOPED_TRACE(c.a.size());
        ov::test::write_file(dir.file("a"), c.a);
        ov::test::write_file(dir.file("b"), c.b);
        EXPECT_EQ(ov_util_test_if_files_are_identical(dir.file("a").c_str(), dir.file("b").c_str()), c.identical);
        EXPECT_EQ(ov_util_test_if_files_are_identical(dir.file("b").c_str(), dir.file("a").c_str()), c.identical);
    }
    EXPECT_EQ(error_text(), "");

    EXPECT_FALSE(ov_util_test_if_files_are_identical(dir.file("a").c_str(), dir.file("missing").c_str()));
    EXPECT_TRUE(error_starts_with("Cannot open file.")) << error_text();
    ov_error_clear();
    EXPECT_FALSE(ov_util_test_if_files_are_identical(dir.file("missing").c_str(), dir.file("a").c_str()));
    EXPECT_TRUE(error_starts_with("Cannot open file.")) << error_text();
    // A folder opens but cannot be read: no text for a read error.
    ov_error_clear();
    EXPECT_FALSE(ov_util_test_if_files_are_identical(dir.path().c_str(), dir.path().c_str()));
    EXPECT_EQ(error_text(), "");
}

std::string hex(const guint8 digest[16])
{
    std::string text;
    for (int i = 0; i < 16; ++i)
        text += ov::GStr(g_strdup_printf("%02x", digest[i])).get();
    return text;
}

TEST_F(UtilTest, Md5SumOfKnownFiles)
{
    ov::test::TempDir dir;
    std::string large;
    for (int i = 0; i < 10000; ++i)
        large += static_cast<char>(i * 7);
    struct Case {
        std::string bytes;
        const char *md5;
    };
    for (const Case &c : {
             Case{"", "d41d8cd98f00b204e9800998ecf8427e"},
             Case{"The quick brown fox jumps over the lazy dog", "9e107d9d372bb6826bd81d3542a419d6"},
             Case{std::string(4096, 'a'), nullptr}, // exactly one piece
             Case{large, nullptr},
         }) {
        ov::test::write_file(dir.file("f"), c.bytes);
        ov::GStr expected(c.md5 != nullptr ? g_strdup(c.md5)
                                           : g_compute_checksum_for_data(
                                                 G_CHECKSUM_MD5, reinterpret_cast<const guchar *>(c.bytes.data()),
                                                 c.bytes.size()));
        guint8 digest[16] = {};
        ASSERT_TRUE(ov_util_get_file_md5sum(dir.file("f").c_str(), digest));
        EXPECT_EQ(hex(digest), expected.get());
        EXPECT_TRUE(ov_util_verify_md5sum(digest, expected.get()));
    }

    guint8 digest[16] = {1};
    EXPECT_FALSE(ov_util_get_file_md5sum(dir.file("missing").c_str(), digest));
    EXPECT_TRUE(error_starts_with("Cannot open file.")) << error_text();
    EXPECT_EQ(digest[0], 1);
    EXPECT_FALSE(ov_util_get_file_md5sum(dir.path().c_str(), digest));
    EXPECT_EQ(error_text(), "File read error.");
}

TEST_F(UtilTest, VerifyMd5SumStopsAtTheFirstDifference)
{
    const guint8 digest[16] = {0x9e, 0x10, 0x7d, 0x9d, 0x37, 0x2b, 0xb6, 0x82,
                               0x6b, 0xd8, 0x1d, 0x35, 0x42, 0xa4, 0x19, 0xd6};
    const std::string good = "9e107d9d372bb6826bd81d3542a419d6";
    constexpr const char *kIllegal = "Illegal base 16 character.";
    struct Case {
        std::string text;
        bool ok;
        const char *message;
    };
    for (const Case &c : {
             Case{good, true, nullptr},
             Case{good + "0", false, nullptr},
             Case{good.substr(0, 31), false, kIllegal},
             Case{"", false, kIllegal},
             Case{"9E107d9d372bb6826bd81d3542a419d6", false, kIllegal}, // upper case
             Case{"9e107d9d372bb6826bd81d3542a419dg", false, kIllegal},
             Case{"8e107d9d372bb6826bd81d3542a419zz", false, nullptr}, // differs before the bad digit
             Case{"9e107d9d372bb6826bd81d3542a419d7", false, nullptr},
             Case{"9e10 7d9d372bb6826bd81d3542a419d6", false, kIllegal},
         }) {
        SCOPED_TRACE(c.text);
        ov_error_clear();
        EXPECT_EQ(ov_util_verify_md5sum(digest, c.text.c_str()), c.ok);
        if (c.message != nullptr)
            EXPECT_EQ(error_text(), c.message);
        else
            EXPECT_EQ(error_text(), "");
    }
}

TEST_F(UtilTest, FprintfReportsFailedWrites)
{
    ov::test::TempDir dir;
    std::string path = dir.file("out.txt");
    {
        ov::FilePtr file(std::fopen(path.c_str(), "wb"));
        ASSERT_TRUE(file);
        EXPECT_TRUE(ov_util_fprintf(file.get(), "%s=%d;", "a", 12));
        EXPECT_TRUE(ov_util_fprintf(file.get(), "%s", ""));
    }
    EXPECT_EQ(ov::test::read_file(path), "a=12;");
    EXPECT_EQ(error_text(), "");

    // An unbuffered stream on a full device fails at the write itself.
    ov::FilePtr full(std::fopen("/dev/full", "wb"));
    ASSERT_TRUE(full);
    std::setvbuf(full.get(), nullptr, _IONBF, 0);
    EXPECT_FALSE(ov_util_fprintf(full.get(), "%d", 1));
    EXPECT_EQ(error_text(), "File I/O error when writing to file.");

    ov_error_clear();
    ov::FilePtr read_only(std::fopen(path.c_str(), "rb"));
    ASSERT_TRUE(read_only);
    EXPECT_FALSE(ov_util_fprintf(read_only.get(), "x"));
    EXPECT_EQ(error_text(), "File I/O error when writing to file.");
}

TEST_F(UtilTest, FilePathInFolderComparesTheParentFolder)
{
    ov::test::TempDir dir;
    std::string sub = dir.file("sub");
    ASSERT_EQ(g_mkdir(sub.c_str(), 0700), 0);
    std::string file = sub + "/a.txt";
    ov::test::write_file(file, "x");
    struct Case {
        std::string folder;
        std::string file;
        bool inside;
    };
    for (const Case &c : {
             Case{sub, file, true},
             Case{sub + "/", sub + "//a.txt", true},
             Case{dir.path() + "/sub/../sub", file, true},
             Case{sub, sub + "/not-yet-there.txt", true}, // the file itself need not exist
             Case{dir.path(), file, false},
             Case{sub, sub, false},
             Case{sub, dir.path() + "/a.txt", false},
             Case{sub, "a.txt", false},
             Case{dir.file("missing"), dir.file("missing") + "/a.txt", false},
         }) {
        SCOPED_TRACE(c.folder + " | " + c.file);
        EXPECT_EQ(ov_util_is_file_path_in_folder(c.folder.c_str(), c.file.c_str()), c.inside);
    }
    ov_error_clear();
}

TEST_F(UtilTest, InputFieldLabelMarkup)
{
    EXPECT_STREQ(ov::GStr(ov_util_format_input_field_label_markup("Name", FALSE)).get(), "Name:");
    EXPECT_STREQ(ov::GStr(ov_util_format_input_field_label_markup("Name", TRUE)).get(),
                 "Name: <span style=\"italic\" alpha=\"50%\">(Required)</span>");
    EXPECT_STREQ(ov::GStr(ov_util_format_input_field_label_markup("A < B & \"C\"", FALSE)).get(),
                 "A &lt; B &amp; &quot;C&quot;:");
    EXPECT_STREQ(ov::GStr(ov_util_format_input_field_label_markup("", FALSE)).get(), ":");
}

TEST_F(UtilTest, PendingEventsAreLetThrough)
{
    int runs = 0;
    g_idle_add(
        [](gpointer data) -> gboolean {
            ++*static_cast<int *>(data);
            return *static_cast<int *>(data) < 3 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        &runs);
    ov_util_let_through_gtk_events();
    EXPECT_EQ(runs, 3);
    ov_util_let_through_gtk_events(); // nothing pending: returns at once
    EXPECT_EQ(runs, 3);
}

TEST_F(UtilTest, FreeGlistWithDataFreesEveryElement)
{
    GList *list = nullptr;
    for (const char *text : {"a", "b", "c"})
        list = g_list_prepend(list, g_strdup(text));
    ov_util_free_glist_with_data(list); // the leak checker of the sanitizer build watches this
    ov_util_free_glist_with_data(nullptr);
}

} // namespace
