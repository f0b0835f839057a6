// Palettes, what the histogram's bars make of them, and the histogram's own numbers.
#include "viewer/model/display_control.h"

#include "support/gif.h"
#include "support/product.h"
#include "viewer/model/file_colours.h"
#include "viewer/model/level_histogram.h"
#include "viewer/model/palette.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

// Whole tables, each computed in whole numbers.
TEST(DisplayControl, WholeTables) {
    const auto clamped = [](int level) { return std::min(255, std::max(0, level)); };
    const std::tuple<const char *, DisplayControl, std::function<int(int)>> cases[] = {
        {"identity", {0, 255, 127, 127, false}, [](int i) { return i; }},
        {"inverted identity", {0, 255, 127, 127, true}, [](int i) { return i == 255 ? 0 : 254 - i; }},
        {"a step ramp", {100, 110, 127, 127, false}, [&](int i) { return clamped(((i - 100) * 255 + 5) / 10); }},
        {"an inverted step ramp",
         {100, 110, 127, 127, true},
         [&](int i) { return i < 100    ? 255
                             : i >= 110 ? 0
                                        : (2550 - (i - 100) * 255 - 5) / 10; }},
        {"one level apart", {80, 81, 127, 127, false}, [](int i) { return i > 80 ? 255 : 0; }},
        {"points that met", {80, 80, 127, 127, false}, [](int i) { return i > 80 ? 255 : 0; }},
        {"shifted brighter", {0, 255, 147, 127, false}, [&](int i) { return clamped(i + 20); }},
        {"shifted darker, inverted", {0, 255, 77, 127, true}, [&](int i) { return i < 50 ? 255 : 254 - (i - 50); }},
        {"all beyond the white point", {0, 1, 255, 127, false}, [](int) { return 255; }},
    };
    for (const auto &[name, control, level] : cases) {
        const auto levels = control_levels(control);
        for (int i = 0; i < 256; ++i)
            EXPECT_EQ(levels[static_cast<size_t>(i)], level(i)) << name << " " << i;
    }
    const ColourTable heat = palette_colours(2);
    EXPECT_EQ(control_colours({100, 110, 127, 127, true}, heat)[0], heat[255]);
}

TEST(DisplayControl, BlackAndWhiteNeverMeet) {
    DisplayControl control;
    EXPECT_TRUE(move_bar(&control, DisplayBar::Black, 1000));
    EXPECT_EQ(control.lbarh, 254);
    EXPECT_TRUE(move_bar(&control, DisplayBar::Black, 100));
    EXPECT_TRUE(move_bar(&control, DisplayBar::White, -5));
    EXPECT_EQ(control.rbarh, 101);
    EXPECT_FALSE(move_bar(&control, DisplayBar::Black, 101)) << "it stands right beside it already";
    EXPECT_TRUE(move_bar(&control, DisplayBar::Shift, -1));
    EXPECT_EQ(control.mbarh, 0);
    EXPECT_FALSE(bars_at_rest(control));
}

double lightness(const Colour &colour) {
    return 0.2126 * std::pow(colour.red / 255.0, 2.2) + 0.7152 * std::pow(colour.green / 255.0, 2.2) +
           0.0722 * std::pow(colour.blue / 255.0, 2.2);
}

// What each map is for holds of the table that was checked in.
TEST(Palette, MapsKeepTheirPromises) {
    for (const int rising : {0, 1, 2, 5}) {
        const ColourTable colours = palette_colours(rising);
        for (size_t i = 1; i < 256; ++i)
            EXPECT_GE(lightness(colours[i]) + 0.01, lightness(colours[i - 1])) << rising << " " << i;
        EXPECT_EQ(colours[255], (Colour{255, 255, 255}));
    }
    const ColourTable cyclic = palette_colours(6);
    EXPECT_EQ(cyclic.front(), cyclic.back());
    const ColourTable diverging = palette_colours(4);
    EXPECT_GT(lightness(diverging[127]), lightness(diverging[0]));
    EXPECT_GT(lightness(diverging[127]), lightness(diverging[255]));

    EXPECT_EQ(GetPaletteColor(0, 200), 0xc8c8c8u);
    EXPECT_EQ(GetPaletteColor(3, 0), 0x0000ffu);
    EXPECT_EQ(GetPaletteColor(3, 255), 0xff0000u);
    for (const auto &[palette, level] : {std::pair{7, 0}, {-1, 0}, {1, 256}, {1, -1}})
        EXPECT_FALSE(GetPaletteColor(palette, level)) << palette << " " << level;
}

