// Natural-order string comparison: runs of digits compare by their numeric
// value ("R2" < "R10"), white space is skipped. Results are negative, zero
// or positive like strcmp. A null pointer sorts before every text.
//
// A digit run that starts with '0' is taken as a fraction and compared
// digit by digit from the left ("1.05" < "1.5"). The zero variants instead
// ignore the leading zeros of every digit run, so "R007" equals "R7".
#pragma once

#include <string>

int strnatcmp(const char *a, const char *b);
int strnatcasecmp(const char *a, const char *b);
int strnatzerocmp(const char *a, const char *b);
int strnatzerocasecmp(const char *a, const char *b);

// A key whose byte order (memcmp, a shorter key first) is the order of
// strnatzerocasecmp: for sorting many texts with one conversion each
// instead of a walk per comparison. White space is left out, ASCII letters
// are upper-cased, and each digit run becomes '0', its length without
// leading zeros (four bytes, high first) and those digits.
std::string strnatzerocase_key(const char *text);
