#include "oa/ascii_number.h"

#include <array>
#include <bit>
#include <charconv>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

bool is_blank(uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool is_digit(uint8_t byte) {
    return static_cast<uint8_t>(byte - '0') < 10;
}

const uint8_t *past_blanks(const uint8_t *at, const uint8_t *end) {
    constexpr uint64_t eight_blanks = 0x2020202020202020;
    if (uint64_t eight = 0; std::endian::native == std::endian::little && end - at >= 8) {
        memcpy(&eight, at, 8);
        at += std::countr_zero(eight ^ eight_blanks) / 8;
    }
    while (at < end && is_blank(*at))
        ++at;
    return at;
}

// Passes over a sign; tells whether it is a minus. Without branches: signs of data cannot be foreseen.
bool read_sign(const uint8_t *&at, const uint8_t *end) {
    const uint8_t byte = at < end ? *at : uint8_t{0};
    at += static_cast<int>(byte == '-') | static_cast<int>(byte == '+');
    return byte == '-';
}

// The powers of ten that a double holds exactly.
constexpr std::array<double, 23> powers_of_ten = [] {
    std::array<double, 23> powers = {};
    double power = 1;
    for (double &entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

struct Decimal {
    uint64_t digits = 0;   // without the point
    int exponent = 0;      // of ten
    bool is_exact = true;  // `digits` holds all of them
};

// The next eight characters of a text that is at least as long, the first in the lowest byte; zeros behind the end.
uint64_t load_eight(const uint8_t *at, const uint8_t *end) {
    uint64_t eight = 0;
    const int64_t left = end - at;
    memcpy(&eight, left < 8 ? end - 8 : at, 8);
    if constexpr (std::endian::native == std::endian::big)
        eight = __builtin_bswap64(eight);
    return left >= 8 ? eight : left > 0 ? eight >> (64 - 8 * left) : 0;
}

// How many of eight characters, from the lowest byte on, are digits.
int leading_digits(uint64_t eight) {
    constexpr uint64_t zeros = 0x3030303030303030;
    constexpr uint64_t high_halves = 0xF0F0F0F0F0F0F0F0;
    // A digit's upper half is 3, also when 6 is added. Carries start behind the first character that is none.
    const uint64_t others = ((eight & high_halves) ^ zeros) | (((eight + 0x0606060606060606) & high_halves) ^ zeros);
    return std::countr_zero(others) / 8;
}

uint64_t number_of_digits(uint64_t eight) {
    constexpr uint64_t every_fourth = 0x000000FF000000FF;
    eight -= 0x3030303030303030;
    eight = eight * 10 + (eight >> 8);  // pairs
    return ((eight & every_fourth) * 0x000F424000000064 + ((eight >> 16) & every_fourth) * 0x0000271000000001) >> 32;
}

void append_digits_singly(const uint8_t *&at, const uint8_t *end, uint64_t *digits) {
    for (; at < end && is_digit(*at); ++at)
        *digits = *digits * 10 + (*at - '0');
}

// Without a branch for every digit: how many there are cannot be foreseen.
void append_digits(const uint8_t *&at, const uint8_t *end, uint64_t *digits) {
    constexpr uint64_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    constexpr uint64_t zeros = 0x3030303030303030;
    for (int count = 8; count == 8;) {
        const uint64_t eight = load_eight(at, end);
        count = leading_digits(eight);
        if (count == 0)
            return;
        const uint64_t filled = count == 8 ? eight : eight << (64 - 8 * count) | zeros >> (8 * count);
        *digits = *digits * powers[count] + number_of_digits(filled);
        at += count;
    }
}

// Digits with a point. Up to 19 of them fit.
template <auto append>
void read_digits(const uint8_t *&at, const uint8_t *end, Decimal *decimal) {
    const uint8_t *const start = at;
    append(at, end, &decimal->digits);
    int64_t count = at - start;
    if (at < end && *at == '.') {
        const uint8_t *const fraction = ++at;
        append(at, end, &decimal->digits);
        decimal->exponent = -static_cast<int>(at - fraction);
        count += at - fraction;
    }
    decimal->is_exact = count > 0 && count <= 19;
}

void read_exponent(const uint8_t *&at, const uint8_t *end, Decimal *decimal) {
    constexpr int limit = 10000;
    const uint8_t *after = at + 1;
    const bool negative = read_sign(after, end);
    if (after >= end || !is_digit(*after))
        return;
    int exponent = 0;
    for (; after < end && is_digit(*after); ++after)
        if (exponent < limit)
            exponent = exponent * 10 + (*after - '0');
    decimal->exponent += negative ? -exponent : exponent;
    at = after;
}

// What the quick way cannot do: more digits or powers than are exact, infinities, NaNs, hexadecimal.
double read_slowly(const uint8_t *at, const uint8_t *end, bool negative) {
    static std::string text;
    static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    text.assign(reinterpret_cast<const char *>(at), static_cast<size_t>(end - at));
    if (text.empty() || text[0] == '-' || text[0] == '+')
        return 0;
    const char *const first = text.c_str();
    double value = 0;
    const bool hexadecimal = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    std::from_chars_result result = std::from_chars(first, first + text.size(), value);
    if (const auto stopped = static_cast<size_t>(result.ptr - first);
        stopped < text.size() && (text[stopped] == 'D' || text[stopped] == 'd')) {
        text[stopped] = 'E';
        result = std::from_chars(first, first + text.size(), value);
    }
    if (hexadecimal || result.ec == std::errc::result_out_of_range)
        value = strtod_l(first, nullptr, c_locale);
    return negative && result.ec != std::errc::invalid_argument ? -value : value;
}

}  // namespace

int64_t OalReadAsciiInteger(const uint8_t *text, int64_t length) {
    const uint8_t *const end = text + length;
    const uint8_t *at = past_blanks(text, end);
    const bool negative = read_sign(at, end);
    int64_t value = 0;
    for (; at < end && is_digit(*at); ++at) {
        const int digit = *at - '0';
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_sub_overflow(value, digit, &value))
            return negative ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
    }
    if (negative)
        return value;
    return value == std::numeric_limits<int64_t>::min() ? std::numeric_limits<int64_t>::max() : -value;
}

double OalReadAsciiReal(const uint8_t *text, int64_t length) {
    constexpr uint64_t largest_exact = uint64_t{1} << 53;
    constexpr int largest_power = static_cast<int>(powers_of_ten.size()) - 1;
    const uint8_t *const end = text + length;
    const uint8_t *at = past_blanks(text, end);
    const bool negative = read_sign(at, end);
    const uint8_t *const number = at;
    if (number == end)
        return 0;
    Decimal decimal;
    if (length < 8)
        read_digits<append_digits_singly>(at, end, &decimal);
    else
        read_digits<append_digits>(at, end, &decimal);
    if (at < end && (*at | 0x20) >= 'd' && (*at | 0x20) <= 'e')
        read_exponent(at, end, &decimal);
    const bool hexadecimal = at == number + 1 && at < end && (*at | 0x20) == 'x';
    if (!decimal.is_exact || decimal.digits > largest_exact || decimal.exponent < -largest_power ||
        decimal.exponent > largest_power || hexadecimal)
        return read_slowly(number, end, negative);
    // Both are exact, so that the one operation on them rounds correctly.
    auto value = static_cast<double>(decimal.digits);
    if (decimal.exponent < 0)
        value /= powers_of_ten[static_cast<size_t>(-decimal.exponent)];
    else
        value *= powers_of_ten[static_cast<size_t>(decimal.exponent)];
    return std::bit_cast<double>(std::bit_cast<uint64_t>(value) | uint64_t{negative} << 63);
}
