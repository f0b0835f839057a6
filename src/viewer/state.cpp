#include "viewer/state.h"

#include <sys/stat.h>

FileStamp stamp_of_file(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

GenericState *window_state(const Window *window) {
    return window && window != gui_task_window() ? static_cast<GenericState *>(gui_window_data(window)) : nullptr;
}

// A message that the Create event shows runs an event loop, in which the application may end and every window with it:
// until the window stands, the state must outlive it.
Window *open_document_window(int resource, EventHandler handler, std::unique_ptr<GenericState> state, Window *owner) {
    Window *window = gui_create_window(resource, owner, handler, state.get());
    if (window)
        state.release()->belongs_to_window = true;
    return window;
}

void keep_child(Window *window, int command, Window *child) {
    GenericState *state = window_state(window);
    GenericState *child_state = window_state(child);
    if (!state || !child_state)
        return;
    state->children[command] = child;
    child_state->opened_from = window;
}

Window *child_of(const GenericState *state, int command) {
    const auto found = state ? state->children.find(command) : std::map<int, Window *>::const_iterator();
    return state && found != state->children.end() ? found->second : nullptr;
}

Window *raise_child(const Window *window, int command) {
    Window *child = child_of(window_state(window), command);
    if (child)
        gui_raise(child);
    return child;
}

void leave_opener(Window *window) {
    GenericState *state = window_state(window);
    // While a window is being made its opener may have gone unnoticed.
    GenericState *opener = gui_window_exists(state->opened_from) ? window_state(state->opened_from) : nullptr;
    state->opened_from = nullptr;
    if (opener)
        std::erase_if(opener->children, [window](const auto &entry) { return entry.second == window; });
}

void free_window_state(Window *window) {
    GenericState *state = window_state(window);
    if (state) {
        leave_opener(window);
        for (const auto &[command, child] : state->children)
            window_state(child)->opened_from = nullptr;
    }
    if (state && state->belongs_to_window)
        delete state;
    gui_set_window_data(window, nullptr);
}

PixelImage *display_image(const GenericState *state) {
    return state && state->image_info ? state->image_info->display_image.get() : nullptr;
}

const void *samples_shown(const GenericState *state) {
    const PixelImage *image = display_image(state);
    const OaObject *samples = image && state->label_state ? state->label_state->image_data.get() : nullptr;
    if (!samples || !samples->data || image->bytes_per_pixel != 1)
        return nullptr;
    const int64_t needed = int64_t{image->width} * image->height * (state->image_info->sample_bits / 8);
    return samples->size >= needed ? samples->data : nullptr;
}

std::string shown_name(const std::string &name, size_t limit) {
    if (name.size() <= limit)
        return name;
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}
