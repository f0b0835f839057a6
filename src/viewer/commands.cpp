#include "viewer/commands.h"

#include <array>

namespace {

std::span<const CommandRow> table;

constexpr std::array product_commands = {1008, 1042, 1027, 1023, 1028, 1050, 1052, 1051, 1047, 1048, 1053, 1056};
constexpr int first_standard_item = 32041;
constexpr int last_standard_item = 32047;

bool fits(const CommandRow &row, const Window *window) {
    const CommandScope scope = row.scope;
    if (scope == CommandScope::Any)
        return true;
    const GenericState *state = window_state(window);
    if (!state)
        return false;
    if (scope == CommandScope::Bands)
        return state->bands != nullptr;
    if (scope == CommandScope::Qube)
        return state->module && state->module->offers(row.number);
    switch (state->kind) {
        case DocumentKind::Image:
            return scope == CommandScope::Image || scope == CommandScope::Indexed;
        case DocumentKind::Bands:
            return scope == CommandScope::Image;
        case DocumentKind::Table:
            return scope == CommandScope::Table;
        case DocumentKind::Label:
            return scope == CommandScope::Label;
        case DocumentKind::Listing:
        case DocumentKind::Histogram:
            return false;
    }
    return false;
}

// As the dispatchers find it: what a label window's menu does not know goes to the task window.
bool can_run(int number, CommandDispatcher dispatcher, const Window *window) {
    if (find_command(number, dispatcher, window))
        return true;
    return dispatcher == CommandDispatcher::Label &&
           find_command(number, CommandDispatcher::Application, gui_task_window());
}

}  // namespace

void set_command_table(std::span<const CommandRow> rows) {
    table = rows;
}

const CommandRow *find_command(int number, CommandDispatcher dispatcher, const Window *window) {
    for (const CommandRow &row : table) {
        if (row.number == number && row.dispatcher == dispatcher && row.run && fits(row, window))
            return &row;
    }
    return nullptr;
}

void do_WIN_MENUBAR(Window *window, int number) {
    if (const CommandRow *row = find_command(number, CommandDispatcher::Application, window))
        row->run(window);
}

void do_LUMCA_MENUBAR(Window *window, int number) {
    if (const CommandRow *row = find_command(number, CommandDispatcher::Label, window))
        row->run(window);
    else
        do_WIN_MENUBAR(gui_task_window(), number);
}

void handle_common_event(Window *window, const Event &event, CommandDispatcher dispatcher) {
    switch (event.type) {
        case EventType::Destroy:
            free_window_state(window);
            break;
        case EventType::Close:
            gui_destroy_window(window);
            break;
        case EventType::Command:
            dispatcher == CommandDispatcher::Label ? do_LUMCA_MENUBAR(window, event.number)
                                                   : do_WIN_MENUBAR(window, event.number);
            break;
        default:
            break;
    }
}

void enable_known_commands(Window *window, CommandDispatcher dispatcher) {
    for (const int number : gui_commands(window))
        gui_enable_command(window, number, can_run(number, dispatcher, window));
}

void main_set_menu(Window *window) {
    for (const int number : product_commands)
        gui_enable_command(window, number, false);
    for (int number = first_standard_item; number <= last_standard_item; ++number)
        gui_enable_command(window, number, false);
}

void set_large_menu_items(Window *window, const GenericState &state) {
    const ImageDescription &image = *state.image_info;
    gui_enable_command(window, 1055, true);
    gui_enable_command(window, 1074, true);
    gui_enable_command(window, 1073, image.block.first_line != 1);
    gui_enable_command(window, 1071, image.block.first_sample != 1);
    gui_enable_command(window, 1072, image.block.last_line != image.lines);
    gui_enable_command(window, 1064, image.block.last_sample != image.line_samples);
}
