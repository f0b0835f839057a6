#include "tables/model/browser_position.h"

#include "base/text.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

ColumnInfo column_of(const char *name, int64_t items, std::vector<ColumnInfo> bit_columns = {}) {
    ColumnInfo column;
    column.name = name;
    column.items = items;
    column.bit_columns = std::move(bit_columns);
    return column;
}

// A table of 40 rows with columns of one item, of three, of none written and one of bits; then one of 10 rows and one
// of nothing.
TableProduct product_of_tables() {
    TableProduct product;
    product.tables.resize(3);
    product.tables[0].rows = 40;
    product.tables[0].columns = {column_of("TIME", 1), column_of("RATE", 3), column_of("RATIO", 0),
                                 column_of("FLAGS", 1, {column_of("LOW", 2), column_of("HIGH", 1)})};
    product.tables[1].rows = 10;
    product.tables[1].columns = {column_of("TIME", 1)};
    product.tables[2].rows = 0;
    return product;
}

std::string place_of(const BrowserPosition &at) {
    const auto n = [](int64_t number) { return std::to_string(number); };
    return "table " + n(at.table) + " rows " + n(at.first_row) + "+" + n(at.rows_shown) + " column " + n(at.column) +
           "/" + n(at.item) + " bits " + n(at.bit_column) + "/" + n(at.bit_item);
}

using Move = std::function<void(BrowserPosition *)>;

Move jump(int64_t row) {
    return [row](BrowserPosition *at) { tb_jump_to_row_2(at, row); };
}
Move skip(int64_t count) {
    return [count](BrowserPosition *at) { tb_skip_cols(at, count); };
}
Move find(const char *name, bool is_found = true) {
    return [=](BrowserPosition *at) { EXPECT_EQ(tb_move_by_column_name_2(at, name), is_found) << name; };
}

TEST(BrowserPosition, MovesAndEndsWhereItMust) {
    TableProduct product = product_of_tables();
    BrowserPosition at = tb_start_of(&product);
    const std::pair<Move, const char *> steps[] = {
        {jump(0), "table 0 rows 0+15 column 1/1 bits 1/1"},
        {jump(-3), "table 0 rows 0+15 column 1/1 bits 1/1"},
        {jump(26), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {jump(27), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {jump(INT64_MAX), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {tb_prev_rows, "table 0 rows 10+15 column 1/1 bits 1/1"},
        {tb_prev_rows, "table 0 rows 0+15 column 1/1 bits 1/1"},
        {tb_next_rows, "table 0 rows 15+15 column 1/1 bits 1/1"},
        {tb_next_rows, "table 0 rows 25+15 column 1/1 bits 1/1"},
        // Columns, without and with their items.
        {skip(0), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {skip(2), "table 0 rows 25+15 column 3/1 bits 1/1"},
        {skip(INT64_MIN), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {toggle_show_items_flag, "table 0 rows 25+15 column 1/1 bits 1/1"},
        {skip(3), "table 0 rows 25+15 column 2/3 bits 1/1"},
        {skip(1), "table 0 rows 25+15 column 3/1 bits 1/1"},
        {skip(-2), "table 0 rows 25+15 column 2/2 bits 1/1"},
        {toggle_show_items_flag, "table 0 rows 25+15 column 2/1 bits 1/1"},
        // Names: the next one, then the nearest before, then the current one.
        {find("RAT"), "table 0 rows 25+15 column 3/1 bits 1/1"},
        {find("RAT"), "table 0 rows 25+15 column 2/1 bits 1/1"},
        {find("TIME"), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {find("TIME"), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {find("TIMES", false), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {find("", false), "table 0 rows 25+15 column 1/1 bits 1/1"},
        // Bit columns: nothing where there are none, and their own items.
        {toggle_show_bit_col_flag, "table 0 rows 25+15 column 1/1 bits 1/1"},
        {skip(1), "table 0 rows 25+15 column 1/1 bits 1/1"},
        {toggle_show_bit_col_flag, "table 0 rows 25+15 column 1/1 bits 1/1"},
        {skip(9999999), "table 0 rows 25+15 column 4/1 bits 1/1"},
        {toggle_show_bit_col_flag, "table 0 rows 25+15 column 4/1 bits 1/1"},
        {skip(1), "table 0 rows 25+15 column 4/1 bits 2/1"},
        {find("LOW"), "table 0 rows 25+15 column 4/1 bits 1/1"},
        {toggle_show_items_flag, "table 0 rows 25+15 column 4/1 bits 1/1"},
        {skip(1), "table 0 rows 25+15 column 4/1 bits 1/2"},
        {skip(5), "table 0 rows 25+15 column 4/1 bits 2/1"},
        // Another column begins with its first bit column; so does another table, with fewer rows.
        {toggle_show_bit_col_flag, "table 0 rows 25+15 column 4/1 bits 2/1"},
        {skip(-1), "table 0 rows 25+15 column 3/1 bits 1/1"},
        {tb_prev_table, "table 0 rows 25+15 column 3/1 bits 1/1"},
        {tb_next_table, "table 1 rows 0+10 column 1/1 bits 1/1"},
        {tb_next_rows, "table 1 rows 0+10 column 1/1 bits 1/1"},
        {tb_next_table, "table 2 rows 0+0 column 1/1 bits 1/1"},
        {skip(1), "table 2 rows 0+0 column 1/1 bits 1/1"},
        {tb_next_table, "table 2 rows 0+0 column 1/1 bits 1/1"},
        {tb_prev_table, "table 1 rows 0+10 column 1/1 bits 1/1"},
        // Another table begins with its first column, not with bit columns that this may not have.
        {toggle_show_bit_col_flag, "table 1 rows 0+10 column 1/1 bits 1/1"},
        {tb_prev_table, "table 0 rows 0+15 column 1/1 bits 1/1"},
        {skip(1), "table 0 rows 0+15 column 2/1 bits 1/1"},
    };
    int number = 0;
    for (const auto &[move, place] : steps) {
        move(&at);
        EXPECT_EQ(place_of(at), place) << "step " << number++;
    }
    TableProduct empty;
    BrowserPosition nowhere = tb_start_of(&empty);
    tb_next_rows(&nowhere);
    tb_move_right(&nowhere, 1);
    EXPECT_EQ(nowhere.current_table(), nullptr);
    EXPECT_EQ(nowhere.current_bit_column(), nullptr);
}

// The counts of items that a label may claim are not gone through one by one.
TEST(BrowserPosition, PassesManyItemsAtOnce) {
    TableProduct product = product_of_tables();
    product.tables[0].columns[0].items = INT64_MAX;
    product.tables[0].columns[1].items = INT64_MAX;
    BrowserPosition at = tb_start_of(&product);
    toggle_show_items_flag(&at);
    for (int i = 0; i < 3; ++i)
        tb_move_right(&at, INT64_MAX);
    tb_move_left(&at, INT64_MIN);
    EXPECT_GE(at.item, 1);
}

TEST(BrowserPosition, ReadsWhatAUserTyped) {
    const std::pair<const char *, int64_t> cases[] = {
        {"12", 12}, {" +12rows", 12}, {"-7", -7}, {"", 0}, {"x", 0}, {"+-3", 0}, {"1234567890", 1234567}, {"%s", 0}};
    for (const auto &[typed, number] : cases)
        EXPECT_EQ(tb_typed_number(typed, 7), number) << typed;
    EXPECT_EQ(tb_typed_number("99999999999999999999", 30), INT64_MAX);
}

}  // namespace
