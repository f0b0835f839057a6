// The read-out of an image window: line, sample, level and value of a pixel under the mouse or under the cursor that
// the arrow keys move. Private to the folder; what others call is in image_window.h.
#pragma once

#include "viewer/state.h"

// The image pixel at a point of the client area; false outside the image.
bool pixel_at(const Window *window, const GenericState &state, GuiPoint point, PixelPosition *pixel);

void prepare_read_out(Window *window, const GenericState &state);  // of a window that is being made
void move_read_out(Window *window, GenericState *state, GuiPoint pointer);
void move_cursor(Window *window, GenericState *state, int columns, int rows);
void hide_read_out(Window *window, DisplayState *display);

void place_read_out(Window *window, const GenericState &state);
void draw_cursor(const Window *window, const DisplayState &display, Canvas *canvas);
