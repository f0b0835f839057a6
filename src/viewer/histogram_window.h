// The histogram of an image window: its levels as bars, and three bars of its own that set the colour table.
#pragma once

#include "viewer/state.h"

// Opens it, or brings it to the front; it closes with its image window.
void show_histogram(Window *image_window);

Window *histogram_of(const GenericState &image);  // null when it is not open
bool histogram_is_open(const GenericState &image);

long WIN_HISTOGRAM_eh(Window *window, const Event &event);

// Bring a histogram window up to date after its image's colours, or pixels, changed. The latter may ask about levels
// that are high now.
void follow_colours(Window *histogram);
void follow_pixels(Window *histogram);