std::unique_ptr<PixelImage> image_of(const std::vector<uint8_t> &levels) {
    auto image = util_new_pixel_image(static_cast<int>(levels.size()), 1, 1);
    std::copy(levels.begin(), levels.end(), image->pixels.get());
    return image;
}

TEST(LevelHistogram, HighLevelsAreAskedAboutOnceAndMayBeIgnored) {
    std::vector<uint8_t> levels(50, 9);
    levels.insert(levels.end(), 25, 3);
    levels.insert(levels.end(), 25, 200);
    LevelHistogram histogram;
    count_histogram(*image_of(levels), &histogram);
    EXPECT_EQ(unanswered_high_levels(histogram), std::vector<int>{9}) << "a quarter is not more than a quarter";
    EXPECT_EQ(histogram_scale(histogram), 50);
    histogram.answered[9] = histogram.ignored[9] = true;
    EXPECT_EQ(histogram_scale(histogram), 25);
    EXPECT_EQ(histogram_share(histogram, 9), 50);
    EXPECT_EQ(histogram_height(histogram, 25, 50, 80), 80) << "cut at the top";
    EXPECT_EQ(histogram_height(histogram, 25000, 1, 80), 1) << "a single pixel is seen";

    levels.assign(100, 200);
    count_histogram(*image_of(levels), &histogram);
    EXPECT_EQ(unanswered_high_levels(histogram), std::vector<int>{200}) << "other pixels, another question";
    EXPECT_FALSE(histogram.ignored[9]);
    count_histogram(*image_of({}), &histogram);
    EXPECT_TRUE(unanswered_high_levels(histogram).empty());
    EXPECT_EQ(histogram_share(histogram, 0), 0);
}

TEST(LevelHistogram, TicksAreRound) {
    using Ticks = std::vector<int64_t>;
    constexpr int64_t huge = 1'000'000'000'000'000'000;
    LevelHistogram histogram;
    EXPECT_EQ(histogram_ticks(histogram, 1), (Ticks{0, 1}));
    EXPECT_EQ(histogram_ticks(histogram, 37), (Ticks{0, 10, 20, 30}));
    EXPECT_EQ(histogram_ticks(histogram, 60), (Ticks{0, 20, 40, 60}));
    EXPECT_EQ(histogram_ticks(histogram, 4 * huge), (Ticks{0, huge, 2 * huge, 3 * huge, 4 * huge}));
    histogram.logarithmic = true;
    EXPECT_EQ(histogram_ticks(histogram, 2600), (Ticks{0, 1, 10, 100, 1000}));
}

// The local table where an image has one, else the global one; whatever is missing leaves nothing or black.
TEST(FileColours, OfGifImages) {
    const SilentReports silent;
    const ScratchFolder folder;
    const std::string global("\1\2\3\4\5\6", 6);
    const std::string local("\7\10\11\12\13\14", 6);
    const std::string screen("GIF89a\2\0\1\0\x80\0\0", 13);
    const std::string plain = gif_image(2, 1, std::string("\0\1", 2), 2);
    std::string with_local = plain;
    with_local[9] = static_cast<char>(0x80);
    with_local.insert(10, local);
    struct Case {
        const char *file;
        std::string bytes;
        const char *image;
        int first;  // red of entry 0; -1: no colours
    };
    const Case cases[] = {
        {"global.gif", screen + global + plain + ";", "GIF_IMAGE", 1},
        {"local.gif", screen + global + with_local + plain + ";", "GIF_IMAGE", 7},
        {"second.gif", screen + global + with_local + plain + ";", "GIF_2_IMAGE", 1},
        {"two.gif", screen + global + with_local + with_local + ";", "GIF_2_IMAGE", 7},
        {"none.gif", gif_header(2, 1, 0) + plain + ";", "GIF_IMAGE", -1},
    };
    for (const Case &test : cases) {
        const OdlTree root(OaParseLabelFile(folder.write(test.file, test.bytes).c_str(), nullptr, 0, 1));
        ASSERT_TRUE(root) << test.file;
        const ObjDesc *image = OdlFindObjDesc(root.get(), test.image, nullptr, nullptr, 1, SCOPE_TO_END);
        ASSERT_TRUE(image) << test.file;
        const std::optional<ColourTable> colours = read_file_colours(image);
        ASSERT_EQ(colours.has_value(), test.first >= 0) << test.file;
        if (!colours)
            continue;
        EXPECT_EQ((*colours)[0].red, test.first) << test.file;
        EXPECT_EQ((*colours)[1].blue, test.first + 5) << test.file;
        EXPECT_EQ((*colours)[2], Colour()) << test.file;
    }
    EXPECT_FALSE(read_file_colours(nullptr));
}

}  // namespace
