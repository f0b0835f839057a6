#include "viewer/model/stretch.h"

#include "viewer/model/palette.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

ImageDescription described(int64_t bits, const char *sample_type, int64_t minimum = -1, int64_t maximum = -1) {
    ImageDescription description;
    description.sample_bits = bits;
    description.sample_type = sample_type;
    description.is_signed = !strstr(sample_type, "UNSIGNED");
    description.minimum = minimum;
    description.maximum = maximum;
    return description;
}

template <typename T>
std::vector<int> display_of(const std::vector<T> &samples, ImageDescription description) {
    std::vector<uint8_t> display(samples.size());
    EXPECT_TRUE(scale_image(samples.data(), &description, 1, static_cast<int64_t>(samples.size()), display.data()));
    return {display.begin(), display.end()};
}

TEST(Finders, StartingValuesBiasTheRange) {
    const std::vector<int16_t> negative = {-5, -3, -9};
    EXPECT_EQ(cstretch16s(negative.data(), 1, 3).minimum, -9);
    EXPECT_EQ(cstretch16s(negative.data(), 1, 3).maximum, 0);
    const std::vector<uint16_t> bright = {65000, 40000};
    EXPECT_EQ(cstretch16us(bright.data(), 2, 1).minimum, 32767);
    EXPECT_EQ(cstretch16us(bright.data(), 2, 1).maximum, 65000);
    const std::vector<double> large = {1e7, 2e7};
    EXPECT_EQ(cstretch64s(large.data(), 1, 2).minimum, 999999.0);

    const std::vector<float> words = {nan_value, -2.5F, 1e30F, nan_value};
    EXPECT_EQ(cstretch32s(words.data(), 2, 2).reals.minimum, -2.5);
    EXPECT_EQ(cstretch32s(words.data(), 2, 2).integers.minimum, -1071644672);  // the bits of -2.5
    EXPECT_EQ(cstretch32us(words.data(), 2, 2).integers.maximum, 3223322624);

    EXPECT_EQ(cstretch16us(nullptr, -1, 5).maximum, 0);
    EXPECT_EQ(cstretch32us(nullptr, 0, 3).reals.minimum, 4294967296.0);
}

// Wherever an extreme lies, in a whole vector or in the tail, it is found.
TEST(Finders, EveryPlaceCounts) {
    for (size_t place = 0; place < 300; ++place) {
        std::vector<int16_t> halves(300, 7);
        halves[place] = -8;
        EXPECT_EQ(cstretch16s(halves.data(), 3, 100).minimum, -8);
        std::vector<double> reals(300, nan_value);
        reals[place] = 9;
        EXPECT_EQ(cstretch64s(reals.data(), 3, 100).maximum, 9);
        EXPECT_EQ(cstretch64s(reals.data(), 3, 100).minimum, 9);
    }
}

TEST(Stretch, EveryHalfwordMapsAsTheFormulaSays) {
    const std::tuple<const char *, int64_t, int64_t> cases[] = {
        {"MSB_INTEGER", 0, 4095},    {"MSB_INTEGER", -32768, 32767},        {"LSB_UNSIGNED_INTEGER", 0, 65535},
        {"MSB_INTEGER", 100, 200},   {"MSB_UNSIGNED_INTEGER", 0, 0},        {"MSB_INTEGER", 200, 100},
        {"MSB_INTEGER", 8, 7},       {"MSB_UNSIGNED_INTEGER", 40000, 7},    {"MSB_INTEGER", -3, 1000003},
        {"MSB_INTEGER", 1, 1 << 30}, {"MSB_INTEGER", INT64_MIN, INT64_MAX}, {"MSB_INTEGER", 17, 9973},
    };
    std::vector<int16_t> samples;
    for (int value = -32768; value < 32768; ++value)
        samples.push_back(static_cast<int16_t>(value));
    for (const auto &[sample_type, minimum, maximum] : cases) {
        const std::vector<int> display = display_of(samples, described(16, sample_type, minimum, maximum));
        const auto span = static_cast<float>(static_cast<double>(maximum) + 1 - static_cast<double>(minimum));
        const float step = span == 0 ? 1.0F : span * 0.00390625F;
        for (size_t i = 0; i < samples.size(); ++i) {
            volatile float quotient = static_cast<float>(samples[i] - static_cast<int16_t>(minimum)) / step;
            ASSERT_EQ(display[i], static_cast<int>(quotient) & 255)
                << samples[i] << " in " << minimum << " to " << maximum;
        }
    }
}

TEST(Stretch, ValuesOutsideTheRangeWrap) {
    // The unsigned maximum is found, but samples above 32767 map through their signed value.
    EXPECT_EQ(display_of<uint16_t>({0, 256, 32767, 32768, 65535}, described(16, "MSB_UNSIGNED_INTEGER")),
              (std::vector<int>{0, 1, 127, 128, 0}));
    // The excess over the range keeps the largest sample white; in single precision it would be lost.
    EXPECT_EQ(display_of<int32_t>({-1000, 0, 500, 998, 1000}, described(32, "LSB_INTEGER")),
              (std::vector<int>{0, 127, 191, 255, 255}));
    EXPECT_EQ(display_of<uint32_t>({0, 512, 0xffffff00U}, described(32, "LSB_UNSIGNED_INTEGER", 0, 1024)),
              (std::vector<int>{0, 127, 193}));
}

