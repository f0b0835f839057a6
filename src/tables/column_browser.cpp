#include "tables/column_browser.h"

#include "base/text.h"
#include "tables/model/keyword_text.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int browser_resource = 230;
constexpr int keywords_command = 1048;

// --- Keywords -----------------------------------------------------------------------------------------------------

constexpr int keyword_columns = 13;

void add_keyword(const char *name, const std::string &value, std::vector<std::string> *lines) {
    lines->push_back(util_format("%-*s", keyword_columns, name) + value);
}

std::string number_text(int64_t number, int64_t unknown = -1) {
    return number == unknown ? "Unknown" : std::to_string(number);
}

void show_table_keywords(Window *window, const TableInfo &table) {
    std::vector<std::string> lines;
    add_keyword("Name", table.name, &lines);
    add_keyword("Class", table.object->class_name ? table.object->class_name : table.type, &lines);
    add_keyword("File", table.file_name, &lines);
    add_keyword("Format", table.interchange_format, &lines);
    add_keyword("Rows", std::to_string(table.rows), &lines);
    add_keyword("Row bytes", number_text(table.row_bytes), &lines);
    add_keyword("Columns", std::to_string(table.column_count()), &lines);
    gui_set_paragraphs(window, browser_table_pane, lines);
}

// With one blank for several: labels indent the lines of long texts, which then are joined.
std::string with_single_blanks(std::string_view text) {
    std::string joined;
    for (const char c : text) {
        const bool is_blank = c == ' ' || c == '\t';
        if (!is_blank || !joined.ends_with(' '))
            joined += is_blank ? ' ' : c;
    }
    return joined;
}

// Below the other keywords, for it may be long: the lines of its text.
void add_description(std::string_view text, std::vector<std::string> *lines) {
    text = util_trim(text, "\"' \t\r\n");
    if (!text.empty())
        lines->emplace_back("Description");
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of("\r\n"), text.size());
        lines->push_back("  " + with_single_blanks(util_trim(text.substr(0, end), " \t")));
        text.remove_prefix(std::min(text.find_first_not_of("\r\n", end), text.size()));
    }
}

// --- Rows ---------------------------------------------------------------------------------------------------------

// What the browser shows of a row.
class ShownField {
  public:
    explicit ShownField(const BrowserState &browser)
        : position_(browser.position),
          table_(*position_.current_table()),
          column_(*position_.current_column()),
          bits_(position_.show_bit_columns ? position_.current_bit_column() : nullptr),
          reader_(browser.reader.get()),
          format_(bits_ ? tb_bit_column_format(table_, *bits_) : tb_column_format(table_, column_)),
          is_text_(!bits_ && reader_->gives_text() && column_.display_format == tb_display_formats[TB_SHOW_TEXT]) {}

    // The text of a row; of one that the file does not hold "(missing)", with the reason in `fault`.
    std::string text(int64_t row, std::string *fault) const {
        FieldBytes field;
        std::string text;
        if (!reader_->read(row, column_, position_.item, &field)) {
            if (!reader_->gives_text() && (field.offset < 0 || column_.bytes < 1)) {
                tb_append_asterisks(column_.bytes, &text);
                return text;
            }
            // Of lines some may have fewer fields than others.
            if (!reader_->gives_text() || row >= reader_->rows_present())
                *fault = tb_missing_text(field);
            return "(missing)";
        }
        if (bits_)
            tb_append_bit_field(format_, *bits_, field.bytes, position_.bit_item, tb_swaps_bytes(column_), &text);
        else if (is_text_)
            text = util_trim({reinterpret_cast<const char *>(field.bytes.data()), field.bytes.size()});
        else
            tb_append_field(format_, field.bytes, &text);
        return text.size() > longest_cell ? shown_name(text, longest_cell) + "..." : text;
    }

  private:
    const BrowserPosition &position_;
    const TableInfo &table_;
    const ColumnInfo &column_;
    const ColumnInfo *bits_;
    TableReader *reader_;
    FieldFormat format_;
    bool is_text_;
};

