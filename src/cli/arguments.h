// The words of a command line: options, most with a value, and file names.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct Interval {  // from 1, inclusive
    int64_t first = 0;
    int64_t last = 0;
};

struct Option {
    std::string_view name;              // with its hyphens
    std::optional<std::string> *value;  // null: the option takes none
    bool *is_given = nullptr;           // of one without a value
};

// Takes the words apart: "--name value" or "--name=value" into the options, one other word into `file`; behind "--" no
// word is an option. Returns an empty text, or what is wrong.
std::string take_arguments(std::span<char *const> words, std::span<const Option> options, std::string *file);

std::optional<int64_t> positive_number(std::string_view text);
std::optional<Interval> interval(std::string_view text);  // "A:B", A not above B
