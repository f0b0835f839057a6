#include "oa/oa.h"
#include "support/hex.h"
#include "support/product.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Histogram : public ProductTest {
  protected:
    ~Histogram() override { Oa_profile = {}; }

    // A histogram of the type and number of items, stored in a file that holds `data` behind three other bytes.
    OaObjectPtr read(const std::string &type, int item_bytes, int64_t items, const std::string &data,
                     const std::string &format = "BINARY") {
        folder_.write("H.DAT", "###" + data);
        const OpenProduct product(folder_.write(
            "H.LBL", "^HISTOGRAM = (\"H.DAT\", 4 <BYTES>)\nOBJECT = HISTOGRAM\n ITEMS = " + std::to_string(items) +
                         "\n ITEM_BYTES = " + std::to_string(item_bytes) + "\n DATA_TYPE = " + type +
                         "\n INTERCHANGE_FORMAT = " + format + "\nEND_OBJECT = HISTOGRAM\nEND\n"));
        return OaObjectPtr(OaReadObject(product.object("HISTOGRAM")));
    }
};

TEST_F(Histogram, BecomesNativeIntegersOf32Bits) {
    struct Case {
        const char *type;
        int item_bytes;
        std::string data;
        std::vector<int64_t> values;
        const char *format = "BINARY";
    };
    const Case cases[] = {
        {"UNSIGNED_INTEGER", 1, from_hex("00 7F FF"), {0, 127, 255}},
        {"MSB_INTEGER", 1, from_hex("80 01"), {-128, 1}},
        {"MSB_INTEGER", 2, from_hex("0102 FFFE"), {258, -2}},
        {"LSB_UNSIGNED_INTEGER", 2, from_hex("0102 FFFF"), {513, 65535}},
        {"MSB_UNSIGNED_INTEGER", 3, from_hex("010203 FFFFFF"), {0x010203, 0xFFFFFF}},
        {"LSB_INTEGER", 4, from_hex("04030201 FFFFFFFF"), {0x01020304, -1}},
        {"MSB_UNSIGNED_INTEGER", 4, from_hex("FFFFFFFE 00000001"), {0xFFFFFFFE, 1}},
        {"MSB_INTEGER",
         8,
         from_hex("0000000000000007 FFFFFFFFFFFFFFFF 7000000000000000 8000000000000000"),
         {7, -1, INT32_MAX, INT32_MIN}},
        {"LSB_UNSIGNED_INTEGER", 8, from_hex("0700000000000000 0000000001000000"), {7, UINT32_MAX}},
        {"IEEE_REAL", 4, from_hex("40200000 C0200000 4F800000"), {2, -2, INT32_MAX}},
        {"VAX_REAL", 4, from_hex("20410000"), {2}},
        {"PC_REAL", 8, from_hex("0000000000000440 000000000000F0C1"), {2, INT32_MIN}},
        {"ASCII_INTEGER", 6, "    12 -4,\r\n99999,999999", {12, -4, 99999, 999999}, "ASCII"},
        {"ASCII_INTEGER", 12, "-99999999999 99999999999", {INT32_MIN, INT32_MAX}, "ASCII"},
        {"ASCII_REAL", 6, "  2.90-1.2E1", {2, -12}, "ASCII"},
    };
    for (const uint8_t profile : std::initializer_list<uint8_t>{2, 1, 0}) {
        Oa_profile.data_translation_profile = profile;
        Oa_profile.dst_format_for_binary = Oa_profile.dst_format_for_ascii = profile == 0 ? OA_ASCII : OA_BINARY;
        for (const Case &c : cases) {
            const auto items = static_cast<int64_t>(c.values.size());
            const OaObjectPtr histogram = read(c.type, c.item_bytes, items, c.data, c.format);
            ASSERT_TRUE(histogram) << c.type << c.item_bytes << error_string;
            const std::string type = keyword_of(histogram->odl, "DATA_TYPE");
            std::vector<int64_t> values;
            for (const int32_t value : samples_of<int32_t>(histogram.get()))
                values.push_back(type == "LSB_UNSIGNED_INTEGER" ? int64_t{static_cast<uint32_t>(value)} : value);
            EXPECT_EQ(values, c.values) << c.type << c.item_bytes;
            EXPECT_EQ(keyword_of(histogram->odl, "ITEM_BYTES"), "4");
            EXPECT_EQ(keyword_of(histogram->odl, "ITEMS"), std::to_string(items));
        }
        EXPECT_EQ(Oa_profile.data_translation_profile, profile) << "the user's profile is kept";
    }
    EXPECT_TRUE(notices_.texts.empty());
}

