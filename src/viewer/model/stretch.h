// From native samples to the 8-bit display image, and the stretches that work on its colour table.
#pragma once

#include "viewer/model/image_description.h"

#include <array>
#include <cstdint>
#include <string>

// Minimum and maximum of lines x samples native values lying row after row. The starting values bias the result on
// purpose: a maximum is never below 0, an unsigned 16-bit minimum never above 32767, a 64-bit one never above 999999.
// NaNs are passed over. With lines < 1 the starting values come back.
struct IntegerRange {
    int64_t minimum;
    int64_t maximum;
};
struct RealRange {
    double minimum;
    double maximum;
};
struct WordRange {  // 32-bit samples, read as integers and, from the same bits, as floats
    IntegerRange integers;
    RealRange reals;
};
IntegerRange cstretch16s(const void *samples, int64_t lines, int64_t line_samples);
IntegerRange cstretch16us(const void *samples, int64_t lines, int64_t line_samples);
WordRange cstretch32s(const void *samples, int64_t lines, int64_t line_samples);
WordRange cstretch32us(const void *samples, int64_t lines, int64_t line_samples);
RealRange cstretch64s(const void *samples, int64_t lines, int64_t line_samples);
RealRange cstretch64us(const void *samples, int64_t lines, int64_t line_samples);

// Maps native samples of 16, 32 or 64 bits linearly onto the bytes of `display` (lines x line_samples), computing and
// storing the description's range first when its minimum or maximum is -1. Values outside the range wrap around.
// False for any other sample size; the display then stays as it is.
bool scale_image(const void *samples, ImageDescription *description, int64_t lines, int64_t line_samples,
                 uint8_t *display);

// Builds description->display_image from native samples: 8-bit ones as they are, others through scale_image, with the
// grey colour table. Returns an empty text or the note or error to show; without an image only when there are no
// samples or memory is out.
std::string build_display_image(const void *samples, ImageDescription *description, int64_t lines,
                                int64_t line_samples);

// Pixels of each level of an 8-bit image.
std::array<int64_t, 256> count_levels(const PixelImage &image);

// Percentile stretch of the colour table: half a per cent of the pixels, level 0 left out, go black and white each.
// The table stays as it is when all pixels are of level 0 or both limits coincide.
void stretch_colours(PixelImage *image);
// Linear stretch of the colour table between the lowest and the highest level in the image.
void stretch_colours_to_range(PixelImage *image);
void invert_colours(PixelImage *image);  // entry i becomes grey 255 - i
void reset_colours(PixelImage *image);   // entry i becomes grey i

// A display byte as the number that read-outs show.
double getDNValue(uint8_t display_byte);
