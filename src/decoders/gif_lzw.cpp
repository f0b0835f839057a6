#include "decoders/gif_lzw.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr uint32_t head_size = 8;  // pixels of a string that its entry holds
constexpr uint32_t chunk = 16;     // copied at a time

// The place of a string in the output.
constexpr uint64_t one_longer = uint64_t{1} << 32;
constexpr uint64_t place_of(int64_t position, uint64_t length) {
    return static_cast<uint64_t>(position) | length << 32;
}
constexpr uint64_t position_in(uint64_t place) {
    return place & UINT32_MAX;
}
constexpr uint64_t length_in(uint64_t place) {
    return place >> 32;
}

// The first pixels of the string of so many with one more behind it.
constexpr uint64_t longer(uint64_t head, uint64_t length, uint64_t pixel) {
    return length < head_size ? head | pixel << (8 * length) : head;
}

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
      next_(clear_code_ + 2) {
    for (uint32_t i = 0; i < clear_code_; ++i) {
        heads_[i] = i & 0xFF;
        places_[i] = place_of(0, 1);
    }
}

// The pixels of the string that its head does not hold. A string ends before `at`, so whole chunks may be copied: what
// they overwrite is written again later.
void GifLzwDecoder::copy_rest(uint64_t place, int64_t at) {
    const uint8_t *from = out_ + position_in(place);
    uint8_t *to = out_ + at;
    for (uint64_t i = head_size; i < length_in(place); i += chunk) {
        uint8_t pixels[chunk];
        memcpy(pixels, from + i, chunk);
        memcpy(to + i, pixels, chunk);
    }
}

// The beginning of a string that is longer than the room behind `at`.
void GifLzwDecoder::store_what_fits(uint64_t head, uint64_t place, int64_t at) {
    const auto room = static_cast<size_t>(room_ - at);
    uint8_t first[head_size];
    store_low_first(head, first);
    memcpy(out_ + at, first, std::min<size_t>(room, head_size));
    if (room > head_size)
        memcpy(out_ + at + head_size, out_ + position_in(place) + head_size, room - head_size);
}

GifLzwDecoder::State GifLzwDecoder::decode(std::span<const uint8_t> codes) {
    const uint8_t *in = codes.data();
    const uint8_t *const end = in + codes.size();
    // Numbers by themselves, not members and records, stay in registers while bytes are written.
    const uint32_t clear_code = clear_code_;
    const int64_t room = room_;
    uint64_t buffer = bit_buffer_;
    int count = bit_count_;
    int bits = bits_;
    uint32_t mask = (1u << bits) - 1;
    uint32_t next = next_;
    uint64_t previous_head = previous_head_;
    uint64_t previous_place = previous_place_;
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
        const uint32_t code = static_cast<uint32_t>(buffer) & mask;
        buffer >>= bits;
        count -= bits;

        if (code == clear_code) {
            bits = first_bits_;
            mask = (1u << bits) - 1;
            next = clear_code + 2;
            previous_place = 0;
            continue;
        }
        if (code == clear_code + 1) {
            state = State::End;
            break;
        }
        const uint64_t previous_length = length_in(previous_place);
        uint64_t head = heads_[code];
        uint64_t place = places_[code];
        if (previous_length == 0 ? code > clear_code : code >= next) {
            // A string in the making ends with the pixel that it begins with.
            if (previous_length == 0 || code > next || next == table_size) {
                state = State::BadCode;
                break;
            }
            head = longer(previous_head, previous_length, previous_head & 0xFF);
            place = previous_place + one_longer;
            out_[at] = static_cast<uint8_t>(head);
        }
        if (previous_length > 0 && next < table_size) {
            heads_[next] = longer(previous_head, previous_length, head & 0xFF);
            places_[next] = previous_place + one_longer;
            ++next;
        }
        if (next > mask && bits < most_bits) {
            ++bits;
            mask = 2 * mask + 1;
        }

        const auto length = static_cast<int64_t>(length_in(place));
        if (length > room - at) {
            store_what_fits(head, place, at);
            at = room;
            state = State::Full;
            break;
        }
        store_low_first(head, out_ + at);
        if (length > head_size)
            copy_rest(place, at);
        previous_head = head;
        previous_place = place_of(at, static_cast<uint64_t>(length));
        at += length;
    }
    bit_buffer_ = buffer;
    bit_count_ = count;
    bits_ = bits;
    next_ = next;
    previous_head_ = previous_head;
    previous_place_ = previous_place;
    pixels_ = at;
    bytes_left_ = end - in + count / 8;
    return state;
}

void GifLzwDecoder::clear_rest() {
    memset(out_ + pixels_, 0, slack);
}
