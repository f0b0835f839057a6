#include "oa/oa.h"
#include "support/corpus.h"
#include "support/product.h"
#include "support/reports.h"
#include "support/sha256.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

class Image : public testing::Test {
  protected:
    OaObjectPtr read(const std::string &label_path, int64_t band = 1) {
        const OpenProduct product(label_path);
        return OaObjectPtr(OaReadImage(product.image(), band));
    }

    ScratchFolder folder_;
    Reports reports_;
};

struct HandleCloser {
    void operator()(OaObject *handle) const { OaCloseImage(handle); }
};
using Handle = std::unique_ptr<OaObject, HandleCloser>;

// The rectangle cut out of a whole image, bounds 1-based and inclusive.
std::string cut(const std::string &whole, size_t line_samples, size_t size, const std::array<size_t, 4> &bounds) {
    std::string part;
    for (size_t line = bounds[0]; line <= bounds[1]; ++line)
        part += whole.substr(((line - 1) * line_samples + bounds[2] - 1) * size, (bounds[3] - bounds[2] + 1) * size);
    return part;
}

std::string partial(OaObject *handle, const std::array<size_t, 4> &bounds) {
    const auto at = [&](size_t i) { return static_cast<int64_t>(bounds[i]); };
    return bytes_of(OaObjectPtr(OaReadPartialImage(handle, at(0), at(1), at(2), at(3))).get());
}

// Rectangles of every kind: whole, lines, columns, single samples, windows.
std::vector<std::array<size_t, 4>> rectangles(size_t lines, size_t samples) {
    return {{1, lines, 1, samples},
            {1, 1, 1, samples},
            {lines, lines, 1, samples},
            {1, lines, 1, 1},
            {1, lines, samples, samples},
            {lines, lines, samples, samples},
            {1, (lines + 1) / 2, 1, (samples + 1) / 2},
            {(lines + 1) / 2, lines, (samples + 1) / 2, samples}};
}

void expect_parts_of_whole(const ObjDesc *image, int64_t band) {
    const OaObjectPtr whole(OaReadImage(image, band));
    const Handle handle(OaOpenImage(image, band));
    ASSERT_TRUE(whole && handle);
    int64_t lines = 0;
    int64_t samples = 0;
    int64_t bits = 0;
    OaKwdValuetoLong("LINES", whole->odl, &lines);
    OaKwdValuetoLong("LINE_SAMPLES", whole->odl, &samples);
    OaKwdValuetoLong("SAMPLE_BITS", whole->odl, &bits);
    const auto width = static_cast<size_t>(samples);
    const auto size = static_cast<size_t>(bits / 8);
    ASSERT_EQ(whole->size, lines * samples * bits / 8);
    for (const auto &bounds : rectangles(static_cast<size_t>(lines), width))
        EXPECT_TRUE(partial(handle.get(), bounds) == cut(bytes_of(whole.get()), width, size, bounds))
            << "lines " << bounds[0] << "-" << bounds[1] << ", samples " << bounds[2] << "-" << bounds[3];
}

// --- Real pictures --------------------------------------------------------------------------------------------------

struct Picture {
    std::string label;
    int64_t bands = 0;
    std::string sha256_samples;
};

std::vector<Picture> real_pictures() {
    std::ifstream manifest(corpus_path("real/manifest.tsv"));
    std::string line;
    std::getline(manifest, line);
    std::vector<Picture> pictures;
    while (std::getline(manifest, line)) {
        std::istringstream row(line);
        std::vector<std::string> fields;
        for (std::string field; std::getline(row, field, '\t');)
            fields.push_back(field);
        pictures.push_back({fields[1].substr(0, fields[1].find(' ')), std::stoll(fields[4]), fields[18]});
    }
    return pictures;
}

TEST_F(Image, ReadsRealPictures) {
    REQUIRE_CORPUS();
    const std::vector<Picture> pictures = real_pictures();
    ASSERT_EQ(pictures.size(), 8u);
    for (const Picture &picture : pictures) {
        SCOPED_TRACE(picture.label);
        const OpenProduct product(corpus_path("real/" + picture.label).string());
        ASSERT_TRUE(product.image());
        Sha256 whole;
        for (int64_t band = 1; band <= picture.bands; ++band) {
            whole.add(bytes_of(OaObjectPtr(OaReadImage(product.image(), band)).get()));
            expect_parts_of_whole(product.image(), band);
        }
        EXPECT_EQ(whole.hex(), picture.sha256_samples);
    }
    EXPECT_EQ(reports_.text(), "");
}

