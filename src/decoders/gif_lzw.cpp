#include "decoders/gif_lzw.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr uint32_t head_size = 8;  // pixels of a string that its entry holds
constexpr uint32_t chunk = 16;     // copied at a time

// Bytes of which the first is the lowest.
uint64_t load_low_first(const uint8_t *bytes) {
    uint64_t value = 0;
    memcpy(&value, bytes, sizeof value);
    return std::endian::native == std::endian::little ? value : __builtin_bswap64(value);
}

void store_low_first(uint64_t value, uint8_t *bytes) {
    if (std::endian::native != std::endian::little)
        value = __builtin_bswap64(value);
    memcpy(bytes, &value, sizeof value);
}

}  // namespace

GifLzwDecoder::GifLzwDecoder(int code_size, uint8_t *out, int64_t room)
    : out_(out),
      room_(room),
      first_bits_(code_size + 1),
      clear_code_(1u << code_size),
      bits_(first_bits_),
      next_(clear_code_ + 2),
      previous_{} {
    for (uint32_t i = 0; i < clear_code_; ++i)
        table_[i] = {i & 0xFF, 0, 1};
}

// The string with one more pixel, which stands behind it in the output.
GifLzwDecoder::String GifLzwDecoder::longer(const String &string, uint64_t pixel) {
    const uint64_t added = string.length < head_size ? pixel << (8 * string.length) : 0;
    return {string.head | added, string.position, string.length + 1};
}

// The pixels of the string that its head does not hold. A string ends before `at`, so whole chunks may be copied: what
// they overwrite is written again later.
void GifLzwDecoder::copy_rest(const String &string, int64_t at) {
    const uint8_t *from = out_ + string.position;
    uint8_t *to = out_ + at;
    for (uint32_t i = head_size; i < string.length; i += chunk) {
        uint8_t pixels[chunk];
        memcpy(pixels, from + i, chunk);
        memcpy(to + i, pixels, chunk);
    }
}

GifLzwDecoder::State GifLzwDecoder::store_what_fits(const String &string, int64_t at) {
    const auto room = static_cast<size_t>(room_ - at);
    uint8_t head[head_size];
    store_low_first(string.head, head);
    memcpy(out_ + at, head, std::min<size_t>(room, head_size));
    if (room > head_size)
        memcpy(out_ + at + head_size, out_ + string.position + head_size, room - head_size);
    return State::Full;
}

GifLzwDecoder::State GifLzwDecoder::decode(std::span<const uint8_t> codes) {
    const uint8_t *in = codes.data();
    const uint8_t *const end = in + codes.size();
    // The compiler cannot keep members in registers while bytes are written.
    const uint32_t clear_code = clear_code_;
    uint8_t *const out = out_;
    const int64_t room = room_;
    uint64_t buffer = bit_buffer_;
    int count = bit_count_;
    int bits = bits_;
    uint32_t next = next_;
    String previous = previous_;
    int64_t at = pixels_;
    State state = State::NeedsCodes;
    for (;;) {
        if (count < bits) {
            if (end - in >= 8) {
                buffer |= load_low_first(in) << count;
                in += (63 - count) >> 3;
                count |= 56;
            } else {
                for (; count <= 56 && in < end; count += 8)
                    buffer |= uint64_t{*in++} << count;
                if (count < bits)
                    break;
            }
        }
        const uint32_t code = static_cast<uint32_t>(buffer) & ((1u << bits) - 1);
        buffer >>= bits;
        count -= bits;

        String string;
        if (previous.length == 0) {
            if (code < clear_code) {
                string = table_[code];
            } else if (code == clear_code) {
                continue;
            } else {
                state = code == clear_code + 1 ? State::End : State::BadCode;
                break;
            }
        } else if (code < next) {
            if (code - clear_code < 2) {
                if (code != clear_code) {
                    state = State::End;
                    break;
                }
                bits = first_bits_;
                next = clear_code + 2;
                previous.length = 0;
                continue;
            }
            string = table_[code];
            if (next < table_size)
                table_[next++] = longer(previous, string.head & 0xFF);
        } else if (code == next && next < table_size) {
            // The string in the making: its last pixel is its first.
            string = longer(previous, previous.head & 0xFF);
            table_[next++] = string;
            if (at < room)
                out[at] = static_cast<uint8_t>(string.head);
        } else {
            state = State::BadCode;
            break;
        }
        if (next >> bits != 0 && bits < most_bits)
            ++bits;

        if (string.length > room - at) {
            state = store_what_fits(string, at);
            at = room;
            break;
        }
        store_low_first(string.head, out + at);
        if (string.length > head_size)
            copy_rest(string, at);
        previous = {string.head, static_cast<uint32_t>(at), string.length};
        at += string.length;
    }
    bit_buffer_ = buffer;
    bit_count_ = count;
    bits_ = bits;
    next_ = next;
    previous_ = previous;
    pixels_ = at;
    bytes_left_ = end - in + count / 8;
    return state;
}

void GifLzwDecoder::clear_rest() {
    memset(out_ + pixels_, 0, slack);
}
