#include "viewer/model/rotate.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct Turn {
    const char *line_direction;
    const char *sample_direction;
    bool (*predicate)(const std::string &, const std::string &);
    std::unique_ptr<PixelImage> (*operation)(const PixelImage &);
    const char *rows;      // of the turned picture "abc/def"
    ImagePosition origin;  // of a block of lines 11 to 12, samples 21 to 23
};
const Turn turns[] = {
    {"LEFT", "DOWN", is_90_deg, rotate_image_90, "da/eb/fc", {12, 21}},
    {"LEFT", "UP", is_90_deg_invert, rotate_invert_image_90, "fc/eb/da", {12, 23}},
    {"UP", "LEFT", is_180_deg, rotate_image_180, "fed/cba", {12, 23}},
    {"UP", "RIGHT", is_180_deg_invert, rotate_invert_image_180, "def/abc", {12, 21}},
    {"RIGHT", "UP", is_270_deg, rotate_image_270, "cf/be/ad", {11, 23}},
    {"RIGHT", "DOWN", is_270_deg_invert, rotate_invert_image_270, "ad/be/cf", {11, 21}},
    {"DOWN", "LEFT", is_invert, invert_image_horizontal, "cba/fed", {11, 23}},
};

std::string rows_of(const PixelImage &image) {
    std::string rows;
    for (int row = 0; row < image.height; ++row) {
        if (row > 0)
            rows += '/';
        for (int column = 0; column < image.width; ++column)
            rows += static_cast<char>(image.pixels.get()[(row * image.width + column) * image.bytes_per_pixel]);
    }
    return rows;
}

std::unique_ptr<PixelImage> picture(int bytes_per_pixel) {
    auto image = util_new_pixel_image(3, 2, bytes_per_pixel);
    for (int i = 0; i < 6; ++i)
        image->pixels.get()[i * bytes_per_pixel] = static_cast<uint8_t>("abcdef"[i]);
    image->colours = util_grey_colours();
    return image;
}

TEST(Rotate, EachPairOfDirectionsTurnsItsWay) {
    ImageDescription description;
    description.block = {11, 12, 21, 23};
    for (const Turn &turn : turns) {
        SCOPED_TRACE(std::string(turn.line_direction) + " " + turn.sample_direction);
        for (const int bytes_per_pixel : {1, 4}) {
            const auto image = picture(bytes_per_pixel);
            const RotatedImage rotated = rotate_image(*image, turn.line_direction, turn.sample_direction);
            ASSERT_TRUE(rotated.image);
            EXPECT_TRUE(rotated.errors.empty());
            EXPECT_EQ(rows_of(*rotated.image), turn.rows);
            EXPECT_EQ(rows_of(*turn.operation(*image)), turn.rows);
            EXPECT_EQ(rotated.image->bytes_per_pixel, bytes_per_pixel);
            EXPECT_EQ(rotated.image->colours, image->colours);
        }
        for (const Turn &other : turns)
            EXPECT_EQ(turn.predicate(other.line_direction, other.sample_direction), &turn == &other);
        description.line_display_direction = turn.line_direction;
        description.sample_display_direction = turn.sample_direction;
        EXPECT_EQ(get_image_origin(description), turn.origin);
    }
}

// Pictures of more than one block, of no whole number of blocks, of one line, and large enough for several threads: the
// read-out finds every pixel, or every eleventh.
TEST(Rotate, ReadOutFindsTheLineAndSampleOfEveryPixel) {
    struct {
        int width, height;
    } const sizes[] = {{70, 37}, {33, 64}, {1, 100}, {100, 1}, {1031, 1033}};
    for (const auto &size : sizes) {
        const auto image = util_new_pixel_image(size.width, size.height, 4);
        const int64_t count = int64_t{size.width} * size.height;
        for (uint32_t i = 0; i < count; ++i)
            memcpy(image->pixels.get() + i * 4, &i, 4);
        ImageDescription description;
        description.block = {101, 100 + size.height, 501, 500 + size.width};
        for (const Turn &turn : turns) {
            description.line_display_direction = turn.line_direction;
            description.sample_display_direction = turn.sample_direction;
            const RotatedImage rotated = rotate_image(*image, turn.line_direction, turn.sample_direction);
            ASSERT_TRUE(rotated.image);
            for (int64_t i = 0; i < count; i += count / 100'000 + 1) {
                uint32_t pixel = 0;
                memcpy(&pixel, rotated.image->pixels.get() + i * 4, 4);
                const ImagePosition stored = {101 + pixel / size.width, 501 + pixel % size.width};
                const int64_t width = rotated.image->width;
                ASSERT_EQ(image_position_at(description, i % width, i / width), stored);
            }
        }
    }
}

TEST(Rotate, WhatCannotBeTurnedStaysWithAReason) {
    const std::tuple<const char *, const char *, std::vector<std::string>> cases[] = {
        {"DOWN", "RIGHT", {}},
        {"", "RIGHT", {}},
        {"DOWN",
         "UP",
         {"Cannot determine orientation from LINE_DISPLAY_DIRECTION = DOWN and SAMPLE_DISPLAY_DIRECTION = UP",
          "Image orientation will not be changed"}},
        {"", "LEFT", {"LINE_DISPLAY_DIRECTION statement is missing", "Image orientation will not be changed"}},
        {"UP", "", {"SAMPLE_DISPLAY_DIRECTION statement is missing", "Image orientation will not be changed"}},
    };
    for (const auto &[line_direction, sample_direction, errors] : cases) {
        const RotatedImage rotated = rotate_image(*picture(1), line_direction, sample_direction);
        EXPECT_FALSE(rotated.image);
        EXPECT_EQ(rotated.errors, errors);
        ImageDescription description;
        description.line_display_direction = line_direction;
        description.sample_display_direction = sample_direction;
        description.block = {5, 9, 7, 9};
        EXPECT_EQ(get_image_origin(description), (ImagePosition{5, 7}));
        EXPECT_EQ(image_position_at(description, 1, 2), (ImagePosition{7, 8}));
    }
}

}  // namespace
