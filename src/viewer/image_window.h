// The image window: one display image with scroll bars, a read-out and the commands on its colour table.
#pragma once

#include "viewer/state.h"

#include <memory>

// Opens an image window on the current object of the state's label.
void open_image(std::unique_ptr<GenericState> state);
// The same when the characteristics are known, perhaps with a block requested. The window, or null.
Window *open_image_2(std::unique_ptr<GenericState> state);

// Fills the state's image description and sample source. False after a message.
bool get_image_characteristics(GenericState *state);

long WIN_IMAGE_eh(Window *window, const Event &event);

// Does to a new image window what the session's browse settings ask for.
void show_browsed(Window *window);

// Brings the read-out, where it is shown, up to date after the colours, the scale or the scroll position changed.
void refresh_read_out(Window *window);
void copy_read_out(Window *window);       // the last one, to the clipboard
void toggle_hexadecimal(Window *window);  // integers in the read-out as hexadecimal too
// Shows a text in the status line until the read-out takes its place.
void show_remark(Window *window, const std::string &text);

void menu2_stretch_display(Window *window);  // percentile stretch of the colour table
void menu2_stretch_image(Window *window);    // between a minimum and a maximum that the user is asked for
void menu2_image_invert(Window *window);
void menu2_undo_display(Window *window);  // of pixels and colours

// Builds the display image anew from its samples, between black at the minimum and white at the maximum, or as it was
// opened, with the grey colour table. Leaves the image after an error box when that fails.
bool rebuild_display_image(GenericState *state, std::optional<RealRange> range);

void zoom_in(Window *window);
void zoom_out(Window *window);
void zoom_actual(Window *window);
void zoom_to_fit(Window *window);

// Moving to a neighbouring block of a large image, in a new window.
void step_up(Window *window);
void step_down(Window *window);
void step_left(Window *window);
void step_right(Window *window);
// Asks for lines and samples and opens them in a new window.
void choose_block(Window *window);
