// What a table window shows: one page of its table at a time. Private to the folder.
#pragma once

#include "tables/model/column_view.h"
#include "tables/model/flatten.h"
#include "tables/tables.h"

#include <memory>
#include <string>
#include <vector>

constexpr int64_t rows_per_page = 100;
constexpr int64_t columns_per_page = 30;
constexpr size_t side_data_limit = 20000;  // characters
constexpr int64_t page_number_limit = 10'000'000;
constexpr size_t longest_title_name = 60;
constexpr size_t longest_cell = 32768;  // bytes: a label can claim fields so wide that a page would not fit in memory

// One page. A new one is made for every page turn. Rows and columns are counted from 1, both ends inclusive; columns
// are the fields of the table's rows, each item and each repetition one of its own.
struct PageState {
    int64_t rows = 0;
    int64_t columns = 0;
    int64_t row_bytes = 0;
    int64_t first_row = 1;
    int64_t last_row = 1;
    int64_t first_column = 1;
    int64_t last_column = 1;
    bool is_spectrum = false;
    Window *dialog = nullptr;  // that turns pages; may be gone
    Window *window = nullptr;
};

// All that a table window keeps besides.
struct TableState : ModuleState {
    TableProduct product;
    FlatTable flat;  // that the table's columns point into
    TableInfo table;
    std::unique_ptr<ColumnView> view;
    std::unique_ptr<TableReader> reader;
    std::unique_ptr<PageState> page;
    int64_t announced_pages = 1;
    std::string side_data;
    std::optional<GuiGrid> spectrum;   // in place of all of the above but the page
    std::shared_ptr<GuiRect> place;    // of a spectrum
    std::vector<std::string> remarks;  // to be told when all is done: a message may outlive the window
    bool column_page_remark = false;   // what is told once a window has been told
    bool row_page_remark = false;
    bool large_page_remark = false;
    bool missing_remark = false;
};

// The table state of a table window; null for any other.
TableState *table_state(const Window *window);

// Tells what only a user can want to know: nothing while nobody is there.
void table_warning(const std::string &text);
void table_error(const std::string &text);
// Shows the window's remarks. The window may be gone afterwards, and its table with it.
void tell_remarks(TableState *table);

// The handler of windows that show a text made by this module, with the menu bar of text windows and a state to free.
long report_window_eh(Window *window, const Event &event);
// Whether values of a data type are numbers, which stand at the right.
bool is_number_type(const std::string &data_type);

// --- Opening ------------------------------------------------------------------------------------------------------

// The object of a label to show: the current one when it is a table, else the first. Null when there is none.
const ObjDesc *find_shown_table(const LabelState &label, const TableProduct &product);
// ROWS, else RECORDS, else 1, with warnings.
int64_t read_table_rows(const ObjDesc *table, const ObjDesc *root);
// Rows, columns and row bytes as the label says, after its warnings; false after an error.
bool read_table_size(const ObjDesc *root, TableState *table, PageState *page);
// The text that tells of the table and its columns; carriage returns end its lines.
std::string make_side_data(const std::string &file_name, const TableState &table);

// --- Pages --------------------------------------------------------------------------------------------------------

constexpr int paging_resource = 116;
constexpr int next_rows_button = 1;
constexpr int previous_rows_button = 2;
constexpr int row_page_label = 3;
constexpr int next_columns_button = 6;
constexpr int previous_columns_button = 7;
constexpr int column_page_label = 8;
constexpr int column_pages_heading = 9;

// A copy of a page for the one to come; null after a message when memory is out.
std::unique_ptr<PageState> create_substate(const PageState &page);
// Opens the dialog beside the window and sets its first labels; false after a message.
bool open_paging_dialog(Window *window, TableState *table);
// Sets the labels of the page and shows its rows and columns. The window, or null after a message.
Window *open_page_table(TableState *table, const PageState &page);
// Show the page `direction` (1 or -1) pages on. The page then shown: the old one when there is no such page.
// The window may be gone afterwards.
const PageState *page_turn(TableState *table, int direction);
const PageState *col_page_turn(TableState *table, int direction);
// A table of no more columns than one page has.
void tbl_less_max_cols(const PageState &page);
// Reads the cells of the page into the window's grid; false when there is no such control.
bool rebuild_table(TableState *table, const PageState &page);
// Enables the window's paging commands by the page shown.
void enable_page_commands(const PageState &page);

// Sets the titles of the window and of its paging dialog; false after a message when the state has no label.
bool table_get_title(const GenericState *state, Window *window);
