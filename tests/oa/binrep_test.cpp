#include "oa/binrep.h"

#include "oa/binrep_layout.h"
#include "support/hex.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr const char *table_names[] = {
    "UINT1",       "INT1",       "MSB_UINT2",  "MSB_UINT4",  "MSB_UINT8",   "MSB_INT2", "MSB_INT4",   "MSB_INT8",
    "LSB_UINT2",   "LSB_UINT4",  "LSB_UINT8",  "LSB_INT2",   "LSB_INT4",    "LSB_INT8", "IEEE_REAL4", "IEEE_REAL8",
    "IEEE_REAL10", "VAXF_REAL4", "VAXD_REAL8", "VAXG_REAL8", "VAXH_REAL16", "PC_REAL4", "PC_REAL8",   "PC_REAL10"};

const BinrepDescrip *form(const std::string &name) {
    const BinrepDescrip *found = OalFindBinrepDescrip(name.c_str());
    EXPECT_NE(found, nullptr) << name;
    return found;
}

std::string convert(const std::string &src, const std::string &hex, const std::string &dst) {
    const std::string from = from_hex(hex);
    std::string to(form(dst)->size, '\0');
    EXPECT_EQ(from.size(), form(src)->size);
    BinrepConvert(from.data(), to.data(), form(src), form(dst));
    return to_hex(to);
}

template <typename To, typename From>
To convert_as(From value, const char *src, const char *dst) {
    To converted = {};
    BinrepConvert(&value, &converted, form(src), form(dst));
    return converted;
}

class Binrep : public testing::Test {
  protected:
    Binrep() { OalResetBinrepErrors(); }
};

TEST_F(Binrep, KnownNumbersInEveryRealForm) {
    // 1, -118.625 and minus pi, rounded to a float in the forms of 4 bytes.
    const struct {
        const char *name, *hex[3];
    } forms[] = {
        {"IEEE_REAL4", {"3f800000", "c2ed4000", "c0490fdb"}},
        {"PC_REAL4", {"0000803f", "0040edc2", "db0f49c0"}},
        {"IEEE_REAL8", {"3ff0000000000000", "c05da80000000000", "c00921fb54442d18"}},
        {"PC_REAL8", {"000000000000f03f", "0000000000a85dc0", "182d4454fb2109c0"}},
        {"IEEE_REAL10", {"3fff8000000000000000", "c005ed40000000000000", "c000c90fdaa22168c000"}},
        {"PC_REAL10", {"0000000000000080ff3f", "00000000000040ed05c0", "00c06821a2da0fc900c0"}},
        {"VAXF_REAL4", {"80400000", "edc30040", "49c1db0f"}},
        {"VAXD_REAL8", {"8040000000000000", "edc3004000000000", "49c1da0f21a2c068"}},
        {"VAXG_REAL8", {"1040000000000000", "7dc000a800000000", "29c0fb214454182d"}},
        {"VAXH_REAL16",
         {"01400000000000000000000000000000", "07c080da000000000000000000000000", "02c01f9244b5d1420080000000000000"}},
    };
    for (const auto &known : forms) {
        const bool is_narrow = form(known.name)->size == 4;
        const double values[] = {1.0, -118.625, is_narrow ? -0x1.921fb6p+1 : -0x1.921fb54442d18p+1};
        for (int i = 0; i < 3; ++i) {
            double value = 0;
            BinrepConvert(from_hex(known.hex[i]).data(), &value, form(known.name), form("PC_REAL8"));
            EXPECT_EQ(value, values[i]) << known.name;
            std::string back(form(known.name)->size, '\0');
            BinrepConvert(&values[i], back.data(), form("PC_REAL8"), form(known.name));
            EXPECT_EQ(to_hex(back), known.hex[i]) << known.name;
        }
    }
    EXPECT_EQ(binrep_errors.overflows + binrep_errors.underflows + binrep_errors.reserved_operands, 0);
}

