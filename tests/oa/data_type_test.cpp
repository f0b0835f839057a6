#include "oa/data_type.h"

#include "oa/binrep.h"

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

TEST(DataType, CodesHaveCanonicalNames) {
    EXPECT_STREQ(OaKRVDataTypetoStr(OA_IEEE_REAL), "IEEE_REAL");
    EXPECT_STREQ(OaKRVDataTypetoStr(OA_MSB_BIT_STRING), "MSB_BIT_STRING");
    EXPECT_STREQ(OaKRVDataTypetoStr(OA_NO_DATA_TYPE), "\"N/A\"");
    for (const int unused : {12, 23, 24, 255, -1})
        EXPECT_STREQ(OaKRVDataTypetoStr(unused), "UNK");
}

class TypeConversion : public testing::Test {
  protected:
    ~TypeConversion() override { Oa_profile = saved_; }
    const OaProfile saved_ = Oa_profile;
};

// The representation that a q code names for a size.
std::string representation(const char *q_code, int64_t size) {
    const std::string name = q_code;
    return OalFindBinrepDescrip(q_code) ? name : name + std::to_string(size);
}

TEST_F(TypeConversion, BinaryTypesBecomeTheProfilesOwn) {
    const struct {
        OaDataType src;
        int64_t size;
        const char *src_form, *low_first, *high_first;
        OaDataType low_type;
    } cases[] = {
        {OA_MSB_INTEGER, 1, "INT1", "INT1", "INT1", OA_LSB_INTEGER},
        {OA_IBM_INTEGER, 2, "MSB_INT2", "LSB_INT2", "MSB_INT2", OA_LSB_INTEGER},
        {OA_LSB_INTEGER, 4, "LSB_INT4", "LSB_INT4", "MSB_INT4", OA_LSB_INTEGER},
        {OA_BOOLEAN, 1, "UINT1", "UINT1", "UINT1", OA_LSB_UNSIGNED_INTEGER},
        {OA_IBM_UNSIGNED_INTEGER, 4, "MSB_UINT4", "LSB_UINT4", "MSB_UINT4", OA_LSB_UNSIGNED_INTEGER},
        {OA_PC_REAL, 10, "PC_REAL10", "PC_REAL8", "IEEE_REAL8", OA_PC_REAL},
        {OA_VAX_COMPLEX, 8, "VAXD_REAL8", "PC_REAL8", "IEEE_REAL8", OA_PC_REAL},
        {OA_VAX_REAL, 16, "VAXH_REAL16", "PC_REAL8", "IEEE_REAL8", OA_PC_REAL},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(OaKRVDataTypetoStr(c.src)) + " of " + std::to_string(c.size));
        for (const bool low : {true, false}) {
            Oa_profile.data_translation_profile = low ? 2 : 1;
            const OaTypeConversion *entry = OalGetTypeConversionFromProfile(c.src, c.size, OA_BINARY, OA_BINARY);
            ASSERT_NE(entry, nullptr);
            EXPECT_EQ(representation(entry->src_q_code, c.size), c.src_form);
            EXPECT_EQ(representation(entry->dst_q_code, entry->dst_size), low ? c.low_first : c.high_first);
            EXPECT_EQ(entry->dst_type == c.low_type, low);
        }
        Oa_profile.data_translation_profile = 0;
        EXPECT_EQ(OalGetTypeConversionFromProfile(c.src, c.size, OA_BINARY, OA_BINARY), nullptr);
        EXPECT_NE(OalGetTypeConversionFromProfile(c.src, c.size, OA_BINARY, OA_ASCII), nullptr);
    }
}

TEST_F(TypeConversion, OtherDataAreCopied) {
    Oa_profile.data_translation_profile = 2;
    const struct {
        OaDataType type;
        int64_t size;
    } cases[] = {{OA_CHARACTER, 8},    {OA_IBM_COMPLEX, 4},    {OA_MSB_INTEGER, 8}, {OA_LSB_INTEGER, 3},
                 {OA_NO_DATA_TYPE, 4}, {OA_MSB_BIT_STRING, 2}, {OA_VAX_REAL, 10},   {OA_ASCII_INTEGER, 4}};
    for (const auto &c : cases)
        EXPECT_EQ(OalGetTypeConversionFromProfile(c.type, c.size, OA_BINARY, OA_BINARY), nullptr) << c.type;
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_ASCII_INTEGER, 5, OA_ASCII, OA_ASCII), nullptr);
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_ASCII_BIT_STRING, 5, OA_ASCII, OA_BINARY), nullptr);
    EXPECT_STREQ(OalGetTypeConversionFromProfile(OA_ASCII_REAL, 12, OA_ASCII, OA_BINARY)->dst_q_code, "PC_REAL");
    EXPECT_EQ(OalGetTypeConversionFromProfile(OA_BCD, 5, OA_BINARY, OA_ASCII)->ascii_type, OA_ASCII_BIT_STRING);
}

}  // namespace
