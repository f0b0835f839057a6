// The object hierarchy: a numbered, indented list of the objects of a label, from which they are opened.
#pragma once

#include "viewer/state.h"

constexpr int object_list = 1;  // control of the window

// The hierarchy window of an image window: opened, or brought to the front.
void show_hierarchy(Window *image_window);

long WIN_OBJHIER_eh(Window *window, const Event &event);

long hier_create(Window *window);  // other than 0 after a message
void hier_close(Window *window);
void hier_destroy(Window *window);
// Opens the object of the selected line, or says why not.
void hier_lbx3_dbl_click(Window *window);
