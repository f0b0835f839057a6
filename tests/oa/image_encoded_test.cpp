#include "base/notice.h"
#include "oa/oa.h"
#include "support/huffman.h"
#include "support/previous_pixel.h"
#include "support/product.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

namespace {

std::vector<uint32_t> frequencies_around_zero() {
    std::vector<uint32_t> frequencies(511);
    for (int i = 0; i < 511; ++i)
        frequencies[static_cast<size_t>(i)] = static_cast<uint32_t>(1 + 1e6 * std::exp(-std::abs(i - 255)));
    return frequencies;
}

std::string record(const std::string &bytes) {
    return stored<uint16_t>({static_cast<uint16_t>(bytes.size())}, std::endian::little) + bytes +
           (bytes.size() % 2 ? "\n" : "");
}

class EncodedImage : public testing::Test {
  protected:
    EncodedImage() {
        notices_.clear();
        util_set_notice_hook([](NoticeKind, const std::string &text) { notices_.push_back(text); });
    }
    ~EncodedImage() override { util_set_notice_hook(nullptr); }

    struct Label {
        std::string encoding = "HUFFMAN_FIRST_DIFFERENCE";
        std::string record_type = "VARIABLE_LENGTH";
        int64_t lines = 1;
        int64_t samples = 1;
        int bits = 8;
        std::string more = {};  // inside the image
        std::string histogram_name = "ENCODING_HISTOGRAM";
        int items = 511;
        int start = 1;  // record, or byte of a file without records of variable length
    };

    // A label, the histogram's file and the data's. Returns the label's path.
    std::string write(const Label &label, const std::string &data,
                      const std::vector<uint32_t> &frequencies = frequencies_around_zero()) const {
        folder_.write("H.DAT", stored(frequencies, std::endian::big));
        folder_.write("X.IMG", data);
        const bool by_record = label.record_type == "VARIABLE_LENGTH";
        return folder_.write("X.LBL",
                             "RECORD_TYPE = " + label.record_type + "\nRECORD_BYTES = 2000\n^" + label.histogram_name +
                                 " = (\"H.DAT\", 1)\n^IMAGE = (\"X.IMG\", " + std::to_string(label.start) +
                                 (by_record ? "" : " <BYTES>") + ")\nOBJECT = " + label.histogram_name +
                                 "\n RECORD_TYPE = UNDEFINED\n ITEMS = " + std::to_string(label.items) +
                                 "\n DATA_TYPE = MSB_UNSIGNED_INTEGER\n ITEM_BYTES = 4\nEND_OBJECT\n" +
                                 ImageProduct{.lines = label.lines,
                                              .samples = label.samples,
                                              .bits = label.bits,
                                              .more = "ENCODING_TYPE = \"" + label.encoding + "\"\n" + label.more}
                                     .object() +
                                 "END\n");
    }

    OaObjectPtr whole(const std::string &path) { return OaObjectPtr(OaReadImage(OpenProduct(path).image(), 1)); }

    // Both ways of reading fail with this code and this part of the message.
    void expect_refused(const std::string &path, int code, const std::string &message) {
        const OpenProduct product(path);
        for (const bool at_once : {true, false}) {
            error_string.clear();
            OaObject *handle = at_once ? nullptr : OaOpenImage(product.image(), 1);
            EXPECT_FALSE(at_once  ? OaReadImage(product.image(), 1)
                         : handle ? OaReadPartialImage(handle, 1, 1, 1, 1)
                                  : nullptr);
            OaCloseImage(handle);
            EXPECT_EQ(oa_errno, code);
            EXPECT_NE(error_string.find(message), std::string::npos) << error_string;
        }
    }

    // Any order of requests gives what the whole image holds.
    void expect_any_order(const std::string &path, const std::string &pixels, int64_t lines, int64_t samples,
                          int64_t size) {
        const OpenProduct product(path);
        OaObject *handle = OaOpenImage(product.image(), 1);
        ASSERT_TRUE(handle) << error_string;
        std::mt19937 random(11);
        const auto below = [&](int64_t limit) { return static_cast<int64_t>(random() % static_cast<uint64_t>(limit)); };
        for (int request = 0; request < 60; ++request) {
            const int64_t first_line = 1 + below(lines), first_sample = 1 + below(samples);
            const int64_t last_line = first_line + below(lines - first_line + 1);
            const int64_t last_sample = first_sample + below(samples - first_sample + 1);
            const OaObjectPtr part(OaReadPartialImage(handle, first_line, last_line, first_sample, last_sample));
            std::string expected;
            for (int64_t line = first_line; line <= last_line; ++line)
                expected += pixels.substr(static_cast<size_t>(((line - 1) * samples + first_sample - 1) * size),
                                          static_cast<size_t>((last_sample - first_sample + 1) * size));
            ASSERT_TRUE(bytes_of(part.get()) == expected) << first_line << "-" << last_line;
            ASSERT_EQ(OaReadImagePixels(handle, last_line, first_sample), samples - first_sample + 1);
            ASSERT_EQ(memcmp(handle->data, pixels.data() + ((last_line - 1) * samples + first_sample - 1) * size,
                             static_cast<size_t>((samples - first_sample + 1) * size)),
                      0);
        }
        OaCloseImage(handle);
    }

