// Turning the pages of a table window.
#include "base/text.h"
#include "tables/page_state.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

constexpr int go_to_row_resource = 221;
constexpr int row_field = 1;
constexpr int accept_button = 2;

constexpr int next_rows_command = 2021;
constexpr int previous_rows_command = 2022;
constexpr int next_columns_command = 2023;
constexpr int previous_columns_command = 2024;
constexpr int go_to_row_command = 2025;
constexpr int paging_dialog_command = 2026;
constexpr int plot_columns_command = 2060;

int64_t pages_of(int64_t count, int64_t per_page) {
    return count / per_page + (count % per_page != 0 ? 1 : 0);
}

std::string page_text(int64_t page, int64_t pages) {
    return util_format("Page %lld of %lld", static_cast<long long>(page), static_cast<long long>(pages));
}

// The number of pages as it is shown, told once when it is cut.
int64_t shown_page_count(TableState *table, int64_t pages, const char *what, bool *told) {
    if (pages <= page_number_limit)
        return std::max<int64_t>(pages, 1);
    if (!std::exchange(*told, true))
        table->remarks.push_back(
            util_format("This table contains %lld pages of %s.  Will display only trailing digits of this number.",
                        static_cast<long long>(pages), what));
    return pages % page_number_limit;
}

int64_t shown_row_page(TableState *table, const PageState &page) {
    constexpr int64_t last_whole_number = 999'999'999;
    const int64_t number = (page.first_row + rows_per_page - 1) / rows_per_page;
    if (page.first_row + rows_per_page - 1 <= last_whole_number)
        return number;
    if (!std::exchange(table->large_page_remark, true))
        table->remarks.emplace_back(
            "Warning: Large page number.  Will display last 7 digits with leading zeros omitted.");
    return number % page_number_limit;
}

// False after a message: the dialog is not as its definition should be.
bool has_controls(const Window *dialog, std::initializer_list<int> numbers, const char *message) {
    for (const int number : numbers) {
        if (!gui_has_control(dialog, number)) {
            table_error(message);
            return false;
        }
    }
    return true;
}

void set_row_buttons(const PageState &page) {
    if (!gui_window_exists(page.dialog) ||
        !has_controls(page.dialog, {next_rows_button, previous_rows_button}, "Couldn't get control window"))
        return;
    gui_enable_control(page.dialog, previous_rows_button, page.first_row >= rows_per_page);
    gui_enable_control(page.dialog, next_rows_button, page.last_row < page.rows);
}

void set_column_buttons(const PageState &page) {
    if (!gui_window_exists(page.dialog) ||
        !has_controls(page.dialog, {next_columns_button, previous_columns_button}, "Couldn't get control window"))
        return;
    gui_enable_control(page.dialog, previous_columns_button, page.first_column > columns_per_page);
    gui_enable_control(page.dialog, next_columns_button, page.first_column + columns_per_page - 1 < page.columns);
}

// Shows a page in place of the present one; false, with the present one as it was, after a message.
bool show_page(TableState *table, const PageState &wanted) {
    std::unique_ptr<PageState> page = create_substate(wanted);
    if (!page)
        return false;
    const int column = gui_grid_current(wanted.window, table_grid).column;
    if (!open_page_table(table, *page)) {
        table->remarks.emplace_back("Page turn failed");
        return false;
    }
    table->page = std::move(page);
    const int64_t columns = wanted.last_column - wanted.first_column + 1;
    gui_set_grid_current(wanted.window, table_grid, {0, static_cast<int>(std::clamp<int64_t>(column, 0, columns - 1))});
    return true;
}

// The columns of a spectrum are not turned.
void set_spectrum_columns(Window *dialog) {
    for (const int number : {next_columns_button, previous_columns_button, column_page_label, column_pages_heading})
        gui_enable_control(dialog, number, false);
    gui_set_text(dialog, column_page_label, "Page 1 of 1");
}

