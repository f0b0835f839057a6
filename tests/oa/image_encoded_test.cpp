#include "oa/oa.h"
#include "support/huffman.h"
#include "support/image_parts.h"
#include "support/previous_pixel.h"
#include "support/product.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

// Of smooth pictures: small differences are frequent.
std::vector<uint32_t> smooth() {
    std::vector<uint32_t> frequencies(511, 1);
    for (size_t i = 240; i < 270; ++i)
        frequencies[i] = 1u << (20 - (i < 255 ? 255 - i : i - 255));
    return frequencies;
}

struct Encoded {
    ImageProduct image = {};
    std::string encoding = "HUFFMAN_FIRST_DIFFERENCE";
    int start = 1;  // record, or byte of a file without records of variable length
    std::string histogram = "ENCODING_HISTOGRAM";
    int items = 511;
    std::vector<uint32_t> frequencies = smooth();
};

class EncodedImage : public ProductTest {
  protected:
    // Label, histogram and data in files of their own. Returns the label's path.
    std::string write(Encoded product) const {
        folder_.write("H.DAT", stored(product.frequencies, std::endian::big));
        folder_.write("X.IMG", product.image.data);
        product.image.more += "ENCODING_TYPE = \"" + product.encoding + "\"\n";
        const bool by_record = product.image.record_type == "VARIABLE_LENGTH";
        return folder_.write("X.LBL", "RECORD_TYPE = " + product.image.record_type + "\nRECORD_BYTES = 2000\n^" +
                                          product.histogram + " = (\"H.DAT\", 1)\n^IMAGE = (\"X.IMG\", " +
                                          std::to_string(product.start) + (by_record ? "" : " <BYTES>") +
                                          ")\nOBJECT = " + product.histogram +
                                          "\n RECORD_TYPE = UNDEFINED\n ITEMS = " + std::to_string(product.items) +
                                          "\n DATA_TYPE = MSB_UNSIGNED_INTEGER\n ITEM_BYTES = 4\nEND_OBJECT\n" +
                                          product.image.object() + "END\n");
    }
    static OaObjectPtr whole(const std::string &path) { return OaObjectPtr(OaReadImage(OpenProduct(path).image(), 1)); }

    // The image holds these native samples, whole and in any order of requests; of missing ones each reader tells once.
    void expect_image(const Encoded &product, const std::string &pixels, int missing = 0) {
        const std::string path = write(product);
        notices_.texts.clear();
        const OaObjectPtr image = whole(path);
        ASSERT_TRUE(image) << error_string;
        EXPECT_TRUE(bytes_of(image.get()) == pixels);
        EXPECT_EQ(keyword_of(image->odl, "ENCODING_TYPE"), "(none)");
        EXPECT_EQ(std::stoll(keyword_of(image->odl, "SAMPLE_BITS")) * product.image.lines * product.image.samples,
                  8 * std::ssize(pixels));
        expect_parts_of(pixels, path);
        EXPECT_EQ(std::ssize(notices_.texts), 2 * missing);
    }

    // Both ways of reading fail with this code and this part of the message.
    void expect_refused(const Encoded &made, int code, const std::string &message) {
        const OpenProduct product(write(made));
        for (const bool at_once : {true, false}) {
            OaObject *handle = at_once ? nullptr : OaOpenImage(product.image(), 1);
            EXPECT_FALSE(at_once  ? OaReadImage(product.image(), 1)
                         : handle ? OaReadPartialImage(handle, 1, 1, 1, 1)
                                  : nullptr);
            OaCloseImage(handle);
            expect_report(code, message);
        }
    }
};

// Records of smooth lines.
struct Lines {
    explicit Lines(size_t count, size_t samples) {
        std::mt19937 random(2);
        const HuffmanCodes codes(smooth());
        for (size_t i = 0; i < count; ++i) {
            std::string line(1, static_cast<char>(random()));
            while (line.size() < samples)
                line += static_cast<char>(line.back() + static_cast<int>(random() % 7) - 3);
            pixels += line;
            records.push_back(record(codes.encode(line)));
        }
    }
    std::string joined(size_t count) const {
        std::string all;
        for (size_t i = 0; i < count; ++i)
            all += records[i];
        return all;
    }

    std::string pixels;
    std::vector<std::string> records;
};

TEST_F(EncodedImage, ReadsHuffmanLinesInAnyOrder) {
    const Lines made(200, 301);
    const std::string data = record("skip") + record("me") + made.joined(200);
    expect_image({.image = {.lines = 200, .samples = 301, .record_type = "VARIABLE_LENGTH", .data = data}, .start = 3},
                 made.pixels);
    // Samples of two bytes with others around each line.
    const HuffmanCodes codes(smooth());
    const std::string wide = record(codes.encode("p\1\2\3\4ss")) + record(codes.encode("p\5\6\7\10ss"));
    ImageProduct image = {.lines = 2,
                          .samples = 2,
                          .bits = 16,
                          .type = "MSB_UNSIGNED_INTEGER",
                          .prefix = 1,
                          .suffix = 2,
                          .record_type = "VARIABLE_LENGTH",
                          .data = wide};
    expect_image({.image = image}, stored<uint16_t>({0x102, 0x304, 0x506, 0x708}, std::endian::native));
}

