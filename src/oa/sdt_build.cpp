// Small tools of building a slot descriptor tree: added columns, ends of slots, keywords that must be there.
#include "oa/sdt_build.h"

namespace {

constexpr const char *builder = "OalBuildSDTNode";

int64_t end_of(const OaSlotSide &side, int64_t repetitions) {
    int64_t end = 0;
    if (__builtin_mul_overflow(side.size, repetitions, &end) || __builtin_add_overflow(end, side.start_offset, &end))
        return -1;
    return end;
}

}  // namespace

ObjDesc *OalNewColumn(const char *name) {
    ObjDesc *column = OdlNewObjDesc("COLUMN", nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
    OaStrtoKwdValue("NAME", column, name);
    return column;
}

ObjDesc *OalNewSpare(int64_t src_start, int64_t src_size, int64_t dst_size) {
    ObjDesc *spare = OalNewColumn("SPARE");
    OaSlot *slot = OalNewSDTNode(spare);
    slot->inserted = true;
    slot->total_repetitions = 1;
    slot->src.start_offset = src_start;
    slot->src.size = src_size;
    slot->dst.size = dst_size;
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    return spare;
}

int64_t OalSourceEnd(const OaSlot &slot) {
    return end_of(slot.src, slot.total_repetitions);
}

int64_t OalDestinationEnd(const OaSlot &slot) {
    return end_of(slot.dst, slot.total_repetitions);
}

int OalReportOverlap(const char *routine, int64_t start, const OaSlotSide &previous) {
    OaReportFailure(534,
                    "%s: error: overlapping source data. src.start_offset = %lld, previous src.start_offset = %lld "
                    "previous src.size = %lld",
                    routine, static_cast<long long>(start), static_cast<long long>(previous.start_offset),
                    static_cast<long long>(previous.size));
    return 1;
}

int OalReportTooLarge() {
    OaReportFailure(502, "%s: the described data are too large.", builder);
    return 1;
}

int OalReportMissing(const char *keyword, const ObjDesc *node) {
    OaReportFailure(531, "%s: %s keyword value not found for %s object.", builder, keyword,
                    OaObjectClasstoStr(OaGetObjectClass(node)));
    return 1;
}

int OalReportMissingType(const ObjDesc *node, OaObjectClass object_class) {
    const char *name = nullptr;
    if (object_class == OA_IMAGE)
        return OalReportMissing("SAMPLE_TYPE", node);
    if (OaKwdValuetoStr("NAME", node, &name) == 0)
        OaReportFailure(531, "%s: DATA_TYPE keyword not found for %s object\nwith NAME = %s.", builder,
                        OaObjectClasstoStr(object_class), name);
    else
        OaReportFailure(531, "%s: DATA_TYPE keyword not found for %s object", builder,
                        OaObjectClasstoStr(object_class));
    return 1;
}

bool OalHasKeyword(const char *keyword, const ObjDesc *node) {
    const char *text = nullptr;
    return OaKwdValuetoStr(keyword, node, &text) == 0;
}

bool OalRequiredNumber(const char *keyword, const ObjDesc *node, int64_t minimum, int64_t *out) {
    return (OaKwdValuetoLong(keyword, node, out) == 0 && *out >= minimum) || OalReportMissing(keyword, node) == 0;
}

bool OalOptionalNumber(const char *keyword, const ObjDesc *node, int64_t minimum, int64_t otherwise, int64_t *out) {
    *out = otherwise;
    return !OalHasKeyword(keyword, node) || OalRequiredNumber(keyword, node, minimum, out);
}

bool OalMeasureColumn(const ObjDesc *node, OaSlot *slot) {
    int64_t start_byte = 0;
    int64_t bytes = 0;
    if (!OalRequiredNumber("START_BYTE", node, 1, &start_byte) || !OalRequiredNumber("BYTES", node, 0, &bytes) ||
        !OalOptionalNumber("ITEMS", node, 1, 1, &slot->total_repetitions))
        return false;
    slot->src.start_offset = start_byte - 1;
    slot->src.size = bytes / slot->total_repetitions;
    return true;
}

bool OalMeasureElement(const ObjDesc *node, OaSlot *slot) {
    int64_t start_byte = 0;
    if (!OalOptionalNumber("START_BYTE", node, 1, 1, &start_byte) ||
        !OalRequiredNumber("BYTES", node, 0, &slot->src.size))
        return false;
    slot->total_repetitions = 1;
    slot->src.start_offset = start_byte - 1;
    return true;
}

bool OalIsTableLike(OaObjectClass object_class) {
    switch (object_class) {
        case OA_GAZETTEER:
        case OA_PALETTE:
        case OA_SERIES:
        case OA_SPECTRUM:
        case OA_TABLE:
            return true;
        default:
            return false;
    }
}
