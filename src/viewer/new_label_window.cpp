#include "viewer/new_label_window.h"

#include "base/text.h"
#include "viewer/commands.h"
#include "viewer/model/fits_label.h"
#include "viewer/model/label_template.h"
#include "viewer/open_product.h"
#include "viewer/text_window.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int save_command = 1004;
constexpr int save_as_command = 1005;
constexpr int line_ends_command = 1059;
constexpr GuiRect usual_place = {10, 30, 480, 370};
constexpr int shown_columns = 90;  // the template's longest line and a little more; lines of labels have 80
constexpr size_t longest_title_name = 60;

bool is_new_fits_label(const GenericState &state) {
    return state.label_state->new_fits_label;
}

void create(Window *window) {
    enable_known_commands(window, CommandDispatcher::Label);
    gui_enable_command(window, save_command, false);  // there is no file to save to
    gui_enable_command(window, save_as_command, true);
    GuiRect place = usual_place;
    place.width = std::max(place.width, gui_columns_width(window, text_control, shown_columns));
    gui_place_window(window, place);
    gui_set_title(window, gui_title(window));  // with room for the mark of a changed text
    if (!is_new_fits_label(*window_state(window)))
        gui_set_paragraphs(window, text_control, label_template());
}

// Makes the folder of the chosen file current and tells its full path.
bool enter_directory(FileSpec *chosen) {
    if (chdir(chosen->directory.c_str()) != 0)
        return false;
    char *resolved = getcwd(nullptr, 0);
    if (resolved)
        chosen->directory = resolved;
    free(resolved);
    return true;
}

// False after a message, or silently when the user cancelled.
bool choose_fits_file(GenericState *state) {
    FileRequest request;
    request.prompt = "Open FITS File";
    FileSpec chosen;
    switch (gui_open_file(request, &chosen)) {
        case FileAnswer::Cancel:
            return false;
        case FileAnswer::Bad:
            gui_error("bad file name, missing directory, or missing disk.");
            return false;
        case FileAnswer::Ok:
            break;
    }
    if (!enter_directory(&chosen)) {
        gui_error("unable to set directory");
        return false;
    }
    state->directory = chosen.directory;
    state->label_state->file_name = chosen.name;
    return true;
}

Window *open_new_label_window(bool for_fits) {
    if (!gui_has_definition(new_label_resource)) {
        gui_error("open new label - unable to find window definition");
        return nullptr;
    }
    std::unique_ptr<GenericState> state = new_text_state(LabelFailure::IsTold);
    if (!state)
        return nullptr;
    state->label_state->new_fits_label = for_fits;
    Window *window = open_document_window(new_label_resource, new_label_eh, std::move(state));
    if (!window)
        gui_error("Open Label/Text - unable to create window");
    return window;
}

}  // namespace

void open_new_label(Window *) {
    open_new_label_window(false);
}

void open_new_fits_label(Window *) {
    if (Window *window = open_new_label_window(true))
        open_fits_file(window, text_control);
}

void open_fits_file(Window *window, int control) {
    // A dialog runs an event loop, in which the window may go: what is chosen is kept here until it is known to stand.
    GenericState chosen;
    chosen.label_state = std::make_unique<LabelState>();
    const GenericState *state = window_state(window);
    chosen.directory = state->directory;
    chosen.label_state->file_name = state->label_state->file_name;
    if (chosen.label_state->file_name.empty() && !choose_fits_file(&chosen))
        return;
    const std::string &name = chosen.label_state->file_name;
    std::vector<std::string> label;
    const std::string reason = make_fits_label(chosen.directory + "/" + name, &label);
    if (!reason.empty()) {
        gui_note(name + ": " + reason);
        return;
    }
    if (!gui_window_exists(window))
        return;
    window_state(window)->directory = chosen.directory;
    LabelState &shown = *window_state(window)->label_state;
    shown.file_name = name;
    shown.shown_in_part = true;  // the label must not replace the file that it describes
    shown.line_ends_shown = false;
    gui_check_command(window, line_ends_command, false);
    gui_set_paragraphs(window, control, label);
    gui_set_title(window, "Lumacart - New Label - " + shown_name(name, longest_title_name));
}

Window *make_a_label(bool for_fits, const std::string &path) {
    Window *window = open_new_label_window(for_fits);
    if (!window)
        return nullptr;
    const size_t slash = path.rfind('/');
    const std::string name = path.substr(slash + 1);
    GenericState &state = *window_state(window);
    state.directory = slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
    state.label_state->file_name = name;
    state.label_state->new_fits_label = true;
    state.label_state->shown_in_part = true;  // the label must not replace the file that it describes
    gui_set_title(window, "Lumacart - New Label - " + shown_name(name, longest_title_name));
    if (for_fits)
        open_fits_file(window, text_control);
    return gui_window_exists(window) ? window : nullptr;
}

long new_label_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create(window);
            break;
        case EventType::Close:
            close_text_window(window);
            break;
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}
