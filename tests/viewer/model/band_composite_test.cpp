#include "viewer/model/band_composite.h"

#include "support/product.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr Colour red = {255, 0, 0}, green = {0, 255, 0}, blue = {0, 0, 255};

template <typename T>
std::vector<int> levels_of(const std::vector<T> &samples, const char *type, RealRange limits) {
    ImageDescription description;
    description.sample_bits = 8 * sizeof(T);
    description.sample_type = type;
    description.is_signed = !util_contains(type, "UNSIGNED");
    std::vector<uint8_t> levels(samples.size(), 77);
    map_to_levels(samples.data(), description, limits, std::ssize(samples), levels.data());
    return {levels.begin(), levels.end()};
}

TEST(BandComposite, LevelsAreLinearBetweenTheLimitsAndClampedBeyond) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double most = std::numeric_limits<double>::max();
    using Levels = std::vector<int>;
    const Levels ends = {0, 0, 128, 255, 255};
    EXPECT_EQ(levels_of<uint8_t>({0, 10, 15, 20, 200}, "UNSIGNED_INTEGER", {10, 20}), ends);
    EXPECT_EQ(levels_of<int8_t>({-128, -100, 0, 100, 127}, "INTEGER", {-100, 100}), ends);
    EXPECT_EQ(levels_of<uint16_t>({0, 1000, 33000, 65000, 65535}, "LSB_UNSIGNED_INTEGER", {1000, 65000}), ends);
    EXPECT_EQ(levels_of<int16_t>({-32768, -5, 0, 5, 32767}, "LSB_INTEGER", {-5, 5}), ends);
    EXPECT_EQ(levels_of<int32_t>({INT32_MIN, -2, 0, 2, INT32_MAX}, "LSB_INTEGER", {-2, 2}), ends);
    EXPECT_EQ(levels_of<uint32_t>({0, 2000000000, 3000000000, 4000000000, UINT32_MAX}, "LSB_UNSIGNED_INTEGER",
                                  {2000000000, 4000000000}),
              ends);
    EXPECT_EQ(levels_of<int64_t>({INT64_MIN, -4, 0, 4, INT64_MAX}, "LSB_INTEGER", {-4, 4}), ends);
    const float huge = std::numeric_limits<float>::infinity();
    EXPECT_EQ(levels_of<float>({-huge, -0.5F, 0, 0.5F, huge}, "PC_REAL", {-0.5, 0.5}), ends);
    EXPECT_EQ(levels_of<double>({-infinity, -most, 0, most, infinity}, "PC_REAL", {-most, most}), ends);
    EXPECT_EQ(levels_of<double>({nan, 1, 3}, "PC_REAL", {2, 2}), (Levels{0, 0, 0})) << "no span";
    EXPECT_EQ(levels_of<double>({nan}, "PC_REAL", {-1, 1}), (Levels{0}));
    Levels all(256);
    std::vector<uint8_t> bytes(256);
    for (int i = 0; i < 256; ++i)
        all[static_cast<size_t>(i)] = bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    EXPECT_EQ(levels_of(bytes, "UNSIGNED_INTEGER", {0, 255}), all);
}

// 2 lines x 3 samples; band b has the samples 10 b + 0 ... 5, the last of band 2 is 99.
template <typename T>
ImageProduct three_bands(const char *type, const std::string &storage, std::endian order) {
    ImageProduct product;
    product.lines = 2;
    product.samples = 3;
    product.bits = 8 * sizeof(T);
    product.type = type;
    product.bands = 3;
    product.storage = storage;
    const auto value = [](int band, int line, int sample) {
        return static_cast<T>(band == 2 && line == 1 && sample == 2 ? 99 : 10 * band + 3 * line + sample);
    };
    std::vector<T> values;
    for (int i = 0; i < 18; ++i) {
        if (storage == "SAMPLE_INTERLEAVED")
            values.push_back(value(i % 3 + 1, i / 9, i / 3 % 3));
        else if (storage == "LINE_INTERLEAVED")
            values.push_back(value(i / 3 % 3 + 1, i / 9, i % 3));
        else
            values.push_back(value(i / 6 + 1, i / 3 % 2, i % 3));
    }
    product.data = stored(values, order);
    return product;
}

std::vector<unsigned> words_of(const PixelImage *image) {
    std::vector<unsigned> words;
    for (int i = 0; image && i < image->width * image->height; ++i) {
        const uint8_t *pixel = image->pixels.get() + i * image->bytes_per_pixel;
        words.push_back(image->bytes_per_pixel == 1 ? *pixel : pixel[2] * 65536U + pixel[1] * 256U + pixel[0]);
    }
    return words;
}

