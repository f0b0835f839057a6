#include "viewer/model/sample_range.h"

#include "viewer/model/extremes.h"

namespace {

// 0 when there is nothing to look at.
int64_t value_count(int64_t lines, int64_t line_samples) {
    int64_t count = 0;
    if (lines < 1 || line_samples < 1 || __builtin_mul_overflow(lines, line_samples, &count))
        return 0;
    return count;
}

template <typename T>
IntegerRange integer_range(const void *samples, int64_t count, Extremes<T> start) {
    const Extremes<T> found = widened(static_cast<const T *>(samples), count, start);
    return {static_cast<int64_t>(found.minimum), static_cast<int64_t>(found.maximum)};
}

RealRange real_range(const void *samples, int64_t count) {
    const Extremes<double> found = widened(static_cast<const double *>(samples), count, {999999.0, 0.0});
    return {found.minimum, found.maximum};
}

// Both readings of a stretch of samples are taken while it is in the cache.
template <typename T>
WordRange word_range(const void *samples, int64_t count, Extremes<T> integers, Extremes<float> reals) {
    constexpr int64_t stretch = 1 << 13;
    for (int64_t i = 0; i < count; i += stretch) {
        const int64_t length = std::min(stretch, count - i);
        integers = widened(static_cast<const T *>(samples) + i, length, integers);
        reals = widened(static_cast<const float *>(samples) + i, length, reals);
    }
    return {{integers.minimum, integers.maximum}, {reals.minimum, reals.maximum}};
}

}  // namespace

IntegerRange cstretch16s(const void *samples, int64_t lines, int64_t line_samples) {
    return integer_range<int16_t>(samples, value_count(lines, line_samples), {32767, 0});
}

IntegerRange cstretch16us(const void *samples, int64_t lines, int64_t line_samples) {
    return integer_range<uint16_t>(samples, value_count(lines, line_samples), {32767, 0});
}

WordRange cstretch32s(const void *samples, int64_t lines, int64_t line_samples) {
    return word_range<int32_t>(samples, value_count(lines, line_samples), {2147483647, 0}, {2147483648.0F, 0.0F});
}

WordRange cstretch32us(const void *samples, int64_t lines, int64_t line_samples) {
    return word_range<uint32_t>(samples, value_count(lines, line_samples), {4294967295U, 0}, {4294967296.0F, 0.0F});
}

RealRange cstretch64s(const void *samples, int64_t lines, int64_t line_samples) {
    return real_range(samples, value_count(lines, line_samples));
}

RealRange cstretch64us(const void *samples, int64_t lines, int64_t line_samples) {
    return real_range(samples, value_count(lines, line_samples));
}