TEST_F(EncodedImage, FillsMissingHuffmanLinesWithZeros) {
    constexpr size_t lines = 100, samples = 50;
    Lines made(lines, samples);
    const std::string held = made.joined(40), cut = held + made.records[40].substr(0, 3);
    made.records[30] = record("");
    struct Case {
        std::string data;
        size_t first_missing, last_missing;
    };
    const Case cases[] = {{made.joined(lines), 30 * samples, 31 * samples},
                          {held, 40 * samples, lines * samples},
                          {held + "\x09", 40 * samples, lines * samples},
                          {cut, 40 * samples + 1, lines * samples}};
    for (const auto &[data, first, last] : cases) {
        std::string expected = made.pixels;
        std::fill(expected.begin() + static_cast<long>(first), expected.begin() + static_cast<long>(last), '\0');
        expect_image({.image = {.lines = lines, .samples = samples, .record_type = "VARIABLE_LENGTH", .data = data}},
                     expected, 1);
    }
}

TEST_F(EncodedImage, ReadsHuffmanLinesOfOneCodeOrOfTheLargestFrequencies) {
    std::vector<uint32_t> one(511, 0);
    one[254] = 4294967295u;  // 255: each sample is one more
    ImageProduct image = {.samples = 9, .record_type = "VARIABLE_LENGTH", .data = record(std::string("\x01\x00", 2))};
    expect_image({.image = image, .frequencies = one}, "\1\2\3\4\5\6\7\10\11");
    const std::vector<uint32_t> largest(511, 4294967295u);
    image.data = record(HuffmanCodes(largest).encode("largest! "));
    expect_image({.image = image, .frequencies = largest}, "largest! ");
}

TEST_F(EncodedImage, RefusesWhatCannotBe) {
    const std::string two = record("abcdefgh") + record("abcdefgh");
    const auto huffman = [&](const std::string &data) {
        return Encoded{.image = {.lines = 2, .samples = 20, .record_type = "VARIABLE_LENGTH", .data = data}};
    };
    const auto previous = [&](const char *record_type, const char *data) {
        return Encoded{.image = {.samples = 4, .record_type = record_type, .data = data}, .encoding = "PREVIOUS_PIXEL"};
    };
    const auto with = [](Encoded product, auto change) {
        change(&product.image);
        return product;
    };
    const Encoded plain = huffman(two);
    Encoded unnamed = plain, few = plain, many = plain, zeros = plain, later = huffman(record(std::string(40, 'a')));
    unnamed.histogram = "HISTOGRAM";
    few.items = 510;
    many.items = 100000000;
    zeros.frequencies.assign(511, 0);
    later.start = 4;
    const auto sized = [&](int64_t lines, int64_t samples, const std::string &data) {
        return with(huffman(data), [=](ImageProduct *image) { image->lines = lines, image->samples = samples; });
    };
    const std::tuple<Encoded, int, const char *> cases[] = {
        {with(plain, [](ImageProduct *image) { image->record_type = "FIXED_LENGTH"; }), 520,
         ": HFD compressed images are only supported in variable-length record files."},
        {with(plain, [](ImageProduct *image) { image->bands = 2, image->storage = "BAND_SEQUENTIAL"; }), 520,
         "Image Compressed multi-band images not supported!"},
        {unnamed, 530, ": couldn't find encoding histogram for HFD compressed image."},
        {few, 530, ": couldn't find encoding histogram"},
        {many, 502, ": couldn't read encoding histogram for HFD compressed image."},
        {zeros, 530, ": OalCreateHFDTree returned NULL."},
        {huffman("\xff\x7f" + std::string(64, 'a')), 700, "OalReadStream returned error"},
        {later, 700, "OalSeek returned error, aborting."},
        // The last two are no size, or a small one, once their bytes are counted in 64 bits.
        {sized(2000, 20, two), 502, "claim"},
        {sized(6148914691236517206, 1, two), 502, "claim"},
        {sized(1, INT64_MAX, two), 502, "claim"},
        {sized(1, 262130, record("a") + std::string(40000, 'a')), 710,
         ": SDT source size is not equal to size of HFD decompressed line buffer."},
        {previous("VARIABLE_LENGTH", "\xff\x01\x02...."), 520,
         "Image does not support variable-length record files  except for HFD compressed images."},
        {with(previous("UNDEFINED", "\xff\x01\x02...."), [](ImageProduct *image) { image->prefix = 1; }), 520,
         ": LINE_PREFIX_BYTES and LINE_SUFFIX_BYTES are not supported for multiband or Previous Pixel compressed "
         "images."},
        {previous("UNDEFINED", "\xfe\x01\x02...."), 710,
         ": first byte in Previous Pixel compressed data was not a 255."},
    };
    for (const auto &[product, code, message] : cases)
        expect_refused(product, code, message);
}

