// Natural-order string comparison: runs of digits compare by their numeric
// value ("R2" < "R10"), white space is skipped. Results are negative, zero
// or positive like strcmp. A null pointer sorts before every text.
//
// A digit run that starts with '0' is taken as a fraction and compared
// digit by digit from the left ("1.05" < "1.5"). The zero variants instead
// ignore the leading zeros of every digit run, so "R007" equals "R7".
#pragma once

int strnatcmp(const char *a, const char *b);
int strnatcasecmp(const char *a, const char *b);
int strnatzerocmp(const char *a, const char *b);
int strnatzerocasecmp(const char *a, const char *b);
