// Palettes: what colour each of the 256 display levels is shown in.
#pragma once

#include "base/pixel_image.h"

#include <cstdint>
#include <optional>

inline constexpr int grey_palette = 0;
inline constexpr int last_palette = 6;  // 1 to 6 are the colour maps
// The colours that a GIF file brings along; no map of ours, so it has no number that GetPaletteColor knows.
inline constexpr int file_palette = 7;

inline constexpr const char *invalid_palette = "Histogram - Invalid palette requested";

// Red x 65536 + green x 256 + blue of a level (0-255); nothing for a palette or level that there is not, which callers
// tell of as `invalid_palette`.
std::optional<uint32_t> GetPaletteColor(int palette_number, int level);

// All colours of palettes 0 to 6; grey for any other number.
ColourTable palette_colours(int palette_number);
