#include "viewer/model/palette.h"

#include "viewer/model/palette_tables.h"

std::optional<uint32_t> GetPaletteColor(int palette_number, int level) {
    if (palette_number < grey_palette || palette_number > last_palette || level < 0 || level > 255)
        return std::nullopt;
    const auto index = static_cast<uint32_t>(level);
    if (palette_number == grey_palette)
        return index * 0x010101U;
    const uint8_t(&colour)[3] = PALETTE_TABLES[palette_number - 1][index];
    return uint32_t{colour[0]} << 16 | uint32_t{colour[1]} << 8 | colour[2];
}

ColourTable palette_colours(int palette_number) {
    ColourTable colours = util_grey_colours();
    for (int level = 0; level < 256; ++level) {
        if (const std::optional<uint32_t> packed = GetPaletteColor(palette_number, level))
            colours[static_cast<size_t>(level)] = {static_cast<uint8_t>(*packed >> 16),
                                                   static_cast<uint8_t>(*packed >> 8), static_cast<uint8_t>(*packed)};
    }
    return colours;
}
