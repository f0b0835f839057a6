#include "decoders/previous_pixel.h"

#include <bit>
#include <cstring>

namespace {

constexpr uint8_t escape = 255;
constexpr uint16_t no_difference = 127;
constexpr int64_t lanes = 16;
constexpr int64_t half = lanes / 2;

using Bytes = uint8_t __attribute__((vector_size(lanes)));
using HalfOfBytes = uint8_t __attribute__((vector_size(half)));
using Samples = uint16_t __attribute__((vector_size(2 * half)));

// Number of bytes before the first that is an escape.
int64_t plain_bytes(const uint8_t *bytes) {
    Bytes block;
    memcpy(&block, bytes, sizeof block);
    const auto found = block == escape;
    uint64_t words[2];
    static_assert(sizeof words == sizeof found);
    memcpy(words, &found, sizeof words);
    for (int64_t i = 0; i < 2; ++i) {
        if (words[i] == 0)
            continue;
        const int zeros =
            std::endian::native == std::endian::little ? std::countr_zero(words[i]) : std::countl_zero(words[i]);
        return i * half + zeros / 8;
    }
    return lanes;
}

// Each lane plus all before it.
Samples running_sum(Samples s) {
    const Samples zero = {};
    s += __builtin_shufflevector(zero, s, 7, 8, 9, 10, 11, 12, 13, 14);
    s += __builtin_shufflevector(zero, s, 6, 7, 8, 9, 10, 11, 12, 13);
    s += __builtin_shufflevector(zero, s, 4, 5, 6, 7, 8, 9, 10, 11);
    return s;
}

Samples last_of(Samples s) {
    return __builtin_shufflevector(s, s, 7, 7, 7, 7, 7, 7, 7, 7);
}

Samples sums_of_differences(const uint8_t *bytes) {
    HalfOfBytes block;
    memcpy(&block, bytes, sizeof block);
    return running_sum(__builtin_convertvector(block, Samples) - no_difference);
}

// Decodes from the state on, up to the first escape or fewer than `lanes` bytes. Returns the number of bytes, which is
// that of the samples; may write `lanes` - 1 samples more, never past the room for the bytes.
int64_t decode_differences(const uint8_t *bytes, int64_t byte_count, uint16_t *out, uint16_t *previous) {
    Samples last = Samples{} + *previous;
    int64_t done = 0;
    int64_t plain = lanes;
    while (plain == lanes && byte_count - done >= lanes) {
        plain = plain_bytes(bytes + done);
        // The chain from one block to the next is an addition; the sums are ready before.
        const Samples low = sums_of_differences(bytes + done);
        const Samples high = sums_of_differences(bytes + done + half);
        const Samples first = low + last;
        const Samples second = high + (last + last_of(low));
        memcpy(out + done, &first, sizeof first);
        memcpy(out + done + half, &second, sizeof second);
        last += last_of(low) + last_of(high);
        done += plain;
    }
    if (done > 0)
        *previous = out[done - 1];
    return done;
}

}  // namespace

int64_t OalDecodePreviousPixel(const uint8_t *bytes, int64_t byte_count, uint16_t *out, PreviousPixelState *state) {
    PreviousPixelState at = *state;
    int64_t samples = 0;
    int64_t i = 0;
    while (i < byte_count) {
        if (at.in_escape) {
            if (!at.holds_high_byte) {
                at.high_byte = bytes[i++];
                at.holds_high_byte = true;
                continue;
            }
            at.previous = static_cast<uint16_t>(at.high_byte << 8 | bytes[i++]);
            out[samples++] = at.previous;
            at.in_escape = at.holds_high_byte = false;
            continue;
        }
        const int64_t decoded = decode_differences(bytes + i, byte_count - i, out + samples, &at.previous);
        samples += decoded;
        i += decoded;
        if (i == byte_count)
            break;
        if (bytes[i] == escape && byte_count - i >= 3) {
            at.previous = static_cast<uint16_t>(bytes[i + 1] << 8 | bytes[i + 2]);
            out[samples++] = at.previous;
            i += 2;
        } else if (bytes[i] == escape) {
            at.in_escape = true;
        } else {
            at.previous = static_cast<uint16_t>(at.previous + bytes[i] - no_difference);
            out[samples++] = at.previous;
        }
        ++i;
    }
    *state = at;
    return samples;
}