TEST_F(Histogram, OfAFileThatEndsEarlyKeepsItsWholeItems) {
    const OaObjectPtr histogram = read("MSB_INTEGER", 4, 4, from_hex("00000001 00000002 0000"));
    ASSERT_TRUE(histogram);
    EXPECT_EQ(samples_of<int32_t>(histogram.get()), (std::vector<int32_t>{1, 2, 0, 0}));
    const OaObjectPtr wide = read("LSB_INTEGER", 8, 3, from_hex("0100000000000000 0303"));
    EXPECT_EQ(samples_of<int32_t>(wide.get()), (std::vector<int32_t>{1, 0, 0}));
    EXPECT_EQ(notices_.texts, (std::vector<std::string>{"Bytes read: 10.\nBytes attempted to be read: 16",
                                                        "Bytes read: 10.\nBytes attempted to be read: 24"}));
}

TEST_F(Histogram, IsRefusedWhenItsFileCannotBeMeant) {
    struct Case {
        const char *type;
        int item_bytes;
        int64_t items;
        std::string data;
        int code;
    };
    const Case cases[] = {
        {"MSB_INTEGER", 4, 4, "", 502},
        {"MSB_INTEGER", 4, 1000, "0123", 502},
        {"MSB_INTEGER", 4, int64_t{1} << 62, "0123", 502},
        {"MSB_INTEGER", 1, int64_t{1} << 62, "0123", 502},
        {"MSB_INTEGER", 0, 4, "0123", 531},
        {"MSB_INTEGER", 4, 0, "0123", 531},
        {"MSB_INTEGER", 4, -1, "0123", 531},
        {"NO_SUCH_TYPE", 4, 1, "0123", 531},
        {"CHARACTER", 4, 1, "0123", 520},
        {"IEEE_COMPLEX", 8, 1, "01234567", 520},
    };
    for (const Case &c : cases) {
        EXPECT_FALSE(read(c.type, c.item_bytes, c.items, c.data)) << c.type << c.items;
        EXPECT_EQ(oa_errno, c.code) << c.type << c.items << error_string;
    }
    EXPECT_TRUE(notices_.texts.empty());
}

TEST_F(Histogram, IsReadAcrossVariableLengthRecords) {
    // Records of 6, 3 (and a pad byte) and 7 bytes, the second of the file being the first of the histogram.
    folder_.write("V.DAT", from_hex("0200 FFFF 0600 000000010000 0300 000200 EE 0700 00000300000004"));
    const OpenProduct product(folder_.write(
        "V.LBL",
        "RECORD_TYPE = VARIABLE_LENGTH\nRECORD_BYTES = 8\n^HISTOGRAM = (\"V.DAT\", 2)\nOBJECT = HISTOGRAM\n "
        "ITEMS = 4\n ITEM_BYTES = 4\n DATA_TYPE = MSB_INTEGER\nEND_OBJECT = HISTOGRAM\nEND\n"));
    const OaObjectPtr histogram(OaReadHistogram(product.object("HISTOGRAM")));
    EXPECT_EQ(samples_of<int32_t>(histogram.get()), (std::vector<int32_t>{1, 2, 3, 4}));
}

}  // namespace