// --- Sample types ---------------------------------------------------------------------------------------------------

struct TypeCase {
    const char *type;
    int bits;
    std::vector<uint8_t> stored;  // two samples
    const char *native_type;
    int native_bits;
    std::string native;
};

template <typename T>
std::string two(T first, T second) {
    return stored(std::vector<T>{first, second}, std::endian::little);
}

TEST_F(Image, GivesNativeSamplesOfEveryType) {
    const std::vector<TypeCase> cases = {
        {"INTEGER", 8, {0x80, 0x7F}, "LSB_INTEGER", 8, two<int8_t>(-128, 127)},
        {"\"UNSIGNED_INTEGER\"", 8, {0x80, 0x7F}, "LSB_UNSIGNED_INTEGER", 8, two<uint8_t>(128, 127)},
        {"MSB_INTEGER", 16, {0xFF, 0xFE, 0x01, 0x02}, "LSB_INTEGER", 16, two<int16_t>(-2, 0x102)},
        {"LSB_INTEGER", 16, {0xFE, 0xFF, 0x02, 0x01}, "LSB_INTEGER", 16, two<int16_t>(-2, 0x102)},
        {"SUN_UNSIGNED_INTEGER", 16, {0xFF, 0xFE, 0, 1}, "LSB_UNSIGNED_INTEGER", 16, two<uint16_t>(0xFFFE, 1)},
        {"VAX_INTEGER", 32, {1, 2, 3, 0x84, 1, 0, 0, 0}, "LSB_INTEGER", 32, two<int32_t>(-0x7BFCFDFF, 1)},
        {"IBM_INTEGER", 32, {0x84, 3, 2, 1, 0, 0, 0, 1}, "LSB_INTEGER", 32, two<int32_t>(-0x7BFCFDFF, 1)},
        {"MSB_UNSIGNED_INTEGER",
         32,
         {0xFF, 3, 2, 1, 0, 0, 0, 1},
         "LSB_UNSIGNED_INTEGER",
         32,
         two<uint32_t>(0xFF030201, 1)},
        {"MSB_INTEGER",
         64,
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFD, 1, 2, 3, 4, 5, 6, 7, 8},
         "LSB_INTEGER",
         64,
         two<int64_t>(-3, 0x102030405060708)},
        {"LSB_UNSIGNED_INTEGER",
         64,
         {1, 0, 0, 0, 0, 0, 0, 0x80, 5, 0, 0, 0, 0, 0, 0, 0},
         "LSB_UNSIGNED_INTEGER",
         64,
         two<uint64_t>(0x8000000000000001, 5)},
        {"IEEE_REAL", 32, {0x3F, 0xC0, 0, 0, 0xC0, 0x20, 0, 0}, "PC_REAL", 32, two(1.5F, -2.5F)},
        {"PC_REAL", 32, {0, 0, 0xC0, 0x3F, 0, 0, 0x20, 0xC0}, "PC_REAL", 32, two(1.5F, -2.5F)},
        {"VAX_REAL", 32, {0xC0, 0x40, 0, 0, 0x20, 0xC1, 0, 0}, "PC_REAL", 32, two(1.5F, -2.5F)},
        {"REAL", 64, {0x3F, 0xF8, 0, 0, 0, 0, 0, 0, 0xC0, 4, 0, 0, 0, 0, 0, 0}, "PC_REAL", 64, two(1.5, -2.5)},
        {"VAX_DOUBLE", 64, {0xC0, 0x40, 0, 0, 0, 0, 0, 0, 0x20, 0xC1, 0, 0, 0, 0, 0, 0}, "PC_REAL", 64, two(1.5, -2.5)},
        {"VAXG_REAL", 64, {0x18, 0x40, 0, 0, 0, 0, 0, 0, 0x24, 0xC0, 0, 0, 0, 0, 0, 0}, "PC_REAL", 64, two(1.5, -2.5)},
        {"IEEE_REAL",
         80,
         {0x3F, 0xFF, 0xC0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0xA0, 0, 0, 0, 0, 0, 0, 0},
         "PC_REAL",
         64,
         two(1.5, -2.5)},
        // Labels made from FITS headers call 8-byte reals complex.
        {"IEEE_COMPLEX", 64, {0x3F, 0xF8, 0, 0, 0, 0, 0, 0, 0xC0, 4, 0, 0, 0, 0, 0, 0}, "PC_REAL", 64, two(1.5, -2.5)},
        {"COMPLEX",
         128,
         {0x3F, 0xF8, 0, 0, 0, 0, 0, 0, 0xC0, 4, 0, 0, 0, 0, 0, 0, 0xC0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
         "PC_COMPLEX",
         128,
         two(1.5, -2.5) + two(-2.5, 0.0)},
        {"MSB_BIT_STRING", 16, {1, 2, 3, 4}, "MSB_BIT_STRING", 16, {1, 2, 3, 4}},
    };
    for (const TypeCase &c : cases) {
        SCOPED_TRACE(util_format("%s %d", c.type, c.bits));
        // Both samples one below the other, so that every way of reading a line meets both.
        ImageProduct image = {.lines = 2, .samples = 1, .bits = c.bits, .type = c.type};
        image.data.assign(c.stored.begin(), c.stored.end());
        for (const int64_t prefix : {0, 3}) {
            if (prefix)
                image.data = "---" + image.data.substr(0, image.data.size() / 2) + "---" +
                             image.data.substr(image.data.size() / 2);
            image.prefix = prefix;
            const OaObjectPtr object = read(write_detached(folder_, "TYPE", image));
            ASSERT_TRUE(object) << error_string;
            EXPECT_EQ(bytes_of(object.get()), c.native);
            EXPECT_EQ(keyword_of(object->odl, "SAMPLE_TYPE"), c.native_type);
            EXPECT_EQ(keyword_of(object->odl, "SAMPLE_BITS"), std::to_string(c.native_bits));
            EXPECT_EQ(keyword_of(object->odl, "LINE_PREFIX_BYTES"), "(none)");
        }
    }
}

