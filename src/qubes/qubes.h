// Qubes: what other modules use of them. An image window shows a band or a suffix plane of a qube through a sample
// source; the control window steps it through the bands; a click on it shows the spectrum there. What is shown without
// a window comes from oa/qube.h and the model (spectrum.h, qube_text.h).
#pragma once

#include "qubes/model/qube_text.h"
#include "qubes/model/spectrum.h"
#include "viewer/viewer.h"

#include <memory>

// Opens the first band of the state's current object, a qube, in an image window, and its control window unless
// unattended.
void open_qube(std::unique_ptr<GenericState> state);

// Commands on image windows of a qube's bands.
void show_qube_control(Window *image_window);  // or brings it to the front
void show_suffix_list(Window *image_window);   // or brings it to the front
void show_next_band(Window *image_window);
void show_previous_band(Window *image_window);

// Commands of the image window and of the plot of its spectra: the spectrum shown stays in the plot when another comes,
// or those that stayed go.
void keep_spectrum(Window *window);
void remove_kept_spectra(Window *window);
