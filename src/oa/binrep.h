// Binary representations: how the bits of one stored value are laid out, and the exact conversion between any two.
//
// IEEE forms: IEEE 754. VAX F, D, G and H: VAX Architecture Reference Manual. PC_REAL10: the x87 extended format.
#pragma once

#include <cstdint>

struct BinrepDescrip {
    const char *name;
    uint8_t size;               // bytes a value
    uint8_t kind;               // 0 integer, 1 real
    int32_t sign_bit;           // counted from the most significant bit of the first stored byte; -1: by complement
    char complement;            // integers: '0' unsigned, '2' two's complement
    const char *byte_order;     // integers: stored index of the most significant byte .. of the least, "3..0"
    int32_t exponent_bias;      // reals
    const char *exponent_bits;  // reals: bit ranges, most significant first
    const char *mantissa_bits;  // reals: the same; "'1.'" an implied leading one, "'.'" the point after a stored one
    bool made_at_run_time;      // an integer of another size; lives as long as the process, like the table
};

// The table's row of that name, or a description made for MSB_/LSB_ INT/UINT of 1 to 16 bytes ("MSB_INT3"). Null for
// any other name. Never freed. The routines below take no other descriptions than these.
const BinrepDescrip *OalFindBinrepDescrip(const char *name);

// The machine's own forms.
struct OaNativeTypes {
    const BinrepDescrip *signed_long;  // 8 bytes
    const BinrepDescrip *unsigned_long;
    const BinrepDescrip *real;  // 8 bytes
};
const OaNativeTypes &OalGetNativeCTypeInfo();

// Values that the destination could not hold, since the last reset.
struct BinrepErrors {
    int64_t overflows = 0;          // became infinity, or the greatest value of a destination without infinities;
                                    // NaNs where there are none: 0, or the reserved operand of a VAX form
    int64_t underflows = 0;         // became zero or lost bits as subnormals though not zero
    int64_t reserved_operands = 0;  // VAX sign 1 with exponent 0: became NaN (0 for integers)
};
extern BinrepErrors binrep_errors;
// Reports the counts, when there are any, as one message with oa_errno 710; `routine` names the reader.
void OalReportBinrepErrors(const char *routine);
void OalResetBinrepErrors();

// Converts `count` values lying one behind the other. The conversion is exact where the destination can hold the value:
// integers by sign extension with saturation, reals to nearest with ties to even, reals to integers by truncation.
// Source and destination may be unaligned; they may not overlap unless they are equal and of one size.
// Plans are chosen once for a run; make one with OalPlanBinrep.
struct BinrepPlan {
    const BinrepDescrip *src = nullptr;
    const BinrepDescrip *dst = nullptr;
    void (*run)(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) = nullptr;
};
BinrepPlan OalPlanBinrep(const BinrepDescrip *src, const BinrepDescrip *dst);
inline void BinrepConvertRun(const BinrepPlan &plan, const void *src, void *dst, int64_t count) {
    plan.run(plan, static_cast<const uint8_t *>(src), static_cast<uint8_t *>(dst), count);
}

// One value.
void BinrepConvert(const void *src, void *dst, const BinrepDescrip *src_form, const BinrepDescrip *dst_form);
