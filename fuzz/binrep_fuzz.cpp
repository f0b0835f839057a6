// Any bytes, converted between any two representations: the fast way and the way by layout must give the same bits and
// counts, also in place and at any alignment.
// Input: source form, destination form, then values.
#include "oa/binrep_layout.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr const char *names[] = {
    "UINT1",       "INT1",       "MSB_UINT2",  "MSB_UINT4",  "MSB_UINT8",   "MSB_INT2",   "MSB_INT4",   "MSB_INT8",
    "LSB_UINT2",   "LSB_UINT4",  "LSB_UINT8",  "LSB_INT2",   "LSB_INT4",    "LSB_INT8",   "IEEE_REAL4", "IEEE_REAL8",
    "IEEE_REAL10", "VAXF_REAL4", "VAXD_REAL8", "VAXG_REAL8", "VAXH_REAL16", "PC_REAL4",   "PC_REAL8",   "PC_REAL10",
    "MSB_INT3",    "LSB_UINT3",  "LSB_INT5",   "MSB_UINT7",  "MSB_INT9",    "LSB_UINT16", "MSB_INT16",  "MSB_UINT1",
};
constexpr size_t name_count = sizeof(names) / sizeof(names[0]);

using Bytes = std::vector<uint8_t>;

void require(bool holds) {
    if (!holds)
        abort();
}

bool same_errors(const BinrepErrors &a, const BinrepErrors &b) {
    return a.overflows == b.overflows && a.underflows == b.underflows && a.reserved_operands == b.reserved_operands;
}

Bytes convert(const BinrepPlan &plan, const uint8_t *src, int64_t count, size_t misalignment) {
    Bytes converted(misalignment + static_cast<size_t>(count) * plan.dst->size, 0xAA);
    BinrepConvertRun(plan, src, converted.data() + misalignment, count);
    converted.erase(converted.begin(), converted.begin() + static_cast<Bytes::difference_type>(misalignment));
    return converted;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2)
        return 0;
    const BinrepDescrip *src = OalFindBinrepDescrip(names[data[0] % name_count]);
    const BinrepDescrip *dst = OalFindBinrepDescrip(names[data[1] % name_count]);
    const uint8_t *values = data + 2;
    const auto count = static_cast<int64_t>((size - 2) / src->size);
    const BinrepPlan plan = OalPlanBinrep(src, dst);

    OalResetBinrepErrors();
    const Bytes fast = convert(plan, values, count, data[0] / name_count);
    const BinrepErrors errors = binrep_errors;

    // Values of one form are copied as they are, also those that no conversion writes.
    if (src != dst) {
        OalResetBinrepErrors();
        BinrepPlan by_layout = plan;
        by_layout.run = BinrepConvertByLayout;
        require(convert(by_layout, values, count, 0) == fast);
        require(same_errors(binrep_errors, errors));
    }
    if (src->size == dst->size) {
        Bytes in_place(values, values + static_cast<size_t>(count) * src->size);
        BinrepConvertRun(plan, in_place.data(), in_place.data(), count);
        require(in_place == fast);
    }
    // What has once been converted is a value of its form: through the widest form of its kind and back it stays.
    if (dst->kind == 0) {
        const BinrepDescrip *wide = OalFindBinrepDescrip(dst->complement == '2' ? "MSB_INT16" : "MSB_UINT16");
        OalResetBinrepErrors();
        const Bytes widened = convert(OalPlanBinrep(dst, wide), fast.data(), count, 1);
        require(convert(OalPlanBinrep(wide, dst), widened.data(), count, 0) == fast);
        require(same_errors(binrep_errors, {}));
    }
    return 0;
}