void add_part(const std::string &part, std::string *line) {
    if (part.empty())
        return;
    if (!line->empty())
        line->append(", ");
    line->append(part);
}

std::string item_text(const char *what, int64_t item, int64_t items) {
    return items > 1 ? util_format("%s %lld of %lld", what, static_cast<long long>(item), static_cast<long long>(items))
                     : "";
}

GuiGridColumn head_of(const BrowserPosition &position) {
    const ColumnInfo &column = *position.current_column();
    const ColumnInfo &shown = *shown_column(position);
    constexpr size_t longest_unit = 60;
    GuiGridColumn head;
    head.name = column.name + column.repetition;
    if (position.show_bit_columns)
        head.name += ": " + shown.name;
    std::string about = shown.data_type == "Unknown" ? "" : shown.data_type;
    add_part(std::string(util_trim(tb_text_of("UNIT", shown.object), "\"' ").substr(0, longest_unit)), &about);
    add_part(item_text("item", position.item, column.items), &about);
    if (position.show_bit_columns)
        add_part(item_text("bit item", position.bit_item, shown.items), &about);
    head.remarks = {about};
    head.is_number = is_number_type(shown.data_type) && shown.display_format == tb_display_formats[TB_SHOW_TEXT];
    return head;
}

// Why nothing can be shown of the current column; "" when it can.
std::string fault_of(const BrowserState &browser) {
    if (!shown_column(browser.position))
        return browser.position.current_column() ? "The bit column cannot be displayed."
                                                 : "The column cannot be displayed.";
    if (browser.reader)
        return "";
    const char *what =
        browser.position.show_bit_columns ? "The bit column cannot be displayed." : "The column cannot be displayed.";
    return browser.reader_fault.empty() ? what : std::string(what) + "\n" + browser.reader_fault;
}

// Shows the block of rows; what is missing of it, or "".
std::string fill_rows(Window *window, const BrowserState &browser) {
    const BrowserPosition &position = browser.position;
    const BusyCursor busy;
    const ShownField field(browser);
    std::string fault;
    std::vector<std::string> cells;
    for (int64_t row = position.first_row; row < position.first_row + position.rows_shown; ++row)
        cells.push_back(fault.empty() ? field.text(row, &fault) : "(missing)");
    GuiGrid grid;
    grid.rows = static_cast<int64_t>(cells.size());
    grid.first_row = position.first_row + 1;
    grid.columns = {head_of(position)};
    grid.text = [cells = std::move(cells)](int64_t row, int) { return cells[static_cast<size_t>(row)]; };
    const int64_t current =
        std::clamp<int64_t>(gui_grid_current(window, browser_grid).row, 0, std::max<int64_t>(grid.rows - 1, 0));
    gui_set_grid(window, browser_grid, std::move(grid));
    gui_set_grid_current(window, browser_grid, {current, 0});
    return fault;
}

// --- The window ---------------------------------------------------------------------------------------------------

void add_place(const std::string &part, std::string *line) {
    if (!line->empty() && !part.empty())
        line->append("   ");
    line->append(part);
}

std::string place_text(const BrowserState &browser) {
    const BrowserPosition &position = browser.position;
    const TableInfo &table = *position.current_table();
    const ColumnInfo *column = position.current_column();
    std::string text = item_text("Table", position.table + 1, static_cast<int64_t>(browser.product.tables.size()));
    const int64_t first = position.first_row + 1;
    const int64_t last = position.first_row + position.rows_shown;
    if (table.rows < 1)
        add_place("No rows", &text);
    else
        add_place(util_format("Rows %lld to %lld of %lld", static_cast<long long>(first), static_cast<long long>(last),
                              static_cast<long long>(table.rows)),
                  &text);
    if (!column) {
        add_place("No columns", &text);
        return text;
    }
    add_place(util_format("Column %lld of %lld", static_cast<long long>(position.column),
                          static_cast<long long>(table.column_count())),
              &text);
    add_place(item_text("Item", position.item, column->items), &text);
    if (position.show_bit_columns && position.current_bit_column())
        add_place(util_format("Bit column %lld of %zu", static_cast<long long>(position.bit_column),
                              column->bit_columns.size()),
                  &text);
    if (const ColumnInfo *shown = shown_column(position))
        add_place(shown->display_format, &text);
    return text;
}

