#include "base/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

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