bool set_first_labels(TableState *table) {
    const PageState &page = *table->page;
    if (page.is_spectrum) {
        if (!has_controls(page.dialog,
                          {next_columns_button, previous_columns_button, column_page_label, column_pages_heading},
                          "Open Table - couldn't find control window"))
            return false;
        set_spectrum_columns(page.dialog);
    } else if (page.columns <= columns_per_page) {
        tbl_less_max_cols(page);
    } else {
        gui_set_text(page.dialog, column_page_label,
                     page_text(1, shown_page_count(table, pages_of(page.columns, columns_per_page), "columns",
                                                   &table->column_page_remark)));
        set_column_buttons(page);
    }
    if (!has_controls(page.dialog, {row_page_label}, "Open Table -- couldn't find static text"))
        return false;
    gui_set_text(page.dialog, row_page_label, page_text(1, table->announced_pages));
    gui_enable_control(page.dialog, previous_rows_button, false);
    gui_enable_control(page.dialog, next_rows_button, page.rows >= paging_threshold);
    return true;
}

long paging_eh(Window *dialog, const Event &event) {
    auto *table = static_cast<TableState *>(gui_window_data(dialog));
    switch (event.type) {
        case EventType::Close:
            return 0;
        case EventType::Destroy:
            table->page->dialog = nullptr;
            break;
        case EventType::Control:
            if (event.number == next_rows_button || event.number == previous_rows_button)
                page_turn(table, event.number == next_rows_button ? 1 : -1);
            else if (event.number == next_columns_button || event.number == previous_columns_button)
                col_page_turn(table, event.number == next_columns_button ? 1 : -1);
            break;
        default:
            break;
    }
    return 0;
}

// Beside the window, where the screen has room for it; below that of a spectrum, which is narrow.
void place_beside(Window *dialog, const Window *window, bool below) {
    const GuiRect frame = gui_window_place(window);
    const GuiSize size = gui_client_size(dialog);
    gui_place_window(dialog, {frame.left + (below ? 0 : frame.width), frame.top + (below ? frame.height : 0),
                              size.width, size.height});
}

bool create_dialog(Window *window, TableState *table) {
    Window *dialog = gui_create_window(paging_resource, window, paging_eh, table);
    if (!gui_window_exists(window))
        return false;
    table->page->dialog = dialog;
    if (!dialog) {
        table_error("Open Table - can't open paging dialog");
        return false;
    }
    place_beside(dialog, window, table->page->is_spectrum);
    return table_get_title(window_state(window), window);
}

// The rows that the file holds. They are counted only where nothing of the page's last row is there: of a file of lines
// this is a pass over it.
int64_t rows_held(TableState *table, const PageState &page) {
    bool is_held = page.columns < 1;
    for (int64_t i = page.first_column - 1; i < page.last_column && !is_held; ++i) {
        const ViewField &at = (*table->view)[i];
        FieldBytes field;
        is_held = table->reader->read(page.last_row - 1, *at.column, at.item, &field);
    }
    return is_held ? page.rows : table->reader->rows_present();
}

void tell_of_missing_rows(TableState *table, const PageState &page, int64_t held) {
    if (held >= page.last_row || std::exchange(table->missing_remark, true))
        return;
    table->remarks.push_back(
        util_format("The data file holds %lld of the %lld rows that the label gives.  The others are shown as missing.",
                    static_cast<long long>(held), static_cast<long long>(page.rows)));
}

GuiGridColumn head_of(const ColumnView &view, int64_t field) {
    GuiGridColumn head;
    head.name = view.name(field);
    const std::string unit = view.unit(field);
    const std::string &type = view.data_type(field);
    head.remarks = {unit, type == "Unknown" ? "" : type};
    head.is_number = is_number_type(type);
    return head;
}

std::string cell_text(TableState *table, int64_t row, int64_t field, int64_t rows_held) {
    if (row >= rows_held)
        return "(missing)";
    std::string text;
    table->view->append(table->reader.get(), row, field, &text);
    return text.size() > longest_cell ? shown_name(text, longest_cell) + "..." : text;
}

// An empty second line would only take room where no column of the page has a unit.
void drop_empty_units(std::vector<GuiGridColumn> *heads) {
    const bool none =
        std::all_of(heads->begin(), heads->end(), [](const auto &head) { return head.remarks[0].empty(); });
    for (GuiGridColumn &head : *heads) {
        if (none)
            head.remarks.erase(head.remarks.begin());
    }
}

GuiGrid spectrum_page(const GuiGrid &spectrum, const PageState &page) {
    GuiGrid grid = spectrum;
    grid.rows = std::max<int64_t>(0, page.last_row - page.first_row + 1);
    grid.first_row = page.first_row;
    grid.text = [text = spectrum.text, first = page.first_row - 1](int64_t row, int column) {
        return text(first + row, column);
    };
    return grid;
}

