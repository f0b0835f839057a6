#include "cli/arguments.h"

#include <algorithm>
#include <charconv>

std::string take_arguments(std::span<char *const> words, std::span<const Option> options, std::string *file) {
    bool only_files = false;
    bool has_file = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (only_files || word.substr(0, 2) != "--") {
            if (has_file)
                return "one file at a time, not also " + std::string(word);
            *file = word;
            has_file = true;
            continue;
        }
        if (word == "--") {
            only_files = true;
            continue;
        }
        const size_t equals = word.find('=');
        const std::string_view name = word.substr(0, equals);
        const auto option =
            std::find_if(options.begin(), options.end(), [name](const Option &known) { return known.name == name; });
        if (option == options.end())
            return "unknown option " + std::string(name);
        if (!option->value) {
            if (equals != std::string_view::npos)
                return "option " + std::string(name) + " takes no value";
            *option->is_given = true;
            continue;
        }
        if (*option->value)
            return "option " + std::string(name) + " is given twice";
        if (equals == std::string_view::npos && i + 1 == words.size())
            return "option " + std::string(name) + " needs a value";
        *option->value = equals == std::string_view::npos ? words[++i] : std::string(word.substr(equals + 1));
    }
    return has_file ? "" : "which file?";
}

std::optional<int64_t> positive_number(std::string_view text) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 1)
        return std::nullopt;
    return value;
}

std::optional<Interval> interval(std::string_view text) {
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const auto first = positive_number(text.substr(0, colon));
    const auto last = positive_number(text.substr(colon + 1));
    if (!first || !last || *first > *last)
        return std::nullopt;
    return Interval{*first, *last};
}
