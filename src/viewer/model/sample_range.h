// The range of native samples that the stretch works with.
#pragma once

#include <cstdint>

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

// Minimum and maximum of lines x samples native values lying row after row. The starting values bias the
// result on purpose: a maximum is never below 0, an unsigned 16-bit minimum never above 32767, a 64-bit one never above
// 999999. NaNs are passed over. With lines < 1 the starting values come back.
IntegerRange cstretch16s(const void *samples, int64_t lines, int64_t line_samples);
IntegerRange cstretch16us(const void *samples, int64_t lines, int64_t line_samples);
WordRange cstretch32s(const void *samples, int64_t lines, int64_t line_samples);
WordRange cstretch32us(const void *samples, int64_t lines, int64_t line_samples);
RealRange cstretch64s(const void *samples, int64_t lines, int64_t line_samples);
RealRange cstretch64us(const void *samples, int64_t lines, int64_t line_samples);
