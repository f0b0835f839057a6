// The slots of label nodes without sub-objects that carry data.
#include "oa/sdt_build.h"

#include <string>
#include <string_view>

namespace {

constexpr const char *builder = "OalBuildSDTNode";

int report_unknown_type(const ObjDesc *node, const char *type_text) {
    const char *name = nullptr;
    if (OaKwdValuetoStr("NAME", node, &name) == 0)
        OaReportFailure(531, "%s: DATA_TYPE keyword value: %s is an unknown data type, NAME = %s.", builder, type_text,
                        name);
    else
        OaReportFailure(531, "%s: DATA_TYPE keyword value: %s in\n%s node is an unknown data type.", builder, type_text,
                        OaObjectClasstoStr(OaGetObjectClass(node)));
    return 1;
}

bool is_spare(const ObjDesc *node) {
    const char *name = nullptr;
    if (OaKwdValuetoStr("NAME", node, &name) != 0)
        return false;
    const std::string_view text(name);
    return text == "SPARE" || text == "\"SPARE\"";
}

int read_data_type(const ObjDesc *node, OaObjectClass object_class, OaInterchangeFormat src_format) {
    OaSlot *slot = OalSlotOf(node);
    if (object_class == OA_BIT_ELEMENT) {
        slot->src.data_type = OA_MSB_BIT_STRING;
        return 0;
    }
    const char *text = nullptr;
    if (OaKwdValuetoStr(object_class == OA_IMAGE ? "SAMPLE_TYPE" : "DATA_TYPE", node, &text) != 0)
        return OalReportMissingType(node, object_class);
    std::string name(text);
    slot->src.data_type = OaStrtoKRVDataType(name.data(), src_format);
    if (slot->src.data_type == OA_NO_DATA_TYPE && !is_spare(node))
        return report_unknown_type(node, text);
    return 0;
}

bool measure_image(const ObjDesc *node, OaSlot *slot) {
    int64_t sample_bits = 0;
    int64_t lines = 0;
    int64_t line_samples = 0;
    if (!OalRequiredNumber("SAMPLE_BITS", node, 8, &sample_bits) || !OalRequiredNumber("LINES", node, 1, &lines) ||
        !OalRequiredNumber("LINE_SAMPLES", node, 1, &line_samples))
        return false;
    slot->src.size = sample_bits / 8;
    if (!__builtin_mul_overflow(lines, line_samples, &slot->total_repetitions))
        return true;
    OaReportFailure(502, "%s: LINES = %lld and LINE_SAMPLES = %lld are too large.", builder,
                    static_cast<long long>(lines), static_cast<long long>(line_samples));
    return false;
}

bool measure_histogram(const ObjDesc *node, OaSlot *slot) {
    return OalRequiredNumber("ITEM_BYTES", node, 1, &slot->src.size) &&
           OalRequiredNumber("ITEMS", node, 1, &slot->total_repetitions);
}

// First bit of a BIT_ELEMENT, from 1 on. Labels that count in bytes name the byte's last bit.
bool read_start_bit(const ObjDesc *node, int64_t *bit) {
    if (OalHasKeyword("START_BIT", node))
        return OalRequiredNumber("START_BIT", node, 1, bit);
    if (!OalHasKeyword("START_BYTE", node)) {
        *bit = 1;
        return true;
    }
    return OalRequiredNumber("START_BYTE", node, 1, bit) &&
           (!__builtin_mul_overflow(*bit, 8, bit) || OalReportTooLarge() == 0);
}

// A run of adjacent BIT_ELEMENTs is one slot of whole bytes, which its last member carries.
bool measure_bit_elements(const ObjDesc *last, OaSlot *slot) {
    int64_t bits = 0;
    if (OaKwdValuetoLong("BITS", last, &bits) != 0 || bits < 1) {
        OaReportFailure(531, "%s: couldn't find BITS keyword in %s object.", builder, "BIT_ELEMENT");
        return false;
    }
    const ObjDesc *first = last;
    while (LeftSDTSibling(first) && OaGetObjectClass(LeftSDTSibling(first)) == OA_BIT_ELEMENT)
        first = LeftSDTSibling(first);
    int64_t first_start = 0;
    int64_t own_start = 0;
    if (!read_start_bit(first, &first_start) || !read_start_bit(last, &own_start))
        return false;
    int64_t total = 0;
    if (__builtin_add_overflow(own_start - first_start, bits, &total))
        return OalReportTooLarge() == 0;
    // Labels tell the start of the last element inclusively or exclusively of its first bit.
    if (total % 8 == 7)
        ++total;
    if (total < 8 || total % 8 != 0) {
        OaReportFailure(530, "%s: Total number of bits in adjacent BIT_ELEMENTS must be a multiple of 8.", builder);
        return false;
    }
    slot->total_repetitions = 1;
    slot->src.start_offset = (first_start - 1) / 8;
    slot->src.size = total / 8;
    return true;
}

bool measure_leaf(const ObjDesc *node, OaObjectClass object_class, OaSlot *slot) {
    switch (object_class) {
        case OA_BIT_ELEMENT:
            return measure_bit_elements(node, slot);
        case OA_ELEMENT:
            return OalMeasureElement(node, slot);
        case OA_HISTOGRAM:
            return measure_histogram(node, slot);
        case OA_IMAGE:
            return measure_image(node, slot);
        default:
            return OalMeasureColumn(node, slot);
    }
}

// 0, or 1 after reporting that a node of this class cannot be a leaf where it stands.
int check_class(const ObjDesc *node, OaObjectClass object_class) {
    switch (object_class) {
        case OA_COLUMN:
        case OA_ELEMENT:
        case OA_HISTOGRAM:
        case OA_IMAGE:
            return 0;
        case OA_BIT_ELEMENT: {
            const OaObjectClass parent_class = OaGetObjectClass(node->parent);
            if (parent_class == OA_COLLECTION)
                return 0;
            if (parent_class == OA_ARRAY)
                OaReportFailure(520, "%s: can't handle a BIT_ELEMENT node directly under an ARRAY node.", builder);
            else
                OaReportFailure(530, "%s: can't handle a BIT_ELEMENT under a %s.", builder,
                                OaObjectClasstoStr(parent_class));
            return 1;
        }
        default:
            break;
    }
    if (object_class == OA_ARRAY || object_class == OA_COLLECTION || object_class == OA_CONTAINER ||
        OalIsTableLike(object_class))
        OaReportFailure(530, "%s: error: %s object has no sub-object.", builder, OaObjectClasstoStr(object_class));
    else
        OaReportFailure(530, "%s: Unknown object class.", builder);
    return 1;
}

int place_behind_left_sibling(const ObjDesc *node, OaSlot *slot) {
    const ObjDesc *left = left_described_sibling(node);
    const int64_t left_end = left ? OalDestinationEnd(*OalSlotOf(left)) : 0;
    // The columns of a column-major table must keep starting at multiples of its rows.
    if (node->parent && OalIsColumnMajor(node->parent))
        slot->dst.alignment_req = 1;
    const int alignment = slot->dst.alignment_req;
    if (left_end < 0 ||
        __builtin_add_overflow(left_end, (alignment - left_end % alignment) % alignment, &slot->dst.start_offset))
        return OalReportTooLarge();
    return 0;
}

// ITEM_OFFSET tells how far the items of a column lie apart. 0, or 1 after reporting.
int build_spaced_column(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    OaSlot *slot = OalSlotOf(node);
    int64_t start_byte = 0;
    int64_t items = 0;
    int64_t item_bytes = 0;
    int64_t item_offset = 0;
    if (!OalRequiredNumber("START_BYTE", node, 1, &start_byte) || !OalRequiredNumber("ITEMS", node, 1, &items) ||
        !OalRequiredNumber("ITEM_BYTES", node, 1, &item_bytes) ||
        OaKwdValuetoLong("ITEM_OFFSET", node, &item_offset) != 0)
        return 1;
    slot->src.start_offset = start_byte - 1;
    return OalAttachItemOffsetNodes(node, items, item_bytes, item_offset, src_format, dst_format);
}

}  // namespace

