#include "decoders/previous_pixel.h"

#include "support/previous_pixel.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// Decodes the bytes cut into pieces of that size, which carry the state on.
std::vector<uint16_t> decoded(const std::string &bytes, size_t piece) {
    std::vector<uint16_t> samples;
    PreviousPixelState state;
    for (size_t at = 0; at < bytes.size(); at += piece) {
        const std::vector<uint8_t> part(bytes.begin() + static_cast<long>(at),
                                        bytes.begin() + static_cast<long>(std::min(at + piece, bytes.size())));
        std::vector<uint16_t> out(part.size());
        out.resize(static_cast<size_t>(OalDecodePreviousPixel(part.data(), std::ssize(part), out.data(), &state)));
        samples.insert(samples.end(), out.begin(), out.end());
    }
    return samples;
}

TEST(PreviousPixel, DecodesDifferencesAndSamplesInFull) {
    // 258; +1, -127 below 0, +127 above 65535; in full after the wrap.
    const std::string bytes("\xff\x01\x02\x80\x00\xff\x00\x01\x00\xff\xff\xf0\xfe\xff\x00\xff", 16);
    const std::vector<uint16_t> samples = {258, 259, 132, 1, 65410, 65520, 111, 255};
    EXPECT_EQ(decoded(bytes, bytes.size()), samples);
}

TEST(PreviousPixel, DecodesAnyCutAsByteByByte) {
    std::mt19937 random(7);
    for (const unsigned escape_every : {0, 3, 17, 200}) {
        std::vector<uint16_t> samples(3000, 40000);
        for (size_t i = 1; i < samples.size(); ++i)
            samples[i] = static_cast<uint16_t>(samples[i - 1] + random() % 255 - 127);
        const std::string bytes = encode_previous_pixel(samples, escape_every);
        std::string noise(2000, 0);  // differences of 128 too, and escapes anywhere
        for (char &byte : noise)
            byte = static_cast<char>(escape_every && random() % escape_every == 0 ? 255 : random() % 255);
        const std::vector<uint16_t> walked = walk_previous_pixel(noise);
        for (const size_t piece : {1, 2, 15, 16, 17, 33, 512, 10000}) {
            ASSERT_EQ(decoded(bytes, piece), samples) << piece;
            ASSERT_EQ(decoded(noise, piece), walked) << piece;
        }
    }
}

}  // namespace
