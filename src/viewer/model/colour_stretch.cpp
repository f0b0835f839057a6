#include "viewer/model/stretch.h"

std::array<int64_t, 256> count_levels(const PixelImage &image) {
    std::array<int64_t, 256> counts = {};
    if (image.bytes_per_pixel != 1)
        return counts;
    // Neighbours are mostly of one level: counting them in tables of their own keeps each count from waiting for the
    // one before.
    std::array<std::array<int64_t, 256>, 4> tables = {};
    const uint8_t *pixels = image.pixels.get();
    const int64_t size = int64_t{image.width} * image.height;
    int64_t i = 0;
    for (; i + 4 <= size; i += 4) {
        for (size_t table = 0; table < 4; ++table)
            ++tables[table][pixels[i + static_cast<int64_t>(table)]];
    }
    for (; i < size; ++i)
        ++tables[0][pixels[i]];
    for (size_t level = 0; level < counts.size(); ++level)
        counts[level] = tables[0][level] + tables[1][level] + tables[2][level] + tables[3][level];
    return counts;
}

bool percentile_levels(const PixelImage &image, int *low_level, int *high_level) {
    const auto counts = count_levels(image);
    int64_t total = 0;
    for (size_t level = 1; level < counts.size(); ++level)
        total += counts[level];
    if (total == 0)
        return false;

    int low = 0;
    int high = 0;
    float running = 0;
    for (int level = 1; level < 256; ++level) {
        running += static_cast<float>(counts[static_cast<size_t>(level)]) * 100 / static_cast<float>(total);
        if (low == 0 && running > 0.5F)
            low = level;
        if (high == 0 && running >= 99.5F)
            high = level;
    }
    *low_level = low;
    *high_level = high;
    return high > low;
}

void reset_colours(PixelImage *image) {
    image->colours = util_grey_colours();
}

double getDNValue(uint8_t display_byte) {
    return display_byte;
}
