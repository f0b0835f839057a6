// Windows that show spectra.
#pragma once

#include "qubes/qube_state.h"

// Shows the spectrum at a line and sample of the qube behind an image window, in windows that it keeps for that. False
// after a message.
bool show_spectrum(Window *image_window, int64_t line, int64_t sample);
