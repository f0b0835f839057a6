#include "viewer/state.h"

GenericState *window_state(const Window *window) {
    return window && window != gui_task_window() ? static_cast<GenericState *>(gui_window_data(window)) : nullptr;
}

void free_window_state(Window *window) {
    delete window_state(window);
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
