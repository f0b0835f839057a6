// Small operations on text that the standard library lacks. Bytes are compared as unsigned characters, without locale.
#pragma once

#include <string>
#include <string_view>

// printf into a string of any length.
[[gnu::format(printf, 1, 2)]] std::string util_format(const char *format, ...);

// `text` without the bytes of `unwanted` at both ends. The view points into `text`.
std::string_view util_trim(std::string_view text, std::string_view unwanted = " ");

// `text` with a-z turned into A-Z, and the reverse; other bytes are kept.
std::string util_upper(std::string_view text);
std::string util_lower(std::string_view text);

// `text` without any `unwanted` byte.
std::string util_without(std::string_view text, char unwanted);

inline bool util_contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}
