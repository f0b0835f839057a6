// The dialogs that go on to the next file. Private to the folder.
#pragma once

// Opens the one that the walk wants unless one is open, and brings it to the front.
void keep_continue_dialog();
// Opens one that is not remembered: it stays when the walk ends.
void open_unkept_continue_dialog();
void close_continue_dialog();
