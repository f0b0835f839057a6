// The distribution of a display image's levels, and how tall it is drawn.
#pragma once

#include "base/pixel_image.h"

#include <array>
#include <cstdint>
#include <vector>

struct LevelHistogram {
    std::array<int64_t, 256> counts = {};
    int64_t pixels = 0;                   // in all
    std::array<bool, 256> ignored = {};   // levels that do not count for the drawing's scale
    std::array<bool, 256> answered = {};  // the user was asked about
    bool logarithmic = false;
};

// Counts anew; what the user answered about a level that is still high stays.
void count_histogram(const PixelImage &image, LevelHistogram *histogram);

// Levels with more than a quarter of all pixels that the user was not asked about, from the lowest.
std::vector<int> unanswered_high_levels(const LevelHistogram &histogram);

// The highest count that is not ignored, at least 1.
int64_t histogram_scale(const LevelHistogram &histogram);
// Height of a count in a drawing of this height, whose top is the scale; at least 1 for a count above 0.
int histogram_height(const LevelHistogram &histogram, int64_t scale, int64_t count, int height);

// Counts to mark on the axis, from 0 up to the scale: round numbers in equal steps, or powers of ten.
std::vector<int64_t> histogram_ticks(const LevelHistogram &histogram, int64_t scale);

// Of all pixels, in per cent; 0 in an image without any.
double histogram_share(const LevelHistogram &histogram, int level);
