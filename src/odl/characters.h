// What a byte means to the label language; one table look-up answers every question that the parser asks of a byte.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace odl {

enum CharacterMark : uint16_t {
    MARK_LINE_END = 1 << 0,    // line feed, carriage return
    MARK_NUL = 1 << 1,         // ends a line before its line end
    MARK_TAB = 1 << 2,         // becomes a blank
    MARK_QUOTE = 1 << 3,       // double quote
    MARK_SLASH = 1 << 4,       // may begin a comment
    MARK_LETTER = 1 << 5,      // A-Z a-z
    MARK_IDENTIFIER = 1 << 6,  // letters, digits, underscore
    MARK_BREAK = 1 << 7,       // brackets and the comma, which end an element of a list
    MARK_CONTROL = 1 << 8,     // codes below 32, and 127
    MARK_WORD = 1 << 9,        // codes 33-126, of which words are made
    MARK_DIGIT = 1 << 10,
    MARK_UNDERSCORE = 1 << 11,
};

inline constexpr std::array<uint16_t, 256> character_marks = [] {
    std::array<uint16_t, 256> marks = {};
    const auto add = [&marks](std::string_view characters, uint16_t mark) {
        for (const char c : characters)
            marks[static_cast<unsigned char>(c)] |= mark;
    };
    const auto add_range = [&marks](unsigned first, unsigned last, uint16_t mark) {
        for (unsigned c = first; c <= last; ++c)
            marks[c] |= mark;
    };
    add("\n\r", MARK_LINE_END);
    add("\t", MARK_TAB);
    add("\"", MARK_QUOTE);
    add("/", MARK_SLASH);
    add("(){},", MARK_BREAK);
    add("_", MARK_IDENTIFIER | MARK_UNDERSCORE);
    add_range(0, 0, MARK_NUL);
    add_range('A', 'Z', MARK_LETTER | MARK_IDENTIFIER);
    add_range('a', 'z', MARK_LETTER | MARK_IDENTIFIER);
    add_range('0', '9', MARK_IDENTIFIER | MARK_DIGIT);
    add_range(0, 31, MARK_CONTROL);
    add_range(127, 127, MARK_CONTROL);
    add_range(33, 126, MARK_WORD);
    return marks;
}();

constexpr unsigned marks_of(char c) {
    return character_marks[static_cast<unsigned char>(c)];
}

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The marks that any byte of a text has; four bytes at a time, as every line of a label passes here.
constexpr unsigned marks_within(std::string_view text) {
    unsigned marks = 0;
    size_t i = 0;
    for (; i + 4 <= text.size(); i += 4)
        marks |= marks_of(text[i]) | marks_of(text[i + 1]) | marks_of(text[i + 2]) | marks_of(text[i + 3]);
    for (; i < text.size(); ++i)
        marks |= marks_of(text[i]);
    return marks;
}

constexpr bool all_marked(std::string_view text, uint16_t mark) {
    for (const char c : text) {
        if (!(marks_of(c) & mark))
            return false;
    }
    return true;
}

// Position of the first byte that words are made of, or the text's size.
constexpr size_t first_word_position(std::string_view text, size_t from = 0) {
    while (from < text.size() && !(marks_of(text[from]) & MARK_WORD))
        ++from;
    return from;
}

// The first word of the text; empty at the text's end when there is none.
constexpr std::string_view first_word(std::string_view text) {
    const size_t start = first_word_position(text);
    size_t end = start;
    while (end < text.size() && (marks_of(text[end]) & MARK_WORD))
        ++end;
    return text.substr(start, end - start);
}

constexpr std::string_view without_trailing(std::string_view text, uint16_t mark) {
    while (!text.empty() && (marks_of(text.back()) & mark))
        text.remove_suffix(1);
    return text;
}

constexpr std::string_view without_trailing_blanks(std::string_view text) {
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// A view of a text that may be null; null and empty texts stay distinct by data().
constexpr std::string_view view_of(const char *text) {
    return text ? std::string_view(text) : std::string_view();
}

}  // namespace odl
