#include "decoders/gif_lzw.h"

#include "support/gif.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using State = GifLzwDecoder::State;

struct Decoded {
    State state;
    std::string pixels;
    bool rest_is_clear;
};

// Gives the codes in pieces of so many bytes.
Decoded decode(std::string_view codes, int code_size, size_t room, size_t piece = 1 << 20) {
    std::string out(room + GifLzwDecoder::slack, '\0');
    GifLzwDecoder decoder(code_size, reinterpret_cast<uint8_t *>(out.data()), static_cast<int64_t>(room));
    State state = State::NeedsCodes;
    for (; !codes.empty() && state == State::NeedsCodes; codes.remove_prefix(std::min(piece, codes.size())))
        state = decoder.decode({reinterpret_cast<const uint8_t *>(codes.data()), std::min(piece, codes.size())});
    decoder.clear_rest();
    const auto decoded = static_cast<size_t>(decoder.pixels());
    return {state, out.substr(0, decoded), out.find_first_not_of('\0', decoded) == out.npos};
}

// Runs, repetitions and noise, so that strings of all lengths occur.
std::string picture(size_t size, int code_size, uint32_t seed) {
    std::mt19937 random(seed);
    std::string pixels;
    while (pixels.size() < size) {
        const size_t run = random() % 3 == 0 ? random() % 6000 : 1 + random() % 3;
        const size_t period = 1 + random() % 40;
        for (size_t i = 0; i < run; ++i)
            pixels += i < period || run < 4 ? static_cast<char>(random() & ((1u << std::min(code_size, 8)) - 1))
                                            : pixels[pixels.size() - period];
    }
    pixels.resize(size);
    return pixels;
}

TEST(GifLzw, DecodesWhatWasEncoded) {
    for (int code_size = gif_least_code_size; code_size <= 8; ++code_size) {
        for (const bool deferred : {false, true}) {
            const std::string pixels = picture(300000, code_size, static_cast<uint32_t>(code_size));
            const std::string codes = gif_codes(pixels, code_size, deferred);
            for (const size_t piece : {size_t{1}, size_t{7}, size_t{255}, codes.size()}) {
                const Decoded found = decode(codes, code_size, pixels.size(), piece);
                EXPECT_EQ(found.state, State::End) << code_size << deferred << piece;
                EXPECT_TRUE(found.pixels == pixels) << code_size << deferred << piece;
            }
        }
    }
    // One run: every code but the first is the one that is just being made; then its longest string.
    const std::string run(5000 * 2000, 'x');
    EXPECT_TRUE(decode(gif_codes(run, 8, true), 8, run.size()).pixels == run);
}

TEST(GifLzw, DamagedCodesEndDecodingAndLeaveZeros) {
    struct Case {
        const char *what;
        std::vector<uint32_t> codes;  // three bits each; 4 clears, 5 ends, 6 is the first string
        size_t room;
        State state;
        const char *pixels;
    };
    for (const Case &c : {
             Case{"no clear code", {1, 5}, 9, State::End, "01"},
             Case{"clear codes", {4, 4, 1, 4, 2, 5}, 9, State::End, "0102"},
             Case{"no pixel", {4, 5}, 9, State::End, ""},
             Case{"no end code", {4, 1}, 9, State::NeedsCodes, "01"},
             Case{"string first", {4, 6, 1}, 9, State::BadCode, ""},
             Case{"string first behind another", {4, 1, 1, 4, 6}, 9, State::BadCode, "0101"},
             Case{"string in the making", {4, 1, 6, 5}, 9, State::End, "010101"},
             Case{"string of the future", {4, 1, 7, 5}, 9, State::BadCode, "01"},
             Case{"too many pixels", {4, 1, 2, 3}, 2, State::Full, "0102"},
             Case{"a string too many", {4, 1, 6}, 2, State::Full, "0101"},
             Case{"no room", {4, 1}, 0, State::Full, ""},
         }) {
        GifCodeWriter writer;
        for (const uint32_t code : c.codes)
            writer.put(code, 3);
        const Decoded found = decode(writer.take(), 2, c.room);
        EXPECT_EQ(found.state, c.state) << c.what;
        EXPECT_EQ(to_hex(found.pixels), c.pixels) << c.what;
        EXPECT_TRUE(found.rest_is_clear) << c.what;
    }
}

}  // namespace
