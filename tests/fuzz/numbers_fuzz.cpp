// The strict number parsers agree with a plain reference: an optional sign,
// decimal digits and nothing else, within the type's range; doubles that
// parse read back from their formatted text.
#include "core/error.h"
#include "core/util.h"
#include "fuzz_support.h"

#include <cmath>

namespace
{

// The reference: sign and digits only. out_magnitude saturates.
bool plain_integer(const std::string &text, bool *negative, unsigned __int128 *magnitude)
{
    size_t at = 0;
    *negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        *negative = text[at++] == '-';
    if (at == text.size())
        return false;
    *magnitude = 0;
    for (; at < text.size(); ++at) {
        if (!g_ascii_isdigit(text[at]))
            return false;
        if (*magnitude < (static_cast<unsigned __int128>(1) << 100))
            *magnitude = *magnitude * 10 + static_cast<unsigned>(text[at] - '0');
    }
    return true;
}

void check_integers(const std::string &text)
{
    bool negative = false;
    unsigned __int128 magnitude = 0;
    const bool plain = plain_integer(text, &negative, &magnitude);

    gint64 value = 0;
    const bool fits_signed = plain && (negative ? magnitude <= static_cast<unsigned __int128>(G_MAXINT64) + 1
                                                : magnitude <= G_MAXINT64);
    OV_FUZZ_CHECK(static_cast<bool>(ov_util_parse_int64(&value, text.c_str())) == fits_signed);
    if (fits_signed)
        OV_FUZZ_CHECK(negative
                          ? static_cast<unsigned __int128>(-(value + 1)) + 1 == magnitude || magnitude == 0
                          : static_cast<unsigned __int128>(value) == magnitude);

    ov_error_clear();
}

void check_double(const std::string &text)
{
    double value = 0;
    if (!ov_util_parse_double(&value, text.c_str())) {
        ov_error_clear();
        return;
    }
    OV_FUZZ_CHECK(std::isfinite(value));
    OV_FUZZ_CHECK(!text.empty() && !g_ascii_isspace(text[0]) && text[0] != '\v');
    gchar *formatted = ov_util_format_double(value);
    double again = 0;
    OV_FUZZ_CHECK(ov_util_parse_double(&again, formatted) && again == value);
    g_free(formatted);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text = ov::fuzz::text_of(data, size);
    check_integers(text);
    check_double(text);
    return 0;
}
