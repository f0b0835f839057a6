// The dialogs that offer a file. Private to the folder.
#pragma once

struct BrowseState;

// Offers the current file; a timed walk that is not paused displays it without waiting.
void open_file_dialog(const BrowseState &state, bool is_label);
void close_file_dialog();
// Whether the file that is offered will be displayed without waiting, but is not yet.
bool display_is_due();
