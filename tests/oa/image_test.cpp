#include "oa/oa.h"
#include "support/corpus.h"
#include "support/hex.h"
#include "support/image_parts.h"
#include "support/product.h"
#include "support/sha256.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

class Image : public ProductTest {
  protected:
    OaObjectPtr read(const std::string &label_path, int64_t band = 1) {
        return OaObjectPtr(OaReadImage(OpenProduct(label_path).image(), band));
    }
    // Expects a failure of both ways of reading, with this code and this part of its message.
    void expect_refused(const ObjDesc *image, int64_t band, int code, const char *message) {
        for (const bool whole : {true, false}) {
            EXPECT_FALSE(whole ? OaReadImage(image, band) : OaOpenImage(image, band));
            expect_report(code, message);
        }
    }
};

// --- Real pictures --------------------------------------------------------------------------------------------------

TEST_F(Image, ReadsRealPictures) {
    REQUIRE_CORPUS();
    const auto pictures = read_corpus_list("real/manifest.tsv");
    for (auto picture : pictures) {
        const std::string label =
            corpus_path("real/" + picture["label"].substr(0, picture["label"].find(' '))).string();
        SCOPED_TRACE(label);
        std::string whole;
        for (int64_t band = 1; band <= std::stoll(picture["bands"]); ++band) {
            const std::string bytes = bytes_of(read(label, band).get());
            expect_parts_of(bytes, label, band);
            whole += bytes;
        }
        EXPECT_EQ(sha256_of(folder_.write("SAMPLES", whole)), picture["sha256_samples"]);
    }
    EXPECT_EQ(pictures.size(), 8u);
    EXPECT_TRUE(reports_.nothing_written());
}

// --- Sample types ---------------------------------------------------------------------------------------------------

// Two samples as stored and as native, in hexadecimal.
struct TypeCase {
    const char *type;
    int bits;
    const char *stored;
    const char *native_type;
    int native_bits;
    const char *native;
};
// clang-format off
constexpr TypeCase type_cases[] = {
    {"INTEGER",              8,   "80 7F",                             "LSB_INTEGER",          8,   "80 7F"},
    {"\"UNSIGNED_INTEGER\"", 8,   "80 7F",                             "LSB_UNSIGNED_INTEGER", 8,   "80 7F"},
    {"MSB_INTEGER",          16,  "FFFE 0102",                         "LSB_INTEGER",          16,  "FEFF 0201"},
    {"VAX_INTEGER",          32,  "01020384 01000000",                 "LSB_INTEGER",          32,  "01020384 01000000"},
    {"MSB_UNSIGNED_INTEGER", 32,  "FF030201 00000001",                 "LSB_UNSIGNED_INTEGER", 32,  "010203FF 01000000"},
    {"MSB_INTEGER",          64,  "FFFFFFFFFFFFFFFD 0102030405060708", "LSB_INTEGER",          64,  "FDFFFFFFFFFFFFFF 0807060504030201"},
    {"IEEE_REAL",            32,  "3FC00000 C0200000",                 "PC_REAL",              32,  "0000C03F 000020C0"},
    {"PC_REAL",              32,  "0000C03F 000020C0",                 "PC_REAL",              32,  "0000C03F 000020C0"},
    {"VAX_REAL",             32,  "C0400000 20C10000",                 "PC_REAL",              32,  "0000C03F 000020C0"},
    {"REAL",                 64,  "3FF8000000000000 C004000000000000", "PC_REAL",              64,  "000000000000F83F 00000000000004C0"},
    {"VAX_DOUBLE",           64,  "C040000000000000 20C1000000000000", "PC_REAL",              64,  "000000000000F83F 00000000000004C0"},
    {"VAXG_REAL",            64,  "1840000000000000 24C0000000000000", "PC_REAL",              64,  "000000000000F83F 00000000000004C0"},
    {"IEEE_REAL",            80,  "3FFFC000000000000000 C000A000000000000000", "PC_REAL",      64,  "000000000000F83F 00000000000004C0"},
    // Labels made from FITS headers call 8-byte reals complex.
    {"IEEE_COMPLEX",         64,  "3FF8000000000000 C004000000000000", "PC_REAL",              64,  "000000000000F83F 00000000000004C0"},
    {"COMPLEX",              128, "3FF8000000000000C004000000000000 00000000000000003FF8000000000000", "PC_COMPLEX", 128,
                                  "000000000000F83F00000000000004C0 0000000000000000000000000000F83F"},
    {"MSB_BIT_STRING",       16,  "0102 0304",                         "MSB_BIT_STRING",       16,  "0102 0304"},
};
// clang-format on

