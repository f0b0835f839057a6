// The object keywords: a list of the keywords of the object that an image window shows.
#pragma once

#include "viewer/state.h"

constexpr int keyword_list = 1;  // control of the window

// The keywords window of an image window: opened, or brought to the front.
void show_keywords(Window *image_window);

long WIN_OBJKWD_eh(Window *window, const Event &event);