// --- Where the samples are ------------------------------------------------------------------------------------------

int16_t sample_at(int64_t band, int64_t line, int64_t sample) {
    return static_cast<int16_t>(band * 10000 + line * 100 + sample - 15000);
}

// A picture of sample_at values, in any storage.
ImageProduct counted_picture(int64_t lines, int64_t samples, int64_t bands, const std::string &storage) {
    ImageProduct image = {.lines = lines, .samples = samples, .bits = 16, .type = "MSB_INTEGER", .bands = bands};
    image.storage = storage;
    std::vector<int16_t> values;
    const bool by_line = storage == "LINE_INTERLEAVED";
    const bool by_sample = storage == "SAMPLE_INTERLEAVED";
    for (int64_t i = 0; i < bands * lines * samples; ++i) {
        const int64_t band = by_sample ? i % bands : by_line ? i / samples % bands : i / samples / lines;
        const int64_t line = by_sample || by_line ? i / samples / bands : i / samples % lines;
        const int64_t sample = by_sample ? i / bands % samples : i % samples;
        values.push_back(sample_at(band + 1, line + 1, sample + 1));
    }
    image.data = stored(values, std::endian::big);
    return image;
}

TEST_F(Image, FindsEachBandInEveryStorage) {
    for (const char *storage : {"BAND_SEQUENTIAL", "\"LINE_INTERLEAVED\"", "sample_interleaved"}) {
        for (const auto &[lines, samples] : {std::pair<int64_t, int64_t>{5, 7}, {1, 1}, {3, 2500}}) {
            SCOPED_TRACE(
                util_format("%s %lld x %lld", storage, static_cast<long long>(lines), static_cast<long long>(samples)));
            ImageProduct image = counted_picture(lines, samples, 3, util_upper(util_without(storage, '"')));
            image.storage = storage;
            image.more = " BAND_SEQUENCE = (1, 2, 3)\n";
            const OpenProduct product(write_detached(folder_, "BANDS", image, 11));
            for (int64_t band = 1; band <= 3; ++band) {
                const OaObjectPtr object(OaReadImage(product.image(), band));
                std::vector<int16_t> expected;
                for (int64_t i = 0; i < lines * samples; ++i)
                    expected.push_back(sample_at(band, i / samples + 1, i % samples + 1));
                EXPECT_EQ(samples_of<int16_t>(object.get()), expected) << "band " << band;
                EXPECT_EQ(keyword_of(object->odl, "BANDS"), "(none)");
                EXPECT_EQ(keyword_of(object->odl, "BAND_SEQUENCE"), "(none)");
                expect_parts_of_whole(product.image(), band);
            }
            for (const int64_t band : {-1, 0, 4}) {
                EXPECT_FALSE(OaReadImage(product.image(), band));
                EXPECT_FALSE(OaOpenImage(product.image(), band));
                EXPECT_NE(error_string.find("out of range band value."), std::string::npos);
            }
        }
    }
}

