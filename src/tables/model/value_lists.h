// The words that label values are checked against: six ordered lists, and the position of a word in each.
#pragma once

#include <span>
#include <string>
#include <string_view>

enum TableFormat { TB_ASCII_TABLE = 0, TB_BINARY_TABLE = 1 };
enum DisplayFormat { TB_SHOW_BINARY = 0, TB_SHOW_HEX = 1, TB_SHOW_OCTAL = 2, TB_SHOW_TEXT = 3 };

extern const std::span<const std::string_view> tb_record_types;
extern const std::span<const std::string_view> tb_blocking_types;
extern const std::span<const std::string_view> tb_table_formats;
extern const std::span<const std::string_view> tb_display_formats;
extern const std::span<const std::string_view> tb_bit_data_types;
extern const std::span<const std::string_view> tb_data_types;

// Position of the word in the ordered list, or -1.
int search_string_array_1(std::span<const std::string_view> list, std::string_view word);

// A keyword's value as the lists write it: without quotes and outer blanks, "_" as a blank, one blank where there are
// several, in upper case. What follows the first 80 bytes is left out, which no list has.
std::string tb_normalised(std::string_view value);