constexpr int items_box = 17;
constexpr int bit_columns_box = 18;
constexpr int items_command = 2042;
constexpr int bit_columns_command = 2043;

struct FormatItem {
    int command;
    DisplayFormat format;
};
constexpr FormatItem format_items[] = {
    {2044, TB_SHOW_TEXT}, {2045, TB_SHOW_BINARY}, {2046, TB_SHOW_HEX}, {2047, TB_SHOW_OCTAL}};

void set_check(Window *window, int control, int command, bool checked, bool enabled) {
    gui_check_control(window, control, checked);
    gui_check_command(window, command, checked);
    gui_enable_control(window, control, enabled);
    gui_enable_command(window, command, enabled);
}

void show_modes(Window *window, const BrowserState &browser) {
    const BrowserPosition &position = browser.position;
    const ColumnInfo *column = position.current_column();
    const bool has_bits = column && !column->bit_columns.empty();
    set_check(window, items_box, items_command, position.show_items, true);
    set_check(window, bit_columns_box, bit_columns_command, position.show_bit_columns,
              has_bits || position.show_bit_columns);
    const ColumnInfo *shown = shown_column(position);
    for (const FormatItem &item : format_items) {
        gui_enable_command(window, item.command, shown != nullptr);
        gui_check_command(window, item.command, shown && shown->display_format == tb_display_formats[item.format]);
    }
}

void show_note(Window *window, const std::string &text) {
    gui_set_text(window, browser_note, text);
    gui_show_control(window, browser_note, !text.empty());
}

void open_reader(BrowserState *browser) {
    error_string.clear();
    browser->reader = tb_open_reader(browser->product.file, *browser->position.current_table());
    browser->reader_fault = browser->reader ? "" : error_string;
}

long create_browser(Window *window) {
    const GenericState &state = *window_state(window);
    gui_set_title(window,
                  "Lumacart - Column Browser - " + shown_name(state.label_state->file_name, longest_title_name));
    enable_known_commands(window, CommandDispatcher::Application);
    const BrowserState &browser = *browser_state(window);
    const bool several = browser.product.tables.size() > 1;
    for (const int number : {15, 16})
        gui_enable_control(window, number, several);
    for (const int number : {2040, 2041})
        gui_enable_command(window, number, several);
    gui_focus_control(window, browser_grid);
    return 0;
}

struct BrowserButton {
    int control;
    void (*run)(Window *window);
};
constexpr BrowserButton buttons[] = {
    {11, tbtool_prev_rows},           {12, tbtool_next_rows},
    {13, tbtool_prev_cols},           {14, tbtool_next_cols},
    {15, tbtool_prev_table},          {16, tbtool_next_table},
    {items_box, tbtool_toggle_items}, {bit_columns_box, tbtool_toggle_bit_cols},
    {19, tbtool_get_summary},
};
constexpr BrowserButton fields[] = {
    {skip_field, tbtool_skip_x_cols}, {row_field, tbtool_go_to_row}, {name_field, tb_move_by_col_name}};

void use_control(Window *window, const Event &event) {
    for (const BrowserButton &button : buttons) {
        if (button.control == event.number)
            return button.run(window);
    }
    for (const BrowserButton &field : fields) {
        if (field.control == event.number && event.use == ControlUse::Activated)
            return field.run(window);
    }
}

// What the rows do not take: sideways to other columns, beyond the block to the rows around it.
long use_key(Window *window, const Event &event) {
    BrowserState *browser = browser_state(window);
    if (!browser || event.modifiers != 0)
        return 0;
    switch (event.key) {
        case GuiKey::Left:
            tbtool_prev_cols(window);
            return 1;
        case GuiKey::Right:
            tbtool_next_cols(window);
            return 1;
        case GuiKey::Up:
            tb_jump_to_row_2(&browser->position, browser->position.first_row);
            break;
        case GuiKey::Down:
            tb_jump_to_row_2(&browser->position, browser->position.first_row + 2);
            break;
        default:
            return 0;
    }
    tb_display_column_2(window);
    return 1;
}

