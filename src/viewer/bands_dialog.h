// The dialogs in which bands, their colours and their limits are chosen.
#pragma once

#include "viewer/state.h"

// Each starts from the choice of the bands given and returns false when it was cancelled, or cannot be shown, which is
// told. `owner` may go while the dialog is open.
bool ask_bands(Window *owner, const BandState &bands, BandChoice *choice);
bool ask_band_limits(Window *owner, const BandState &bands, BandChoice *choice);
