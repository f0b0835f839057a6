// The text window: a label or any other file as text that can be edited and saved.
#pragma once

#include "viewer/state.h"

#include <memory>

constexpr int text_window_resource = 105;
constexpr int text_control = 1;  // of the text window and of the new-label window

// Opens a text window on the file of the state's label; only its directory and file name need be known. Where the
// state has a label tree, the window shows the label alone, to its END statement. Null after a message.
Window *open_text(std::unique_ptr<GenericState> state);
