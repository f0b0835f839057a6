#include "cli/table_description.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr size_t widest_column = 40;  // what is longer pushes the rest of its line aside

constexpr size_t cell_count = 6;
using Cells = std::array<std::string, cell_count>;

// Names are data: what would move the cursor does not reach the terminal.
std::string shown(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<uint8_t>(c) < ' ' || c == '\x7f'; }, '?');
    return text;
}

std::string number_or_dash(int64_t number) {
    return number < 0 ? "-" : std::to_string(number);
}

// Byte of the row, from 1, and of a bit column the bit.
std::string start_of(const ViewField &field) {
    int64_t byte = 0;
    if (field.column->start_byte < 0 || __builtin_mul_overflow(field.item - 1, field.column->item_offset, &byte) ||
        __builtin_add_overflow(byte, field.column->start_byte, &byte) || byte < 0)
        return "-";
    if (!field.bit_column)
        return std::to_string(byte);
    int64_t bit = 0;
    if (__builtin_mul_overflow(field.bit_item - 1, field.bit_column->bytes, &bit) ||
        __builtin_add_overflow(bit, field.bit_column->start_byte, &bit))
        return "-";
    return std::to_string(byte) + " bit " + number_or_dash(bit);
}

Cells cells_of(const ColumnView &view, int64_t i) {
    return {std::to_string(i + 1),
            shown(view.name(i)),
            view.data_type(i),
            start_of(view[i]),
            number_or_dash(view.width(i)) + (view[i].bit_column ? " bits" : ""),
            shown(view.unit(i))};
}

void print_cells(const Cells &cells, const std::array<size_t, cell_count> &widths, FILE *stream) {
    std::string line;
    for (size_t i = 0; i < cell_count; ++i) {
        const std::string padding(widths[i] - std::min(widths[i], cells[i].size()), ' ');
        line += "  " + (i == 0 ? padding + cells[i] : cells[i] + padding);  // numbers to the right
    }
    fprintf(stream, "%s\n", std::string(line, 0, line.find_last_not_of(' ') + 1).c_str());
}

}  // namespace

void print_table(const ColumnView &view, int64_t number, FILE *stream) {
    const TableInfo &table = view.table();
    fprintf(stream, "table %lld: %s, class %s\n", static_cast<long long>(number), shown(table.name).c_str(),
            shown(table.type).c_str());
    fprintf(stream, "  data file  %s, from byte %lld\n", shown(table.file_name).c_str(),
            static_cast<long long>(table.start_byte));
    fprintf(stream, "  format     %s\n", table.interchange_format.c_str());
    fprintf(stream, "  rows       %lld of %s bytes", static_cast<long long>(table.rows),
            number_or_dash(table.row_bytes).c_str());
    if (table.row_prefix_bytes > 0 || table.row_suffix_bytes > 0)
        fprintf(stream, ", %lld before and %lld behind each", static_cast<long long>(table.row_prefix_bytes),
                static_cast<long long>(table.row_suffix_bytes));
    fprintf(stream, "\n  columns    %lld\n", static_cast<long long>(view.size()));

    const Cells heads = {"", "name", "type", "start", "bytes", "unit"};
    std::array<size_t, cell_count> widths;
    std::ranges::transform(heads, widths.begin(), &std::string::size);
    for (int64_t i = 0; i < view.size(); ++i) {
        const Cells cells = cells_of(view, i);
        for (size_t k = 0; k < cell_count; ++k)
            widths[k] = std::min(std::max(widths[k], cells[k].size()), widest_column);
    }
    if (view.size() > 0)
        print_cells(heads, widths, stream);
    for (int64_t i = 0; i < view.size(); ++i)
        print_cells(cells_of(view, i), widths, stream);
}