// Only in an image of 64 bits a sample a complex item is one real: labels made from FITS headers call 8-byte reals so,
// and no image has complex samples of single precision.
int OalSplitComplex(const ObjDesc *node, OaSlot *slot) {
    if (!OalIsComplexType(slot->src.data_type) || slot->src.size % 2 != 0)
        return 0;
    const ObjDesc *object = node->parent ? node->parent : node;
    if (slot->src.size == 8 && OaGetObjectClass(object) == OA_IMAGE) {
        slot->src.data_type = OalHalfOfComplex(slot->src.data_type);
        return 0;
    }
    slot->complex_type = slot->src.data_type;
    slot->src.size /= 2;
    return __builtin_mul_overflow(slot->total_repetitions, 2, &slot->total_repetitions) ? OalReportTooLarge() : 0;
}

int OalBuildLeaf(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    const OaObjectClass object_class = OaGetObjectClass(node);
    // The bytes of these belong to the COLUMN around them.
    if (object_class == OA_ALIAS || object_class == OA_BIT_COLUMN)
        return 0;
    if (check_class(node, object_class) != 0)
        return 1;
    const ObjDesc *right = RightSDTSibling(node);
    if (object_class == OA_BIT_ELEMENT && right && OaGetObjectClass(right) == OA_BIT_ELEMENT)
        return 0;
    OaSlot *slot = OalNewSDTNode(node);
    if (read_data_type(node, object_class, src_format) != 0)
        return 1;
    if (object_class == OA_COLUMN && OalHasKeyword("ITEMS", node) && OalHasKeyword("ITEM_OFFSET", node))
        return build_spaced_column(node, src_format, dst_format);
    if (!measure_leaf(node, object_class, slot))
        return 1;
    if (OalSplitComplex(node, slot) != 0 || OalDetermineConvertParameters(node, src_format, dst_format) != 0 ||
        place_behind_left_sibling(node, slot) != 0)
        return 1;
    return OalCheckForGapInSrcData(node);
}

