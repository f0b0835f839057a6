#include "tables/model/value_lists.h"

#include "base/text.h"

#include <algorithm>

namespace {

constexpr std::string_view record_types[] = {"FIXED LENGTH", "STREAM", "UNKNOWN", "VARIABLE LENGTH"};
constexpr std::string_view blocking_types[] = {"SPANNED", "UNSPANNED"};
constexpr std::string_view table_formats[] = {"ASCII", "BINARY"};
constexpr std::string_view display_formats[] = {"BINARY", "HEX", "OCTAL", "TEXT"};
constexpr std::string_view bit_data_types[] = {"BOOLEAN", "INTEGER", "MSB INTEGER", "MSB UNSIGNED INTEGER",
                                               "UNSIGNED INTEGER"};
constexpr std::string_view data_types[] = {
    "ASCII COMPLEX",
    "ASCII INTEGER",
    "ASCII REAL",
    "BOOLEAN",
    "CHARACTER",
    "COMPLEX",
    "DATE",
    "FLOAT",
    "IBM COMPLEX",
    "IBM INTEGER",
    "IBM REAL",
    "IBM UNSIGNED INTEGER",
    "IEEE COMPLEX",
    "IEEE REAL",
    "INTEGER",
    "LSB BIT STRING",
    "LSB IEEE COMPLEX",
    "LSB IEEE REAL",
    "LSB INTEGER",
    "LSB UNSIGNED INTEGER",
    "MAC COMPLEX",
    "MAC INTEGER",
    "MAC REAL",
    "MAC UNSIGNED INTEGER",
    "MSB BIT STRING",
    "MSB IEEE COMPLEX",
    "MSB IEEE REAL",
    "MSB INTEGER",
    "MSB UNSIGNED INTEGER",
    "PC COMPLEX",
    "PC INTEGER",
    "PC REAL",
    "PC UNSIGNED INTEGER",
    "REAL",
    "SUN COMPLEX",
    "SUN INTEGER",
    "SUN REAL",
    "SUN UNSIGNED INTEGER",
    "TIME",
    "UNSIGNED INTEGER",
    "VAX COMPLEX",
    "VAX DOUBLE",
    "VAX INTEGER",
    "VAX REAL",
    "VAX UNSIGNED INTEGER",
    "VAXG COMPLEX",
    "VAXG REAL",
};
static_assert(std::ranges::is_sorted(data_types));

constexpr size_t longest_value = 80;

}  // namespace

constinit const std::span<const std::string_view> tb_record_types = record_types;
constinit const std::span<const std::string_view> tb_blocking_types = blocking_types;
constinit const std::span<const std::string_view> tb_table_formats = table_formats;
constinit const std::span<const std::string_view> tb_display_formats = display_formats;
constinit const std::span<const std::string_view> tb_bit_data_types = bit_data_types;
constinit const std::span<const std::string_view> tb_data_types = data_types;

int search_string_array_1(std::span<const std::string_view> list, std::string_view word) {
    const auto found = std::lower_bound(list.begin(), list.end(), word);
    return found != list.end() && *found == word ? static_cast<int>(found - list.begin()) : -1;
}

std::string tb_normalised(std::string_view value) {
    std::string words;
    for (const char c : util_trim(value, " \t\r\n\"'_").substr(0, longest_value)) {
        const bool is_blank = c == '_' || c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!is_blank)
            words += c;
        else if (!words.ends_with(' '))
            words += ' ';
    }
    return util_upper(util_trim(words));
}
