#include "viewer/session.h"

#include "base/text.h"
#include "viewer/commands.h"
#include "viewer/help.h"
#include "viewer/open_product.h"
#include "viewer/text_window.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int task_window_resource = 100;
constexpr size_t longest_cmdline_name = 254;
constexpr int first_standard_item = 32041;
constexpr int last_standard_item = 32047;

std::string current_directory() {
    char *path = getcwd(nullptr, 0);
    if (!path)
        return "/";
    std::string directory = path;
    free(path);
    if (directory.back() != '/')
        directory += '/';
    return directory;
}

void show_notice(NoticeKind kind, const std::string &text) {
    switch (kind) {
        case NoticeKind::Note:
            return gui_note(text);
        case NoticeKind::Warning:
            return gui_warning(text);
        case NoticeKind::Error:
            return gui_error(text);
    }
}

void create_task_window(Window *window) {
    for (int number = first_standard_item; number <= last_standard_item; ++number)
        gui_enable_command(window, number, true);
    begin_help();
    enable_known_commands(window, CommandDispatcher::Application);
    main_set_menu(window);
    // The product is opened once the task window is on the screen, so that its windows and questions lie above.
    if (!session().cmdline_fname.empty())
        gui_start_timer(window, 0);
}

}  // namespace

Session &session() {
    static Session the_session;
    return the_session;
}

void restore_profile() {
    Oa_profile.dst_format_for_ascii = session().old_ascii_format;
    Oa_profile.dst_format_for_binary = session().old_binary_format;
}

void begin_session(int argc, char **argv) {
    Session &run = session();
    run.old_ascii_format = Oa_profile.dst_format_for_ascii;
    run.old_binary_format = Oa_profile.dst_format_for_binary;
    // A file larger than the process may write is told like a full disk, not by the end of the process.
    signal(SIGXFSZ, SIG_IGN);
    gui_set_error_handler(on_toolkit_error);
    hold_error_reserve();
    util_set_notice_hook(show_notice);
    if (argc >= 3) {
        run.cmdline_fname = argv[1];
        if (run.cmdline_fname.size() > longest_cmdline_name)
            fprintf(stderr, "lumacart: the file name is cut to its first %zu bytes\n", longest_cmdline_name);
        run.cmdline_fname.resize(std::min(run.cmdline_fname.size(), longest_cmdline_name));
    }
    run.working_directory = current_directory();
}

int start_viewer(int argc, char **argv) {
    begin_session(argc, argv);
    return gui_run("Lumacart", task_window_resource, task_eh);
}

long task_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create_task_window(window);
            break;
        case EventType::Destroy:
            end_help();
            break;
        case EventType::Timer:
            if (handle_error_timer(event))
                break;
            gui_stop_timer(event.timer);
            if (!session().cmdline_fname.empty())
                open_object(0);
            break;
        case EventType::Close:
            if (is_quit_OK())
                gui_quit();
            break;
        case EventType::Command:
            do_WIN_MENUBAR(window, event.number);
            break;
        case EventType::FileDrop:
            open_files(event.files);
            break;
        case EventType::Quit:
            if (event.query)
                return is_quit_OK() ? 0 : 1;
            gui_quit();
            break;
        default:
            break;
    }
    return 0;
}

bool is_quit_OK() {
    return all_texts_may_go();
}