struct RowQuestion {
    int64_t rows;
    int64_t row;
};

bool read_row_number(const Window *dialog, RowQuestion *question) {
    const std::string typed = gui_text(dialog, row_field);
    const std::string_view digits = util_trim(typed);
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), question->row);
    return result.ec == std::errc() && result.ptr == digits.data() + digits.size() && question->row >= 1 &&
           question->row <= question->rows;
}

long go_to_row_eh(Window *dialog, const Event &event) {
    auto *question = static_cast<RowQuestion *>(gui_window_data(dialog));
    if (event.type == EventType::Create) {
        gui_set_text(dialog, row_field, std::to_string(question->row));
        gui_focus_control(dialog, row_field);
    }
    if (event.type != EventType::Control || event.number == row_field)
        return 0;
    if (event.number == accept_button && !read_row_number(dialog, question)) {
        gui_warning(util_format("Rows are counted from 1 to %lld.", static_cast<long long>(question->rows)));
        return 0;
    }
    gui_end_dialog(dialog, event.number);
    return 0;
}

}  // namespace

bool is_number_type(const std::string &data_type) {
    constexpr const char *words[] = {"INTEGER", "REAL", "FLOAT", "DOUBLE"};
    return std::any_of(std::begin(words), std::end(words),
                       [&](const char *word) { return data_type.find(word) != std::string::npos; });
}

void tell_remarks(TableState *table) {
    const std::vector<std::string> remarks = std::exchange(table->remarks, {});
    for (const std::string &remark : remarks)
        table_warning(remark);
}

std::unique_ptr<PageState> create_substate(const PageState &page) {
    auto made = new_or_null<PageState>();
    if (made)
        *made = page;
    else
        table_error("Couldn't create substate");
    return made;
}

bool open_paging_dialog(Window *window, TableState *table) {
    return create_dialog(window, table) && set_first_labels(table);
}

void tbl_less_max_cols(const PageState &page) {
    if (!has_controls(page.dialog, {next_columns_button, previous_columns_button, column_page_label},
                      "Couldn't get control window"))
        return;
    gui_enable_control(page.dialog, next_columns_button, false);
    gui_enable_control(page.dialog, previous_columns_button, false);
    gui_set_text(page.dialog, column_page_label, "Page 1 of 1");
}

Window *open_page_table(TableState *table, const PageState &page) {
    if (gui_window_exists(page.dialog)) {
        const int64_t row_pages =
            shown_page_count(table, pages_of(page.rows, rows_per_page), "rows", &table->row_page_remark);
        const int64_t column_pages =
            shown_page_count(table, pages_of(page.columns, columns_per_page), "columns", &table->column_page_remark);
        if (!has_controls(page.dialog, {row_page_label, column_page_label},
                          "Open Page Table - couldn't find static text"))
            return nullptr;
        gui_set_text(page.dialog, row_page_label, page_text(shown_row_page(table, page), row_pages));
        if (!page.is_spectrum)
            gui_set_text(page.dialog, column_page_label,
                         page_text((page.first_column + columns_per_page - 1) / columns_per_page, column_pages));
    }
    return rebuild_table(table, page) ? page.window : nullptr;
}

const PageState *page_turn(TableState *table, int direction) {
    PageState page = *table->page;
    page.first_row += direction * rows_per_page;
    page.last_row = std::min(page.rows, page.first_row + rows_per_page - 1);
    if (page.first_row > page.rows)
        table->remarks.emplace_back("Can't page rows past end of table");
    else if (page.first_row <= 0)
        table->remarks.emplace_back("Can't page rows past beginning of table");
    else if (show_page(table, page))
        set_row_buttons(page);
    const PageState *shown = table->page.get();
    tell_remarks(table);
    return shown;
}

const PageState *col_page_turn(TableState *table, int direction) {
    PageState page = *table->page;
    page.first_column += direction * columns_per_page;
    page.last_column = std::min(page.columns, page.first_column + columns_per_page - 1);
    if (page.first_column > page.columns)
        table->remarks.emplace_back("Can't page columns past end of table");
    else if (page.first_column <= 0)
        table->remarks.emplace_back("Can't page columns past beginning of table");
    else if (show_page(table, page))
        set_column_buttons(page);
    const PageState *shown = table->page.get();
    tell_remarks(table);
    return shown;
}

