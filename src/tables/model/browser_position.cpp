#include "tables/model/browser_position.h"

#include <algorithm>
#include <charconv>

namespace {

ColumnInfo *at(std::vector<ColumnInfo> *columns, int64_t number) {
    const bool is_there = number >= 1 && number <= static_cast<int64_t>(columns->size());
    return is_there ? &(*columns)[static_cast<size_t>(number - 1)] : nullptr;
}

int64_t items_of(const ColumnInfo &column) {
    return std::max<int64_t>(column.items, 1);
}

// Forward by `count` places (back when negative) through columns and, where they are shown, their items.
void step(const std::vector<ColumnInfo> &columns, bool by_item, int64_t count, int64_t *column, int64_t *item) {
    const auto last = static_cast<int64_t>(columns.size());
    if (last == 0)
        return;
    const int64_t most = last * INT32_MAX;  // more than there can be to pass
    count = std::clamp(count, -most, most);
    if (!by_item) {
        *column = std::clamp(*column + count, int64_t{1}, last);
        *item = 1;
        return;
    }
    const auto items = [&] { return items_of(columns[static_cast<size_t>(*column - 1)]); };
    while (count > 0) {
        const int64_t taken = std::min(count, items() - *item);
        *item += taken;
        count -= taken;
        if (count == 0 || *column == last)
            return;
        ++*column;
        *item = 1;
        --count;
    }
    while (count < 0) {
        const int64_t taken = std::min(-count, *item - 1);
        *item -= taken;
        count += taken;
        if (count == 0 || *column == 1)
            return;
        --*column;
        *item = items();
        ++count;
    }
}

void follow_column(BrowserPosition *position) {
    if (position->column != position->displayed_col_num)
        init_bit_col_counters(position);
    position->displayed_col_num = position->column;
}

void move(BrowserPosition *position, int64_t count) {
    const TableInfo *table = position->current_table();
    const ColumnInfo *column = position->current_column();
    if (!table || !column)
        return;
    if (position->show_bit_columns) {
        step(column->bit_columns, position->show_items, count, &position->bit_column, &position->bit_item);
        return;
    }
    position->bit_item = 1;
    step(table->columns, position->show_items, count, &position->column, &position->item);
    follow_column(position);
}

// The columns among which column commands move, and the number of the current one.
const std::vector<ColumnInfo> *columns_in_view(const BrowserPosition &position, int64_t *current) {
    const TableInfo *table = position.current_table();
    const ColumnInfo *column = position.current_column();
    if (!table || !column)
        return nullptr;
    *current = position.show_bit_columns ? position.bit_column : position.column;
    return position.show_bit_columns ? &column->bit_columns : &table->columns;
}

bool move_by_name(BrowserPosition *position, std::string_view text, int64_t direction) {
    int64_t current = 1;
    const std::vector<ColumnInfo> *columns = columns_in_view(*position, &current);
    if (!columns || text.empty())
        return false;
    const auto last = static_cast<int64_t>(columns->size());
    int64_t number = current + direction;
    while (number >= 1 && number <= last && !(*columns)[static_cast<size_t>(number - 1)].name.starts_with(text))
        number += direction;
    if (number < 1 || number > last)
        return false;
    position->bit_item = 1;
    if (position->show_bit_columns) {
        position->bit_column = number;
        return true;
    }
    position->column = number;
    position->item = 1;
    follow_column(position);
    return true;
}

}  // namespace

TableInfo *BrowserPosition::current_table() const {
    const bool is_there = product && table >= 0 && table < static_cast<int64_t>(product->tables.size());
    return is_there ? &product->tables[static_cast<size_t>(table)] : nullptr;
}

ColumnInfo *BrowserPosition::current_column() const {
    TableInfo *of = current_table();
    return of ? at(&of->columns, column) : nullptr;
}

ColumnInfo *BrowserPosition::current_bit_column() const {
    ColumnInfo *of = current_column();
    return of ? at(&of->bit_columns, bit_column) : nullptr;
}

BrowserPosition tb_start_of(TableProduct *product) {
    BrowserPosition position;
    position.product = product;
    tb_enter_table(&position, 0);
    return position;
}

void tb_jump_to_row_2(BrowserPosition *position, int64_t row) {
    const TableInfo *table = position->current_table();
    if (!table)
        return;
    const int64_t last_block = std::max<int64_t>(table->rows - position->rows_shown, 0);
    position->first_row = std::clamp<int64_t>(row, 1, last_block + 1) - 1;
}

void tb_next_rows(BrowserPosition *position) {
    tb_jump_to_row_2(position, position->first_row + position->rows_shown + 1);
}

void tb_prev_rows(BrowserPosition *position) {
    tb_jump_to_row_2(position, position->first_row + 1 - position->rows_shown);
}

void tb_move_right(BrowserPosition *position, int64_t count) {
    move(position, count);
}

void tb_move_left(BrowserPosition *position, int64_t count) {
    move(position, -std::max(count, -INT64_MAX));
}

void tb_skip_cols(BrowserPosition *position, int64_t count) {
    if (count != 0)
        move(position, count);
}

bool tb_move_forward_by_column_name(BrowserPosition *position, std::string_view text) {
    return move_by_name(position, text, 1);
}

bool tb_move_backward_by_column_name(BrowserPosition *position, std::string_view text) {
    return move_by_name(position, text, -1);
}

bool tb_move_by_column_name_2(BrowserPosition *position, std::string_view text) {
    if (tb_move_forward_by_column_name(position, text) || tb_move_backward_by_column_name(position, text))
        return true;
    const ColumnInfo *current =
        position->show_bit_columns ? position->current_bit_column() : position->current_column();
    return current && !text.empty() && current->name.starts_with(text);
}

bool tb_enter_table(BrowserPosition *position, int64_t table) {
    if (!position->product || table < 0 || table >= static_cast<int64_t>(position->product->tables.size()))
        return false;
    position->table = table;
    position->first_row = 0;
    position->rows_shown = std::min(position->current_table()->rows, tb_most_rows_shown);
    position->column = 1;
    position->item = 1;
    position->show_bit_columns = false;  // the first column may have none
    position->displayed_col_num = 1;
    init_bit_col_counters(position);
    return true;
}

bool tb_next_table(BrowserPosition *position) {
    return tb_enter_table(position, position->table + 1);
}

bool tb_prev_table(BrowserPosition *position) {
    return tb_enter_table(position, position->table - 1);
}

void toggle_show_bit_col_flag(BrowserPosition *position) {
    position->show_bit_columns = !position->show_bit_columns;
}

void toggle_show_items_flag(BrowserPosition *position) {
    position->show_items = !position->show_items;
    if (!position->show_items) {
        position->item = 1;
        position->bit_item = 1;
    }
}

void init_bit_col_counters(BrowserPosition *position) {
    position->bit_column = 1;
    position->bit_item = 1;
}

int64_t tb_typed_number(std::string_view typed, size_t most) {
    typed = typed.substr(0, most);
    const size_t start = typed.find_first_not_of(" \t");
    typed.remove_prefix(std::min(start, typed.size()));
    if (typed.starts_with('+') && !typed.starts_with("+-"))
        typed.remove_prefix(1);
    int64_t number = 0;
    const auto [end, error] = std::from_chars(typed.data(), typed.data() + typed.size(), number);
    if (error == std::errc::result_out_of_range)
        return typed.starts_with('-') ? -INT64_MAX : INT64_MAX;
    return number;
}
