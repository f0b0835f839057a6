// The windows of an image window that show spectra of its qube: one with the plot, one with the table. They go with it.
#pragma once

#include "qubes/qube_state.h"

constexpr int keep_spectrum_command = 2080;
constexpr int remove_kept_command = 2081;

// Shows the spectrum at a line and sample of the qube behind an image window, in the windows chosen. False after a
// message, or when none is chosen. The image window may have gone during the message.
bool show_spectrum(Window *image_window, int64_t line, int64_t sample);

enum class SpectrumView { Plot, Table };
// Whether clicks show that window from now on. It is opened at once, on the spectrum shown last, or closed.
void choose_spectrum_view(Window *image_window, SpectrumView view, bool shown);
