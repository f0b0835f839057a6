#include "oa/data_type.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(DataType, NamesOfLabelsHaveCodes) {
    const struct {
        std::string name;
        int binary, ascii;
    } cases[] = {{"MSB_INTEGER", OA_MSB_INTEGER, OA_ASCII_INTEGER},
                 {"\"PC_REAL\"", OA_PC_REAL, OA_ASCII_REAL},
                 {"VAX_BIT_STRING", OA_LSB_BIT_STRING, OA_ASCII_INTEGER},
                 {"VAX_DOUBLE", OA_VAX_REAL, OA_ASCII_COMPLEX},
                 {"BINARY CODED DECIMAL", OA_BCD, OA_ASCII_BIT_STRING},
                 {"msb_integer", OA_NO_DATA_TYPE, OA_NO_DATA_TYPE},
                 {"N/A", OA_NO_DATA_TYPE, OA_NO_DATA_TYPE},
                 {"\"\"", OA_NO_DATA_TYPE, OA_NO_DATA_TYPE}};
    for (const auto &c : cases) {
        std::string name = c.name;
        EXPECT_EQ(OaStrtoKRVDataType(name.data(), OA_BINARY), c.binary) << c.name;
        EXPECT_EQ(std::string(name.c_str()).find('"'), std::string::npos) << "quotes are removed in place";
        name = c.name;
        EXPECT_EQ(OaStrtoKRVDataType(name.data(), OA_ASCII), c.ascii) << c.name;
    }
    EXPECT_EQ(OaStrtoKRVDataType(nullptr, OA_BINARY), OA_NO_DATA_TYPE);
}

TEST(DataType, UnusedCodesHaveNoName) {
    EXPECT_STREQ(OaKRVDataTypetoStr(OA_NO_DATA_TYPE), "\"N/A\"");
    for (const int unused : {12, 23, 24, 255, -1})
        EXPECT_STREQ(OaKRVDataTypetoStr(unused), "UNK");
}

class TypeConversion : public testing::Test {
  protected:
    ~TypeConversion() override { Oa_profile = saved_; }
    const OaProfile saved_ = Oa_profile;
};

// Samples of images show what becomes of each type here; on a machine of the other byte order it is this.
TEST_F(TypeConversion, ThereAreProfilesOfBothByteOrders) {
    Oa_profile.data_translation_profile = 1;
    const OaTypeConversion *entry = OalGetTypeConversionFromProfile(OA_VAX_COMPLEX, 8, OA_BINARY, OA_BINARY);
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(entry->dst_q_code, "IEEE_REAL");
    EXPECT_EQ(entry->dst_size, 8);
    Oa_profile.data_translation_profile = 0;
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_MSB_INTEGER, 2, OA_BINARY, OA_BINARY), nullptr);
    EXPECT_NE(OalGetTypeConversionFromProfile(OA_MSB_INTEGER, 2, OA_BINARY, OA_ASCII), nullptr);
}

TEST_F(TypeConversion, OtherDataAreCopied) {
    Oa_profile.data_translation_profile = 2;
    const std::pair<OaDataType, int64_t> cases[] = {{OA_CHARACTER, 8},   {OA_IBM_COMPLEX, 4},  {OA_MSB_INTEGER, 8},
                                                    {OA_LSB_INTEGER, 3}, {OA_NO_DATA_TYPE, 4}, {OA_MSB_BIT_STRING, 2},
                                                    {OA_VAX_REAL, 10},   {OA_ASCII_INTEGER, 4}};
    for (const auto &[type, size] : cases)
        EXPECT_EQ(OalGetTypeConversionFromProfile(type, size, OA_BINARY, OA_BINARY), nullptr) << type;
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_ASCII_INTEGER, 5, OA_ASCII, OA_ASCII), nullptr);
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_ASCII_BIT_STRING, 5, OA_ASCII, OA_BINARY), nullptr);
    EXPECT_STREQ(OalGetTypeConversionFromProfile(OA_ASCII_REAL, 12, OA_ASCII, OA_BINARY)->dst_q_code, "PC_REAL");
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_BCD, 5, OA_BINARY, OA_ASCII)->ascii_type, OA_ASCII_BIT_STRING);
}

}  // namespace