TEST_F(Binrep, MantissasRoundToNearestEven) {
    const std::tuple<const char *, const char *, const char *, const char *> cases[] = {
        {"VAXD_REAL8", "8040000000000400", "IEEE_REAL8", "3ff0000000000000"},
        {"VAXD_REAL8", "8040000000000500", "IEEE_REAL8", "3ff0000000000001"},
        {"VAXD_REAL8", "8040000000000c00", "IEEE_REAL8", "3ff0000000000002"},
        {"VAXD_REAL8", "ff40fffffffffcff", "IEEE_REAL8", "4000000000000000"},
        {"VAXH_REAL16", "01c00000000000000018000000000000", "IEEE_REAL8", "bff0000000000002"},
        {"VAXH_REAL16", "01c00000000000000008000000000100", "IEEE_REAL8", "bff0000000000001"},
        {"IEEE_REAL10", "3fff8000000000000c00", "PC_REAL8", "020000000000f03f"},
        {"IEEE_REAL10", "3fff8000000000000401", "PC_REAL8", "010000000000f03f"},
        {"VAXF_REAL4", "80000300", "IEEE_REAL4", "00200001"},
        {"VAXF_REAL4", "00010300", "IEEE_REAL4", "00400002"},
        {"VAXF_REAL4", "7f01ffff", "IEEE_REAL4", "00800000"},
        {"VAXG_REAL8", "1000000000000600", "PC_REAL8", "0200000000000400"},
        {"MSB_INT4", "01000003", "IEEE_REAL4", "4b800002"},
        {"MSB_UINT16", "ffffffffffffffffffffffffffffffff", "IEEE_REAL4", "7f800000"},
    };
    for (const auto &[src, hex, dst, expected] : cases)
        EXPECT_EQ(convert(src, hex, dst), expected) << src << " " << hex << " to " << dst;
}

TEST_F(Binrep, WhatADestinationCannotHoldIsSaturatedAndCounted) {
    const struct {
        const char *src, *hex, *dst, *expected;
        int64_t overflows, underflows, reserved;
    } cases[] = {
        // Integers.
        {"MSB_INT2", "8000", "INT1", "80", 1, 0, 0},
        {"LSB_INT4", "ffffffff", "LSB_UINT4", "00000000", 1, 0, 0},
        {"LSB_UINT4", "000000ff", "MSB_INT4", "7fffffff", 1, 0, 0},
        {"MSB_UINT16", "ffffffffffffffffffffffffffffffff", "MSB_INT16", "7fffffffffffffffffffffffffffffff", 1, 0, 0},
        {"MSB_INT3", "fffffe", "LSB_INT4", "feffffff", 0, 0, 0},
        {"LSB_INT5", "0000000080", "MSB_INT8", "ffffff8000000000", 0, 0, 0},
        // Reals to integers: truncation.
        {"IEEE_REAL4", "c3000000", "INT1", "80", 0, 0, 0},
        {"IEEE_REAL4", "7fc00000", "MSB_INT4", "00000000", 1, 0, 0},
        {"IEEE_REAL4", "ff800000", "MSB_INT4", "80000000", 1, 0, 0},
        {"IEEE_REAL4", "7f800000", "MSB_UINT16", "ffffffffffffffffffffffffffffffff", 1, 0, 0},
        {"VAXF_REAL4", "00800000", "MSB_INT4", "00000000", 0, 0, 1},
        // Reals that grow out of the destination, and specials it does not have.
        {"IEEE_REAL8", "7e37e43c8800759c", "IEEE_REAL4", "7f800000", 1, 0, 0},
        {"IEEE_REAL4", "ff800000", "VAXF_REAL4", "ffffffff", 1, 0, 0},
        {"IEEE_REAL4", "7fc00000", "VAXF_REAL4", "00800000", 1, 0, 0},
        {"IEEE_REAL4", "80000000", "VAXF_REAL4", "00000000", 0, 0, 0},
        {"IEEE_REAL8", "0010000000000000", "IEEE_REAL4", "00000000", 0, 1, 0},
        {"IEEE_REAL8", "b690000000000001", "IEEE_REAL4", "80000001", 0, 1, 0},
        {"IEEE_REAL8", "37effffffffffffe", "VAXF_REAL4", "80000000", 0, 0, 0},
        // VAX zero whatever its fraction; the reserved operand.
        {"VAXF_REAL4", "7f00ffff", "PC_REAL4", "00000000", 0, 0, 0},
        {"VAXF_REAL4", "00800000", "IEEE_REAL4", "7fc00000", 0, 0, 1},
        {"VAXG_REAL8", "0080000000000000", "VAXD_REAL8", "0080000000000000", 0, 0, 1},
        {"VAXH_REAL16", "ff7fffffffffffffffffffffffffffff", "PC_REAL8", "000000000000f07f", 1, 0, 0},
        // Specials that pass; a payload that would vanish leaves a NaN.
        {"PC_REAL4", "0100807f", "IEEE_REAL4", "7f800001", 0, 0, 0},
        {"IEEE_REAL8", "fff0000000000001", "IEEE_REAL4", "ffc00000", 0, 0, 0},
        {"PC_REAL10", "0000000000000080ff7f", "PC_REAL8", "000000000000f07f", 0, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.src) + " " + c.hex + " to " + c.dst);
        OalResetBinrepErrors();
        EXPECT_EQ(convert(c.src, c.hex, c.dst), c.expected);
        EXPECT_EQ(binrep_errors.overflows, c.overflows);
        EXPECT_EQ(binrep_errors.underflows, c.underflows);
        EXPECT_EQ(binrep_errors.reserved_operands, c.reserved);
    }
}