TEST_F(Image, ReadsAroundPrefixesInEveryFile) {
    for (const auto &[prefix, suffix] : {std::pair<int64_t, int64_t>{0, 0}, {6, 0}, {0, 1}, {5, 9000}}) {
        for (const char *record_type : {"FIXED_LENGTH", "STREAM", "UNDEFINED"}) {
            SCOPED_TRACE(util_format("%s %lld %lld", record_type, static_cast<long long>(prefix),
                                     static_cast<long long>(suffix)));
            ImageProduct image = {.lines = 40, .samples = 33, .bits = 16, .type = "MSB_INTEGER"};
            image.prefix = prefix;
            image.suffix = suffix;
            image.record_type = record_type;
            std::vector<int16_t> values;
            for (int64_t line = 1; line <= image.lines; ++line) {
                std::vector<int16_t> line_values;
                for (int64_t sample = 1; sample <= image.samples; ++sample)
                    line_values.push_back(sample_at(1, line, sample));
                values.insert(values.end(), line_values.begin(), line_values.end());
                // Line feeds, at which a stream of text lines would be cut.
                image.data += std::string(static_cast<size_t>(prefix), '\n') + stored(line_values, std::endian::big) +
                              std::string(static_cast<size_t>(suffix), '\n');
            }
            const std::string detached = write_detached(folder_, "DETACHED", image, 3);
            EXPECT_EQ(samples_of<int16_t>(read(detached).get()), values);
            expect_parts_of_whole(OpenProduct(detached).image(), 1);
            if (image.record_type == "STREAM")
                continue;  // records are lines there, and the label would have to count them
            EXPECT_EQ(samples_of<int16_t>(read(write_attached(folder_, "ATTACHED", image)).get()), values);
        }
    }
    EXPECT_TRUE(reports_.notices().empty());
}

