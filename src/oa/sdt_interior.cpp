// The slots of label nodes with sub-objects.
#include "oa/sdt_build.h"

#include <vector>

namespace {

constexpr const char *builder = "OalBuildSDTNode";

// The number of items of an ARRAY over all its axes. False after reporting.
bool read_axes(const ObjDesc *array, int64_t *items) {
    int64_t axes = 0;
    const char *text = nullptr;
    std::vector<int64_t> axis_items;
    if (!OalRequiredNumber("AXES", array, 1, &axes))
        return false;
    if (OaKwdValuetoStr("AXIS_ITEMS", array, &text) != 0 || OaSequencetoLongArray(text, &axis_items) != 0)
        return OalReportMissing("AXIS_ITEMS", array) == 0;
    if (static_cast<int64_t>(axis_items.size()) != axes) {
        OaReportFailure(532,
                        "%s: number of sequence elements in AXIS_ITEMS: %zu does not agree with AXES keyword value: "
                        "%lld.",
                        builder, axis_items.size(), static_cast<long long>(axes));
        return false;
    }
    *items = 1;
    for (const int64_t axis : axis_items) {
        if (axis < 0)
            return OalReportMissing("AXIS_ITEMS", array) == 0;
        if (__builtin_mul_overflow(*items, axis, items))
            return OalReportTooLarge() == 0;
    }
    return true;
}

bool measure_array(const ObjDesc *array, OaSlot *slot) {
    int64_t start_byte = 0;
    if (!OalOptionalNumber("START_BYTE", array, 1, 1, &start_byte) || !read_axes(array, &slot->total_repetitions))
        return false;
    slot->src.start_offset = start_byte - 1;
    const OaSlot *only = nullptr;
    for (const ObjDesc *child = LeftmostSDTChild(array); child; child = RightSDTSibling(child)) {
        if (!OalSlotOf(child) || OalSlotOf(child)->inserted)
            continue;
        if (only) {
            OaReportFailure(530, "%s: ARRAY cannot contain more than one sub-object.", builder);
            return false;
        }
        only = OalSlotOf(child);
    }
    if (!only) {
        OaReportFailure(530, "%s: ARRAY must contain a sub-object.", builder);
        return false;
    }
    return !__builtin_mul_overflow(only->total_repetitions, only->src.size, &slot->src.size) ||
           OalReportTooLarge() == 0;
}

bool measure_container(const ObjDesc *container, OaSlot *slot) {
    int64_t start_byte = 0;
    if (!OalRequiredNumber("START_BYTE", container, 1, &start_byte) ||
        !OalRequiredNumber("REPETITIONS", container, 0, &slot->total_repetitions) ||
        !OalRequiredNumber("BYTES", container, 0, &slot->src.size))
        return false;
    slot->src.start_offset = start_byte - 1;
    return true;
}

// 0, 1 or, when the table's keywords are missing, -1.
int measure_table(const ObjDesc *table, OaSlot *slot) {
    int64_t row_bytes = 0;
    int64_t prefix = 0;
    int64_t suffix = 0;
    if (OaGetTableKeywords(table, &slot->total_repetitions, &row_bytes, &prefix, &suffix) != 0)
        return -1;
    if (__builtin_add_overflow(prefix, row_bytes, &slot->src.size) ||
        __builtin_add_overflow(slot->src.size, suffix, &slot->src.size))
        return OalReportTooLarge();
    return 0;
}

int measure_interior(const ObjDesc *node, OaSlot *slot) {
    const OaObjectClass object_class = OaGetObjectClass(node);
    if (OalIsTableLike(object_class))
        return measure_table(node, slot);
    switch (object_class) {
        case OA_ARRAY:
            return measure_array(node, slot) ? 0 : 1;
        case OA_COLLECTION:
        case OA_ELEMENT:
            return OalMeasureElement(node, slot) ? 0 : 1;
        case OA_COLUMN:
            return OalMeasureColumn(node, slot) ? 0 : 1;
        case OA_CONTAINER:
            return measure_container(node, slot) ? 0 : 1;
        case OA_BIT_COLUMN:
        case OA_BIT_ELEMENT:
        case OA_HISTOGRAM:
        case OA_IMAGE:
            OaReportFailure(530, "%s: a %s object cannot contain sub-objects.", builder,
                            OaObjectClasstoStr(object_class));
            return 1;
        default:
            OaReportFailure(530, "%s: Unknown object class.", builder);
            return 1;
    }
}

ObjDesc *last_with_slot(ObjDesc *node) {
    ObjDesc *last = RightmostSDTChild(node);
    while (last && !OalSlotOf(last))
        last = LeftSDTSibling(last);
    return last;
}

// Bytes that the node has behind its last child become a SPARE; a child that reaches beyond its parent is refused.
int close_source_end(ObjDesc *node) {
    ObjDesc *last = last_with_slot(node);
    const OaSlot &slot = *OalSlotOf(node);
    const int64_t end = last ? OalSourceEnd(*OalSlotOf(last)) : 0;
    if (end < 0 || end > slot.src.size)
        return OalReportOverlap(builder, slot.src.size, OalSlotOf(last)->src);
    if (end == slot.src.size)
        return 0;
    OdlPasteObjDesc(OalNewSpare(end, slot.src.size - end, 0), node);
    OaReportFailure(900,
                    "%s: implicit SPARE detected after RightmostChild of repetitions node; inserted a SPARE COLUMN "
                    "node after %s node, with src.size: %lld and src.start_offset = %lld.",
                    builder, last ? OaObjectClasstoStr(OaGetObjectClass(last)) : "no",
                    static_cast<long long>(slot.src.size - end), static_cast<long long>(end));
    return 0;
}

// The bytes behind each row were added before the columns were known.
int check_suffix(ObjDesc *node) {
    ObjDesc *last = last_with_slot(node);
    const bool is_suffix = last && !last->first_child && OalSlotOf(last)->inserted && OalSlotOf(last)->src.size > 0;
    return is_suffix ? OalCheckForGapInSrcData(last) : 0;
}

}  // namespace

int OalBuildInterior(ObjDesc *node) {
    OaSlot *slot = OalNewSDTNode(node);
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    if (const int failed = measure_interior(node, slot))
        return failed;
    return OalFinishInterior(node);
}

int OalFinishInterior(ObjDesc *node) {
    OaSlot *slot = OalSlotOf(node);
    OalDetermineRepNodeAlignment(node);
    if (OalCheckForGapInSrcData(node) != 0 || check_suffix(node) != 0 || close_source_end(node) != 0)
        return 1;
    const ObjDesc *last = RightmostSDTChild(node);
    while (last && (!OalSlotOf(last) || OalSlotOf(last)->dst.size < 1))
        last = LeftSDTSibling(last);
    slot->dst.size = last ? OalDestinationEnd(*OalSlotOf(last)) : 0;
    const ObjDesc *left = left_described_sibling(node);
    slot->dst.start_offset = left ? OalDestinationEnd(*OalSlotOf(left)) : 0;
    return slot->dst.size < 0 || slot->dst.start_offset < 0 ? OalReportTooLarge() : 0;
}
