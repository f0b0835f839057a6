#include "viewer/help.h"

#include "gui/gui.h"
#include "viewer/session.h"

namespace {

constexpr char help_file[] = "lumacart.qch";
constexpr char keyboard_page[] = "keyboard.html";
constexpr char boxes_page[] = "messages.html";

// The file dialog of ask_for_book waits, or a message of it.
bool g_asking = false;

// Beside the program, as it is built, or where it is installed. Not the current directory: an archive's own file of
// that name is not ours.
bool open_found_book() {
    for (const std::string &directory : session().help_directories) {
        if (gui_open_help(directory + "/" + help_file) == HelpAnswer::Ok)
            return true;
    }
    return false;
}

HelpAnswer open_chosen(FileAnswer answer, const FileSpec &chosen) {
    const std::string directory = chosen.directory == "/" ? "" : chosen.directory;
    return answer == FileAnswer::Ok ? gui_open_help(directory + "/" + chosen.name) : HelpAnswer::Unreadable;
}

bool ask_for_book() {
    FileRequest request;
    request.prompt = "Please Find and Open help file...";
    request.file_type = "qch";
    for (;;) {
        FileSpec chosen;
        const FileAnswer answer = gui_open_file(request, &chosen);
        if (answer == FileAnswer::Cancel)
            return false;
        switch (open_chosen(answer, chosen)) {
            case HelpAnswer::Ok:
                return true;
            case HelpAnswer::Unreadable:
                gui_error("Help file is unreadable, please choose another.");
                break;
            case HelpAnswer::NotHelp:
                gui_error("Invalid help file, please choose another.");
                break;
        }
    }
}

void show_page(const std::string &page) {
    if (g_asking)
        return;
    if (!gui_help_is_open()) {
        g_asking = true;
        const bool found = open_found_book() || ask_for_book();
        g_asking = false;
        if (!found)
            return;
    }
    gui_show_help(page);
}

void show_page_of_focus(const std::string &page) {
    show_page(page.empty() ? boxes_page : page);
}

}  // namespace

void begin_help() {
    const std::string program = gui_program_directory();
    session().help_directories = {program, program + "/../share/lumacart"};
    gui_set_help_handler(show_page_of_focus);
}

void end_help() {
    gui_set_help_handler(nullptr);
    gui_close_help();
}

void show_window_help(Window *window) {
    show_page(gui_help_page(window));
}

void show_keyboard_help(Window *) {
    show_page(keyboard_page);
}
