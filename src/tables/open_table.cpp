#include "base/text.h"
#include "tables/page_state.h"

#include <algorithm>

namespace {

constexpr int table_resource = 106;

// The keyword of the table, else of the label's root. False when neither has it.
bool number_of(const char *keyword, const ObjDesc *table, const ObjDesc *root, int64_t *number) {
    return OaKwdValuetoLong(keyword, table, number) == 0 || OaKwdValuetoLong(keyword, root, number) == 0;
}

// A row without columns is shown as one field of all its bytes.
void add_whole_row(TableInfo *table) {
    if (!table->columns.empty() || table->row_bytes < 1)
        return;
    ColumnInfo row;
    row.object = table->object;
    row.name = table->name;
    row.display_format = table->interchange_format == "ASCII" ? "TEXT" : "HEX";
    row.bytes = table->row_bytes;
    row.start_byte = 1;
    row.item_offset = row.bytes;
    table->columns.push_back(std::move(row));
}

// Without COLUMNS one column is shown, with whatever items it has.
void read_columns(const ObjDesc *root, TableInfo *table) {
    int64_t columns = 0;
    if (table->is_spreadsheet() || number_of("COLUMNS", table->object, root, &columns))
        return;
    table_warning("This table has no COLUMNS keyword.  Will assume 1 column.");
    if (table->columns.size() > 1)
        table->columns.resize(1);
}

bool read_row_bytes(const ObjDesc *root, TableInfo *table) {
    if (number_of("ROW_BYTES", table->object, root, &table->row_bytes) || table->is_spreadsheet())
        return true;
    table_warning("This table has no ROW_BYTES keyword.  Will use BYTES keyword if one exists.");
    if (number_of("BYTES", root, table->object, &table->row_bytes))
        return true;
    table_error("Open Table - get ROW_BYTES and BYTES failed");
    return false;
}

// Fills the table's records from the label; false after a message.
bool set_up_table(GenericState *state, TableState *table) {
    const LabelState &label = *state->label_state;
    table->product = tb_read_product(label.root.get());
    const ObjDesc *object = find_shown_table(label, table->product);
    if (!object) {
        table_error("Open Object - no valid object");
        return false;
    }
    table->table = tb_table_of(table->product, object);
    error_string.clear();
    if (tb_add_arrays(&table->table, &table->flat) != 0)
        table_warning(error_string);
    state->label_state->current_object = const_cast<ObjDesc *>(object);
    table->page = create_substate(PageState());
    if (!table->page)
        return false;
    if (!read_table_size(label.root.get(), table, table->page.get()))
        return false;
    if (!table->view->remark().empty())
        table_warning(table->view->remark());
    if (!with_memory([&] { table->side_data = make_side_data(label.file_name, *table); })) {
        table_error("Open Table - unable to allocate side data memory");
        return false;
    }
    error_string.clear();
    table->reader = tb_open_reader(table->product.file, table->table);
    if (!table->reader)
        table_error("Open Table - unable to create window\n" + error_string);
    return table->reader != nullptr;
}

bool set_up_spectrum(TableState *table, const TableOptions &options) {
    table->page = create_substate(PageState());
    if (!table->page)
        return false;
    table->spectrum = options.spectrum;
    table->place = options.place;
    table->page->is_spectrum = true;
    table->page->rows = options.spectrum->rows;
    table->page->columns = table->page->last_column = static_cast<int64_t>(options.spectrum->columns.size());
    return true;
}

void warn_of_large_page_count(TableState *table) {
    constexpr int64_t too_many_rows = 1'000'000'000;
    table->announced_pages = table->page->rows / rows_per_page + 1;
    if (table->page->rows < too_many_rows)
        return;
    table_warning(util_format("This table contains %lld pages.  Will display only trailing digits of this number.",
                              static_cast<long long>(table->announced_pages)));
    table->announced_pages %= page_number_limit;
}

long create_table_window(Window *window) {
    GenericState *state = window_state(window);
    if (!table_get_title(state, window))
        return 1;
    TableState &table = *table_state(window);
    table.page->window = window;
    enable_known_commands(window, CommandDispatcher::Application);
    gui_enable_command(window, side_data_command, !table.side_data.empty());
    enable_page_commands(*table.page);
    if (table.place && table.place->width > 0)
        gui_place_window(window, *table.place);
    if (!rebuild_table(&table, *table.page)) {
        table_error("Open Table - unable to create window");
        return 1;
    }
    gui_set_grid_current(window, table_grid, {0, 0});
    gui_focus_control(window, table_grid);
    return 0;
}

long table_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_table_window(window);
        case EventType::Destroy:
            if (const TableState *table = table_state(window); table && table->place)
                *table->place = gui_own_place(window);
            [[fallthrough]];
        default:
            handle_common_event(window, event, CommandDispatcher::Application);
            break;
    }
    return 0;
}

}  // namespace

