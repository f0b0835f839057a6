// Numbers stored as text, as a data file has them: blanks before them, anything behind them. Fast, and independent of
// the locale.
#pragma once

#include <cstdint>

// Decimal digits with a sign, saturating; 0 where there is none.
int64_t OalReadAsciiInteger(const uint8_t *text, int64_t length);
// The nearest double of a real with E or D as letter of the exponent; 0 where there is none. Infinities, NaNs and
// hexadecimal reals count too.
double OalReadAsciiReal(const uint8_t *text, int64_t length);
