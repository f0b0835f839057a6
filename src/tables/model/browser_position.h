// Where a one-column browser stands in the tables of a product, and the moves that its commands make: rows, columns,
// items, bit columns, tables, by name. Moves end at the first and last of each; the window shows the place afterwards.
#pragma once

#include "tables/model/table_info.h"

#include <string_view>

constexpr int64_t tb_most_rows_shown = 15;

struct BrowserPosition {
    TableProduct *product = nullptr;
    int64_t table = 0;       // place in the product's list, from 0
    int64_t first_row = 0;   // shown, from 0
    int64_t rows_shown = 0;  // size of the block of rows
    int64_t column = 1;      // these four from 1
    int64_t item = 1;
    int64_t bit_column = 1;
    int64_t bit_item = 1;
    bool show_bit_columns = false;  // column commands move among the bit columns of the current column
    bool show_items = false;        // items are stepped through one by one
    int64_t displayed_col_num = 1;  // the column for which the bit column counters stand

    TableInfo *current_table() const;        // null: the product has none
    ColumnInfo *current_column() const;      // null: the table has none
    ColumnInfo *current_bit_column() const;  // null: the column has none. For both states of show_bit_columns
};

// Stands at the first row and column of the first table. The product must outlive the position.
BrowserPosition tb_start_of(TableProduct *product);

// `row` from 1; what lies outside is moved to the first or last full block.
void tb_jump_to_row_2(BrowserPosition *position, int64_t row);
void tb_next_rows(BrowserPosition *position);
void tb_prev_rows(BrowserPosition *position);

// Step the column, or its item where items are shown; in bit column mode the bit column or its item, which does nothing
// where the column has none.
void tb_move_right(BrowserPosition *position, int64_t count);
void tb_move_left(BrowserPosition *position, int64_t count);
// Right by a positive count, left by the size of a negative one.
void tb_skip_cols(BrowserPosition *position, int64_t count);

// To the column, in bit column mode the bit column, whose name begins with the text: the next one that does, else the
// nearest before. False when there is none or the text is empty; the current one is found where no other is.
bool tb_move_by_column_name_2(BrowserPosition *position, std::string_view text);
// The same in one direction, the current one left aside.
bool tb_move_forward_by_column_name(BrowserPosition *position, std::string_view text);
bool tb_move_backward_by_column_name(BrowserPosition *position, std::string_view text);

// To the neighbouring table, whose first row and column then are current. False at the ends of the list: then nothing
// changes.
bool tb_next_table(BrowserPosition *position);
bool tb_prev_table(BrowserPosition *position);
// To a table of the list, from 0, in the same way.
bool tb_enter_table(BrowserPosition *position, int64_t table);

void toggle_show_bit_col_flag(BrowserPosition *position);
// Items that are no longer shown one by one leave the first one current.
void toggle_show_items_flag(BrowserPosition *position);

void init_bit_col_counters(BrowserPosition *position);

// The number at the start of the first `most` bytes of what a user typed; 0 where there is none. Too large ones become
// the largest.
int64_t tb_typed_number(std::string_view typed, size_t most);
