#include "base/text.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

struct Utf8Form {
    uint8_t mask;
    uint8_t lead;
    uint8_t least_second;  // of the byte behind the lead, where that alone leads to a character of so many bytes
};
constexpr std::array utf8_forms = {Utf8Form{0xe0, 0xc0, 0x80}, Utf8Form{0xf0, 0xe0, 0xa0}, Utf8Form{0xf8, 0xf0, 0x90}};

// Bytes of the printable character that the text begins with; 0 when it begins with none.
size_t printable_bytes(std::string_view text) {
    const auto byte = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
    if (byte(0) < 0x80)
        return byte(0) >= 0x20 && byte(0) != 0x7f ? 1 : 0;
    for (size_t more = 1; more <= utf8_forms.size(); ++more) {
        const Utf8Form &form = utf8_forms[more - 1];
        if ((byte(0) & form.mask) != form.lead)
            continue;
        const bool whole =
            text.size() > more && std::all_of(text.begin() + 1, text.begin() + 1 + int(more),
                                              [](char c) { return (static_cast<uint8_t>(c) & 0xc0) == 0x80; });
        const bool is_control = byte(0) < 0xc2 || (byte(0) == 0xc2 && whole && byte(1) < 0xa0);
        const bool is_short = byte(0) == form.lead && whole && byte(1) < form.least_second;
        const bool is_surrogate = byte(0) == 0xed && whole && byte(1) >= 0xa0;
        const bool is_beyond = byte(0) > 0xf4 || (byte(0) == 0xf4 && whole && byte(1) >= 0x90);
        return whole && !is_control && !is_short && !is_surrogate && !is_beyond ? more + 1 : 0;
    }
    return 0;
}

}  // namespace

std::string util_clean_up_string(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    size_t end = text.empty() ? 0 : 1;
    for (size_t i = 0; i < text.size();) {
        const size_t bytes = printable_bytes(text.substr(i));
        if (bytes > 0)
            clean.append(text, i, bytes);
        else
            clean.push_back(' ');
        if (bytes > 0)
            end = clean.size();
        i += std::max<size_t>(bytes, 1);
    }
    clean.resize(end);
    return clean;
}

// A character that is cut in two is none that can be printed.
std::string util_short_line(std::string_view text, size_t most) {
    return std::string(util_trim(util_clean_up_string(text.substr(0, most))));
}

std::string util_compress_char(std::string_view text, char character) {
    std::string compressed(text);
    const auto both = [character](char a, char b) { return a == character && b == character; };
    compressed.erase(std::unique(compressed.begin(), compressed.end(), both), compressed.end());
    return compressed;
}

std::string util_format(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0)
        vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::string util_number_text(double value) {
    constexpr int float_digits = 9;
    constexpr int double_digits = 15;
    std::string text;
    for (const int digits : {float_digits, double_digits}) {
        text = util_format("%.*g", digits, value);
        if (strtod(text.c_str(), nullptr) == value)
            return text;
    }
    const bool is_float =
        std::fabs(value) <= static_cast<double>(FLT_MAX) && static_cast<double>(static_cast<float>(value)) == value;
    return is_float ? util_format("%.*g", float_digits, value) : text;
}

std::string_view util_trim(std::string_view text, std::string_view unwanted) {
    const size_t first = text.find_first_not_of(unwanted);
    if (first == std::string_view::npos)
        return text.substr(text.size());
    return text.substr(first, text.find_last_not_of(unwanted) - first + 1);
}

std::string util_upper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

std::string util_lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

std::string util_without(std::string_view text, char unwanted) {
    std::string kept(text);
    std::erase(kept, unwanted);
    return kept;
}
