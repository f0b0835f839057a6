#include "viewer/state.h"

GenericState *window_state(const Window *window) {
    return window && window != gui_task_window() ? static_cast<GenericState *>(gui_window_data(window)) : nullptr;
}

// A message that the Create event shows runs an event loop, in which the application may end and every window with it:
// until the window stands, the state must outlive it.
bool open_document_window(int resource, EventHandler handler, std::unique_ptr<GenericState> state) {
    if (!gui_create_window(resource, nullptr, handler, state.get()))
        return false;
    state.release()->belongs_to_window = true;
    return true;
}

void free_window_state(Window *window) {
    GenericState *state = window_state(window);
    if (state && state->belongs_to_window)
        delete state;
    gui_set_window_data(window, nullptr);
}

std::string shown_name(const std::string &name, size_t limit) {
    if (name.size() <= limit)
        return name;
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}
