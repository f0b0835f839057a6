// The entry into browse mode and the dialog that asks how to walk.
#include "base/text.h"
#include "browse/browse.h"
#include "browse/listing_dialog.h"
#include "browse/walk.h"
#include "viewer/viewer.h"

#include <algorithm>
#include <array>
#include <new>

namespace {

constexpr int path_dialog_resource = 137;
constexpr int subdirectories_box = 1;
constexpr int start_button = 2;
constexpr int exit_button = 3;
constexpr int timed_box = 4;
constexpr int interval_field = 6;
constexpr int extension_field = 8;
constexpr int stretch_box = 9;
constexpr int maximum_size_box = 10;
constexpr int directory_text = 20;

void browse_set_at_in_ctl(Window *dialog) {
    if (gui_has_control(dialog, interval_field))
        gui_set_text(dialog, interval_field, util_format("%d", browse_settings().browse_interval / 1000));
    else
        gui_error("edit at time -- couldn't find static text window");
}

void read_interval(const Window *dialog) {
    if (gui_has_control(dialog, interval_field))
        browse_settings().browse_interval = std::clamp(browse_milliseconds(gui_text(dialog, interval_field)),
                                                       shortest_browse_interval, longest_browse_interval);
    else
        gui_error("Get a new autobrowse interval -- couldn't find static text window");
}

void browse_now(Window *dialog) {
    BrowseState *state = browse_state();
    if (!gui_has_control(dialog, extension_field))
        return gui_error("Browse could not find the path selection");
    state->file_pattern = (state->directory == "/" ? "" : state->directory) + "/*.*";
    state->exclusive_extension = gui_text(dialog, extension_field);
    read_interval(dialog);  // the field may have the keyboard still
    if (session().unattended)
        skip_web_pages(state);
    gui_destroy_window(dialog);
    browse_get_file_list(state);
}

void browse_subs(Window *dialog) {
    browse_state()->include_subdirectories = gui_control_checked(dialog, subdirectories_box);
}

void browse_timed(Window *dialog) {
    bool timed = gui_control_checked(dialog, timed_box);
    if (timed && session().browser_count >= 2) {
        gui_note("There is another browser open.  You may not open a timed browser now");
        timed = false;
        gui_check_control(dialog, timed_box, false);
    }
    set_unattended(timed);
    browse_settings().timed_browse_go = timed;
}

void browse_stretch(Window *dialog) {
    session().browse_stretch_image = gui_control_checked(dialog, stretch_box);
}

void browse_max_size(Window *dialog) {
    session().browse_size = gui_control_checked(dialog, maximum_size_box);
}

struct ControlAction {
    int control;
    void (*run)(Window *dialog);
};
constexpr std::array actions = {
    ControlAction{subdirectories_box, browse_subs}, ControlAction{start_button, browse_now},
    ControlAction{exit_button, browse_exit},        ControlAction{timed_box, browse_timed},
    ControlAction{stretch_box, browse_stretch},     ControlAction{maximum_size_box, browse_max_size},
};

void use_path_control(Window *dialog, int control) {
    for (const ControlAction &action : actions) {
        if (action.control == control)
            return action.run(dialog);
    }
}

void create_path_dialog(Window *dialog) {
    gui_set_title(dialog, browser_title);
    gui_set_text(dialog, directory_text, clean_name(browse_state()->directory));
    browse_set_at_in_ctl(dialog);
    gui_focus_control(dialog, start_button);
}

long path_dialog_eh(Window *dialog, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create_path_dialog(dialog);
            break;
        case EventType::FieldFocus:
            if (event.number == interval_field)
                read_interval(dialog);
            break;
        case EventType::Control:
            use_path_control(dialog, event.number);
            break;
        case EventType::Close:
            browse_exit(dialog);
            break;
        default:
            break;
    }
    return 0;
}

// The path without slashes at its end. False after a message, or silently when the user cancelled.
bool choose_directory(std::string *directory) {
    switch (gui_choose_directory("Select a directory", directory)) {
        case FileAnswer::Cancel:
            return false;
        case FileAnswer::Bad:
            gui_error("Browse - bad file name, missing directory, or missing disk.");
            return false;
        case FileAnswer::Ok:
            break;
    }
    if (!directory->starts_with('/'))
        *directory = session().working_directory + *directory;
    while (directory->size() > 1 && directory->ends_with('/'))
        directory->pop_back();
    return true;
}

}  // namespace

void autobros(Window *) {
    constexpr int interval_at_entry = 6000;
    browse_settings().browse_interval = interval_at_entry;
    if (session().unattended)
        return gui_note("There is a timed browser open already.  You may not open another browser");
    browse_settings().timed_browse_go = false;
    session().browse_size = session().browse_stretch_image = false;
    if (session().browser_count >= 1)
        return gui_note("There is already an open browser.  That is the maximum allowed.");
    const std::new_handler ending = std::set_new_handler(nullptr);
    std::unique_ptr<BrowseState> state(new (std::nothrow) BrowseState);
    std::set_new_handler(ending);
    if (!state)
        return gui_warning("Unable to create browse STATE - memory allocation failed");
    if (!choose_directory(&state->directory) || !gui_task_window())
        return;
    begin_walk(std::move(state));
    if (gui_create_window(path_dialog_resource, gui_task_window(), path_dialog_eh, nullptr) || !gui_task_window())
        return;
    gui_error("Could not open browse path dialog");
    end_walk();
}
