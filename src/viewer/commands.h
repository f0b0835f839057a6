// Menu commands by number. The table is filled by the application; the dispatchers know no module.
#pragma once

#include "viewer/state.h"

#include <span>

enum class CommandDispatcher {
    Application,  // the menu bar of the task window and of windows that show data
    Label,        // the menu bar of label and text windows
};

// On which windows a row is used. Image: images of every kind; Indexed: those shown through a colour table; Bands:
// those of products of several bands, whether shown in colours or one as grey; Qube: images of qubes whose module
// offers the command.
enum class CommandScope { Any, Image, Indexed, Bands, Qube, Table, Label };

struct CommandRow {
    int number;
    CommandDispatcher dispatcher;
    CommandScope scope;
    void (*run)(Window *window);  // null: not available
};

void set_command_table(std::span<const CommandRow> rows);

// The first row of the number whose scope fits the window and that can run; null when there is none.
const CommandRow *find_command(int number, CommandDispatcher dispatcher, const Window *window);

// Run a menu command; a number that no row has is ignored. A command that the label dispatcher does not know is passed
// on to the task window.
void do_WIN_MENUBAR(Window *window, int number);
void do_LUMCA_MENUBAR(Window *window, int number);

// What document windows do alike: on Destroy their state ends, on Close they go, commands are run.
void handle_common_event(Window *window, const Event &event, CommandDispatcher dispatcher);

// Enables exactly the commands of a window's menu bar that the dispatcher can run from it.
void enable_known_commands(Window *window, CommandDispatcher dispatcher);
// The state of a menu bar while no product is open.
void main_set_menu(Window *window);
// Enables the commands that move to another block of a large image, by the block shown.
void set_large_menu_items(Window *window, const GenericState &state);
