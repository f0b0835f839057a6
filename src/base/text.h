// Small operations on text that the standard library lacks. Bytes are compared as unsigned characters, without locale.
#pragma once

#include <string>
#include <string_view>

// printf into a string of any length.
[[gnu::format(printf, 1, 2)]] std::string util_format(const char *format, ...);

// A number for people: in full where at most 15 digits do, else with the 9 that tell one float from the next, or 15.
std::string util_number_text(double value);

// `text` without the bytes of `unwanted` at both ends. The view points into `text`.
std::string_view util_trim(std::string_view text, std::string_view unwanted = " ");

// `text` with a-z turned into A-Z, and the reverse; other bytes are kept.
std::string util_upper(std::string_view text);
std::string util_lower(std::string_view text);

// `text` without any `unwanted` byte.
std::string util_without(std::string_view text, char unwanted);

// A text for one line: bytes and characters that cannot be printed are left out at its end, except the first, and are
// blanks elsewhere. Characters are those of UTF-8.
std::string util_clean_up_string(std::string_view text);
// The same of a name or unit from a label, for a place with little room: without blanks around, at most `most` bytes.
std::string util_short_line(std::string_view text, size_t most);
// `text` with each run of the character made one.
std::string util_compress_char(std::string_view text, char character);
// Whether there is nothing but blanks.
inline bool util_string_is_empty(std::string_view text) {
    return text.find_first_not_of(' ') == std::string_view::npos;
}

inline bool util_contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}
