// The inside of a representation: its bit lists compiled once, and the conversion that follows them bit by bit for
// every pair of forms.
#pragma once

#include "oa/binrep.h"

#include <array>
#include <cstdint>

__extension__ typedef unsigned __int128 uint128;

// Bits `first` .. `first + count - 1` of a value, numbered from the most significant bit of its first stored byte.
struct BitRange {
    uint8_t first = 0;
    uint8_t count = 0;
};

// Ranges from the most significant on. The longest list, that of the VAX H mantissa, has 14.
struct BitList {
    std::array<BitRange, 14> ranges = {};
    int range_count = 0;
    int bits = 0;  // of all ranges
};

struct BinrepLayout {
    bool is_real = false;
    // Integers.
    bool is_signed = false;
    bool low_byte_first = false;
    // Reals.
    bool implied_one = false;
    bool has_infinities = false;  // and NaNs and subnormals: the IEEE families; the VAX forms have none of them
    BitList exponent;
    BitList mantissa;  // below the implied one, or from the stored one on
};

// Every description that OalFindBinrepDescrip gives out is the first member of one of these.
struct BinrepForm {
    BinrepDescrip descrip;
    BinrepLayout layout;
};

inline const BinrepLayout &LayoutOf(const BinrepDescrip *descrip) {
    return reinterpret_cast<const BinrepForm *>(descrip)->layout;
}

// The run of a plan without a faster way: decodes each value into sign, exponent and 128 significant bits, or sign and
// 128-bit magnitude, and encodes that.
void BinrepConvertByLayout(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count);