// Red between its own extremes 10 and 15, green between typed limits 20 and 22, blue from 31 to its highest sample 35.
TEST(BandComposite, BandsAreComposedInExactNumbersFromEveryStorage) {
    const ScratchFolder folder;
    const BandChoice choice = {false, {{1, red, {}, {}}, {2, green, 20, 22}, {3, blue, 31, {}}}};
    for (const char *storage : {"SAMPLE_INTERLEAVED", "LINE_INTERLEAVED", "BAND_SEQUENTIAL"}) {
        const ImageProduct products[] = {
            three_bands<uint8_t>("UNSIGNED_INTEGER", storage, std::endian::little),
            three_bands<int16_t>("MSB_INTEGER", storage, std::endian::big),
            three_bands<uint32_t>("LSB_UNSIGNED_INTEGER", storage, std::endian::little),
            three_bands<float>("IEEE_REAL", storage, std::endian::big),
            three_bands<double>("PC_REAL", storage, std::endian::little),
        };
        for (const ImageProduct &product : products) {
            SCOPED_TRACE(product.type + " " + storage);
            const OpenProduct open(write_detached(folder, "BANDS", product));
            BandComposite composite(choice, image_band_source, open.image());
            ImageDescription description;
            EXPECT_EQ(composite.describe(&description), "");
            EXPECT_EQ(words_of(composite.read_picture({1, 2, 1, 3}).get()),
                      (std::vector<unsigned>{0x000000, 0x338000, 0x66ff40, 0x99ff80, 0xccffbf, 0xffffff}));
            ASSERT_EQ(composite.limits().size(), 3u);
            EXPECT_EQ(composite.limits()[0].maximum, 15);
            EXPECT_EQ(composite.limits()[2].maximum, 35);
            EXPECT_EQ(composite.value_text(2, 3, false), "band 1: 15  band 2: 99  band 3: 35");
            // Typed limits hold in another block, computed ones are its own.
            EXPECT_EQ(words_of(composite.read_picture({2, 2, 1, 2}).get()),
                      (std::vector<unsigned>{0x00ffaa, 0xffffff}));
        }
    }
}

TEST(BandComposite, ColoursAddUpAndGreyIsOneByte) {
    const ScratchFolder folder;
    const OpenProduct open(write_detached(
        folder, "BANDS", three_bands<uint8_t>("UNSIGNED_INTEGER", "BAND_SEQUENTIAL", std::endian::little)));
    const auto pixels = [&](const BandChoice &choice) {
        BandComposite composite(choice, image_band_source, open.image());
        return words_of(composite.read_picture({1, 1, 1, 3}).get());
    };
    // Half of orange from a level of 128; the same band twice stops at white.
    EXPECT_EQ(pixels({false, {{1, {255, 128, 0}, {}, {}}}}), (std::vector<unsigned>{0, 0x804000, 0xff8000}));
    EXPECT_EQ(pixels({false, {{1, {255, 255, 255}, {}, {}}, {1, {255, 200, 0}, {}, {}}}}),
              (std::vector<unsigned>{0, 0xffe480, 0xffffff}));
    EXPECT_EQ(pixels({true, {{2, red, {}, {}}}}), (std::vector<unsigned>{20, 21, 22})) << "as they are";
    EXPECT_EQ(pixels({true, {{2, red, 21, {}}}}), (std::vector<unsigned>{0, 0, 255}));
}

TEST(BandComposite, AFileThatEndsEarlyIsToldOfOnce) {
    const ScratchFolder folder;
    ImageProduct product = three_bands<uint8_t>("UNSIGNED_INTEGER", "SAMPLE_INTERLEAVED", std::endian::little);
    product.data.resize(9);
    const OpenProduct open(write_detached(folder, "SHORT", product));
    BandComposite composite({false, {{1, red, 0, 255}, {2, green, 0, 255}, {3, blue, 0, 255}}}, image_band_source,
                            open.image());
    const Notices notices;
    EXPECT_EQ(words_of(composite.read_picture({1, 2, 1, 3}).get()),
              (std::vector<unsigned>{0x0a141e, 0x0b151f, 0x0c1620, 0, 0, 0}));
    EXPECT_EQ(Notices::texts.size(), 1u);
    composite.value_text(2, 1, false);
    EXPECT_EQ(Notices::texts.size(), 1u);
}

TEST(BandChoice, NamesLeadToColours) {
    struct {
        const char *label;
        int64_t bands;
        std::vector<int64_t> chosen;
        const char *first_title;
    } const cases[] = {
        {"", 1, {1}, "1"},
        {"", 2, {1, 2}, "1"},
        {"", 4, {1, 2, 3}, "1"},
        {"BAND_NAME = (\"BLUE\", 'INFRARED', \"GREEN\", \"Red filter\")", 4, {4, 3, 1}, "1: BLUE"},
        {"FILTER_NAME = (RED, GREEN)", 3, {1, 2, 3}, "1"},  // not a name for each
        {"CENTER_FILTER_WAVELENGTH = (440 <NM>, 550 <NM>, 650 <NM>)", 3, {1, 2, 3}, "1: 440"},
        {"BAND_NAME = \"RED\"", 3, {1, 2, 3}, "1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        const OdlTree root = parse_label(c.label + std::string("\nOBJECT = IMAGE\nEND_OBJECT = IMAGE"));
        const std::vector<std::string> names = band_names(root->first_child, c.bands);
        EXPECT_EQ(band_title(names, 1), c.first_title);
        std::vector<int64_t> chosen;
        for (const ShownBand &shown : default_bands(names, c.bands).bands)
            chosen.push_back(shown.band);
        EXPECT_EQ(chosen, c.chosen);
    }
}

TEST(BandChoice, LimitsAreFiniteNumbersOrBlank) {
    std::optional<double> limit = 5;
    EXPECT_EQ(read_limit(" ", "minimum", &limit), "");
    EXPECT_FALSE(limit);
    EXPECT_EQ(read_limit(" +1.5e2", "minimum", &limit), "");
    EXPECT_EQ(limit, 150);
    for (const char *text : {"x", "1 2", "nan", "inf", "1e999", "+-1", "0x10"})
        EXPECT_NE(read_limit(text, "minimum", &limit), "") << text;
    EXPECT_EQ(check_bands({false, {{1, red, 3, 3}}}, 2), "The minimum of band 1 must be less than its maximum.");
    EXPECT_EQ(check_bands({false, {{3, red, {}, {}}}}, 2), "There is no band 3.");
    EXPECT_EQ(check_bands({false, {}}, 2), "Choose at least one band.");
    EXPECT_EQ(check_bands({false, {{2, red, 3, {}}, {2, blue, {}, 1}}}, 2), "");
}

}  // namespace
