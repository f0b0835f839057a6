// Lists the files below a directory as browse mode does, windows and all: browse_listing DIRECTORY. Prints the
// milliseconds until the first file is offered, and how many files the list holds.
#include "browse/listing_dialog.h"
#include "browse/walk.h"
#include "viewer/viewer.h"

#include <chrono>
#include <cstdio>

namespace {

std::string g_directory;
std::chrono::steady_clock::time_point g_start;

double milliseconds_since_start() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - g_start).count();
}

void start() {
    auto state = std::make_unique<BrowseState>();
    state->directory = g_directory;
    state->file_pattern = g_directory + "/*.*";
    begin_walk(std::move(state));
    g_start = std::chrono::steady_clock::now();
    browse_get_file_list(browse_state());
}

void finish() {
    size_t files = 0;
    for (const StringListEntry *entry = browse_state()->files.head; entry; entry = entry->next)
        ++files;
    printf("%.2f %zu\n", milliseconds_since_start(), files);
    gui_quit();
}

long task(Window *window, const Event &event) {
    if (event.type == EventType::Create)
        gui_start_timer(window, 1);  // not 0: the processor is for what is timed
    if (event.type == EventType::Timer && !browse_state())
        start();
    else if (event.type == EventType::Timer && browse_state()->cursor)
        finish();
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        fputs("Usage: browse_listing DIRECTORY\n", stderr);
        return 2;
    }
    g_directory = argv[1];
    return gui_main(argc, argv, [](int count, char **arguments) {
        begin_session(count, arguments);
        session().cmdline_fname.clear();
        constexpr int task_window_resource = 100;
        return gui_run("Lumacart", task_window_resource, task);
    });
}