TEST(Stretch, RealsByDataTypeWhateverItsName) {
    const std::vector<float> samples = {0.0F, 0.25F, 0.5F, 0.999F};
    const std::vector<int> expected = {0, 63, 127, 255};
    for (const char *name : {"IEEE_REAL", "PC_REAL", "REAL", "FLOAT", "VAXG_REAL"}) {
        EXPECT_EQ(display_of(samples, described(32, name, 0, 1)), expected) << name;
    }
    EXPECT_NE(display_of(samples, described(32, "MSB_INTEGER", 0, 1)), expected);
    const std::vector<double> doubles = {0.0, 0.25, 0.5, 0.999, 1.0};
    const std::vector<int> found = display_of(doubles, described(64, "IEEE_REAL"));
    EXPECT_EQ(std::vector<int>(found.begin(), found.begin() + 4), expected);
}

TEST(Stretch, WhatNoIntegerHoldsIsBlack) {
    EXPECT_EQ(display_of<float>({nan_value, infinity, -infinity, 3e38F, 1.5F}, described(32, "PC_REAL", 0, 256)),
              (std::vector<int>{0, 0, 0, 0, 1}));
    // In 64 bits the low eight bits of large whole numbers still count.
    const double step = (256 + 0.000001) * 0.00390625;
    EXPECT_EQ(display_of<double>({nan_value, 1e300, -1.5 * step, 4294967301.5 * step, 9.3e18 * step},
                                 described(64, "PC_REAL", 0, 256)),
              (std::vector<int>{0, 0, 255, 5, 0}));
}

// A computed range is kept with the description; the label's own range is never replaced.
TEST(Stretch, RangeIsStoredByKind) {
    const auto find = [](ImageDescription description, const auto &first, const auto &second) {
        StretchRangeFinder finder(description);
        finder.add(first.data(), 1, static_cast<int64_t>(first.size()));
        finder.add(second.data(), 1, static_cast<int64_t>(second.size()));
        finder.store(&description);
        return description;
    };
    const std::vector<int16_t> halves = {5, 12};
    const ImageDescription integers = find(described(16, "MSB_INTEGER", 3, -1), halves, std::vector<int16_t>{-7});
    EXPECT_EQ(integers.minimum, -7);
    EXPECT_EQ(integers.maximum, 12);
    const std::vector<float> floats = {0.5F, 2.5F};
    const ImageDescription reals = find(described(32, "PC_REAL"), floats, std::vector<float>{9.5F});
    EXPECT_EQ(reals.real_minimum, 0.5);
    EXPECT_EQ(reals.real_maximum, 9.5);
    EXPECT_EQ(reals.minimum, -1);
    const ImageDescription given = find(described(32, "PC_REAL", 1, 4), floats, floats);
    EXPECT_EQ(given.minimum, 1);
    EXPECT_EQ(given.real_maximum, 0);
}

TEST(DisplayImage, FailuresSayWhy) {
    ImageDescription description = described(12, "MSB_INTEGER");
    const uint8_t samples[] = {1, 2};
    EXPECT_EQ(
        build_display_image(samples, &description, 1, 1).find("Lumacart does not currently process your sample type."),
        0u);
    ASSERT_TRUE(description.display_image);
    EXPECT_EQ(*description.display_image->pixels, 0);
    EXPECT_EQ(build_display_image(nullptr, &description, 1, 1), "Create image -- No pointer to image data was found");
    EXPECT_FALSE(description.display_image);
    EXPECT_NE(build_display_image(samples, &description, int64_t{1} << 40, 1), "");
}

std::unique_ptr<PixelImage> image_with_levels(const std::vector<uint8_t> &levels) {
    auto image = util_new_pixel_image(static_cast<int>(levels.size()), 1, 1);
    memcpy(image->pixels.get(), levels.data(), levels.size());
    image->colours = util_grey_colours();
    return image;
}

TEST(ColourStretch, HalfAPerCentGoesBlackAndWhite) {
    // Of 1000 pixels that count, 5 lie at 3, 6 at 10, 984 at 60 and 5 at 200; the background does not count.
    std::vector<uint8_t> levels(5000, 0);
    levels.insert(levels.end(), 5, 3);
    levels.insert(levels.end(), 6, 10);
    levels.insert(levels.end(), 984, 60);
    levels.insert(levels.end(), 5, 200);
    const auto image = image_with_levels(levels);
    const auto counts = count_levels(*image);
    EXPECT_EQ(counts[60], 984);
    int low = 0;
    int high = 0;
    EXPECT_TRUE(percentile_levels(*image, &low, &high));
    EXPECT_EQ(low, 10) << "where half a per cent is passed";
    EXPECT_EQ(high, 60) << "where 99.5 per cent are reached";
    image->colours = palette_colours(3);
    reset_colours(image.get());
    EXPECT_EQ(image->colours, util_grey_colours());
}

TEST(ColourStretch, WithoutARampTheTableStays) {
    for (const std::vector<uint8_t> &levels : {std::vector<uint8_t>(9, 0), std::vector<uint8_t>(9, 77)}) {
        const auto image = image_with_levels(levels);
        image->colours = palette_colours(3);
        const ColourTable before = image->colours;
        int low = 0;
        int high = 0;
        EXPECT_FALSE(percentile_levels(*image, &low, &high));
        EXPECT_EQ(image->colours, before);
    }
}

}  // namespace
