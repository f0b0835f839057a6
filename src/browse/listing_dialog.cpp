#include "browse/listing_dialog.h"

#include "browse/model/listing.h"
#include "browse/walk.h"
#include "viewer/viewer.h"

#include <memory>
#include <utility>

namespace {

constexpr int listing_resource = 237;
constexpr int exit_button = 1;
constexpr int directory_text = 2;
constexpr int look_milliseconds = 10;  // between looks for the scratch file

struct Listing {
    Listing(const std::string &pattern, const std::string &folder)
        : command(listing_command(pattern)), scratch(folder) {}

    const ListingCommand command;
    ScratchList scratch;  // removed with the dialog, when the shell has ended, or as soon as the shell has made it
};

Window *g_dialog = nullptr;
std::unique_ptr<Listing> g_listing;  // of the dialog

void offer_first(StringList files, bool was_read) {
    BrowseState *state = browse_state();
    if (!state)
        return;
    if (!was_read)
        gui_note("Unable to open scratch file.");
    if (browse_state() != state)
        return;
    state->files = std::move(files);
    browse_prep_to_display_file(state);
}

void take_list(Window *dialog) {
    StringList files;
    bool was_read = false;
    {
        const BusyCursor busy;
        was_read = g_listing->scratch.read(g_listing->command.prefix, &files);
    }
    gui_destroy_window(dialog);
    offer_first(std::move(files), was_read);
}

long listing_eh(Window *dialog, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            gui_set_title(dialog, browser_title);
            gui_set_text(dialog, directory_text, clean_name(browse_state()->directory));
            gui_focus_control(dialog, exit_button);
            gui_start_timer(dialog, look_milliseconds);
            break;
        case EventType::Timer:
            if (g_listing->scratch.take())
                gui_stop_timer(event.timer);
            break;
        case EventType::ProcessEnded:
            take_list(dialog);
            break;
        case EventType::Control:
        case EventType::Close:
            browse_exit(dialog);
            break;
        case EventType::Destroy:
            g_dialog = nullptr;
            g_listing.reset();
            break;
        default:
            break;
    }
    return 0;
}

// The shell makes the file anew and never writes through what stands in its place.
bool start_listing(Window *dialog, const Listing &listing) {
    return listing.scratch.remove() && gui_start_process(dialog, {"/bin/sh", "-C", "-c", listing.command.shell},
                                                         session().working_directory, {"LC_ALL=C"}) != nullptr;
}

}  // namespace

void browse_get_file_list(BrowseState *state) {
    g_listing = std::make_unique<Listing>(state->file_pattern, session().working_directory);
    g_dialog = gui_create_window(listing_resource, gui_task_window(), listing_eh, nullptr);
    if (g_dialog && start_listing(g_dialog, *g_listing))
        return;
    close_listing_dialog();
    if (gui_task_window())
        offer_first({}, false);
}

void close_listing_dialog() {
    gui_destroy_window(g_dialog);
}
