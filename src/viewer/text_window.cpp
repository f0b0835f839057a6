#include "viewer/text_window.h"

#include "base/file.h"
#include "base/text.h"
#include "viewer/allocate.h"
#include "viewer/commands.h"
#include "viewer/model/label_text.h"
#include "viewer/model/line_end_marks.h"
#include "viewer/open_product.h"
#include "viewer/session.h"
#include "viewer/unattended.h"

#include <cstdlib>
#include <unistd.h>

namespace {

constexpr GuiRect text_window_place = {10, 20, 634, 470};
constexpr int full_label_command = 1051;
constexpr int line_ends_command = 1059;
constexpr size_t longest_title_name = 60;

void tell_what_is_left_out(const FileText &text) {
    if (text.is_cut)
        tell_note(util_format("The file is longer than a text window takes. The first %zu lines are shown.",
                              text.lines.size()));
}

// Fills the label/text window. False after a message.
bool full_label(Window *window) {
    GenericState *state = window_state(window);
    if (!state || !state->label_state) {
        gui_error("Label/Text - invalid state");
        return false;
    }
    if (!gui_has_paragraphs(window, text_control)) {
        gui_error("Label/Text - missing text edit widget");
        return false;
    }
    LabelState &label = *state->label_state;
    if (util_contains(label.file_name, ".TXT"))
        label.text_only = true;
    label.label_only = label.label_only && !label.text_only;
    gui_set_title(window,
                  "Lumacart - Label/Text - " + shown_name(label.file_name, longest_title_name) + state->browser_tag);
    const std::string path = path_in(state->directory, label.file_name);
    FileText text;
    {
        const BusyCursor busy;
        label.shown_file = stamp_of_file(path);  // before it is read: a change meanwhile counts
        text = read_file_text(path, label.label_only);
        if (text.opened)
            gui_set_paragraphs(window, text_control, text.lines);
    }
    if (!text.opened) {
        gui_error(util_format("Label/Text - could not open file %s", label.file_name.c_str()));
        return false;
    }
    label.shown_in_part = text.is_cut || text.has_more;
    tell_what_is_left_out(text);
    return true;
}

long create_text_window(Window *window) {
    const GenericState *state = window_state(window);
    place_window_near(window, state && state->opened_from ? state->opened_from : gui_task_window(), text_window_place);
    if (!full_label(window))
        return 1;
    enable_known_commands(window, CommandDispatcher::Label);
    gui_focus_control(window, text_control);
    return 0;
}

// Rewrites every paragraph, which is no change of the text.
bool rewrite_paragraphs(Window *window, std::string (*rewrite)(std::string_view)) {
    const BusyCursor busy;
    std::vector<std::string> texts;
    const bool done = with_memory([&] {
        texts = gui_paragraphs(window, text_control);
        for (std::string &text : texts)
            text = rewrite(text);
    });
    if (!done)
        gui_warning("There is not enough memory to show or hide the line ends. The text stays as it is.");
    if (!done || texts.empty())
        return done;
    const bool changed = gui_text_changed(window, text_control);
    const size_t shown = gui_first_paragraph_shown(window, text_control);
    gui_set_paragraphs(window, text_control, texts);
    gui_set_text_changed(window, text_control, changed);
    gui_show_paragraph(window, text_control, shown);
    return true;
}

void choose_text_file(LabelFailure failure) {
    FileRequest request;
    request.prompt = "Open Text";
    FileSpec chosen;
    switch (gui_open_file(request, &chosen)) {
        case FileAnswer::Cancel:
            return;
        case FileAnswer::Bad:
            return gui_error("Open Text - bad file name.");
        case FileAnswer::Ok:
            break;
    }
    if (chdir(chosen.directory.c_str()) != 0)
        return gui_error("Open Text - unable to set directory");
    std::unique_ptr<GenericState> state = new_text_state(failure);
    if (!state)
        return;
    char *directory = getcwd(nullptr, 0);
    state->directory = directory ? directory : chosen.directory;
    free(directory);
    state->label_state->file_name = chosen.name;
    open_text(std::move(state));
}

}  // namespace

