// Natural-order comparison after Martin Pool's algorithm.
//
// Both texts are walked together. White space is skipped on both sides.
// Where both texts hold a digit, the two digit runs are compared as a unit:
//  - a run starting with '0' is a fraction: digits compare from the left and
//    the first difference decides; a run that ends first is smaller;
//  - otherwise the longer run is the larger number; for runs of equal
//    length the first differing digit decides.
// Everything else compares byte by byte (unsigned), optionally without ASCII
// case. The zero variants drop the leading zeros of each digit run first
// (keeping a last zero, so "00" reads as "0").
#include "core/natcmp.h"

#include <glib.h>

namespace
{

bool is_digit(guchar c)
{
    return c >= '0' && c <= '9';
}
bool is_space(guchar c)
{
    return g_ascii_isspace(c);
}

// As g_ascii_toupper, without a call per byte.
guchar ascii_upper(guchar c)
{
    return c >= 'a' && c <= 'z' ? static_cast<guchar>(c - ('a' - 'A')) : c;
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

// Compares two runs of whole numbers. On a tie a and b are moved past their
// runs (which are then identical).
int compare_integers(const guchar *&a, const guchar *&b)
{
    int bias = 0;
    for (;; ++a, ++b) {
        const bool da = is_digit(*a);
        const bool db = is_digit(*b);
        if (!da && !db)
            return bias;
        if (!da)
            return -1;
        if (!db)
            return +1;
        if (bias == 0)
            bias = sign(static_cast<int>(*a) - static_cast<int>(*b));
    }
}

// Compares two runs as fractions, digit by digit from the left. On a tie a
// and b are moved past their runs.
int compare_fractions(const guchar *&a, const guchar *&b)
{
    for (;; ++a, ++b) {
        const bool da = is_digit(*a);
        const bool db = is_digit(*b);
        if (!da && !db)
            return 0;
        if (!da)
            return -1;
        if (!db)
            return +1;
        if (*a != *b)
            return sign(static_cast<int>(*a) - static_cast<int>(*b));
    }
}

const guchar *skip_leading_zeros(const guchar *p)
{
    while (*p == '0' && is_digit(p[1]))
        ++p;
    return p;
}

int compare(const char *left, const char *right, bool fold_case, bool ignore_zeros)
{
    if (left == nullptr || right == nullptr)
        return (left != nullptr) - (right != nullptr);
    auto a = reinterpret_cast<const guchar *>(left);
    auto b = reinterpret_cast<const guchar *>(right);
    for (;;) {
        while (is_space(*a))
            ++a;
        while (is_space(*b))
            ++b;
        if (is_digit(*a) && is_digit(*b)) {
            if (ignore_zeros) {
                a = skip_leading_zeros(a);
                b = skip_leading_zeros(b);
            }
            const int result = (*a == '0' || *b == '0') ? compare_fractions(a, b) : compare_integers(a, b);
            if (result != 0)
                return result;
            continue;
        }
        guchar ca = *a;
        guchar cb = *b;
        if (ca == '\0' && cb == '\0')
            return 0;
        if (fold_case) {
            ca = ascii_upper(ca);
            cb = ascii_upper(cb);
        }
        if (ca != cb)
            return ca < cb ? -1 : +1;
        ++a;
        ++b;
    }
}

} // namespace

int strnatcmp(const char *a, const char *b)
{
    return compare(a, b, false, false);
}
int strnatcasecmp(const char *a, const char *b)
{
    return compare(a, b, true, false);
}
int strnatzerocmp(const char *a, const char *b)
{
    return compare(a, b, false, true);
}
int strnatzerocasecmp(const char *a, const char *b)
{
    return compare(a, b, true, true);
}

std::string strnatzerocase_key(const char *text)
{
    std::string key;
    if (text == nullptr)
        return key;
    auto p = reinterpret_cast<const guchar *>(text);
    while (*p != '\0') {
        if (is_space(*p)) {
            ++p;
        } else if (is_digit(*p)) {
            // Runs meet only runs, where the longer number is the larger
            // and equal lengths compare digit by digit; against any other
            // byte the run's first digit decides, and every digit stands on
            // the same side of a byte that is not one.
            p = skip_leading_zeros(p);
            const guchar *start = p;
            while (is_digit(*p))
                ++p;
            const auto length = static_cast<guint32>(p - start);
            key += '0';
            for (int shift = 24; shift >= 0; shift -= 8)
                key += static_cast<char>((length >> shift) & 0xFF);
            key.append(reinterpret_cast<const char *>(start), length);
        } else {
            key += static_cast<char>(ascii_upper(*p));
            ++p;
        }
    }
    return key;
}
