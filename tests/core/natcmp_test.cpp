#include "core/natcmp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Compare = int (*)(const char *, const char *);

int sign(int value) { return (value > 0) - (value < 0); }

struct Variant {
    const char *name;
    Compare compare;
};

constexpr Variant kVariants[] = {
    {"strnatcmp", strnatcmp},
    {"strnatcasecmp", strnatcasecmp},
    {"strnatzerocmp", strnatzerocmp},
    {"strnatzerocasecmp", strnatzerocasecmp},
};

// Expected sign for each variant, in the order of kVariants.
struct Case {
    const char *a, *b;
    int expected[4];
};

TEST(NaturalOrder, EachVariantOnTheCasesThatTellThemApart)
{
    const Case cases[] = {
        {"R2", "R10", {-1, -1, -1, -1}},
        {"R10", "R10", {0, 0, 0, 0}},
        {"x10a", "x10b", {-1, -1, -1, -1}},
        {"r2", "R10", {+1, -1, +1, -1}},
        {"abc", "ABC", {+1, 0, +1, 0}},
        {"r02", "R2", {+1, -1, +1, 0}},
        {"R02", "R2", {-1, -1, 0, 0}},
        {"R007", "R7", {-1, -1, 0, 0}},
        {"R007", "R8", {-1, -1, -1, -1}},
        {"R010", "R9", {-1, -1, +1, +1}},
        {"R0", "R00", {-1, -1, 0, 0}},
        {"a0", "a", {+1, +1, +1, +1}},
        {"1.05", "1.5", {-1, -1, 0, 0}},
        {"1.5", "1.10", {-1, -1, -1, -1}},
        {"1.010", "1.01", {+1, +1, +1, +1}},
        {"a 1", "a1", {0, 0, 0, 0}},
        {"  a\tb\n", "ab", {0, 0, 0, 0}},
        {"a", "a b", {-1, -1, -1, -1}},
        {"", "", {0, 0, 0, 0}},
        {"", "0", {-1, -1, -1, -1}},
        {"9", "10", {-1, -1, -1, -1}},
        {"x99", "x100", {-1, -1, -1, -1}},
        {"x123", "x124", {-1, -1, -1, -1}},
        {"x124", "x123y", {+1, +1, +1, +1}},
        {"123456789012345678901234567890", "123456789012345678901234567891", {-1, -1, -1, -1}},
        {"99999999999999999999999999999", "100000000000000000000000000000", {-1, -1, -1, -1}},
        {"z", "\xe9", {-1, -1, -1, -1}}, // bytes compare unsigned
        {"[", "a", {-1, +1, -1, +1}},    // case folding goes to upper case
        {nullptr, "", {-1, -1, -1, -1}},
        {nullptr, nullptr, {0, 0, 0, 0}},
    };
    for (const auto &c : cases) {
        for (int v = 0; v < 4; ++v) {
            const Variant &variant = kVariants[v];
            const char *a = c.a != nullptr ? c.a : "(null)";
            const char *b = c.b != nullptr ? c.b : "(null)";
            EXPECT_EQ(sign(variant.compare(c.a, c.b)), c.expected[v]) << variant.name << "(" << a << ", " << b << ")";
            EXPECT_EQ(sign(variant.compare(c.b, c.a)), -c.expected[v]) << variant.name << "(" << b << ", " << a << ")";
        }
    }
}

// The order in which remark codes are listed: each test decides only on a
// tie of the ones before it.
bool code_less(const std::string &a, const std::string &b)
{
    for (const Compare compare : {strnatzerocasecmp, strnatcasecmp, strnatzerocmp, strnatcmp}) {
        const int result = compare(a.c_str(), b.c_str());
        if (result != 0)
            return result < 0;
    }
    return a < b;
}

TEST(NaturalOrder, CascadeGivesATotalOrderOfCodes)
{
    std::vector<std::string> codes = {"R10", "r2", "R02", "R2", "r02", "A 1", "A1", "R1", "R9b", "R9a", "R009", "B"};
    std::sort(codes.begin(), codes.end(), code_less);
    const std::vector<std::string> expected = {"A 1", "A1", "B", "R1", "R02", "r02", "R2", "r2", "R009", "R9a", "R9b", "R10"};
    EXPECT_EQ(codes, expected);
}

TEST(NaturalOrder, LongDigitRunsCompareInLinearTime)
{
    // Equal runs are passed once, not digit by digit from every position.
    const std::string digits(200000, '7');
    const std::string a = "x" + digits + "a";
    const std::string b = "x" + digits + "b";
    for (const Variant &variant : kVariants)
        EXPECT_LT(variant.compare(a.c_str(), b.c_str()), 0) << variant.name;
}

} // namespace
