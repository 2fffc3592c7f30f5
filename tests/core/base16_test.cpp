#include "core/base16.h"

#include "core/error.h"
#include "core/raii.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Base16 : public ::testing::Test {
protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

std::string encode(const std::vector<guint8> &bytes)
{
    ov::GStr text(ov_util_encode_base16(bytes.data(), bytes.size()));
    return text.get();
}

TEST_F(Base16, EncodesLowerCaseHighHalfFirst)
{
    EXPECT_EQ(encode({0x00, 0xff}), "00ff");
    EXPECT_EQ(encode({0x1f, 0xa0, 0x09}), "1fa009");
    EXPECT_EQ(encode({}), "");

    char pair[3] = "xx";
    ov_util_encode_base16_byte(0xc4, pair);
    EXPECT_STREQ(pair, "c4");
    char digit[2] = "x";
    ov_util_encode_base16_nibble(11, digit);
    EXPECT_STREQ(digit, "b");
}

TEST_F(Base16, EveryByteRoundTrips)
{
    std::vector<guint8> bytes;
    for (int b = 0; b < 256; ++b)
        bytes.push_back(static_cast<guint8>(b));
    const std::string text = encode(bytes);
    ASSERT_EQ(text.size(), 512u);
    EXPECT_EQ(text.substr(0, 8), "00010203");
    EXPECT_EQ(text.substr(504), "fcfdfeff");

    gsize length = 0;
    ov::Owned<guint8, g_free> decoded(ov_util_decode_base16(text.c_str(), &length));
    ASSERT_EQ(length, 256u);
    EXPECT_EQ(std::vector<guint8>(decoded.get(), decoded.get() + length), bytes);
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(Base16, DecodingFailuresFreeTheirBufferAndSayWhy)
{
    const struct {
        const char *text;
        const char *message;
    } cases[] = {
        {"abc", "Illegal base 16 string length."},
        {"0", "Illegal base 16 string length."},
        {"0G", "Illegal base 16 character."},
        {"0A", "Illegal base 16 character."}, // upper case is never written
        {"00ff00f ", "Illegal base 16 character."},
        {"  ", "Illegal base 16 character."},
        {"\xc3\xa9", "Illegal base 16 character."},
    };
    for (const auto &c : cases) {
        ov_error_clear();
        gsize length = 77;
        EXPECT_EQ(ov_util_decode_base16(c.text, &length), nullptr) << c.text;
        EXPECT_STREQ(ov_error_get(), c.message) << c.text;
    }
}

TEST_F(Base16, EmptyTextDecodesToNoBufferWithoutError)
{
    gsize length = 77;
    EXPECT_EQ(ov_util_decode_base16("", &length), nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_STREQ(ov_error_get(), "");

    ov::Owned<guint8, g_free> decoded(ov_util_decode_base16("7f", nullptr));
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded.get()[0], 0x7f);
}

TEST_F(Base16, SingleDigitsAndBytes)
{
    guint8 value = 0;
    for (const char digit : std::string("0123456789abcdef")) {
        ASSERT_TRUE(ov_util_decode_base16_nibble(digit, &value)) << digit;
        char back[2] = "";
        ov_util_encode_base16_nibble(value, back);
        EXPECT_EQ(back[0], digit);
    }
    for (const char bad : std::string("gG/:`@AF \x80")) {
        ov_error_clear();
        EXPECT_FALSE(ov_util_decode_base16_nibble(bad, &value)) << bad;
        EXPECT_STREQ(ov_error_get(), "Illegal base 16 character.");
    }

    EXPECT_TRUE(ov_util_decode_base16_byte("e9", &value));
    EXPECT_EQ(value, 0xe9);
    ov_error_clear();
    EXPECT_FALSE(ov_util_decode_base16_byte("e", &value)); // stops at the terminator
    EXPECT_STREQ(ov_error_get(), "Illegal base 16 character.");
    EXPECT_FALSE(ov_util_decode_base16_byte("x9", &value));
}

} // namespace
