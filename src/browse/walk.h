// The walk itself: from file to file, to its end. Private to the folder.
#pragma once

#include "browse/model/browse_state.h"

#include <memory>

struct Window;

constexpr char browser_title[] = "Browser";

// The state of the walk; null when there is none.
BrowseState *browse_state();
void begin_walk(std::unique_ptr<BrowseState> state);
// Ends the walk, with its continue dialog and whatever asks about a file. Windows of products stay.
void end_walk();

// Offers the next file, or ends the walk behind the last one. A null state returns at once.
void browse_prep_to_display_file(BrowseState *state);
// Goes on with the walk there is.
void browse_continue();
// Ends the walk from one of its dialogs and closes that.
void browse_exit(Window *dialog);
// Opens the current file.
void show_current_file(const BrowseState &state);
