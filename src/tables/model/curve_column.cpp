#include "tables/model/curve_column.h"

#include "base/text.h"
#include "tables/model/keyword_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace {

constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

// A text that is a number, and nothing behind it.
double number_of(std::string_view text) {
    text = util_trim(text, " \t\"");
    if (!text.empty() && text[0] == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::isfinite(value) ? value
                                                                                                       : no_number;
}

// The values that stand for none.
std::vector<double> constants_of(const ColumnInfo &column) {
    constexpr std::array keywords = {"MISSING_CONSTANT", "INVALID_CONSTANT", "NOT_APPLICABLE_CONSTANT",
                                     "UNKNOWN_CONSTANT", "NULL_CONSTANT",    "MISSING"};
    std::vector<double> constants;
    for (const char *keyword : keywords) {
        const double value = number_of(tb_text_of(keyword, column.object));
        if (!std::isnan(value))
            constants.push_back(value);
    }
    return constants;
}

bool stands_for_none(double value, const std::vector<double> &constants) {
    for (const double constant : constants) {
        if (value == constant)
            return true;
    }
    return false;
}

// The letter D of exponents is an E to us.
void use_letter_e(std::string *text) {
    for (char &c : *text) {
        if (c == 'D' || c == 'd')
            c = 'E';
    }
}

}  // namespace

bool is_numeric_column(const TableInfo &table, const ColumnInfo &column) {
    const FieldFormat format = tb_column_format(table, column);
    if (table.is_spreadsheet())
        return true;
    return format && format != tb_append_lsb_binary && format != tb_append_msb_binary && format != tb_append_hex &&
           format != tb_append_octal;
}

void read_curve_column(TableReader *reader, const TableInfo &table, const ColumnInfo &column, int64_t first,
                       int64_t last, std::vector<double> *values) {
    const FieldFormat format = tb_column_format(table, column);
    const std::vector<double> constants = constants_of(column);
    std::string text;
    FieldBytes field;
    for (int64_t row = first - 1; row < last; ++row) {
        double value = no_number;
        if (reader->read(row, column, 1, &field)) {
            text.clear();
            if (reader->gives_text())
                text.assign(reinterpret_cast<const char *>(field.bytes.data()), field.bytes.size());
            else
                tb_append_field(format, field.bytes, &text);
            value = number_of(text);
            if (std::isnan(value)) {
                use_letter_e(&text);
                value = number_of(text);
            }
        }
        values->push_back(stands_for_none(value, constants) ? no_number : value);
    }
}

std::string curve_axis_title(const ColumnInfo &column) {
    constexpr size_t longest_unit = 60;
    const std::string name(util_trim(column.name, "\"' "));
    const std::string unit(util_trim(tb_text_of("UNIT", column.object), "\"' ").substr(0, longest_unit));
    return unit.empty() || util_upper(unit) == "N/A" ? name : name + " [" + unit + "]";
}
