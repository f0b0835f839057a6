// LZW code data of a GIF image to colour indices.
#pragma once

#include <array>
#include <cstdint>
#include <span>

constexpr int gif_least_code_size = 1;
constexpr int gif_largest_code_size = 11;  // of literals: the clear and the end code must fit in 12 bits
// No code data make more pixels a byte: a code of 12 bits stands for fewer.
constexpr int64_t gif_most_pixels_per_byte = 4096;

// Decodes one image from pieces of its code data, without the counts of the sub-blocks. Strings are copied from the
// pixels decoded before, so these must stay where they are.
class GifLzwDecoder {
  public:
    // Bytes behind the last pixel that decoding may overwrite.
    static constexpr int64_t slack = 32;

    enum class State {
        NeedsCodes,  // all whole codes of the piece are decoded
        End,         // the end code came
        Full,        // a code came for which there is no room; what fits is stored
        BadCode,     // a code that stands for nothing yet
    };

    // `out` holds `room` pixels, fewer than 2^32, and the slack, all of them 0. `code_size` in bits,
    // gif_least_code_size to gif_largest_code_size.
    GifLzwDecoder(int code_size, uint8_t *out, int64_t room);

    // Decodes the next piece. After any state but NeedsCodes decoding is over.
    State decode(std::span<const uint8_t> codes);

    int64_t pixels() const { return pixels_; }
    // Whole bytes of the last piece behind the last code that was taken from it.
    int64_t bytes_left() const { return bytes_left_; }
    // Sets what decoding left behind the last pixel back to 0; for images whose data end early.
    void clear_rest();

  private:
    static constexpr int most_bits = 12;
    static constexpr uint32_t table_size = 1u << most_bits;

    void copy_rest(uint64_t place, int64_t at);
    void store_what_fits(uint64_t head, uint64_t place, int64_t at);

    uint8_t *const out_;
    const int64_t room_;
    const int first_bits_;
    const uint32_t clear_code_;
    int64_t pixels_ = 0;
    int64_t bytes_left_ = 0;
    uint64_t bit_buffer_ = 0;
    int bit_count_ = 0;
    int bits_;       // of the next code
    uint32_t next_;  // first code that stands for nothing yet
    // The string of the code before, as below; of no length behind a clear code.
    uint64_t previous_head_ = 0;
    uint64_t previous_place_ = 0;
    // The string that a code stands for: its first eight pixels, the first lowest and 0 behind the last; and where it
    // stands in the output, a position below and its length above.
    std::array<uint64_t, table_size> heads_;
    std::array<uint64_t, table_size> places_;
};