// Random doubles, every other one with an exponent near an end of a double's range or a float's.
uint64_t next_pattern(std::mt19937_64 &random) {
    const uint64_t bits = random();
    constexpr uint64_t exponents[] = {0x000, 0x7FF, 0x368, 0x37F, 0x381, 0x47E, 0x47F, 0x001};
    return bits % 2 ? bits : (bits & 0x800FFFFFFFFFFFFF) | exponents[random() % 8] << 52;
}

TEST_F(Binrep, AgreesWithTheProcessorOnItsOwnForms) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 200000; ++i) {
        const uint64_t bits = next_pattern(random);
        const auto real = std::bit_cast<double>(bits);
        const auto whole = static_cast<int64_t>(bits);
        if (!std::isnan(real)) {
            ASSERT_EQ(std::bit_cast<uint32_t>(convert_as<float>(real, "PC_REAL8", "PC_REAL4")),
                      std::bit_cast<uint32_t>(static_cast<float>(real)))
                << std::hex << bits;
        }
        const auto narrow = std::bit_cast<float>(static_cast<uint32_t>(bits >> 32));
        if (!std::isnan(narrow)) {
            ASSERT_EQ(convert_as<double>(narrow, "PC_REAL4", "PC_REAL8"), static_cast<double>(narrow));
        }
        ASSERT_EQ(convert_as<double>(whole, "LSB_INT8", "PC_REAL8"), static_cast<double>(whole));
        ASSERT_EQ(convert_as<float>(bits, "LSB_UINT8", "PC_REAL4"), static_cast<float>(bits));
        if (std::fabs(real) < 9.2e18) {
            ASSERT_EQ(convert_as<int64_t>(real, "PC_REAL8", "LSB_INT8"), static_cast<int64_t>(real));
        }
    }
}

TEST_F(Binrep, FastWaysGiveTheBitsOfTheBitLists) {
    constexpr int64_t count = 1000;
    std::mt19937_64 random(20);
    for (const char *src_name : table_names) {
        for (const char *dst_name : table_names) {
            const BinrepPlan plan = OalPlanBinrep(form(src_name), form(dst_name));
            if (plan.run == BinrepConvertByLayout || plan.src == plan.dst)
                continue;
            SCOPED_TRACE(std::string(src_name) + " to " + dst_name);
            // One byte in, so that neither side is aligned.
            Bytes from(1 + count * plan.src->size);
            Bytes fast(1 + count * plan.dst->size, 0x55);
            Bytes by_layout = fast;
            // Many zeros and ones at first; then whole blocks without a special value in them.
            for (size_t i = 0; i < from.size(); ++i) {
                const uint64_t bits = random();
                const uint64_t often_special = bits & 256 ? bits : bits & 512 ? 0 : 255;
                from[i] = static_cast<uint8_t>(i < from.size() / 2 ? often_special : bits | 0x44);
            }
            OalResetBinrepErrors();
            BinrepConvertByLayout(plan, from.data() + 1, by_layout.data() + 1, count);
            const BinrepErrors errors = binrep_errors;
            OalResetBinrepErrors();
            BinrepConvertRun(plan, from.data() + 1, fast.data() + 1, count);
            ASSERT_EQ(fast, by_layout);
            EXPECT_EQ(binrep_errors.underflows, errors.underflows);
            EXPECT_EQ(binrep_errors.reserved_operands, errors.reserved_operands);
            if (plan.src->size == plan.dst->size) {
                BinrepConvertRun(plan, from.data() + 1, from.data() + 1, count);
                EXPECT_TRUE(std::equal(from.begin() + 1, from.end(), fast.begin() + 1)) << "in place";
            }
        }
    }
}

TEST_F(Binrep, FindsTheTableAndMakesIntegersOfOtherSizes) {
    for (const char *name : table_names)
        EXPECT_STREQ(form(name)->name, name);
    EXPECT_EQ(form("MSB_INT3")->size, 3);
    EXPECT_EQ(form("MSB_INT3"), form("MSB_INT3")) << "made once";
    for (const char *name : {"", "MSB_REAL3", "MSB_INTEGER", "MSB_INT", "MSB_INT0", "MSB_INT17", "MSB_INT300",
                             "MSB_INT-3", "MSB_INT03", "INT3", "MSB_INT3X", "IEEE_REAL16"})
        EXPECT_EQ(OalFindBinrepDescrip(name), nullptr) << name;
}

TEST_F(Binrep, LostValuesAreReportedOnce) {
    const SilentReports silence;
    OalReportBinrepErrors("reader");
    EXPECT_EQ(oa_errno, 0);
    convert("MSB_INT2", "7fff", "INT1");
    OalReportBinrepErrors("reader");
    EXPECT_EQ(oa_errno, 710);
    EXPECT_TRUE(error_string.starts_with("reader: "));
}

}  // namespace