long browser_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_browser(window);
        case EventType::Control:
            use_control(window, event);
            break;
        case EventType::Key:
            return use_key(window, event);
        default:
            handle_common_event(window, event, CommandDispatcher::Application);
            break;
    }
    return 0;
}

// Stands at the table; false when the label has none.
bool set_up(const LabelState &label, BrowserState *browser) {
    browser->product = tb_read_product(label.root.get());
    const ObjDesc *object = find_shown_table(label, browser->product);
    if (!object)
        return false;
    std::vector<TableInfo> &tables = browser->product.tables;
    auto found = std::ranges::find(tables, object, &TableInfo::object);
    if (found == tables.end()) {  // of a class that is no table's, but shown as one
        tables.push_back(tb_table_of(browser->product, object));
        found = tables.end() - 1;
    }
    browser->position = tb_start_of(&browser->product);
    return tb_enter_table(&browser->position, found - tables.begin());
}

}  // namespace

BrowserState *browser_state(const Window *window) {
    const GenericState *state = gui_window_exists(window) ? window_state(window) : nullptr;
    return state ? dynamic_cast<BrowserState *>(state->module.get()) : nullptr;
}

ColumnInfo *shown_column(const BrowserPosition &position) {
    return position.show_bit_columns ? position.current_bit_column() : position.current_column();
}

void tb_display_column_2(Window *window) {
    BrowserState *browser = browser_state(window);
    if (!browser)
        return;
    std::string fault = fault_of(*browser);
    if (fault.empty())
        fault = fill_rows(window, *browser);
    else
        gui_set_grid(window, browser_grid, {});
    gui_set_text(window, browser_place, place_text(*browser));
    show_modes(window, *browser);
    const std::string remark = std::exchange(browser->remark, "");
    show_note(window, fault.empty() ? remark : fault);
    const bool is_new = fault != std::exchange(browser->told, fault);
    if (is_new && !fault.empty())
        table_error(fault);
}

void display_column_keywords(Window *window) {
    const BrowserState *browser = browser_state(window);
    if (!browser)
        return;
    std::vector<std::string> lines;
    const bool is_bits = browser->position.show_bit_columns;
    if (const ColumnInfo *shown = shown_column(browser->position)) {
        add_keyword("Name", shown->name + shown->repetition, &lines);
        add_keyword("Type", shown->data_type, &lines);
        add_keyword(is_bits ? "Bits" : "Bytes", number_text(shown->bytes), &lines);
        add_keyword(is_bits ? "Start bit" : "Start byte", number_text(shown->start_byte), &lines);
        add_keyword("Items", std::to_string(shown->items), &lines);
        add_description(tb_text_of("DESCRIPTION", shown->object), &lines);
    }
    gui_set_paragraphs(window, browser_column_pane, lines);
}

void show_current_table(Window *window) {
    BrowserState *browser = browser_state(window);
    GenericState *state = window_state(window);
    if (!browser)
        return;
    const TableInfo &table = *browser->position.current_table();
    state->label_state->current_object = const_cast<ObjDesc *>(table.object);
    // The keywords that are shown stay those of the table they were asked for.
    if (const auto keywords = state->children.find(keywords_command); keywords != state->children.end())
        leave_opener(keywords->second);
    open_reader(browser);
    browser->remark = tb_columns_remark(table);
    show_table_keywords(window, table);
    display_column_keywords(window);
    tb_display_column_2(window);
}

void open_column_browser(std::unique_ptr<GenericState> state) {
    if (!state || !state->label_state || !state->label_state->root)
        return table_error("Table Create - invalid state");
    auto browser = std::make_unique<BrowserState>();
    {
        const BusyCursor busy;
        if (!set_up(*state->label_state, browser.get())) {
            table_error("Open Object - no valid object");
            return;
        }
    }
    state->kind = DocumentKind::Table;
    state->module = std::move(browser);
    if (Window *window = open_document_window(browser_resource, browser_eh, std::move(state)))
        show_current_table(window);
}
