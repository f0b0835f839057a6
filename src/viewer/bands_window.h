// Images of several bands: which of them a window shows, in colours or one as grey.
#pragma once

#include "viewer/state.h"

#include <memory>

// Whether a label's object has two bands or more.
bool has_several_bands(const ObjDesc *object);

// Asks which bands of the current object are shown and opens a window on them; unattended, on the default ones.
void open_bands(std::unique_ptr<GenericState> state);
// The same for any object: the state's description, display state and bands (maker, count, names) are set.
void open_band_choice(std::unique_ptr<GenericState> state);

// Makes the source that shows the state's choice of bands. False after a message.
bool make_composite(GenericState *state);

// Shows one band (from 1) as grey in a window on several. What is set of the colour table, zoom and scroll position
// stay. False after a message, when the window stays as it is or is gone.
bool show_band(Window *window, int64_t band);

// Commands on such a window; they show it anew.
void choose_bands(Window *window);
void choose_band_limits(Window *window);
// The same as a stretch of a band that is shown as grey, which can be undone. False when there is nothing to undo.
void stretch_band(Window *window);
bool undo_band_stretch(Window *window);
