// The text that tells of a table and its columns, and the window that shows it.
#include "base/text.h"
#include "tables/page_state.h"

namespace {

constexpr int side_data_resource = 222;
constexpr int side_data_text = 1;

void append_column(const ColumnInfo &column, std::string *text) {
    *text += column.name + column.repetition + "\r   " + column.class_name + ", " + column.data_type;
    if (column.start_byte >= 0)
        *text += util_format(", start byte %lld", static_cast<long long>(column.start_byte));
    if (column.bytes >= 0)
        *text += util_format(", %lld bytes", static_cast<long long>(column.bytes));
    if (column.items > 1)
        *text += util_format(", %lld items", static_cast<long long>(column.items));
    *text += '\r';
    for (const ColumnInfo &bits : column.bit_columns)
        *text += util_format("   bits %lld, %lld wide: ", static_cast<long long>(bits.start_byte),
                             static_cast<long long>(bits.bytes)) +
                 bits.name + '\r';
}

void append_container(const ContainerInfo &container, std::string *text) {
    *text += (container.name.empty() ? std::string("CONTAINER") : container.name) +
             util_format("\r   CONTAINER, start byte %lld, %lld bytes, %lld repetitions\r",
                         static_cast<long long>(container.start_byte), static_cast<long long>(container.bytes),
                         static_cast<long long>(container.repetitions));
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\r', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace

long report_window_eh(Window *window, const Event &event) {
    handle_common_event(window, event, CommandDispatcher::Label);
    return 0;
}

std::string make_side_data(const std::string &file_name, const TableState &table) {
    std::string text = "TABLE NAME:  " + file_name + "\r";
    text += util_format("Rows:  %lld   Columns:  %lld\r", static_cast<long long>(table.table.rows),
                        static_cast<long long>(table.table.column_count()));
    text +=
        "(see below for repetitions of columns or items)\r\r"
        "------------------------------------------------------------\r"
        "   SUMMARY OF NAMED PARTS\r"
        "------------------------------------------------------------\r \r";
    for (const ContainerInfo &container : table.table.containers) {
        if (text.size() < side_data_limit)
            append_container(container, &text);
    }
    for (const ColumnInfo &column : table.table.columns) {
        if (text.size() < side_data_limit)
            append_column(column, &text);
    }
    return shown_name(text, side_data_limit);
}

void show_side_data(Window *window) {
    const TableState *table = table_state(window);
    if (!table || raise_child(window, side_data_command))
        return;
    const GenericState *from = window_state(window);
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = from->directory;
    const std::string title = "Lumacart - Side Data - " + shown_name(from->label_state->file_name, longest_title_name);
    Window *shown = open_document_window(side_data_resource, report_window_eh, std::move(state));
    if (!shown || !gui_window_exists(window))
        return;
    gui_set_title(shown, title);
    enable_known_commands(shown, CommandDispatcher::Label);
    gui_set_paragraphs(shown, side_data_text, lines_of(table->side_data));
    gui_focus_control(shown, side_data_text);
    keep_child(window, side_data_command, shown);
}
