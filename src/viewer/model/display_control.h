// How the bars of the histogram window map an image's levels onto those of its palette.
#pragma once

#include "base/pixel_image.h"

#include <array>
#include <cstdint>

enum class DisplayBar { Black, White, Shift };

// Positions are levels, 0 to 255.
struct DisplayControl {
    int16_t lbarh = 0;     // the black point
    int16_t rbarh = 255;   // the white point, beyond the black one
    int16_t mbarh = 127;   // the shift bar
    int16_t maxpix = 127;  // where the shift bar shifts nothing
    bool inverted = false;

    bool operator==(const DisplayControl &) const = default;
};

bool bars_at_rest(const DisplayControl &control);  // they map every level onto itself
int bar_position(const DisplayControl &control, DisplayBar bar);
// As near to the position as the scale and the other point let the bar; false when it is there already.
bool move_bar(DisplayControl *control, DisplayBar bar, int position);

// The level that each level is shown as: the black point as 0, the white point as 255, linear between and beyond them
// as far as that goes, and all shifted. Inverted rounds the other way, so that 0 becomes 254.
std::array<uint8_t, 256> control_levels(const DisplayControl &control);

// Entry i of the result is palette[control_levels[i]].
ColourTable control_colours(const DisplayControl &control, const ColourTable &palette);

// The palette from its other end: entry i is palette[255 - i].
ColourTable inverted_colours(const ColourTable &palette);
