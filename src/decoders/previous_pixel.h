// 16-bit samples stored as differences of one byte from the sample before, or in full behind a byte of 255.
#pragma once

#include <cstdint>

// Where a decoder stands between two bytes.
struct PreviousPixelState {
    uint16_t previous = 0;  // sample
    uint8_t high_byte = 0;
    bool in_escape = false;  // the bytes of a sample in full follow
    bool holds_high_byte = false;
};

// Decodes `byte_count` bytes into native samples and moves `state` on. `out` has room for as many samples as there are
// bytes; what of it is not used is undefined. Returns the number of samples.
int64_t OalDecodePreviousPixel(const uint8_t *bytes, int64_t byte_count, uint16_t *out, PreviousPixelState *state);
