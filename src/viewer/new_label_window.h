// The new label window: a label that has no file of its own yet, from the template or from the header of a FITS file.
#pragma once

#include "viewer/state.h"

constexpr int new_label_resource = 136;

void open_new_label(Window *window);       // from the template
void open_new_fits_label(Window *window);  // asks for a FITS file; the window stays empty when no label is made of it

// A new label for a file that is known: from the template, or of the FITS file that it is. Null after a message.
Window *make_a_label(bool for_fits, const std::string &path);

long new_label_eh(Window *window, const Event &event);

// Fills the text control of a new label window from the FITS file that the window names, or from one that the user
// chooses and that the window names from then on.
void open_fits_file(Window *window, int control);
