// Parts of images against the whole.
#pragma once

#include "support/product.h"

#include <array>
#include <random>

struct HandleCloser {
    void operator()(OaObject *handle) const { OaCloseImage(handle); }
};
using Handle = std::unique_ptr<OaObject, HandleCloser>;

using Rectangle = std::array<int64_t, 4>;  // first and last line, first and last sample; from 1

inline std::string cut(const std::string &whole, int64_t line_samples, int64_t size, const Rectangle &at) {
    std::string part;
    for (int64_t line = at[0]; line <= at[1]; ++line)
        part += whole.substr(static_cast<size_t>(((line - 1) * line_samples + at[2] - 1) * size),
                             static_cast<size_t>((at[3] - at[2] + 1) * size));
    return part;
}

inline std::string partial(OaObject *handle, const Rectangle &at) {
    return bytes_of(OaObjectPtr(OaReadPartialImage(handle, at[0], at[1], at[2], at[3])).get());
}

// Rectangles and runs of lines, in any order, hold what is there in the whole image. The label may be gone by then.
inline void expect_parts_of(const std::string &whole, const std::string &label, int64_t band = 1) {
    const Handle handle(OaOpenImage(OpenProduct(label).image(), band));
    ASSERT_TRUE(handle) << error_string;
    const int64_t lines = std::stoll(keyword_of(handle->odl, "SOURCE_LINES"));
    const int64_t samples = std::stoll(keyword_of(handle->odl, "SOURCE_LINE_SAMPLES"));
    const int64_t size = std::ssize(whole) / lines / samples;
    ASSERT_EQ(std::ssize(whole), lines * samples * size);
    std::vector<Rectangle> requests = {{lines, lines, samples, samples}, {1, lines, 1, samples}};
    std::mt19937 random(11);
    const auto pick = [&](int64_t least, int64_t most) {
        return std::uniform_int_distribution<int64_t>(least, most)(random);
    };
    while (requests.size() < 50) {
        const int64_t line = pick(1, lines), sample = pick(1, samples);
        requests.push_back({line, pick(line, lines), sample, pick(sample, samples)});
    }
    for (const Rectangle &at : requests) {
        ASSERT_TRUE(partial(handle.get(), at) == cut(whole, samples, size, at)) << at[0] << "-" << at[1];
        ASSERT_EQ(OaReadImagePixels(handle.get(), at[0], at[3]), samples - at[3] + 1);
        ASSERT_TRUE(bytes_of(handle.get()) == cut(whole, samples, size, {at[0], at[0], at[3], samples})) << at[0];
    }
    EXPECT_EQ(OaReadImagePixels(handle.get(), lines, samples), 1);
}
