// Palettes and the colour table of an image window.
#pragma once

#include "viewer/model/palette.h"
#include "viewer/state.h"

// Fills the colour table from the bars, the inversion flag and the palette, and redraws.
void UpdateDisplay(Window *image_window);

// Chooses palette 0 to 6, or the file's own colours (file_palette): the colour table becomes the palette as it is, and
// while the histogram window is open, whose bars then hold on, the palette as the bars map it. "Image - Initialization
// failed" is shown where there is no display image, `invalid_palette` for any other number.
void ChangePalette(Window *image_window, int palette_number);

template <int palette_number>
void choose_palette(Window *image_window) {
    ChangePalette(image_window, palette_number);
}

// The colours that the image's palette gives its levels.
ColourTable current_palette(const GenericState &image);

// For the Create event of an image window: strips, marks and what can be chosen in its palette menu.
void prepare_palettes(Window *image_window);
// The same items in another window's menu.
void show_palettes(Window *window, const GenericState &image);

// Whether the image is shown through a colour table. The state may be null.
bool has_colour_table(const GenericState *image);

// Bring up to date whatever shows the image's colours, or its pixels: to be called after every change of them.
void colours_changed(Window *image_window);
void pixels_changed(Window *image_window);
