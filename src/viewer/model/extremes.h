// Smallest and largest of many values, at the speed of memory.
#pragma once

#include "viewer/model/vectorise.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

template <typename T>
struct Extremes {
    T minimum;
    T maximum;
};

enum class Infinities { Count, PassedOver };

// Widens `known` to the values; NaNs are passed over. Each lane compares for itself, which lets the compiler compare
// whole vectors.
template <Infinities infinities = Infinities::Count, typename T>
Extremes<T> widened(const T *values, int64_t count, Extremes<T> known) {
    return run_vectorised([=]() __attribute__((always_inline)) {
        constexpr bool bounded = infinities == Infinities::PassedOver;
        constexpr T least = std::numeric_limits<T>::lowest();
        constexpr T most = std::numeric_limits<T>::max();
        constexpr int64_t lane_count = 128 / sizeof(T);
        std::array<T, lane_count> low;
        std::array<T, lane_count> high;
        low.fill(known.minimum);
        high.fill(known.maximum);
        int64_t i = 0;
        for (; i + lane_count <= count; i += lane_count) {
            for (size_t lane = 0; lane < lane_count; ++lane) {
                const T value = values[i + static_cast<int64_t>(lane)];
                low[lane] = value < low[lane] && (!bounded || value >= least) ? value : low[lane];
                high[lane] = value > high[lane] && (!bounded || value <= most) ? value : high[lane];
            }
        }
        for (; i < count; ++i) {
            const T value = values[i];
            low[0] = value < low[0] && (!bounded || value >= least) ? value : low[0];
            high[0] = value > high[0] && (!bounded || value <= most) ? value : high[0];
        }
        return Extremes<T>{*std::min_element(low.begin(), low.end()), *std::max_element(high.begin(), high.end())};
    });
}
