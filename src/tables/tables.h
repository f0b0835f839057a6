// Tables: what other modules use of them. Below are the windows: the list of a product's tables, the table by pages,
// one column at a time, plots. What they show comes from the model; the headers of tables/model are, lowest first:
// value_lists.h (words of labels), table_info.h (records of a product's tables), field_text.h (bytes as text),
// column_text.h (the formatter of a column), table_reader.h (fields of rows), column_view.h (the fields of a table in a
// row), flatten.h (label trees for the table readers of oa), browser_position.h (moves of a one-column browser),
// column_summary.h (minimum, maximum, average and values of a column), plot_data.h (two columns as the plot window
// shows them), curve_plot.h (curves with axes), curve_column.h (columns as curves).
//
//   const TableProduct product = tb_read_product(label);
//   const ColumnView view(product.tables[0]);
//   const auto reader = tb_open_reader(product.file, product.tables[0]);
//   std::string text;
//   for (int64_t row = 0; row < reader->rows_present(); ++row)
//       for (int64_t i = 0; i < view.size(); ++i)
//           view.append(reader.get(), row, i, &text);
#pragma once

#include "tables/model/browser_position.h"
#include "tables/model/column_summary.h"
#include "tables/model/column_text.h"
#include "tables/model/column_view.h"
#include "tables/model/curve_plot.h"
#include "tables/model/field_text.h"
#include "tables/model/flatten.h"
#include "tables/model/table_info.h"
#include "tables/model/table_reader.h"
#include "tables/model/value_lists.h"
#include "viewer/viewer.h"

#include <memory>
#include <optional>

// Shows the tables of a product: the current object when the user chose it; else the product's only table at once, of
// several the list of them. Of a product that has none of the listed kinds the current object is opened as it is. While
// nobody answers questions the first table is opened.
void open_tables(std::unique_ptr<GenericState> state);

// --- The table by pages -------------------------------------------------------------------------------------------

struct TableOptions {
    std::optional<GuiGrid> spectrum;  // from a qube: all its rows, in place of those of a table in the label
    std::shared_ptr<GuiRect> place;   // of a spectrum: where the window is put once it has a width; set when it goes
    Window *owner = nullptr;          // that the window goes with
};
// Opens the window of a table: the state's current object when it is one, else the first of its label. The window, or
// null after a message.
Window *open_table(std::unique_ptr<GenericState> state, const TableOptions &options = {});
// Shows other rows in a window on a spectrum, as many as before; the page stays. False when it is no such window.
bool replace_spectrum(Window *window, GuiGrid spectrum);

constexpr int64_t paging_threshold = 100;  // rows from which on a table is paged, in a dialog
constexpr int table_grid = 1;              // of the table window
constexpr int side_data_command = 2020;

// Commands of table windows.
void show_side_data(Window *window);
void next_row_page(Window *window);
void previous_row_page(Window *window);
void next_column_page(Window *window);
void previous_column_page(Window *window);
void go_to_row(Window *window);
void show_paging_dialog(Window *window);

// --- One column at a time -----------------------------------------------------------------------------------------

// Opens the window that shows one column of one table, or one item or bit column of it, at a time: at first of the
// state's current object.
void open_column_browser(std::unique_ptr<GenericState> state);

constexpr int browser_table_pane = 1;  // of the browser window
constexpr int browser_column_pane = 2;
constexpr int browser_grid = 3;
constexpr int browser_place = 4;
constexpr int browser_note = 5;
constexpr int skip_field = 31;
constexpr int row_field = 32;
constexpr int name_field = 34;
constexpr int summary_text = 1;  // of the window of summaries
constexpr int browse_columns_command = 2030;
constexpr int summary_command = 2048;

// The command of a table window that opens one on its table.
void browse_columns(Window *window);

// Commands of browser windows. Columns stand for bit columns where these are shown.
void tbtool_next_rows(Window *window);
void tbtool_prev_rows(Window *window);
void tbtool_first_rows(Window *window);
void tbtool_last_rows(Window *window);
void tbtool_next_cols(Window *window);
void tbtool_prev_cols(Window *window);
void tbtool_next_table(Window *window);
void tbtool_prev_table(Window *window);
// Go where the window's fields say: a row, columns to skip, the start of a column's name.
void tbtool_go_to_row(Window *window);
void tbtool_skip_x_cols(Window *window);
void tb_move_by_col_name(Window *window);
// Go to the fields.
void tbtool_enter_row(Window *window);
void tbtool_enter_skip(Window *window);
void tbtool_enter_name(Window *window);
void tbtool_toggle_items(Window *window);
void tbtool_toggle_bit_cols(Window *window);
// Show the current column or bit column so.
void tbtool_show_text(Window *window);
void tbtool_show_binary(Window *window);
void tbtool_show_hex(Window *window);
void tbtool_show_octal(Window *window);
// Adds the summary of what is shown to the window of summaries.
void tbtool_get_summary(Window *window);

// --- Other windows ------------------------------------------------------------------------------------------------

// The list of a product's tables.
constexpr int table_list_grid = 1;
void open_table_list(std::unique_ptr<GenericState> state);

// --- Plots --------------------------------------------------------------------------------------------------------

// Opens the dialog that sets up a plot of two columns of the state's current object.
void plot_set_up(std::unique_ptr<GenericState> state);
constexpr int curve_window_resource = 261;
struct CurveOptions {
    int resource = curve_window_resource;  // or another definition with its controls
    std::shared_ptr<GuiRect> place;        // where the window is put once it has a width; set when the window goes
    Window *owner = nullptr;               // that the window goes with
};
// Opens a window that draws the curves, with axes, read-out and saving. The window, or null.
Window *open_curve_plot(CurvePlot plot, const CurveOptions &options = {});
// Draws other curves in such a window. False when it is none.
bool replace_curves(Window *window, CurvePlot plot);

// Commands of plot windows; of a table window the first.
void plot_table_columns(Window *window);
void show_detailed_plot(Window *window);
void toggle_curve_lines(Window *window);
void toggle_curve_points(Window *window);
void toggle_curve_grid(Window *window);
void save_curves_as_png(Window *window);
void save_curves_as_svg(Window *window);
void save_curves_as_csv(Window *window);