void table_warning(const std::string &text) {
    if (!session().unattended)
        gui_warning(text);
}

void table_error(const std::string &text) {
    if (!session().unattended)
        gui_error(text);
}

int64_t read_table_rows(const ObjDesc *table, const ObjDesc *root) {
    int64_t rows = 1;
    if (number_of("ROWS", table, root, &rows))
        return rows;
    table_warning(
        "This table has no ROWS keyword.  Will use RECORDS value, or if no RECORDS keyword present, will assume 1 "
        "row.");
    if (OaKwdValuetoLong("RECORDS", root, &rows) == 0)
        return rows;
    table_warning("No ROWS or RECORDS keyword found.  Will assume 1 row.");
    return 1;
}

const ObjDesc *find_shown_table(const LabelState &label, const TableProduct &product) {
    const ObjDesc *current = label.current_object;
    const ProductOpener *opener = find_opener(label);
    if (current && (tb_is_table(current) || (opener && opener->open == open_tables)))
        return current;
    ObjDesc *root = label.root.get();
    for (const char *pattern : {"*TABLE", "*SERIES"}) {
        if (const ObjDesc *found = OdlFindObjDesc(root, pattern, nullptr, nullptr, 1, SCOPE_TO_END))
            return found;
    }
    return product.tables.empty() ? nullptr : product.tables.front().object;
}

TableState *table_state(const Window *window) {
    const GenericState *state = gui_window_exists(window) ? window_state(window) : nullptr;
    return state ? dynamic_cast<TableState *>(state->module.get()) : nullptr;
}

bool read_table_size(const ObjDesc *root, TableState *table, PageState *page) {
    TableInfo &info = table->table;
    info.rows = std::clamp<int64_t>(read_table_rows(info.object, root), 0, tb_most_rows);
    read_columns(root, &info);
    if (!read_row_bytes(root, &info))
        return false;
    add_whole_row(&info);
    // The label handed to table reading has no bit columns: a page shows the columns that hold them.
    table->view = std::make_unique<ColumnView>(info, ColumnViewOptions{true, false});
    page->rows = info.rows;
    page->columns = table->view->size();
    page->row_bytes = info.row_bytes;
    page->first_row = page->first_column = 1;
    page->last_row = page->rows;
    page->last_column = std::min(page->columns, columns_per_page);
    return true;
}

bool table_get_title(const GenericState *state, Window *window) {
    if (!state || !state->label_state || !state->label_state->root || !table_state(window)) {
        table_error("Table Create - invalid state");
        return false;
    }
    constexpr size_t longest_spectrum_name = 58;
    const PageState &page = *table_state(window)->page;
    const std::string &name = state->label_state->file_name;
    gui_set_title(window, page.is_spectrum
                              ? "Lumacart - Spectrum from QUBE - " + shown_name(name, longest_spectrum_name)
                              : "Lumacart - Table - " + shown_name(name, longest_title_name));
    if (gui_window_exists(page.dialog))
        gui_set_title(page.dialog, shown_name(name, longest_title_name));
    return true;
}

Window *open_table(std::unique_ptr<GenericState> state, const TableOptions &options) {
    const BusyCursor busy;
    if (!state || !state->label_state || !state->label_state->root) {
        table_error("Table Create - invalid state");
        return nullptr;
    }
    auto made = std::make_unique<TableState>();
    TableState *table = made.get();
    state->kind = DocumentKind::Table;
    state->module = std::move(made);
    if (options.spectrum ? !set_up_spectrum(table, options) : !set_up_table(state.get(), table))
        return nullptr;
    warn_of_large_page_count(table);
    if (!gui_has_definition(table_resource)) {
        table_error("Open Table - unable to find window definition");
        return nullptr;
    }
    const bool is_paged =
        !session().unattended && (table->page->rows >= paging_threshold || table->page->columns > columns_per_page);
    table->page->last_row = std::min(table->page->rows, rows_per_page);
    Window *window = open_document_window(table_resource, table_eh, std::move(state), options.owner);
    if (window && is_paged && !open_paging_dialog(window, table)) {
        gui_destroy_window(window);
        return nullptr;
    }
    if (window)
        tell_remarks(table);
    return gui_window_exists(window) ? window : nullptr;
}

bool replace_spectrum(Window *window, GuiGrid spectrum) {
    TableState *table = table_state(window);
    if (!table || !table->spectrum || table->spectrum->rows != spectrum.rows)
        return false;
    const GuiCell cell = gui_grid_current(window, table_grid);
    table->spectrum = std::move(spectrum);
    if (!rebuild_table(table, *table->page))
        return false;
    gui_set_grid_current(window, table_grid, cell);
    return true;
}
