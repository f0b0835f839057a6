// Labels without objects: what their conversion makes of them, and a whole product of that dialect.
#include "support/huffman.h"
#include "support/label.h"
#include "support/product.h"

#include <gtest/gtest.h>

namespace {

class OlderLabel : public testing::Test {
  protected:
    SilentReports reports_;
};

TEST_F(OlderLabel, BecomesWhatAPresentLabelSays) {
    const OdlTree image = parse_label(
        "RECORD_TYPE = VARIABLE_LENGTH\nIMAGE_LINES = 3\n^IMAGE_HISTOGRAM = 4\nLINES = 9\nFILE_TYPE = 'image'\n"
        "^IMAGE = 7\nLINE_SAMPLES = 5\nBITS_PER_SAMPLE = 8\nLINE_PREFIX_BYTES = 2\nMISSION_NAME = X\n");
    ASSERT_TRUE(OaIsOlderLabel(image.get()));
    ASSERT_EQ(OaConvertOlderLabel(image.get()), 0);
    EXPECT_EQ(OaCheckODLTree(image.get()), 0);
    EXPECT_EQ(outline(image.get()),
              "ROOT @0\n  RECORD_TYPE = VARIABLE_LENGTH @1\n  ^IMAGE_HISTOGRAM = 4 @3\n  LINES = 9 @4\n"
              "  FILE_TYPE = 'image' @5\n  ^IMAGE = 7 @6\n  MISSION_NAME = X @10\n"
              "  IMAGE @5\n    LINES = 3 @2\n    LINE_SAMPLES = 5 @7\n    SAMPLE_BITS = 8 @8\n"
              "    LINE_PREFIX_BYTES = 2 @9\n    SAMPLE_TYPE = UNSIGNED_INTEGER @0\n"
              "  IMAGE_HISTOGRAM @3\n    ITEMS = 256 @0\n    ITEM_BYTES = 4 @0\n"
              "    DATA_TYPE = LSB_UNSIGNED_INTEGER @0\n");
    EXPECT_FALSE(OaIsOlderLabel(image.get())) << "converted once";
    EXPECT_EQ(OaConvertOlderLabel(image.get()), 1);

    const OdlTree table = parse_label("FILE_TYPE = INDEX_TABLE\nNUMBER_OF_ROWS = 2\nROW_BYTES = 3\nSAMPLE_BITS = 8\n");
    ASSERT_EQ(OaConvertOlderLabel(table.get()), 0);
    EXPECT_EQ(keyword_of(table->first_child, "ROWS") + keyword_of(table->first_child, "ROW_BYTES"), "23");
    EXPECT_EQ(keyword_of(table.get(), "SAMPLE_BITS"), "8");
}

TEST_F(OlderLabel, WithoutAClassThatIsReadIsLeftAsItIs) {
    EXPECT_FALSE(OaIsOlderLabel(parse_label("FILE_TYPE = IMAGE\nOBJECT = TEXT\nEND_OBJECT\n").get()));
    EXPECT_FALSE(OaIsOlderLabel(parse_label("LINES = 3\n").get()));
    EXPECT_FALSE(OaIsOlderLabel(nullptr));
    for (const std::string &type : {std::string("TEXT"), std::string("\"AN IMAGE\""), std::string("\"\""),
                                    std::string("(IMAGE, TABLE)"), std::string(2 << 20, 'X') + "IMAGE"}) {
        const OdlTree root = parse_label("LINES = 3\nFILE_TYPE = " + type + "\n");
        EXPECT_EQ(OaConvertOlderLabel(root.get()), 1) << type.substr(0, 80);
        EXPECT_EQ(oa_errno, 530);
        EXPECT_LT(error_string.size(), 200u);
        EXPECT_EQ(keyword_of(root.get(), "LINES"), "3");
        EXPECT_FALSE(root->first_child);
    }
}

// A file of records of variable length, as such products are distributed: label, histograms over several records,
// one record a line.
TEST_F(OlderLabel, HuffmanImagesOpenFromEndToEnd) {
    std::vector<uint32_t> frequencies(511, 1);
    for (size_t i = 240; i < 270; ++i)
        frequencies[i] = 5000;
    const HuffmanCodes codes(frequencies);
    constexpr size_t lines = 40, samples = 120, record_bytes = 836;
    std::string file;
    for (const char *line :
         {"RECORD_TYPE = VARIABLE_LENGTH", "RECORD_BYTES = 836", "FILE_TYPE = IMAGE", "IMAGE_LINES = 40",
          "LINE_SAMPLES = 120", "SAMPLE_BITS = 8", "ENCODING_TYPE = HUFFMAN_FIRST_DIFFERENCE", "^IMAGE_HISTOGRAM = 12",
          "^ENCODING_HISTOGRAM = 14", "^IMAGE = 17", "END"})
        file += record(line);
    const auto add_histogram = [&](const std::vector<uint32_t> &counts) {
        const std::string bytes = stored(counts, std::endian::little);
        for (size_t at = 0; at < bytes.size(); at += record_bytes)
            file += record(bytes.substr(at, record_bytes));
    };
    add_histogram(std::vector<uint32_t>(256, 7));
    add_histogram(frequencies);
    std::string pixels;
    for (size_t line = 0; line < lines; ++line) {
        std::string row;
        for (size_t sample = 0; sample < samples; ++sample)
            row += static_cast<char>(line * 5 + sample * sample / 40);
        file += record(codes.encode(row));
        pixels += row;
    }
    const ScratchFolder folder;
    const OpenProduct product(folder.write("OLD.IMQ", file));
    ASSERT_TRUE(OaIsOlderLabel(product.root.get()));
    ASSERT_EQ(OaConvertOlderLabel(product.root.get()), 0);
    const OaObjectPtr image(OaReadImage(product.image(), 1));
    ASSERT_TRUE(image) << error_string;
    EXPECT_TRUE(bytes_of(image.get()) == pixels);
    const OaObjectPtr histogram(OaReadHistogram(product.object("IMAGE_HISTOGRAM")));
    EXPECT_EQ(samples_of<uint32_t>(histogram.get()), std::vector<uint32_t>(256, 7));
}

}  // namespace