TEST_F(Image, GivesNativeSamplesOfEveryType) {
    for (const TypeCase &c : type_cases) {
        SCOPED_TRACE(util_format("%s %d", c.type, c.bits));
        ImageProduct image = {.lines = 2, .samples = 1, .bits = c.bits, .type = c.type, .data = from_hex(c.stored)};
        for (const bool framed : {false, true}) {
            if (framed) {
                image.prefix = 3;
                image.data.insert(image.data.size() / 2, "---").insert(0, "---");
            }
            const OaObjectPtr object = read(write_detached(folder_, "TYPE", image));
            ASSERT_TRUE(object) << error_string;
            EXPECT_EQ(bytes_of(object.get()), from_hex(c.native));
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

std::vector<int16_t> counted_band(int64_t band, int64_t lines, int64_t samples) {
    std::vector<int16_t> values;
    for (int64_t i = 0; i < lines * samples; ++i)
        values.push_back(sample_at(band, i / samples + 1, i % samples + 1));
    return values;
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
    for (const std::string storage : {"BAND_SEQUENTIAL", "\"LINE_INTERLEAVED\"", "sample_interleaved"}) {
        for (const auto &[lines, samples] : {std::pair<int64_t, int64_t>{5, 7}, {3, 2500}}) {
            SCOPED_TRACE(storage + std::to_string(samples));
            ImageProduct image = counted_picture(lines, samples, 3, util_upper(util_without(storage, '"')));
            image.storage = storage;
            image.more = " BAND_SEQUENCE = (1, 2, 3)\n";
            const std::string label = write_detached(folder_, "BANDS", image, 11);
            const OpenProduct product(label);
            for (int64_t band = 1; band <= 3; ++band) {
                const OaObjectPtr object(OaReadImage(product.image(), band));
                EXPECT_EQ(samples_of<int16_t>(object.get()), counted_band(band, lines, samples)) << "band " << band;
                EXPECT_EQ(keyword_of(object->odl, "BANDS"), "(none)");
                EXPECT_EQ(keyword_of(object->odl, "BAND_SEQUENCE"), "(none)");
                expect_parts_of(bytes_of(object.get()), label, band);
            }
            for (const int64_t band : {0, 4})
                expect_refused(product.image(), band, 520, "out of range band value.");
        }
    }
}

TEST_F(Image, ReadsBehindAnAttachedLabel) {
    const OpenProduct product(write_attached(folder_, "ATTACHED", counted_picture(4, 100, 1, "")));
    EXPECT_EQ(samples_of<int16_t>(OaObjectPtr(OaReadObject(product.image())).get()), counted_band(1, 4, 100));
    EXPECT_FALSE(OaReadObject(product.root.get()));
    EXPECT_EQ(oa_errno, 530);
}

TEST_F(Image, ReadsAroundPrefixesInEveryFile) {
    for (const auto &[prefix, suffix] : {std::pair<int64_t, int64_t>{0, 0}, {6, 0}, {0, 1}, {5, 9000}}) {
        for (const std::string record_type : {"FIXED_LENGTH", "STREAM", "UNDEFINED"}) {
            SCOPED_TRACE(record_type + std::to_string(suffix));
            ImageProduct image = {.lines = 40, .samples = 33, .bits = 16, .type = "MSB_INTEGER"};
            image.prefix = prefix;
            image.suffix = suffix;
            image.record_type = record_type;
            const std::vector<int16_t> values = counted_band(1, image.lines, image.samples);
            // Line feeds, at which a stream of text lines would be cut.
            image.data = stored(values, std::endian::big);
            for (size_t at = 0; at < image.data.size(); at += static_cast<size_t>(image.record_bytes())) {
                image.data.insert(at, static_cast<size_t>(prefix), '\n');
                image.data.insert(at + static_cast<size_t>(image.record_bytes() - suffix), static_cast<size_t>(suffix),
                                  '\n');
            }
            const std::string detached = write_detached(folder_, "DETACHED", image, 3);
            const OaObjectPtr object = read(detached);
            EXPECT_EQ(samples_of<int16_t>(object.get()), values);
            expect_parts_of(bytes_of(object.get()), detached);
        }
    }
    EXPECT_TRUE(notices_.texts.empty());
}

TEST_F(Image, ReachesFarIntoALargeFile) {
    // 20 GB that take no room on the disk, with one known sample in the last line.
    constexpr int64_t side = 100000;
    constexpr int64_t position = 2 * (side * side - side + 4000);
    const std::string path = folder_.file("FAR.IMG");
    std::ofstream(path).seekp(position).write("\x12\x34", 2);
    std::filesystem::resize_file(path, 2 * side * side);
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
        std::vector<int16_t> expected = counted_band(1, 4, 5);
        std::fill(expected.begin() + static_cast<ptrdiff_t>(held / 2), expected.end(), int16_t{0});
        notices_.texts.clear();
        EXPECT_EQ(samples_of<int16_t>(OaObjectPtr(OaReadImage(product.image(), 1)).get()), expected);
        EXPECT_EQ(notices_.texts,
                  std::vector{util_format("Bytes read: %zu.\nBytes attempted to be read: 40\nline = %zu, sample = %zu",
                                          held, held / 10 + 1, held % 10 / 2 + 1)});

        const Handle handle(OaOpenImage(product.image(), 1));
        notices_.texts.clear();
        EXPECT_EQ(partial(handle.get(), {2, 4, 2, 4}), cut(stored(expected, std::endian::little), 5, 2, {2, 4, 2, 4}));
        EXPECT_EQ(notices_.texts.size(), held < 38 ? 1u : 0u);
        for (int64_t line = 1; line <= 4; ++line) {
            EXPECT_EQ(OaReadImagePixels(handle.get(), line, 1), 5);
            EXPECT_EQ(samples_of<int16_t>(handle.get())[4], expected[static_cast<size_t>(line * 5 - 1)]);
        }
        OaObjectPtr(OaReadPartialImage(handle.get(), 4, 4, 5, 5));
        EXPECT_EQ(notices_.texts.size(), 1u);
    }
}

TEST_F(Image, ReadsABandThatTheFileDoesNotHold) {
    ImageProduct image = counted_picture(2, 2, 3, "BAND_SEQUENTIAL");
    image.data.resize(12);
    const std::string label = write_detached(folder_, "SHORT", image);
    EXPECT_EQ(samples_of<int16_t>(read(label, 2).get()),
              (std::vector<int16_t>{sample_at(2, 1, 1), sample_at(2, 1, 2), 0, 0}));
    EXPECT_EQ(samples_of<int16_t>(read(label, 3).get()), std::vector<int16_t>(4));
    EXPECT_EQ(notices_.texts.size(), 2u);
    image.bands = 25;  // of which the file holds three halves
    expect_refused(OpenProduct(write_detached(folder_, "SHORT", image)).image(), 1, 502, "BANDS = 25");
    // Of interleaved samples the last that is whole counts.
    image = counted_picture(2, 2, 3, "SAMPLE_INTERLEAVED");
    image.data.resize(3 * 6 + 3);
    EXPECT_EQ(samples_of<int16_t>(read(write_detached(folder_, "SHORT", image), 2).get()),
              (std::vector<int16_t>{sample_at(2, 1, 1), sample_at(2, 1, 2), sample_at(2, 2, 1), 0}));
}

// --- Labels that are not believed -----------------------------------------------------------------------------------

TEST_F(Image, RefusesLabelsThatCannotBeTrue) {
    struct Case {
        const char *keyword, *value;  // null: no such keyword
        int code;
        const char *message;
    };
    for (const Case &c : {
             Case{"LINES", nullptr, 531, "LINES keyword missing."},
             Case{"LINES", "2.5", 600, "LINES keyword value is not an integer."},
             Case{"LINES", "2000000000", 502, "LINES = 2000000000, LINE_SAMPLES = 4, SAMPLE_BITS = 16"},
             Case{"LINES", "65", 502, "claim 520 bytes"},
             Case{"LINE_SAMPLES", "17", 502, "34 a line"},
             Case{"SAMPLE_BITS", "12", 502, "SAMPLE_BITS = 12: samples must be whole bytes."},
             Case{"SAMPLE_TYPE", "WORDS", 531, "CreateSDT returned error."},
             Case{"LINES", "0", 502, "LINES = 0 "},
             Case{"BANDS", "2", 531, "BAND_STORAGE_TYPE keyword missing!"},
             Case{"LINE_PREFIX_BYTES", "-1", 502, "LINE_PREFIX_BYTES = -1 "},
             Case{"LINE_PREFIX_BYTES", "9223372036854775807", 502, "LINE_PREFIX_BYTES = 9223372036854775807"},
             Case{"LINE_SUFFIX_BYTES", "600", 502, "LINE_SUFFIX_BYTES = 600"},
             Case{"ENCODING_TYPE", "\"hfd-5\"", 520,
                  "HFD compressed images are only supported in variable-length record files."},
             Case{"ENCODING_TYPE", "GIFT", 531, "unknown ENCODING_TYPE: GIFT"},
             Case{"INTERCHANGE_FORMAT", "ASCII", 520, "CreateSDT returned error."},
         }) {
        SCOPED_TRACE(util_format("%s = %s", c.keyword, c.value ? c.value : "(none)"));
        const OpenProduct product(write_detached(folder_, "REFUSED", counted_picture(4, 4, 1, "")));
        ASSERT_TRUE(OaObjectPtr(OaReadImage(product.image(), 1)));
        if (c.value)
            OaStrtoKwdValue(c.keyword, product.image(), c.value);
        else
            OaDeleteKwd(c.keyword, product.image());
        expect_refused(product.image(), 1, c.code, c.message);
    }
}

TEST_F(Image, RefusesOtherKindsOfInput) {
    ImageProduct image = {.data = "a"};
    OaImageKeywords keywords;
    EXPECT_EQ(OaGetImageKeywords(OpenProduct(write_detached(folder_, "X", image)).root.get(), &keywords), 1);
    EXPECT_EQ(error_string, "OaGetImageKeywords: input ODL tree node must have class IMAGE.");
    expect_refused(nullptr, 1, 501, "label tree");

    // Placed by record: a byte position means nothing between records of any length.
    const OpenProduct variable(
        folder_.write("V.LBL", "RECORD_TYPE = VARIABLE_LENGTH\n^IMAGE = (\"X.IMG\", 1)\n" + image.object() + "END\n"));
    expect_refused(variable.image(), 1, 520,
                   " does not support variable-length record files  except for HFD compressed images.");

    image = counted_picture(2, 2, 2, "BAND_SEQUENTIAL");
    image.suffix = 2;
    expect_refused(OpenProduct(write_detached(folder_, "M", image)).image(), 1, 520,
                   "are not supported for multiband or Previous Pixel compressed images.");
    image.storage = "PILED";
    expect_refused(OpenProduct(write_detached(folder_, "M", image)).image(), 1, 531, "BAND_STORAGE_TYPE: PILED");
}

// --- The handle -----------------------------------------------------------------------------------------------------

TEST_F(Image, ServesRunsOfALine) {
    const OpenProduct product(write_detached(folder_, "RUNS", counted_picture(3, 5, 1, "")));
    const Handle handle(OaOpenImage(product.image(), 1));
    ASSERT_TRUE(handle);
    EXPECT_EQ(keyword_of(handle->odl, "SOURCE_LINES") + keyword_of(handle->odl, "SOURCE_LINE_SAMPLES"), "35");
    for (const auto &[line, sample] : {std::pair<int64_t, int64_t>{3, 2}, {1, 1}, {2, 5}, {2, 1}}) {
        ASSERT_EQ(OaReadImagePixels(handle.get(), line, sample), 6 - sample);
        EXPECT_EQ(samples_of<int16_t>(handle.get()).front(), sample_at(1, line, sample));
        EXPECT_EQ(samples_of<int16_t>(handle.get()).back(), sample_at(1, line, 5));
        EXPECT_EQ(keyword_of(handle->odl, "FIRST_LINE"), std::to_string(line));
        EXPECT_EQ(keyword_of(handle->odl, "LINE_SAMPLES"), std::to_string(6 - sample));
    }
    // The line at hand is not read again.
    folder_.write("RUNS.IMG", "");
    EXPECT_EQ(OaReadImagePixels(handle.get(), 2, 3), 3);
    EXPECT_EQ(samples_of<int16_t>(handle.get()).front(), sample_at(1, 2, 3));
}

TEST_F(Image, RefusesRectanglesOutsideTheImage) {
    const OpenProduct product(write_detached(folder_, "OUT", counted_picture(3, 5, 1, "")));
    const Handle handle(OaOpenImage(product.image(), 1));
    ASSERT_TRUE(handle);
    // Of lines; the same for samples.
    for (const auto &[first, last] : {std::pair<int64_t, int64_t>{0, 1}, {1, 6}, {2, 1}, {INT64_MIN, INT64_MAX}}) {
        EXPECT_FALSE(OaReadPartialImage(handle.get(), first, last, 1, 1));
        EXPECT_FALSE(OaReadPartialImage(handle.get(), 1, 1, first, last));
        EXPECT_EQ(oa_errno, 502);
    }
    for (const auto &[line, sample] : {std::pair<int64_t, int64_t>{0, 1}, {4, 1}, {1, 0}, {1, 6}})
        EXPECT_EQ(OaReadImagePixels(handle.get(), line, sample), 0);
    OaObject no_handle;
    for (OaObject *object : {static_cast<OaObject *>(nullptr), &no_handle}) {
        EXPECT_EQ(OaReadImagePixels(object, 1, 1), 0);
        EXPECT_FALSE(OaReadPartialImage(object, 1, 1, 1, 1));
        EXPECT_EQ(oa_errno, 501);
    }
}

}  // namespace
