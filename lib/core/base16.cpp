#include "core/base16.h"

#include "core/error.h"
#include "core/raii.h"

#include <cstring>

namespace
{

constexpr char kDigits[] = "0123456789abcdef";

} // namespace

void ov_util_encode_base16_nibble(guint8 value, char *destination)
{
    g_return_if_fail(destination != nullptr);
    destination[0] = kDigits[value & 0x0F];
}

void ov_util_encode_base16_byte(guint8 byte, char *destination)
{
    g_return_if_fail(destination != nullptr);
    destination[0] = kDigits[byte >> 4];
    destination[1] = kDigits[byte & 0x0F];
}

char *ov_util_encode_base16(const guint8 *bytes, gsize count)
{
    g_return_val_if_fail(bytes != nullptr || count == 0, nullptr);
    char *text = static_cast<char *>(g_malloc(2 * count + 1));
    for (gsize i = 0; i < count; ++i)
        ov_util_encode_base16_byte(bytes[i], text + 2 * i);
    text[2 * count] = '\0';
    return text;
}

gboolean ov_util_decode_base16_nibble(char digit, guint8 *out_value)
{
    g_return_val_if_fail(out_value != nullptr, FALSE);
    const int value = ov_util_base16_digit_value(digit);
    if (value < 0) {
        ov_error_set("Illegal base 16 character.");
        return FALSE;
    }
    *out_value = static_cast<guint8>(value);
    return TRUE;
}

gboolean ov_util_decode_base16_byte(const char *text, guint8 *out_byte)
{
    g_return_val_if_fail(text != nullptr && out_byte != nullptr, FALSE);
    guint8 high = 0;
    guint8 low = 0;
    // The second digit is not read when the first is the terminator.
    if (!ov_util_decode_base16_nibble(text[0], &high) || !ov_util_decode_base16_nibble(text[1], &low))
        return FALSE;
    *out_byte = static_cast<guint8>((high << 4) | low);
    return TRUE;
}

guint8 *ov_util_decode_base16(const char *text, gsize *out_length)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    const gsize length = std::strlen(text);
    if (length % 2 != 0) {
        ov_error_set("Illegal base 16 string length.");
        return nullptr;
    }
    const gsize count = length / 2;
    // g_malloc(0) gives nullptr: the empty text decodes to no buffer.
    ov::Owned<guint8, g_free> bytes(static_cast<guint8 *>(g_malloc(count)));
    for (gsize i = 0; i < count; ++i) {
        if (!ov_util_decode_base16_byte(text + 2 * i, bytes.get() + i))
            return nullptr;
    }
    if (out_length != nullptr)
        *out_length = count;
    return bytes.release();
}
