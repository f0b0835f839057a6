// The commands that move a column browser and change how it shows its column.
#include "tables/column_browser.h"

namespace {

constexpr size_t longest_skip = 7;  // characters
constexpr size_t longest_row = 10;
constexpr size_t longest_name = 59;

using Move = void (*)(BrowserPosition *position);

void move_rows(Window *window, Move move) {
    BrowserState *browser = browser_state(window);
    if (!browser)
        return;
    move(&browser->position);
    tb_display_column_2(window);
}

void move_columns(Window *window, Move move) {
    BrowserState *browser = browser_state(window);
    if (!browser)
        return;
    move(&browser->position);
    display_column_keywords(window);
    tb_display_column_2(window);
}

void move_table(Window *window, bool (*move)(BrowserPosition *position)) {
    BrowserState *browser = browser_state(window);
    if (browser && move(&browser->position))
        show_current_table(window);
}

// The text of a field; false after a message when the window's definition has no such field.
bool read_field_text(const Window *window, int field, const char *missing, std::string *text) {
    if (!browser_state(window))
        return false;
    if (!gui_has_control(window, field)) {
        table_error(missing);
        return false;
    }
    *text = gui_text(window, field);
    return true;
}

constexpr const char *no_row_field = "Select Band -- couldn't find static text window for the row number";
constexpr const char *no_name_field = "Select Band -- couldn't find static text window for Column Name";

void show_as(Window *window, DisplayFormat format) {
    const BrowserState *browser = browser_state(window);
    ColumnInfo *shown = browser ? shown_column(browser->position) : nullptr;
    if (!shown)
        return;
    shown->display_format = tb_display_formats[format];
    tb_display_column_2(window);
}

}  // namespace

void tbtool_next_rows(Window *window) {
    move_rows(window, tb_next_rows);
}

void tbtool_prev_rows(Window *window) {
    move_rows(window, tb_prev_rows);
}

void tbtool_first_rows(Window *window) {
    move_rows(window, [](BrowserPosition *position) { tb_jump_to_row_2(position, 1); });
}

void tbtool_last_rows(Window *window) {
    move_rows(window, [](BrowserPosition *position) { tb_jump_to_row_2(position, INT64_MAX); });
}

void tbtool_next_cols(Window *window) {
    move_columns(window, [](BrowserPosition *position) { tb_move_right(position, 1); });
}

void tbtool_prev_cols(Window *window) {
    move_columns(window, [](BrowserPosition *position) { tb_move_left(position, 1); });
}

void tbtool_next_table(Window *window) {
    move_table(window, tb_next_table);
}

void tbtool_prev_table(Window *window) {
    move_table(window, tb_prev_table);
}

void tbtool_go_to_row(Window *window) {
    std::string text;
    if (!read_field_text(window, row_field, no_row_field, &text))
        return;
    tb_jump_to_row_2(&browser_state(window)->position, tb_typed_number(text, longest_row));
    tb_display_column_2(window);
}

void tbtool_skip_x_cols(Window *window) {
    std::string text;
    if (!read_field_text(window, skip_field, no_row_field, &text))
        return;
    gui_set_text(window, skip_field, "");
    tb_skip_cols(&browser_state(window)->position, tb_typed_number(text, longest_skip));
    display_column_keywords(window);
    tb_display_column_2(window);
}

void tb_move_by_col_name(Window *window) {
    std::string text;
    if (!read_field_text(window, name_field, no_name_field, &text))
        return;
    gui_set_text(window, name_field, "");
    const std::string name = shown_name(text, longest_name);
    BrowserState *browser = browser_state(window);
    if (!name.empty() && !tb_move_by_column_name_2(&browser->position, name))
        browser->remark = "No column's name begins with " + name + ".";
    display_column_keywords(window);
    tb_display_column_2(window);
}

void tbtool_enter_row(Window *window) {
    gui_focus_control(window, row_field);
}

void tbtool_enter_skip(Window *window) {
    gui_focus_control(window, skip_field);
}

void tbtool_enter_name(Window *window) {
    gui_focus_control(window, name_field);
}

void tbtool_toggle_items(Window *window) {
    move_columns(window, toggle_show_items_flag);
}

void tbtool_toggle_bit_cols(Window *window) {
    move_columns(window, toggle_show_bit_col_flag);
}

void tbtool_show_text(Window *window) {
    show_as(window, TB_SHOW_TEXT);
}

void tbtool_show_binary(Window *window) {
    show_as(window, TB_SHOW_BINARY);
}

void tbtool_show_hex(Window *window) {
    show_as(window, TB_SHOW_HEX);
}

void tbtool_show_octal(Window *window) {
    show_as(window, TB_SHOW_OCTAL);
}

void browse_columns(Window *window) {
    if (!table_state(window))
        return;
    restore_profile();
    auto state = std::make_unique<GenericState>();
    if (!reopen_label(*window_state(window), state.get()))
        return;
    state->label_state->object_chosen = true;
    open_column_browser(std::move(state));
}
