// Saving the text of a window.
#include "base/file.h"
#include "base/text.h"
#include "viewer/model/label_text.h"
#include "viewer/open_product.h"
#include "viewer/session.h"
#include "viewer/text_window.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int save_command = 1004;
constexpr int line_ends_command = 1059;
constexpr size_t longest_title_name = 60;

enum class SaveStep { Stop, Elsewhere, Go };

bool file_exists(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

bool is_same_file(const std::string &one, const std::string &other) {
    struct stat first, second;
    return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

// Whether the text in place of the file loses what the window never showed.
bool loses_data(const GenericState &state, const std::string &path) {
    const LabelState &label = *state.label_state;
    const bool is_own = !label.file_name.empty() && is_same_file(path_in(state.directory, label.file_name), path);
    if (is_own && label.shown_in_part)
        return true;
    // What took the place of the window's file since it was read is as little known as any other.
    const bool is_known = is_own && stamp_of_file(path) == label.shown_file;
    return !is_known && holds_data_behind_label(path);
}

// The question and, where more would be lost than a text, the warning before it.
SaveStep may_replace(const GenericState &state, const std::string &path, const std::string &name) {
    if (!file_exists(path))
        return SaveStep::Go;
    if (loses_data(state, path)) {
        const std::string warning = util_format(
            "File \"%s\" holds more than this text, such as the data behind a label. All of it would be lost.\n"
            "Save the text as another file instead?",
            name.c_str());
        const int answer = gui_question(warning, {"Save As", "Replace", "Cancel"});
        if (answer != 1)
            return answer == 0 ? SaveStep::Elsewhere : SaveStep::Stop;
    }
    const std::string question = util_format("File \"%s\" already exists. Replace existing file?", name.c_str());
    switch (gui_question(question, {"Cancel", "Replace"})) {
        case 0:
            return SaveStep::Stop;
        case 1:
            return SaveStep::Go;
        default:
            gui_error("Save - Invalid command");
            return SaveStep::Stop;
    }
}

// The paragraphs as lines, each ended by a line feed alone.
bool save_label_file(const std::vector<std::string> &paragraphs, FILE *file) {
    for (const std::string &paragraph : paragraphs) {
        const std::string_view text = without_line_end(paragraph);
        if (fwrite(text.data(), 1, text.size(), file) != text.size() || putc('\n', file) == EOF)
            return false;
    }
    return true;
}

bool write_text(const Window *window, const std::string &path, const std::string &name) {
    const BusyCursor busy;
    ReplacingFile file;
    if (!file.open(path)) {
        gui_error("Save - Unable to open file for writing");
        return false;
    }
    if (save_label_file(gui_paragraphs(window, text_control), file.stream()) && file.commit())
        return true;
    gui_error(util_format("Save - Unable to write file %s\n%s", name.c_str(), strerror(errno)));
    return false;
}

bool hide_line_ends(Window *window) {
    LabelState &label = *window_state(window)->label_state;
    if (label.line_ends_shown && !rm_lf_cr(window))
        return false;
    gui_check_command(window, line_ends_command, false);
    label.line_ends_shown = false;
    session().gl_show_cr_lf = 0;
    return true;
}

// The window's text now is that of this file.
void take_file(Window *window, const std::string &directory, const std::string &name) {
    GenericState &state = *window_state(window);
    LabelState &label = *state.label_state;
    gui_set_text_changed(window, text_control, false);
    label.shown_in_part = false;
    label.shown_file = stamp_of_file(path_in(directory, name));
    const bool was_own = label.file_name == name && state.directory == directory && !label.new_fits_label;
    label.new_fits_label = false;
    if (was_own)
        return;
    state.directory = directory;
    label.file_name = name;
    leave_opener(window);
    gui_set_title(window, "Lumacart - Label/Text - " + shown_name(name, longest_title_name) + state.browser_tag);
    gui_enable_command(window, save_command, true);
}

// Asks, writes. What the user is asked may end the window.
SaveStep save_into(Window *window, const std::string &directory, const std::string &name) {
    const std::string path = path_in(directory, name);
    const SaveStep step = may_replace(*window_state(window), path, name);
    if (!gui_window_exists(window))
        return SaveStep::Stop;
    if (step != SaveStep::Go)
        return step;
    if (!write_text(window, path, name))
        return SaveStep::Stop;
    if (gui_window_exists(window))
        take_file(window, directory, name);
    return SaveStep::Go;
}

// The name without its directories, to its first point, with the extension of labels. Nothing would be left of a new
// label's empty name but a hidden file.
std::string proposed_name(const std::string &file_name) {
    constexpr size_t longest_name = 257;
    const size_t separator = file_name.find_last_of("\\]/:");
    const std::string name =
        shown_name(file_name.substr(separator == std::string::npos ? 0 : separator + 1), longest_name);
    const std::string stem = name.substr(0, name.find('.'));
    return (stem.empty() ? "label" : stem) + ".lbl";
}

// False when nothing was chosen.
bool choose_target(const GenericState &state, FileSpec *chosen) {
    FileRequest request;
    request.prompt = "Save file as:";
    request.file_type = "lbl";
    request.proposed = {state.directory, proposed_name(state.label_state->file_name)};
    switch (gui_save_file(request, chosen)) {
        case FileAnswer::Cancel:
            return false;
        case FileAnswer::Bad:
            gui_error("Save - Error getting file name.");
            return false;
        case FileAnswer::Ok:
            break;
    }
    if (chdir(chosen->directory.c_str()) == 0)
        return true;
    gui_error("Save - Unable to open directory");
    return false;
}

bool has_text(const Window *window) {
    const GenericState *state = window_state(window);
    return state && state->label_state && gui_has_paragraphs(window, text_control);
}

}  // namespace

bool save_text(Window *window) {
    if (!has_text(window) || !hide_line_ends(window))
        return false;
    // The state may end while the user is asked.
    const std::string directory = window_state(window)->directory;
    const std::string name = window_state(window)->label_state->file_name;
    if (name.empty() || window_state(window)->label_state->new_fits_label)
        return save_text_as(window);
    const SaveStep step = save_into(window, directory, name);
    return step == SaveStep::Elsewhere ? save_text_as(window) : step == SaveStep::Go;
}

bool save_text_as(Window *window) {
    if (!has_text(window) || !hide_line_ends(window))
        return false;
    for (;;) {
        FileSpec chosen;
        if (!choose_target(*window_state(window), &chosen) || !gui_window_exists(window))
            return false;
        const SaveStep step = save_into(window, chosen.directory, chosen.name);
        if (step != SaveStep::Elsewhere)
            return step == SaveStep::Go;
    }
}