TEST_F(Image, ReachesFarIntoALargeFile) {
    // 20 GB that take no room on the disk, with one known sample in the last line.
    constexpr int64_t side = 100000;
    constexpr int64_t position = 2 * (side * side - side + 4000);
    const std::string path = folder_.file("FAR.IMG");
    const int file = open(path.c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(file, 0);
    const bool written = ftruncate(file, 2 * side * side) == 0 && pwrite(file, "\x12\x34", 2, position) == 2;
    close(file);
    if (!written)
        GTEST_SKIP() << "the file system holds no sparse file of this size";
    ImageProduct image = {.lines = side, .samples = side, .bits = 16, .type = "MSB_INTEGER"};
    const OpenProduct product(folder_.write("FAR.LBL", "^IMAGE = \"FAR.IMG\"\n" + image.object() + "END\n"));
    const Handle handle(OaOpenImage(product.image(), 1));
    ASSERT_TRUE(handle);
    EXPECT_EQ(partial(handle.get(), {side, side, 4000, 4002}), std::string("\0\0\x34\x12\0\0", 6));
    EXPECT_EQ(OaReadImagePixels(handle.get(), side, 4001), side - 4000);
    EXPECT_EQ(samples_of<int16_t>(handle.get())[0], 0x1234);
}

// --- Files that end early -------------------------------------------------------------------------------------------

TEST_F(Image, LeavesMissingSamplesZeroAndSaysSoOnce) {
    const std::string data = counted_picture(4, 5, 1, "").data;
    for (const size_t held : {39u, 31u, 30u, 12u, 10u}) {
        SCOPED_TRACE(held);
        ImageProduct image = {.lines = 4, .samples = 5, .bits = 16, .type = "MSB_INTEGER"};
        image.data = data.substr(0, held);
        const OpenProduct product(write_detached(folder_, "SHORT", image));
        std::vector<int16_t> expected(20);
        for (size_t i = 0; i < held / 2; ++i)
            expected[i] = sample_at(1, static_cast<int64_t>(i / 5) + 1, static_cast<int64_t>(i % 5) + 1);
        Reports::notices().clear();
        EXPECT_EQ(samples_of<int16_t>(OaObjectPtr(OaReadImage(product.image(), 1)).get()), expected);
        EXPECT_EQ(Reports::notices(),
                  std::vector{util_format("Bytes read: %zu.\nBytes attempted to be read: 40\nline = %zu, sample = %zu",
                                          held, held / 10 + 1, held % 10 / 2 + 1)});

        const Handle handle(OaOpenImage(product.image(), 1));
        Reports::notices().clear();
        EXPECT_EQ(partial(handle.get(), {2, 4, 2, 4}), cut(stored(expected, std::endian::little), 5, 2, {2, 4, 2, 4}));
        EXPECT_EQ(Reports::notices().size(), held < 38 ? 1u : 0u);
        Reports::notices().clear();
        for (int64_t line = 1; line <= 4; ++line) {
            EXPECT_EQ(OaReadImagePixels(handle.get(), line, 1), 5);
            EXPECT_EQ(samples_of<int16_t>(handle.get())[4], expected[static_cast<size_t>(line * 5 - 1)]);
        }
        EXPECT_EQ(Reports::notices().size(), 1u);
    }
}

TEST_F(Image, ReadsABandThatTheFileDoesNotHold) {
    ImageProduct image = counted_picture(2, 2, 3, "BAND_SEQUENTIAL");
    image.data.resize(12);
    const std::string label = write_detached(folder_, "SHORT", image);
    EXPECT_EQ(samples_of<int16_t>(read(label, 2).get()),
              (std::vector<int16_t>{sample_at(2, 1, 1), sample_at(2, 1, 2), 0, 0}));
    EXPECT_EQ(samples_of<int16_t>(read(label, 3).get()), std::vector<int16_t>(4));
    EXPECT_EQ(Reports::notices().size(), 2u);
    // Of interleaved samples the last that is whole counts.
    image = counted_picture(2, 2, 3, "SAMPLE_INTERLEAVED");
    image.data.resize(3 * 6 + 3);
    EXPECT_EQ(samples_of<int16_t>(read(write_detached(folder_, "SHORT", image), 2).get()),
              (std::vector<int16_t>{sample_at(2, 1, 1), sample_at(2, 1, 2), sample_at(2, 2, 1), 0}));
}

// --- Labels that are not believed -----------------------------------------------------------------------------------

TEST_F(Image, RefusesLabelsThatCannotBeTrue) {
    struct Case {
        const char *keyword;
        const char *value;  // null: no such keyword
        int code;
        const char *message;
    };
    for (const Case &c : {
             Case{"LINES", nullptr, 531, "LINES keyword missing."},
             Case{"LINE_SAMPLES", nullptr, 531, "LINE_SAMPLES keyword missing."},
             Case{"SAMPLE_BITS", nullptr, 531, "SAMPLE_BITS keyword missing."},
             Case{"SAMPLE_TYPE", nullptr, 531, "SAMPLE_TYPE keyword missing."},
             Case{"LINES", "0", 502, "LINES = 0 "},
             Case{"LINES", "-4", 502, "LINES = -4 "},
             Case{"LINES", "2.5", 600, "LINES keyword value is not an integer."},
             Case{"LINE_SAMPLES", "99999999999999999999", 600, "LINE_SAMPLES"},
             Case{"LINES", "2000000000", 502, "LINES = 2000000000, LINE_SAMPLES = 4, SAMPLE_BITS = 16"},
             Case{"LINES", "65", 502, "claim 520 bytes"},
             Case{"LINE_SAMPLES", "17", 502, "34 a line"},
             Case{"LINE_SAMPLES", "9223372036854775807", 502, "LINE_SAMPLES = 9223372036854775807"},
             Case{"SAMPLE_BITS", "9223372036854775800", 502, "SAMPLE_BITS = 9223372036854775800"},
             Case{"SAMPLE_BITS", "0", 502, "SAMPLE_BITS = 0 "},
             Case{"SAMPLE_BITS", "12", 502, "SAMPLE_BITS = 12: samples must be whole bytes."},
             Case{"SAMPLE_TYPE", "WORDS", 531, "WORDS in\nIMAGE node is an unknown data type."},
             Case{"BANDS", "0", 502, "BANDS = 0 "},
             Case{"BANDS", "2", 531, "BAND_STORAGE_TYPE keyword missing!"},
             Case{"LINE_PREFIX_BYTES", "-1", 502, "PREFIX*BYTES = -1 "},
             Case{"LINE_PREFIX_BYTES", "9223372036854775807", 502, "LINE_PREFIX_BYTES = 9223372036854775807"},
             Case{"LINE_SUFFIX_BYTES", "600", 502, "LINE_SUFFIX_BYTES = 600"},
             Case{"ENCODING_TYPE", "\"hfd-5\"", 520, "unsupported compression type: 2."},
             Case{"ENCODING_TYPE", "HUFFMAN_FIRST_DIFFERENCE", 520, "unsupported compression type: 2."},
             Case{"ENCODING_TYPE", "PREVIOUS_PIXEL", 520, "unsupported compression type: 3."},
             Case{"ENCODING_TYPE", "CLEM-JPEG-1", 520, "unsupported compression type: 4."},
             Case{"ENCODING_TYPE", "GIF", 520, "unsupported compression type: 5."},
             Case{"ENCODING_TYPE", "HFD-CLEM-JPEG", 520, "unsupported compression type: 2."},
             Case{"ENCODING_TYPE", "GIFT", 531, "unknown ENCODING_TYPE: GIFT"},
             Case{"INTERCHANGE_FORMAT", "ASCII", 520, "Can't convert ASCII_INTEGER to LSB_INTEGER!"},
         }) {
        SCOPED_TRACE(util_format("%s = %s", c.keyword, c.value ? c.value : "(none)"));
        const OpenProduct product(write_detached(folder_, "REFUSED", counted_picture(4, 4, 1, "")));
        ASSERT_TRUE(OaObjectPtr(OaReadImage(product.image(), 1)));
        if (c.value)
            OaStrtoKwdValue(c.keyword, product.image(), c.value);
        else
            OaDeleteKwd(c.keyword, product.image());
        for (const bool whole : {true, false}) {
            EXPECT_FALSE(whole ? OaReadImage(product.image(), 1) : OaOpenImage(product.image(), 1));
            EXPECT_NE(reports_.text().find(c.message), std::string::npos) << reports_.text();
            EXPECT_EQ(oa_errno, c.code);
        }
    }
}

TEST_F(Image, RefusesOtherKindsOfInput) {
    OaImageKeywords keywords;
    const OpenProduct product(write_detached(folder_, "X", {.data = "a"}));
    EXPECT_EQ(OaGetImageKeywords(product.root.get(), &keywords), 1);
    EXPECT_EQ(error_string, "OaGetImageKeywords: input ODL tree node must have class IMAGE.");
    EXPECT_FALSE(OaReadImage(nullptr, 1));
    EXPECT_FALSE(OaOpenImage(nullptr, 1));

    ImageProduct image = {.data = "a"};
    image.record_type = "VARIABLE_LENGTH";
    folder_.write("V.IMG", "a");
    EXPECT_FALSE(read(
        folder_.write("V.LBL", "RECORD_TYPE = VARIABLE_LENGTH\n^IMAGE = (\"V.IMG\", 1)\n" + image.object() + "END\n")));
    EXPECT_EQ(error_string,
              "OaReadImage does not support variable-length record files  except for HFD compressed images.");

    image = counted_picture(2, 2, 2, "BAND_SEQUENTIAL");
    image.suffix = 2;
    EXPECT_FALSE(read(write_detached(folder_, "M", image)));
    EXPECT_NE(error_string.find("are not supported for multiband or Previous Pixel compressed images."),
              std::string::npos);
    image = counted_picture(2, 2, 2, "BAND_SEQUENTIAL");
    image.storage = "PILED";
    EXPECT_FALSE(read(write_detached(folder_, "M", image)));
    EXPECT_NE(error_string.find("unknown BAND_STORAGE_TYPE: PILED"), std::string::npos);
}

TEST_F(Image, PassesOverObjectsInsideAnImage) {
    ImageProduct image = {.lines = 1, .samples = 3, .more = "OBJECT = WINDOW\n LINES = 9\nEND_OBJECT\n"};
    image.prefix = 1;
    image.data = "-abc";
    const OaObjectPtr object = read(write_detached(folder_, "INSIDE", image));
    EXPECT_EQ(bytes_of(object.get()), "abc");
}

// --- The handle -----------------------------------------------------------------------------------------------------

TEST_F(Image, ServesRunsOfALine) {
    const OpenProduct product(write_detached(folder_, "RUNS", counted_picture(3, 5, 1, "")));
    const Handle handle(OaOpenImage(product.image(), 1));
    ASSERT_TRUE(handle);
    for (const auto &[name, value] : std::vector<std::pair<const char *, const char *>>{{"LINES", "1"},
                                                                                        {"LINE_SAMPLES", "0"},
                                                                                        {"FIRST_LINE", "1"},
                                                                                        {"FIRST_SAMPLE", "1"},
                                                                                        {"SOURCE_LINES", "3"},
                                                                                        {"SOURCE_LINE_SAMPLES", "5"},
                                                                                        {"SAMPLE_TYPE", "LSB_INTEGER"}})
        EXPECT_EQ(keyword_of(handle->odl, name), value);
    for (const auto &[line, sample] : {std::pair<int64_t, int64_t>{3, 2}, {1, 1}, {2, 5}, {2, 1}}) {
        ASSERT_EQ(OaReadImagePixels(handle.get(), line, sample), 6 - sample);
        EXPECT_EQ(samples_of<int16_t>(handle.get()).front(), sample_at(1, line, sample));
        EXPECT_EQ(samples_of<int16_t>(handle.get()).back(), sample_at(1, line, 5));
        EXPECT_EQ(keyword_of(handle->odl, "FIRST_LINE"), std::to_string(line));
        EXPECT_EQ(keyword_of(handle->odl, "FIRST_SAMPLE"), std::to_string(sample));
        EXPECT_EQ(keyword_of(handle->odl, "LINE_SAMPLES"), std::to_string(6 - sample));
    }
    // The line at hand is not read again.
    folder_.write("RUNS.IMG", "");
    EXPECT_EQ(OaReadImagePixels(handle.get(), 2, 3), 3);
    EXPECT_EQ(samples_of<int16_t>(handle.get()).front(), sample_at(1, 2, 3));

    const OaObjectPtr part(OaReadPartialImage(handle.get(), 2, 3, 1, 4));
    ASSERT_TRUE(part);
    EXPECT_EQ(keyword_of(part->odl, "LINES"), "2");
    EXPECT_EQ(keyword_of(part->odl, "LINE_SAMPLES"), "4");
    EXPECT_EQ(keyword_of(part->odl, "FIRST_LINE"), "2");
}

TEST_F(Image, RefusesRectanglesOutsideTheImage) {
    const OpenProduct product(write_detached(folder_, "OUT", counted_picture(3, 5, 1, "")));
    const Handle handle(OaOpenImage(product.image(), 1));
    ASSERT_TRUE(handle);
    for (const auto &[first_line, last_line, first_sample, last_sample] :
         std::vector<std::array<int64_t, 4>>{{0, 1, 1, 1},
                                             {1, 4, 1, 1},
                                             {2, 1, 1, 1},
                                             {1, 1, 0, 1},
                                             {1, 1, 1, 6},
                                             {1, 1, 3, 2},
                                             {INT64_MIN, INT64_MAX, 1, 1}}) {
        EXPECT_FALSE(OaReadPartialImage(handle.get(), first_line, last_line, first_sample, last_sample));
        EXPECT_EQ(oa_errno, 502);
    }
    for (const auto &[line, sample] : {std::pair<int64_t, int64_t>{0, 1}, {4, 1}, {1, 0}, {1, 6}})
        EXPECT_EQ(OaReadImagePixels(handle.get(), line, sample), 0);
    const OaObjectPtr no_handle(OaNewOaObject(nullptr, nullptr, 0));
    for (OaObject *object : {static_cast<OaObject *>(nullptr), no_handle.get()}) {
        EXPECT_EQ(OaReadImagePixels(object, 1, 1), 0);
        EXPECT_EQ(oa_errno, 501);
        EXPECT_FALSE(OaReadPartialImage(object, 1, 1, 1, 1));
        EXPECT_EQ(oa_errno, 501);
    }
    EXPECT_EQ(OaCloseImage(nullptr), nullptr);
}

}  // namespace
