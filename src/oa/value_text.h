// Numbers in the texts of label values.
#pragma once

#include <cstdint>
#include <string_view>

// The integer that the whole text is, decimal or based (16#FF#), blanks around it and units behind it aside. False when
// the text is none or the number does not fit.
bool OalParseInteger(std::string_view text, int64_t *value);

// The same for a real or an integer; independent of the locale's decimal point.
bool OalParseReal(std::string_view text, double *value);
