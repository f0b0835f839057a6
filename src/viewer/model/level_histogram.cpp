#include "viewer/model/level_histogram.h"

#include "viewer/model/stretch.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int64_t most_ticks = 5;

// 1, 2 or 5 times a power of ten.
int64_t round_step(int64_t scale) {
    for (int64_t ten = 1;; ten *= 10) {
        for (const int64_t factor : {1, 2, 5}) {
            if (scale / (ten * factor) <= most_ticks)
                return ten * factor;
        }
    }
}

bool is_high(const LevelHistogram &histogram, size_t level) {
    return histogram.counts[level] * 4 > histogram.pixels;
}

}  // namespace

void count_histogram(const PixelImage &image, LevelHistogram *histogram) {
    histogram->counts = count_levels(image);
    histogram->pixels = std::accumulate(histogram->counts.begin(), histogram->counts.end(), int64_t{0});
    for (size_t level = 0; level < 256; ++level) {
        const bool high = is_high(*histogram, level);
        histogram->ignored[level] = histogram->ignored[level] && high;
        histogram->answered[level] = histogram->answered[level] && high;
    }
}

std::vector<int> unanswered_high_levels(const LevelHistogram &histogram) {
    std::vector<int> levels;
    for (size_t level = 0; level < 256; ++level) {
        if (is_high(histogram, level) && !histogram.answered[level])
            levels.push_back(static_cast<int>(level));
    }
    return levels;
}

int64_t histogram_scale(const LevelHistogram &histogram) {
    int64_t scale = 1;
    for (size_t level = 0; level < 256; ++level) {
        if (!histogram.ignored[level])
            scale = std::max(scale, histogram.counts[level]);
    }
    return scale;
}

int histogram_height(const LevelHistogram &histogram, int64_t scale, int64_t count, int height) {
    if (count <= 0 || height <= 0)
        return 0;
    if (count >= scale)
        return height;
    const double part = histogram.logarithmic
                            ? std::log1p(static_cast<double>(count)) / std::log1p(static_cast<double>(scale))
                            : static_cast<double>(count) / static_cast<double>(scale);
    return std::max(1, static_cast<int>(std::lround(part * height)));
}

std::vector<int64_t> histogram_ticks(const LevelHistogram &histogram, int64_t scale) {
    std::vector<int64_t> ticks = {0};
    if (histogram.logarithmic) {
        for (int64_t tick = 1; tick <= scale && ticks.size() < 20; tick *= 10)
            ticks.push_back(tick);
        return ticks;
    }
    const int64_t step = round_step(scale);
    for (int64_t tick = step; tick <= scale; tick += step)
        ticks.push_back(tick);
    return ticks;
}

double histogram_share(const LevelHistogram &histogram, int level) {
    if (histogram.pixels == 0)
        return 0;
    return 100.0 * static_cast<double>(histogram.counts[static_cast<size_t>(level)]) /
           static_cast<double>(histogram.pixels);
}
