#include "browse/file_dialogs.h"

#include "browse/continue_dialogs.h"
#include "browse/walk.h"
#include "viewer/viewer.h"

#include <array>
#include <span>
#include <utility>

namespace {

struct ButtonAction {
    int button;
    void (*run)(Window *dialog);
};

struct FileDialog {
    int resource;
    int name_control;
    int default_button;
    const char *not_opened;
    std::span<const ButtonAction> actions;
};

Window *g_dialog = nullptr;
bool g_display_is_due = false;  // from it

// The walk goes on when the dialog has gone.
void browse_skip_file(Window *dialog) {
    gui_destroy_window(dialog);
    browse_continue();
}

void browse_skip_ext(Window *dialog) {
    skip_extension_of_current(browse_state());
    browse_skip_file(dialog);
}

void browse_skip_dir(Window *dialog) {
    skip_directory_of_current(browse_state());
    browse_skip_file(dialog);
}

void browse_display_file(Window *dialog) {
    const BrowseState *state = browse_state();
    gui_destroy_window(dialog);
    show_current_file(*state);
    // What the user was asked meanwhile may have ended the program or the walk.
    if (browse_state() != state)
        return;
    browse_settings().file_is_displayed = true;
    keep_continue_dialog();
}

void browse_make_a_label(bool for_fits, Window *dialog) {
    const BrowseState *state = browse_state();
    const std::string path = state->cursor->text;
    gui_destroy_window(dialog);
    make_a_label(for_fits, path);
    if (browse_state() == state)
        open_unkept_continue_dialog();
}

constexpr std::array other_file_actions = {
    ButtonAction{3, browse_skip_file},
    ButtonAction{4, browse_skip_ext},
    ButtonAction{5, browse_skip_dir},
    ButtonAction{6, [](Window *dialog) { browse_make_a_label(false, dialog); }},
    ButtonAction{7, [](Window *dialog) { browse_make_a_label(true, dialog); }},
    ButtonAction{8, browse_exit},
};
constexpr std::array label_actions = {
    ButtonAction{3, browse_display_file}, ButtonAction{4, browse_skip_file}, ButtonAction{5, browse_skip_ext},
    ButtonAction{6, browse_skip_dir},     ButtonAction{7, browse_exit},
};
constexpr FileDialog other_file_dialog = {138, 1, 3, "Could not open invalid browse file dialog", other_file_actions};
constexpr FileDialog label_dialog = {139, 2, 3, "Could not open valid browse file dialog", label_actions};

void create(Window *dialog, const FileDialog &kind) {
    gui_set_title(dialog, browser_title);
    if (gui_has_control(dialog, kind.name_control))
        gui_set_text(dialog, kind.name_control, browse_state()->current_file);
    else
        gui_error("Could not find browse file name object");
    gui_focus_control(dialog, kind.default_button);
    // As an event of its own: the dialog closes by it, and is not yet open here.
    g_display_is_due = browse_settings().timed_browse_go;
    if (g_display_is_due)
        gui_start_timer(dialog, 0);
}

void press(Window *dialog, const FileDialog &kind, int button) {
    for (const ButtonAction &action : kind.actions) {
        if (action.button == button)
            return action.run(dialog);
    }
}

long file_dialog_eh(Window *dialog, const Event &event) {
    const auto &kind = *static_cast<const FileDialog *>(gui_window_data(dialog));
    switch (event.type) {
        case EventType::Create:
            create(dialog, kind);
            break;
        case EventType::Timer:
            browse_display_file(dialog);
            break;
        case EventType::Control:
            press(dialog, kind, event.number);
            break;
        case EventType::Close:
            browse_exit(dialog);
            break;
        case EventType::Destroy:
            g_dialog = nullptr;
            g_display_is_due = false;
            break;
        default:
            break;
    }
    return 0;
}

}  // namespace

void open_file_dialog(const BrowseState &state, bool is_label) {
    const FileDialog &kind = is_label ? label_dialog : other_file_dialog;
    g_dialog = gui_create_window(kind.resource, gui_task_window(), file_dialog_eh, const_cast<FileDialog *>(&kind));
    if (g_dialog || !gui_task_window())
        return;
    log_about(state.cursor->text);
    gui_error(kind.not_opened);
}

void close_file_dialog() {
    gui_destroy_window(g_dialog);
}

bool display_is_due() {
    return g_display_is_due;
}