bool rebuild_table(TableState *table, const PageState &page) {
    if (table->spectrum)
        return gui_set_grid(page.window, table_grid, spectrum_page(*table->spectrum, page));
    const BusyCursor busy;
    const int64_t rows = std::max<int64_t>(0, page.last_row - page.first_row + 1);
    const int64_t columns = std::max<int64_t>(0, page.last_column - page.first_column + 1);
    GuiGrid grid;
    grid.rows = rows;
    grid.first_row = page.first_row;
    for (int64_t column = 0; column < columns; ++column)
        grid.columns.push_back(head_of(*table->view, page.first_column - 1 + column));
    drop_empty_units(&grid.columns);

    std::vector<std::string> cells(static_cast<size_t>(rows * columns));
    const int64_t held = rows_held(table, page);
    for (int64_t row = 0; row < rows; ++row) {
        for (int64_t column = 0; column < columns; ++column)
            cells[static_cast<size_t>(row * columns + column)] =
                cell_text(table, page.first_row - 1 + row, page.first_column - 1 + column, held);
    }
    grid.text = [cells = std::move(cells), columns](int64_t row, int column) {
        return cells[static_cast<size_t>(row * columns + column)];
    };
    if (!gui_set_grid(page.window, table_grid, std::move(grid)))
        return false;
    tell_of_missing_rows(table, page, held);
    return true;
}

void enable_page_commands(const PageState &page) {
    const bool is_paged = page.rows >= paging_threshold || page.columns > columns_per_page;
    const bool columns = !page.is_spectrum && page.columns > columns_per_page;
    gui_enable_command(page.window, next_rows_command, page.rows >= paging_threshold);
    gui_enable_command(page.window, previous_rows_command, page.rows >= paging_threshold);
    gui_enable_command(page.window, next_columns_command, columns);
    gui_enable_command(page.window, previous_columns_command, columns);
    gui_enable_command(page.window, go_to_row_command, page.rows > 0);
    gui_enable_command(page.window, paging_dialog_command, is_paged);
    for (const int of_files : {browse_columns_command, plot_columns_command})
        gui_enable_command(page.window, of_files, !page.is_spectrum);
}

// --- Commands -----------------------------------------------------------------------------------------------------

void next_row_page(Window *window) {
    if (TableState *table = table_state(window))
        page_turn(table, 1);
}

void previous_row_page(Window *window) {
    if (TableState *table = table_state(window))
        page_turn(table, -1);
}

void next_column_page(Window *window) {
    if (TableState *table = table_state(window))
        col_page_turn(table, 1);
}

void previous_column_page(Window *window) {
    if (TableState *table = table_state(window))
        col_page_turn(table, -1);
}

void go_to_row(Window *window) {
    TableState *table = table_state(window);
    if (!table || table->page->rows < 1)
        return;
    const GuiCell cell = gui_grid_current(window, table_grid);
    RowQuestion question{table->page->rows, table->page->first_row + std::max<int64_t>(cell.row, 0)};
    // The window may have gone while the dialog was open.
    if (gui_run_dialog(go_to_row_resource, window, go_to_row_eh, &question) != accept_button ||
        !gui_window_exists(window))
        return;
    PageState page = *table->page;
    page.first_row = (question.row - 1) / rows_per_page * rows_per_page + 1;
    page.last_row = std::min(page.rows, page.first_row + rows_per_page - 1);
    if (page.first_row != table->page->first_row && show_page(table, page))
        set_row_buttons(page);
    gui_set_grid_current(window, table_grid, {question.row - table->page->first_row, std::max(cell.column, 0)});
    tell_remarks(table);
}

void show_paging_dialog(Window *window) {
    TableState *table = table_state(window);
    if (!table)
        return;
    if (gui_window_exists(table->page->dialog))
        return gui_raise(table->page->dialog);
    if (!open_paging_dialog(window, table) || !open_page_table(table, *table->page))
        return;
    if (table->page->rows >= paging_threshold)
        set_row_buttons(*table->page);
    if (!table->page->is_spectrum)
        set_column_buttons(*table->page);
    tell_remarks(table);
}
