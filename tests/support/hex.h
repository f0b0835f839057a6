// Bytes as hexadecimal text.
#pragma once

#include <string>
#include <string_view>

// Blanks between the bytes do not count.
inline std::string from_hex(std::string_view text) {
    std::string bytes;
    std::string digits;
    for (const char c : text) {
        if (c != ' ')
            digits += c;
        if (digits.size() == 2) {
            bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
            digits.clear();
        }
    }
    return bytes;
}

inline std::string to_hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes)
        for (const int shift : {4, 0})
            text += "0123456789abcdef"[c >> shift & 15];
    return text;
}
