// The plain pixel image that display code fills and the windowing layer paints.
#pragma once

#include "base/memory.h"

#include <array>
#include <cstdint>

struct Colour {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;

    bool operator==(const Colour &) const = default;
};

using ColourTable = std::array<Colour, 256>;

// width x height pixels, row after row from the top, without padding. One byte a pixel is an index into `colours`;
// four bytes are blue, green, red and an unused byte, and `colours` is unused.
struct PixelImage {
    int width = 0;
    int height = 0;
    int bytes_per_pixel = 1;
    OaPtr<uint8_t> pixels;
    ColourTable colours = {};
};

// A black image with a table of 256 black colours; null when width x height x bytes_per_pixel is not a size or memory
// is out.
std::unique_ptr<PixelImage> util_new_pixel_image(int width, int height, int bytes_per_pixel);

// What a pixel within the image is shown by: its index, or the lowest of its colour bytes, the blue one.
uint8_t util_pixel_level(const PixelImage &image, int64_t column, int64_t row);
Colour util_pixel_colour(const PixelImage &image, int64_t column, int64_t row);

// The table in which entry i is grey i.
ColourTable util_grey_colours();
