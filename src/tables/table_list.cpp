// The list of a product's tables.
#include "base/text.h"
#include "tables/page_state.h"

#include <array>

namespace {

constexpr int table_list_resource = 220;

using OpenFunction = void (*)(std::unique_ptr<GenericState>);

void open_pages(std::unique_ptr<GenericState> state) {
    open_table(std::move(state));
}

struct ListButton {
    int control;
    OpenFunction open;  // null: what it opens is not there yet
};
constexpr std::array buttons = {ListButton{2, open_pages}, ListButton{3, open_column_browser},
                                ListButton{4, plot_set_up}};
constexpr int close_button = 5;

struct ListState : ModuleState {
    TableProduct product;
};

ListState *list_state(const Window *window) {
    const GenericState *state = window_state(window);
    return state ? dynamic_cast<ListState *>(state->module.get()) : nullptr;
}

// Their numbers are the heads of the rows.
std::string cell_text(const TableInfo &table, int column) {
    switch (column) {
        case 0:
            return table.object->class_name ? table.object->class_name : table.type;
        case 1:
            return table.name;
        case 2:
            return util_format("%lld x %lld", static_cast<long long>(table.rows),
                               static_cast<long long>(table.column_count()));
        default:
            return table.file_name.substr(table.file_name.rfind('/') + 1);
    }
}

void fill_list(Window *window, const ListState &list) {
    GuiGrid grid;
    grid.rows = static_cast<int64_t>(list.product.tables.size());
    for (const char *head : {"Class", "Name", "Rows x Columns", "Data file"})
        grid.columns.push_back({head, {}, false});
    grid.columns[2].is_number = true;
    grid.text = [&list](int64_t row, int column) {
        return cell_text(list.product.tables[static_cast<size_t>(row)], column);
    };
    gui_set_grid(window, table_list_grid, std::move(grid));
    gui_set_grid_current(window, table_list_grid, {0, 0});
    gui_focus_control(window, table_list_grid);
}

// Opens the selected table from a label of its own.
void open_selected(Window *window, OpenFunction open) {
    const ListState *list = list_state(window);
    const int64_t row = gui_grid_current(window, table_list_grid).row;
    if (!list || row < 0 || !open)
        return;
    GenericState &from = *window_state(window);
    const TableInfo &table = list->product.tables[static_cast<size_t>(row)];
    from.label_state->current_object = const_cast<ObjDesc *>(table.object);
    const std::string class_name = table.type;
    restore_profile();
    auto state = std::make_unique<GenericState>();
    if (!reopen_label(from, state.get()))
        return;
    state->label_state->object_chosen = true;
    if (!tb_is_table(state->label_state->current_object))
        return gui_error("Open Object - no valid object");  // the file has changed
    open(std::move(state));
}

void press_button(Window *window, int control) {
    if (control == close_button)
        return gui_destroy_window(window);
    for (const ListButton &button : buttons) {
        if (button.control == control)
            return open_selected(window, button.open);
    }
}

long create_list(Window *window) {
    const GenericState &state = *window_state(window);
    gui_set_title(window, "Lumacart - Tables - " + shown_name(state.label_state->file_name, longest_title_name));
    enable_known_commands(window, CommandDispatcher::Label);
    for (const ListButton &button : buttons)
        gui_enable_control(window, button.control, button.open != nullptr);
    fill_list(window, *list_state(window));
    return 0;
}

long table_list_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_list(window);
        case EventType::Control:
            if (event.number != table_list_grid)
                press_button(window, event.number);
            else if (event.use == ControlUse::Activated)
                open_selected(window, open_pages);
            break;
        case EventType::Destroy:
            gui_set_grid(window, table_list_grid, {});  // its cells are the state's
            [[fallthrough]];
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}

}  // namespace

void open_table_list(std::unique_ptr<GenericState> state) {
    auto list = std::make_unique<ListState>();
    list->product = tb_read_product(state->label_state->root.get());
    state->kind = DocumentKind::Listing;
    state->module = std::move(list);
    open_document_window(table_list_resource, table_list_eh, std::move(state));
}

void open_tables(std::unique_ptr<GenericState> state) {
    LabelState &label = *state->label_state;
    if (label.object_chosen) {
        open_table(std::move(state));
        return;
    }
    const TableProduct product = tb_read_product(label.root.get());
    if (product.tables.size() > 1 && !session().unattended)
        return open_table_list(std::move(state));
    if (!product.tables.empty())
        label.current_object = const_cast<ObjDesc *>(product.tables.front().object);
    open_table(std::move(state));
}
