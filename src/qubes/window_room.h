// Room on the screen for the windows of an image window.
#pragma once

#include "viewer/viewer.h"

// Where a new window of this size, frame excluded, hides the least of an image window and those opened from it.
GuiRect free_place(const Window *image_window, GuiSize size);
// Brings a window to the front when the image window may hide it.
void keep_in_sight(const Window *image_window, Window *window);
// Makes the image window the active one again, unless it may hide one of those.
void return_to_image(Window *image_window);
