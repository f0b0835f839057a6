// Files that tell by their first bytes what they are.
#pragma once

#include <string_view>

constexpr size_t longest_signature = 12;

// JPEG 2000: the boxes of the file format, or a bare codestream.
inline bool is_jpeg2000(std::string_view first_bytes) {
    using namespace std::string_view_literals;
    return first_bytes.starts_with("\0\0\0\x0CjP  \r\n\x87\n"sv) || first_bytes.starts_with("\xFF\x4F\xFF\x51"sv);
}

// Files that carry their own description, so that no label is looked for.
inline bool describes_itself(std::string_view first_bytes) {
    return first_bytes.starts_with("GIF87a") || first_bytes.starts_with("GIF89a") || is_jpeg2000(first_bytes);
}
