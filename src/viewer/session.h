// What holds for the whole run of the viewer.
#pragma once

#include "viewer/state.h"

#include <cstdint>
#include <string>
#include <vector>

struct Session {
    std::string cmdline_fname;     // a file to open without asking; taken by the next opening
    uint8_t old_ascii_format = 0;  // the profile's first two fields at start, put back before every opening
    uint8_t old_binary_format = 0;
    std::string working_directory;              // at start, "/" at its end
    std::vector<std::string> help_directories;  // searched for the help book, in this order
    int gl_show_cr_lf = 0;                      // 1: line ends were made visible last, 0: they were hidden
    int browser_count = 0;
    Window *browse_continue_win = nullptr;  // the dialog that goes on to the next file
    bool browse_size = false;               // browsed images fill the screen
    bool browse_stretch_image = false;      // browsed images are stretched to percentiles
    bool unattended = false;                // browse mode runs on a timer: nobody answers questions (set_unattended)
};

Session &session();

// Puts back the two saved fields of the object access profile.
void restore_profile();

// Reads the arguments and what holds at start into the session, and connects the libraries' notices and the toolkit's
// messages. `argc` counts the platform's own argument.
void begin_session(int argc, char **argv);

// The viewer's entry behind the windowing layer: begins the session, makes the application, runs its event loop.
// Returns the process's exit status.
int start_viewer(int argc, char **argv);

// Handler of the task window.
long task_eh(Window *window, const Event &event);

// Asks about texts that were changed and not saved; false when the user wants to stay.
bool is_quit_OK();

// Trap for the toolkit's messages: 0 lets the toolkit handle one, 1 says it has been dealt with. Memory exhaustion is
// reported later, by the error window's timer, out of the toolkit's own code.
int on_toolkit_error(const ToolkitError &message);
// The image window made or drawn last, whose timer reports.
void set_error_window(Window *window);
void forget_error_window(Window *window);
// To be called with each timer event of an image window; true when it was the error timer.
bool handle_error_timer(const Event &event);

// Sets memory aside for the message of fatal_out_of_memory.
void hold_error_reserve();
// Shows "%s\nOut of Memory\n..." and ends the application.
void fatal_out_of_memory(const std::string &context);

// The About dialog.
void show_about(Window *owner);
