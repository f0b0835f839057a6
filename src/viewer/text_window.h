// The text window: a label or any other file as text that can be edited and saved.
#pragma once

#include "viewer/state.h"

#include <memory>
#include <string>

constexpr int text_window_resource = 105;
constexpr int text_control = 1;  // of the text window and of the new-label window

// Opens a text window on the file of the state's label; only its directory and file name need be known. With
// `label_only` set the window shows the file to the END of its label. Null after a message.
Window *open_text(std::unique_ptr<GenericState> state);
// Asks for a file and opens it so. The second, from the application's menu bar, ends the application where there is no
// memory for the label's state.
void open_text_file(Window *window);
void open_text_file_or_end(Window *window);

enum class LabelFailure { IsTold, EndsApplication };
// The states of a window with a text; null after a message when memory is out. Without memory for the first of them the
// application ends in either case.
std::unique_ptr<GenericState> new_text_state(LabelFailure failure);
// The label of an image window's product, in the one text window that the image window keeps for it.
void open_full_label(Window *window);

long WIN_FULLBL_eh(Window *window, const Event &event);

// Puts a window at a place that is counted from the top left corner of another one's frame.
void place_window_near(Window *window, const Window *near, GuiRect place);

// Shows line ends as "<CR>" and "<LF>", and back.
void toggle_line_end_marks(Window *window);
// The reverse of each other; false, with nothing changed, when they cannot.
bool add_lf_cr(Window *window);
bool rm_lf_cr(Window *window);

// Save the text of a window, new-label windows included, into its own file or into one that the user chooses, which
// then is its own. False when it was not saved, after a message unless the user cancelled. The window may be gone then.
bool save_text(Window *window);
bool save_text_as(Window *window);

// Asks what to do with a text that was changed and not saved. True when the window may go; windows without a text
// always may. The close command and the Close event of a window with a text ask through it.
bool text_may_go(Window *window);
void close_text_window(Window *window);
// The same for all windows.
bool all_texts_may_go();
