// Hexadecimal (base 16) encoding of bytes. Always lower case; decoding
// accepts lower case only, because the system never writes upper case.
#pragma once

#include <glib.h>

// New string of 2 * count digits, high half of each byte first; "" for 0.
char *ov_util_encode_base16(const guint8 *bytes, gsize count);
// Writes the two digits of byte to destination[0..1] (no terminator).
void ov_util_encode_base16_byte(guint8 byte, char *destination);
// Writes the digit of value (0..15) to destination[0].
void ov_util_encode_base16_nibble(guint8 value, char *destination);

// New buffer of strlen(text) / 2 bytes, its size stored through out_length
// when given. Fails (nullptr) with "Illegal base 16 string length." for an
// odd length or "Illegal base 16 character.". The empty text gives nullptr
// with a length of 0 and no error: check the length, not the pointer.
guint8 *ov_util_decode_base16(const char *text, gsize *out_length);
// Decodes text[0..1]; FALSE with "Illegal base 16 character."
gboolean ov_util_decode_base16_byte(const char *text, guint8 *out_byte);
// The value of a lower-case hexadecimal digit, or -1 for any other character.
constexpr int ov_util_base16_digit_value(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return -1;
}
// Decodes one digit; FALSE with "Illegal base 16 character."
gboolean ov_util_decode_base16_nibble(char digit, guint8 *out_value);