    // Lines of a smooth picture and their records.
    void make_lines(size_t lines, size_t samples, std::string *pixels, std::vector<std::string> *records) const {
        std::mt19937 random(2);
        const HuffmanCodes codes(frequencies_around_zero());
        for (size_t i = 0; i < lines; ++i) {
            std::string line(1, static_cast<char>(random()));
            while (line.size() < samples)
                line += static_cast<char>(line.back() + static_cast<int>(random() % 7) - 3);
            *pixels += line;
            records->push_back(record(codes.encode(line)));
        }
    }
    static std::string joined(const std::vector<std::string> &records) {
        std::string all;
        for (const std::string &text : records)
            all += text;
        return all;
    }

    inline static std::vector<std::string> notices_;
    ScratchFolder folder_;
    SilentReports reports_;
};

// --- Huffman --------------------------------------------------------------------------------------------------------

TEST_F(EncodedImage, ReadsHuffmanLinesInAnyOrder) {
    constexpr int64_t lines = 200, samples = 301;
    std::string pixels;
    std::vector<std::string> records;
    make_lines(lines, samples, &pixels, &records);
    const std::string path =
        write({.lines = lines, .samples = samples, .start = 3}, record("skip") + record("me") + joined(records));
    const OaObjectPtr image = whole(path);
    ASSERT_TRUE(image) << error_string;
    EXPECT_TRUE(bytes_of(image.get()) == pixels);
    EXPECT_EQ(keyword_of(image->odl, "ENCODING_TYPE"), "(none)");
    expect_any_order(path, pixels, lines, samples, 1);
    EXPECT_TRUE(notices_.empty());
}

TEST_F(EncodedImage, ConvertsHuffmanLinesAndSkipsWhatStandsAroundThem) {
    const HuffmanCodes codes(frequencies_around_zero());
    const std::string data = record(codes.encode(std::string("p\x01\x02\x03\x04ss", 7))) +
                             record(codes.encode(std::string("p\x05\x06\x07\x08ss", 7)));
    const std::string path =
        write({.lines = 2, .samples = 2, .bits = 16, .more = "LINE_PREFIX_BYTES = 1\nLINE_SUFFIX_BYTES = 2\n"}, data);
    const OaObjectPtr image = whole(path);
    ASSERT_TRUE(image) << error_string;
    EXPECT_EQ(samples_of<uint16_t>(image.get()), (std::vector<uint16_t>{0x102, 0x304, 0x506, 0x708}));
}

TEST_F(EncodedImage, FillsMissingHuffmanLinesWithZerosAndTellsOnce) {
    constexpr size_t lines = 100, samples = 50;
    std::string pixels;
    std::vector<std::string> records;
    make_lines(lines, samples, &pixels, &records);
    struct Case {
        const char *what;
        std::string data;
        size_t first_missing;  // samples
        size_t last_missing;
    };
    std::vector<std::string> emptied = records;
    emptied[30] = record("");
    std::vector<std::string> ended(records.begin(), records.begin() + 40);
    const Case cases[] = {{"empty record", joined(emptied), 30 * samples, 31 * samples},
                          {"no more records", joined(ended), 40 * samples, lines * samples},
                          {"half a length", joined(ended) + "\x09", 40 * samples, lines * samples},
                          {"cut record", joined(ended) + records[40].substr(0, 3), 40 * samples + 1, lines * samples}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        notices_.clear();
        std::string expected = pixels;
        expected.replace(c.first_missing, c.last_missing - c.first_missing, c.last_missing - c.first_missing, '\0');
        const std::string path = write({.lines = lines, .samples = samples}, c.data);
        EXPECT_TRUE(bytes_of(whole(path).get()) == expected);
        EXPECT_EQ(notices_.size(), 1u);
        notices_.clear();
        expect_any_order(path, expected, lines, samples, 1);
        EXPECT_EQ(notices_.size(), 1u);
    }
}

TEST_F(EncodedImage, RefusesHuffmanImagesThatCannotBe) {
    const std::string data = record("abcdefgh") + record("abcdefgh");
    const Label plain = {.lines = 2, .samples = 20};
    const auto with = [&](auto change) {
        Label label = plain;
        change(&label);
        return write(label, data);
    };
    expect_refused(with([](Label *l) { l->record_type = "FIXED_LENGTH"; }), 520,
                   ": HFD compressed images are only supported in variable-length record files.");
    expect_refused(with([](Label *l) { l->more = "BANDS = 2\nBAND_STORAGE_TYPE = BAND_SEQUENTIAL\n"; }), 520,
                   "Image Compressed multi-band images not supported!");
    expect_refused(with([](Label *l) { l->histogram_name = "HISTOGRAM"; }), 530,
                   ": couldn't find encoding histogram for HFD compressed image.");
    expect_refused(with([](Label *l) { l->items = 510; }), 530, ": couldn't find encoding histogram");
    expect_refused(with([](Label *l) { l->items = 100000000; }), 502,
                   ": couldn't read encoding histogram for HFD compressed image.");
    expect_refused(write(plain, data, std::vector<uint32_t>(511, 0)), 530, ": OalCreateHFDTree returned NULL.");
    expect_refused(write(plain, record(std::string(1000, 'a')) + "\xff\xff", {}), 502, "couldn't read encoding");
    expect_refused(write(plain, std::string("\xff\x7f") + std::string(64, 'a')), 700, "OalReadStream returned error");
    Label later = plain;
    later.start = 4;
    expect_refused(write(later, record(std::string(40, 'a'))), 700, "OalSeek returned error, aborting.");
    expect_refused(with([](Label *l) { l->lines = 2000; }), 502, "claim");
}

TEST_F(EncodedImage, ReadsHuffmanLinesOfOneCodeOrOfTheLargestFrequencies) {
    std::vector<uint32_t> one(511, 0);
    one[254] = 4294967295u;  // 255: each sample is one more
    const OaObjectPtr ramp = whole(write({.lines = 1, .samples = 9}, record(std::string("\x01\x00", 2)), one));
    EXPECT_EQ(bytes_of(ramp.get()), "\1\2\3\4\5\6\7\10\11");
    const std::vector<uint32_t> largest(511, 4294967295u);
    const std::string line = "the largest frequencies";
    const std::string data = record(HuffmanCodes(largest).encode(line));
    EXPECT_EQ(bytes_of(whole(write({.lines = 1, .samples = std::ssize(line)}, data, largest)).get()), line);
}

TEST_F(EncodedImage, FindsTheHistogramOfTheEncoder) {
    const auto histogram = [&](const char *name, int items, const char *more) {
        return util_format("OBJECT = %s\n ITEMS = %d\n%sEND_OBJECT\n", name, items, more);
    };
    const std::string image = "OBJECT = IMAGE\nEND_OBJECT\n";
    const auto found = [&](const std::string &objects) {
        const OdlTree tree(OdlParseLabelString((objects + image + "END\n").c_str(), nullptr, 0, 1));
        const ObjDesc *node = OaFindEncodingHistogram(OdlFindObjDesc(tree.get(), "IMAGE", nullptr, nullptr, 1, 1));
        return node ? keyword_of(node, "ITEMS") : "";
    };
    const std::string by_name = histogram("HISTOGRAM", 511, "NAME = \"Encoding histogram\"\n");
    EXPECT_EQ(found(by_name), "511");
    EXPECT_EQ(found(histogram("IMAGE_HISTOGRAM", 600, "") + histogram("ENCODING_HISTOGRAM", 510, "") +
                    histogram("ENCODING_TABLE", 700, "") + histogram("X_ENCODING_HISTOGRAM", 512, "") + by_name),
              "512");
    EXPECT_EQ(found(histogram("HISTOGRAM", 511, "")), "");
    EXPECT_EQ(oa_errno, 0);
}

// --- Previous Pixel
// ---------------------------------------------------------------------------------------------------

std::vector<uint16_t> wandering(size_t count) {
    std::vector<uint16_t> samples(count, 300);
    std::mt19937 random(4);
    for (size_t i = 1; i < count; ++i)
        samples[i] = static_cast<uint16_t>(random() % 500 ? samples[i - 1] + random() % 200 - 100 : random());
    return samples;
}

TEST_F(EncodedImage, ReadsPreviousPixelDataInAnyOrder) {
    constexpr int64_t lines = 400, samples = 333;  // several blocks
    const std::vector<uint16_t> pixels = wandering(lines * samples);
    const std::string native = stored(pixels, std::endian::native);
    const std::string coded = "##" + encode_previous_pixel(pixels);
    for (const int bits : {8, 16}) {
        for (const std::string record_type : {"FIXED_LENGTH", "STREAM", "UNDEFINED"}) {
            const std::string path = write({.encoding = "PREVIOUS_PIXEL",
                                            .record_type = record_type,
                                            .lines = lines,
                                            .samples = samples,
                                            .bits = bits,
                                            .start = 3},
                                           coded);
            const OaObjectPtr image = whole(path);
            ASSERT_TRUE(image) << error_string;
            EXPECT_TRUE(bytes_of(image.get()) == native);
            EXPECT_EQ(keyword_of(image->odl, "SAMPLE_BITS"), "16");
            EXPECT_EQ(keyword_of(image->odl, "SAMPLE_TYPE"), "LSB_INTEGER");
            EXPECT_EQ(keyword_of(image->odl, "ENCODING_TYPE"), "(none)");
            expect_any_order(path, native, lines, samples, 2);
        }
    }
    EXPECT_TRUE(notices_.empty());
}

TEST_F(EncodedImage, FillsMissingPreviousPixelsWithZerosAndTellsOnce) {
    constexpr int64_t lines = 300, samples = 250;
    const std::vector<uint16_t> pixels = wandering(lines * samples);
    const std::string coded = encode_previous_pixel(pixels);
    for (const size_t held : {size_t{300}, size_t{32768}, size_t{65536}, coded.size() - 1}) {
        notices_.clear();
        std::vector<uint16_t> expected = walk_previous_pixel(coded.substr(0, held));
        expected.resize(pixels.size());
        const std::string path = write({.encoding = "PREVIOUS_PIXEL",
                                        .record_type = "UNDEFINED",
                                        .lines = held < 1000 ? 8 : lines,
                                        .samples = samples},
                                       coded.substr(0, held));
        const int64_t shown = held < 1000 ? 8 : lines;
        const std::string native =
            stored(expected, std::endian::native).substr(0, static_cast<size_t>(shown * samples * 2));
        EXPECT_TRUE(bytes_of(whole(path).get()) == native) << held;
        EXPECT_EQ(notices_.size(), 1u);
        notices_.clear();
        expect_any_order(path, native, shown, samples, 2);
        EXPECT_EQ(notices_.size(), 1u);
    }
}

TEST_F(EncodedImage, RefusesPreviousPixelDataThatCannotBe) {
    const auto path = [&](const char *record_type, const char *more, const char *data = "\xff\x01\x02....") {
        return write({.encoding = "PREVIOUS_PIXEL", .record_type = record_type, .samples = 4, .more = more}, data);
    };
    expect_refused(path("VARIABLE_LENGTH", ""), 520,
                   " does not support variable-length record files  except for HFD compressed images.");
    expect_refused(path("UNDEFINED", "LINE_PREFIX_BYTES = 1\n"), 520,
                   ": LINE_PREFIX_BYTES and LINE_SUFFIX_BYTES are not supported for multiband or Previous Pixel "
                   "compressed images.");
    expect_refused(path("UNDEFINED", "", "\xfe\x01\x02...."), 710,
                   ": first byte in Previous Pixel compressed data was not a 255.");
}

// --- Clementine JPEG
// --------------------------------------------------------------------------------------------------

TEST_F(EncodedImage, ReadsClementineImagesByTheDecoderThatIsNamed) {
    const Label label = {.encoding = "CLEM-JPEG-1", .record_type = "UNDEFINED", .lines = 2, .samples = 3, .start = 4};
    const std::string path = write(label, "###abcdef");
    unsetenv("LUMACART_CLEMENTINE_DECODER");
    EXPECT_FALSE(whole(path));
    EXPECT_EQ(oa_errno, 520);
    EXPECT_NE(error_string.find("Set LUMACART_CLEMENTINE_DECODER to the full path"), std::string::npos) << error_string;

    const std::string program = folder_.write("decoder", "#!/bin/sh\nprintf abcdefg >\"$5\"\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    setenv("LUMACART_CLEMENTINE_DECODER", program.c_str(), 1);
    EXPECT_FALSE(whole(path));
    EXPECT_NE(error_string.find("made 7 bytes where the image has 6"), std::string::npos) << error_string;
    folder_.write("decoder", "#!/bin/sh\ntail -c +$(($2 + 1)) \"$1\" | head -c $(($3 * $4)) | tr a-f A-F >\"$5\"\n");
    const OaObjectPtr image = whole(path);
    ASSERT_TRUE(image) << error_string;
    EXPECT_EQ(bytes_of(image.get()), "ABCDEF");
    EXPECT_EQ(keyword_of(image->odl, "ENCODING_TYPE"), "(none)");
    EXPECT_EQ(keyword_of(image->odl, "ENCODING_COMPRESSION_RATIO"), "1.00");
    unsetenv("LUMACART_CLEMENTINE_DECODER");

    EXPECT_FALSE(OaOpenImage(OpenProduct(path).image(), 1));
    EXPECT_EQ(error_string, "OaOpenImage: unsupported compression type: 4.");
    Label wide = label;
    wide.bits = 16;
    EXPECT_FALSE(whole(write(wide, "###abcdef")));
    EXPECT_EQ(error_string, "OaReadImage: Clementine decompression software does not support 16 SAMPLE_BITS");
    EXPECT_EQ(oa_errno, 520);
}

}  // namespace