void place_window_near(Window *window, const Window *near, GuiRect place) {
    const GuiRect frame = near ? gui_window_place(near) : GuiRect{};
    place.left += frame.left;
    place.top += frame.top;
    gui_place_window(window, place);
}

bool add_lf_cr(Window *window) {
    return rewrite_paragraphs(window, add_line_end_marks);
}

bool rm_lf_cr(Window *window) {
    return rewrite_paragraphs(window, remove_line_end_marks);
}

void toggle_line_end_marks(Window *window) {
    GenericState *state = window_state(window);
    if (!state || !state->label_state || !gui_has_paragraphs(window, text_control))
        return;
    bool &shown = state->label_state->line_ends_shown;
    if (!(shown ? rm_lf_cr(window) : add_lf_cr(window)))
        return;
    shown = !shown;
    session().gl_show_cr_lf = shown;
    gui_check_command(window, line_ends_command, shown);
}

// --- Opening --------------------------------------------------------------------------------------------------------

Window *open_text(std::unique_ptr<GenericState> state) {
    if (!gui_has_definition(text_window_resource)) {
        gui_error("Open Label/Text - unable to find window definition");
        return nullptr;
    }
    state->kind = DocumentKind::Label;
    return open_document_window(text_window_resource, WIN_FULLBL_eh, std::move(state));
}

std::unique_ptr<GenericState> new_text_state(LabelFailure failure) {
    constexpr char task[] = "Open Text - allocating generic state";
    auto state = new_or_null<GenericState>();
    if (!state) {
        fatal_out_of_memory(task);
        return nullptr;
    }
    state->label_state = new_or_null<LabelState>();
    if (state->label_state)
        return state;
    if (failure == LabelFailure::EndsApplication)
        fatal_out_of_memory(task);
    else
        gui_error("Couldn't allocate memory");
    return nullptr;
}

void open_text_file(Window *) {
    choose_text_file(LabelFailure::IsTold);
}

void open_text_file_or_end(Window *) {
    choose_text_file(LabelFailure::EndsApplication);
}

void open_full_label(Window *window) {
    const GenericState *from = window_state(window);
    if (raise_child(window, full_label_command))
        return;
    if (!from || !from->label_state)
        return gui_error("Label/Text - invalid state");
    auto state = std::make_unique<GenericState>();
    state->directory = from->directory;
    state->browser_tag = from->browser_tag;
    state->opened_from = window;
    state->label_state = std::make_unique<LabelState>();
    state->label_state->file_name = from->label_state->file_name;
    if (file_describes_itself(path_in(state->directory, state->label_state->file_name)))
        return gui_note(util_format("File %s has no label of its own: what it holds was found in the data themselves.",
                                    state->label_state->file_name.c_str()));
    state->label_state->label_only = true;
    Window *child = open_text(std::move(state));
    if (gui_window_exists(window))
        keep_child(window, full_label_command, child);
}

// --- Closing --------------------------------------------------------------------------------------------------------

bool text_may_go(Window *window) {
    if (!gui_text_changed(window, text_control) || session().unattended)
        return true;
    const GenericState *state = window_state(window);
    const bool has_file = state && state->label_state && !state->label_state->new_fits_label;
    const std::string name = has_file ? state->label_state->file_name : std::string();
    const std::string question = name.empty()
                                     ? "The new label was changed. Save it before it closes?"
                                     : util_format("File \"%s\" was changed. Save it before it closes?", name.c_str());
    gui_raise(window);
    switch (gui_question(question, {"Save", "Discard", "Cancel"})) {
        case 0:
            return gui_window_exists(window) && save_text(window);
        case 1:
            return true;
        default:
            return false;
    }
}

void close_text_window(Window *window) {
    if (text_may_go(window) && gui_window_exists(window))
        gui_destroy_window(window);
}

bool all_texts_may_go() {
    for (Window *window : gui_windows()) {
        if (gui_window_exists(window) && !text_may_go(window))
            return false;
    }
    return true;
}

long WIN_FULLBL_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_text_window(window);
        case EventType::Close:
            close_text_window(window);
            break;
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}
