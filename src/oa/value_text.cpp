#include "oa/value_text.h"

#include "base/text.h"

#include <charconv>
#include <string>

namespace {

constexpr std::string_view white_space = " \t\r\n\f\v";

// `text` without units and outer blanks.
std::string_view number_part(std::string_view text) {
    return util_trim(text.substr(0, text.find('<')), white_space);
}

// A plus sign, which from_chars does not take, is left out before a number.
std::string_view without_plus(std::string_view text) {
    return text.starts_with('+') && !text.starts_with("+-") ? text.substr(1) : text;
}

bool parse_digits(std::string_view text, int radix, int64_t *value) {
    text = without_plus(text);
    const char *end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, *value, radix);
    return error == std::errc() && stopped == end;
}

}  // namespace

bool OalParseInteger(std::string_view text, int64_t *value) {
    const std::string_view number = number_part(text);
    const size_t mark = number.find('#');
    if (mark == std::string_view::npos)
        return parse_digits(number, 10, value);
    const std::string_view digits = number.substr(mark + 1);
    int64_t radix = 0;
    if (!parse_digits(number.substr(0, mark), 10, &radix) || radix < 2 || radix > 16 || !digits.ends_with('#'))
        return false;
    return parse_digits(digits.substr(0, digits.size() - 1), static_cast<int>(radix), value);
}

bool OalParseReal(std::string_view text, double *value) {
    int64_t integer = 0;
    if (OalParseInteger(text, &integer)) {
        *value = static_cast<double>(integer);
        return true;
    }
    const std::string_view number = without_plus(number_part(text));
    // Names of infinities and NaNs are symbols in a label.
    if (number.empty() || number.find_first_not_of("0123456789+-.eE") != std::string_view::npos)
        return false;
    const auto [stopped, error] = std::from_chars(number.data(), number.data() + number.size(), *value);
    return error == std::errc() && stopped == number.data() + number.size();
}