TEST_F(EncodedImage, FindsTheHistogramOfTheEncoder) {
    const auto found = [&](const std::string &objects) {
        const OdlTree tree = parse_label(objects + "OBJECT = IMAGE\nEND_OBJECT\n");
        const ObjDesc *node = OaFindEncodingHistogram(OdlFindObjDesc(tree.get(), "IMAGE", nullptr, nullptr, 1, 1));
        return node ? keyword_of(node, "ITEMS") : "";
    };
    const std::string by_name = "OBJECT = HISTOGRAM\n ITEMS = 511\n NAME = \"Encoding histogram\"\nEND_OBJECT\n";
    EXPECT_EQ(found(by_name), "511");
    EXPECT_EQ(found("OBJECT = HISTOGRAM\n ITEMS = 600\nEND_OBJECT\nOBJECT = ENCODING_TABLE\n ITEMS = 700\nEND_OBJECT\n"
                    "OBJECT = X_ENCODING_HISTOGRAM\n ITEMS = 512\nEND_OBJECT\n" +
                    by_name),
              "512");
}

TEST_F(EncodedImage, ReadsPreviousPixelDataInAnyOrder) {
    constexpr int64_t lines = 400, samples = 333;  // several blocks
    std::vector<uint16_t> pixels(lines * samples, 300);
    std::mt19937 random(4);
    for (size_t i = 1; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint16_t>(random() % 500 ? pixels[i - 1] + random() % 200 - 100 : random());
    const std::string coded = encode_previous_pixel(pixels);
    Encoded product = {.image = {.lines = lines, .samples = samples}, .encoding = "PREVIOUS_PIXEL", .start = 3};
    for (const char *record_type : {"FIXED_LENGTH", "STREAM", "UNDEFINED"}) {
        product.image.record_type = record_type;
        product.image.data = "##" + coded;
        expect_image(product, stored(pixels, std::endian::native));
        product.image.bits = 24 - product.image.bits;
    }
    for (const size_t held : {size_t{32768}, size_t{65536}, coded.size() - 1}) {
        product.image.data = "##" + coded.substr(0, held);
        std::vector<uint16_t> expected = walk_previous_pixel(coded.substr(0, held));
        expected.resize(pixels.size());
        expect_image(product, stored(expected, std::endian::native), 1);
    }
}

TEST_F(EncodedImage, ReadsClementineImagesByTheDecoderThatIsNamed) {
    Encoded product = {.image = {.lines = 2, .samples = 3, .record_type = "UNDEFINED", .data = "###abcdef"},
                       .encoding = "CLEM-JPEG-1",
                       .start = 4};
    const std::string path = write(product);
    unsetenv("LUMACART_CLEMENTINE_DECODER");
    EXPECT_FALSE(whole(path));
    expect_report(520, "Set LUMACART_CLEMENTINE_DECODER to the full path");

    const std::string program = folder_.write("decoder", "#!/bin/sh\nprintf abcdefg >\"$5\"\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    setenv("LUMACART_CLEMENTINE_DECODER", program.c_str(), 1);
    EXPECT_FALSE(whole(path));
    EXPECT_NE(error_string.find("made 7 bytes where the image has 6"), std::string::npos) << error_string;
    folder_.write("decoder", "#!/bin/sh\ntail -c +$(($2 + 1)) \"$1\" | head -c $(($3 * $4)) | tr a-f A-F >\"$5\"\n");
    const OaObjectPtr image = whole(path);
    unsetenv("LUMACART_CLEMENTINE_DECODER");
    ASSERT_TRUE(image) << error_string;
    EXPECT_EQ(bytes_of(image.get()), "ABCDEF");
    EXPECT_EQ(keyword_of(image->odl, "ENCODING_TYPE"), "(none)");
    EXPECT_EQ(keyword_of(image->odl, "ENCODING_COMPRESSION_RATIO"), "1.00");

    EXPECT_FALSE(OaOpenImage(OpenProduct(path).image(), 1));
    EXPECT_EQ(error_string, "OaOpenImage: unsupported compression type: 4.");
    product.image.bits = 16;
    EXPECT_FALSE(whole(write(product)));
    EXPECT_EQ(error_string, "OaReadImage: Clementine decompression software does not support 16 SAMPLE_BITS");
    EXPECT_EQ(oa_errno, 520);
}

}  // namespace
