#include "browse/walk.h"

#include "browse/continue_dialogs.h"
#include "browse/file_dialogs.h"
#include "browse/listing_dialog.h"
#include "viewer/viewer.h"

#include <algorithm>
#include <utility>

namespace {

std::unique_ptr<BrowseState> g_state;

bool is_browsed(const Window *window) {
    const GenericState *state = window_state(window);
    return state && !state->browser_tag.empty();
}

// Nobody closes them while the walk is timed, nor is anybody asked.
void close_browsed_windows() {
    for (Window *window : gui_windows()) {
        if (gui_window_exists(window) && is_browsed(window))
            gui_destroy_window(window);
    }
}

// What an earlier walk left open is no longer a walk's to close.
void leave_browsed_windows() {
    for (const Window *window : gui_windows()) {
        if (is_browsed(window))
            window_state(window)->browser_tag.clear();
    }
}

bool holds_new_window(const std::vector<Window *> &before) {
    const std::vector<Window *> now = gui_windows();
    return std::any_of(now.begin(), now.end(), [&before](Window *window) {
        return std::find(before.begin(), before.end(), window) == before.end();
    });
}

}  // namespace

BrowseState *browse_state() {
    return g_state.get();
}

void begin_walk(std::unique_ptr<BrowseState> state) {
    leave_browsed_windows();
    g_state = std::move(state);
    ++session().browser_count;
}

void end_walk() {
    const bool was_timed = session().unattended;
    set_unattended(false);
    browse_settings().timed_browse_go = false;
    browse_settings().file_is_displayed = false;
    session().browser_count = was_timed ? 0 : std::max(0, session().browser_count - 1);
    const std::unique_ptr<BrowseState> ended = std::move(g_state);  // what closes now finds no walk
    close_listing_dialog();
    close_file_dialog();
    close_continue_dialog();
}

void browse_prep_to_display_file(BrowseState *state) {
    if (!state)
        return;
    bool found = false;
    {
        const BusyCursor busy;
        found = advance_to_next_file(state);
    }
    if (!found)
        return end_walk();
    close_file_dialog();
    if (session().unattended)
        close_browsed_windows();
    open_file_dialog(*state, avalidate_label(state->cursor->text) != 0);
}

void browse_continue() {
    browse_prep_to_display_file(browse_state());
}

void browse_exit(Window *dialog) {
    if (browse_state())
        end_walk();
    gui_destroy_window(dialog);
}

void show_current_file(const BrowseState &state) {
    const std::vector<Window *> before = gui_windows();
    log_about(state.cursor->text);
    session().cmdline_fname = state.cursor->text;
    open_object(session().browser_count);
    if (session().unattended && logged_lines() == 0 && !holds_new_window(before))
        log_unattended("nothing of it is shown");
}