namespace {

// A COLUMN below a spaced one, with its slot, marked as ours.
ObjDesc *new_part(const char *name, int64_t repetitions, int64_t src_size) {
    ObjDesc *part = OalNewColumn(name);
    OaSlot *slot = OalNewSDTNode(part);
    slot->inserted = true;
    slot->total_repetitions = repetitions;
    slot->src.size = src_size;
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    return part;
}

}  // namespace

// The column becomes { all items but the last, each with the space behind it } and { the last item }.
int OalAttachItemOffsetNodes(ObjDesc *column, int64_t items, int64_t item_bytes, int64_t item_offset,
                             OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    OaSlot *slot = OalSlotOf(column);
    if (items > 1 && item_offset < item_bytes) {
        OaSlotSide item;
        item.size = item_bytes;
        return OalReportOverlap(__func__, item_offset, item);
    }
    slot->total_repetitions = 1;
    slot->src.size = item_bytes;
    if (OalSplitComplex(column, slot) != 0 || OalDetermineConvertParameters(column, src_format, dst_format) != 0)
        return 1;
    if (items < 2)
        return place_behind_left_sibling(column, slot) != 0 ? 1 : OalCheckForGapInSrcData(column);

    const OaSlot item = *slot;
    const int64_t dst_item_bytes = item.total_repetitions * item.dst.size;
    int64_t last_src = 0;
    int64_t last_dst = 0;
    int64_t src_size = 0;
    if (__builtin_mul_overflow(items - 1, item_offset, &last_src) ||
        __builtin_mul_overflow(items - 1, dst_item_bytes, &last_dst) ||
        __builtin_add_overflow(last_src, item_bytes, &src_size))
        return OalReportTooLarge();
    ObjDesc *all_but_last = OdlPasteObjDesc(new_part("ITEMS", items - 1, item_offset), column);
    OalSlotOf(all_but_last)->dst.size = dst_item_bytes;
    OalSlotOf(all_but_last)->dst.alignment_req = item.dst.alignment_req;
    ObjDesc *one = OdlPasteObjDesc(new_part("ITEM", 1, 0), all_but_last);
    *OalSlotOf(one) = item;
    OalSlotOf(one)->inserted = true;
    OalSlotOf(one)->src.start_offset = 0;
    if (item_offset > item_bytes)
        OdlPasteObjDescAfter(OalNewSpare(item_bytes, item_offset - item_bytes, 0), one);
    ObjDesc *last = OdlPasteObjDescAfter(new_part("LAST_ITEM", 1, 0), all_but_last);
    *OalSlotOf(last) = *OalSlotOf(one);
    OalSlotOf(last)->src.start_offset = last_src;
    OalSlotOf(last)->dst.start_offset = last_dst;

    *slot = OaSlot();
    slot->total_repetitions = 1;
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    slot->src.start_offset = item.src.start_offset;
    slot->src.size = src_size;
    slot->dst.alignment_req = item.dst.alignment_req;
    return OalFinishInterior(column);
}
