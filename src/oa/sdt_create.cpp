// Building the tree: one slot for every label node that carries data, post-order, with SPAREs where the label leaves
// bytes undescribed.
#include "oa/sdt_walk.h"

#include <algorithm>
#include <string>

namespace {

constexpr const char *builder = "OalBuildSDTNode";

ObjDesc *new_column(const char *name) {
    ObjDesc *column = OdlNewObjDesc("COLUMN", nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
    OaStrtoKwdValue("NAME", column, name);
    return column;
}

// A COLUMN for bytes that nobody asked for, marked as ours.
ObjDesc *new_spare(int64_t src_start, int64_t src_size, int64_t dst_size) {
    ObjDesc *spare = new_column("SPARE");
    OaSlot *slot = OalNewSDTNode(spare);
    slot->inserted = true;
    slot->total_repetitions = 1;
    slot->src.start_offset = src_start;
    slot->src.size = src_size;
    slot->dst.size = dst_size;
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    return spare;
}

// Where the slot's data end within the parent, or -1 when that is no position.
int64_t end_of(const OaSlotSide &side, int64_t repetitions) {
    int64_t end = 0;
    if (__builtin_mul_overflow(side.size, repetitions, &end) || __builtin_add_overflow(end, side.start_offset, &end))
        return -1;
    return end;
}
int64_t source_end(const OaSlot &slot) {
    return end_of(slot.src, slot.total_repetitions);
}
int64_t destination_end(const OaSlot &slot) {
    return end_of(slot.dst, slot.total_repetitions);
}

int report_overlap(const char *routine, int64_t start, const OaSlotSide &previous) {
    OaReportFailure(534,
                    "%s: error: overlapping source data. src.start_offset = %lld, previous src.start_offset = %lld "
                    "previous src.size = %lld",
                    routine, static_cast<long long>(start), static_cast<long long>(previous.start_offset),
                    static_cast<long long>(previous.size));
    return 1;
}

int64_t number_of(const char *keyword, const ObjDesc *node, int64_t otherwise) {
    int64_t value = 0;
    return OaKwdValuetoLong(keyword, node, &value) == 0 ? value : otherwise;
}

bool has_keyword(const char *keyword, const ObjDesc *node) {
    const char *text = nullptr;
    return OaKwdValuetoStr(keyword, node, &text) == 0;
}

// The value of a keyword that must be there and at least `minimum`; reports otherwise.
bool required_number(const char *keyword, const ObjDesc *node, int64_t minimum, int64_t *out) {
    if (OaKwdValuetoLong(keyword, node, out) == 0 && *out >= minimum)
        return true;
    OaReportFailure(531, "%s: %s keyword value not found for %s object.", builder, keyword,
                    OaObjectClasstoStr(OaGetObjectClass(node)));
    return false;
}

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

int report_missing_type(const ObjDesc *node, OaObjectClass object_class) {
    const char *name = nullptr;
    if (object_class == OA_IMAGE)
        OaReportFailure(531, "%s: SAMPLE_TYPE keyword value not found for IMAGE object.", builder);
    else if (OaKwdValuetoStr("NAME", node, &name) == 0)
        OaReportFailure(531, "%s: DATA_TYPE keyword not found for %s object\nwith NAME = %s.", builder,
                        OaObjectClasstoStr(object_class), name);
    else
        OaReportFailure(531, "%s: DATA_TYPE keyword not found for %s object", builder,
                        OaObjectClasstoStr(object_class));
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
    const char *text = nullptr;
    if (OaKwdValuetoStr(object_class == OA_IMAGE ? "SAMPLE_TYPE" : "DATA_TYPE", node, &text) != 0)
        return report_missing_type(node, object_class);
    std::string name(text);
    OaSlot *slot = OalSlotOf(node);
    slot->src.data_type = OaStrtoKRVDataType(name.data(), src_format);
    if (slot->src.data_type == OA_NO_DATA_TYPE && !is_spare(node))
        return report_unknown_type(node, text);
    return 0;
}

int measure_column(const ObjDesc *node, OaSlot *slot) {
    int64_t start_byte = 0;
    int64_t bytes = 0;
    int64_t items = 1;
    if (has_keyword("ITEM_OFFSET", node)) {
        OaReportFailure(520, "%s: ITEM_OFFSET is not supported for COLUMN object.", builder);
        return 1;
    }
    if (!required_number("START_BYTE", node, 1, &start_byte) || !required_number("BYTES", node, 0, &bytes) ||
        (has_keyword("ITEMS", node) && !required_number("ITEMS", node, 1, &items)))
        return 1;
    slot->total_repetitions = items;
    slot->src.start_offset = start_byte - 1;
    slot->src.size = bytes / items;
    return 0;
}

int measure_image(const ObjDesc *node, OaSlot *slot) {
    int64_t sample_bits = 0;
    int64_t lines = 0;
    int64_t line_samples = 0;
    if (!required_number("SAMPLE_BITS", node, 8, &sample_bits) || !required_number("LINES", node, 1, &lines) ||
        !required_number("LINE_SAMPLES", node, 1, &line_samples))
        return 1;
    slot->src.size = sample_bits / 8;
    if (__builtin_mul_overflow(lines, line_samples, &slot->total_repetitions)) {
        OaReportFailure(502, "%s: LINES = %lld and LINE_SAMPLES = %lld are too large.", builder,
                        static_cast<long long>(lines), static_cast<long long>(line_samples));
        return 1;
    }
    return 0;
}

int measure_histogram(const ObjDesc *node, OaSlot *slot) {
    return required_number("ITEM_BYTES", node, 1, &slot->src.size) &&
                   required_number("ITEMS", node, 1, &slot->total_repetitions)
               ? 0
               : 1;
}

int measure_leaf(const ObjDesc *node, OaObjectClass object_class, OaSlot *slot) {
    switch (object_class) {
        case OA_HISTOGRAM:
            return measure_histogram(node, slot);
        case OA_IMAGE:
            return measure_image(node, slot);
        default:
            return measure_column(node, slot);
    }
}

// A complex item is two reals. Only in an image of 64 bits a sample it is one: labels made from FITS headers call
// 8-byte reals so, and no image has complex samples of single precision.
int split_complex(const ObjDesc *node, OaSlot *slot) {
    if (!OalIsComplexType(slot->src.data_type) || slot->src.size % 2 != 0)
        return 0;
    const ObjDesc *object = node->parent ? node->parent : node;
    if (slot->src.size == 8 && OaGetObjectClass(object) == OA_IMAGE) {
        slot->src.data_type = OalHalfOfComplex(slot->src.data_type);
        return 0;
    }
    slot->complex_type = slot->src.data_type;
    slot->src.size /= 2;
    if (__builtin_mul_overflow(slot->total_repetitions, 2, &slot->total_repetitions)) {
        OaReportFailure(502, "%s: too many complex items.", builder);
        return 1;
    }
    return 0;
}

int place_behind_left_sibling(const ObjDesc *node, OaSlot *slot) {
    const ObjDesc *left = left_described_sibling(node);
    const int64_t left_end = left ? destination_end(*OalSlotOf(left)) : 0;
    const int alignment = slot->dst.alignment_req;
    if (left_end < 0 ||
        __builtin_add_overflow(left_end, (alignment - left_end % alignment) % alignment, &slot->dst.start_offset)) {
        OaReportFailure(502, "%s: the converted data are too large.", builder);
        return 1;
    }
    return 0;
}

int build_leaf(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    const OaObjectClass object_class = OaGetObjectClass(node);
    // The bytes of these belong to the COLUMN around them.
    if (object_class == OA_ALIAS || object_class == OA_BIT_COLUMN)
        return 0;
    if (object_class != OA_COLUMN && object_class != OA_HISTOGRAM && object_class != OA_IMAGE) {
        OaReportFailure(530, "%s: Unknown object class.", builder);
        return 1;
    }
    OaSlot *slot = OalNewSDTNode(node);
    if (read_data_type(node, object_class, src_format) != 0)
        return 1;
    if (measure_leaf(node, object_class, slot) != 0)
        return 1;
    if (split_complex(node, slot) != 0 || OalDetermineConvertParameters(node, src_format, dst_format) != 0)
        return 1;
    if (place_behind_left_sibling(node, slot) != 0)
        return 1;
    return OalCheckForGapInSrcData(node);
}

// Bytes that the node has behind its last child become a SPARE; a child that reaches beyond its parent is refused.
int close_source_end(ObjDesc *node) {
    ObjDesc *last = RightmostSDTChild(node);
    while (last && !OalSlotOf(last))
        last = LeftSDTSibling(last);
    const OaSlot &slot = *OalSlotOf(node);
    const int64_t end = last ? source_end(*OalSlotOf(last)) : 0;
    if (end < 0 || end > slot.src.size)
        return report_overlap(builder, slot.src.size, OalSlotOf(last)->src);
    if (end == slot.src.size)
        return 0;
    OdlPasteObjDesc(new_spare(end, slot.src.size - end, 0), node);
    OaReportFailure(900,
                    "%s: implicit SPARE detected after RightmostChild of repetitions node; inserted a SPARE COLUMN "
                    "node after %s node, with src.size: %lld and src.start_offset = %lld.",
                    builder, last ? OaObjectClasstoStr(OaGetObjectClass(last)) : "no",
                    static_cast<long long>(slot.src.size - end), static_cast<long long>(end));
    return 0;
}

// What is left to settle for a node with children once its own repetitions and source size are known.
int finish_interior(ObjDesc *node) {
    OaSlot *slot = OalSlotOf(node);
    OalDetermineRepNodeAlignment(node);
    if (OalCheckForGapInSrcData(node) != 0 || close_source_end(node) != 0)
        return 1;
    const ObjDesc *last = RightmostSDTChild(node);
    while (last && (!OalSlotOf(last) || OalSlotOf(last)->dst.size < 1))
        last = LeftSDTSibling(last);
    slot->dst.size = last ? destination_end(*OalSlotOf(last)) : 0;
    const ObjDesc *left = left_described_sibling(node);
    slot->dst.start_offset = left ? destination_end(*OalSlotOf(left)) : 0;
    if (slot->dst.size < 0 || slot->dst.start_offset < 0) {
        OaReportFailure(502, "%s: the converted data are too large.", builder);
        return 1;
    }
    return 0;
}

int build_interior(const ObjDesc *node) {
    const OaObjectClass object_class = OaGetObjectClass(node);
    switch (object_class) {
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

// Models the lines of an image that have a prefix or suffix: the image repeats its line, a COLUMN of samples; the bytes
// around that become SPAREs when the tree is built. The line, or null after reporting.
ObjDesc *add_image_line(ObjDesc *image, int64_t prefix, int64_t suffix) {
    int64_t sample_bits = 0;
    int64_t lines = 0;
    int64_t line_samples = 0;
    const char *sample_type = nullptr;
    if (OaKwdValuetoStr("SAMPLE_TYPE", image, &sample_type) != 0) {
        report_missing_type(image, OA_IMAGE);
        return nullptr;
    }
    if (!required_number("SAMPLE_BITS", image, 8, &sample_bits) || !required_number("LINES", image, 1, &lines) ||
        !required_number("LINE_SAMPLES", image, 1, &line_samples))
        return nullptr;
    int64_t line_bytes = 0;
    int64_t record_bytes = 0;
    if (__builtin_mul_overflow(sample_bits / 8, line_samples, &line_bytes) ||
        __builtin_add_overflow(line_bytes, prefix, &record_bytes) ||
        __builtin_add_overflow(record_bytes, suffix, &record_bytes)) {
        OaReportFailure(502, "%s: LINE_SAMPLES = %lld with the bytes around a line are too large.", builder,
                        static_cast<long long>(line_samples));
        return nullptr;
    }
    ObjDesc *line = new_column("IMAGE_LINE");
    OaLongtoKwdValue("START_BYTE", line, prefix + 1);
    OaStrtoKwdValue("DATA_TYPE", line, sample_type);
    OaLongtoKwdValue("BYTES", line, line_bytes);
    OaLongtoKwdValue("ITEMS", line, line_samples);
    OaLongtoKwdValue("ITEM_BYTES", line, sample_bits / 8);
    OdlPasteObjDesc(line, image);

    OaSlot *slot = OalNewSDTNode(image);
    slot->total_repetitions = lines;
    slot->src.data_type = slot->dst.data_type = OA_STRUCTURE;
    slot->src.size = record_bytes;
    return line;
}

// Makes room for the bytes that the label puts before or after each record of the object. 0, or 1 after reporting.
int prepare_prefix_and_suffix(ObjDesc *object, ObjDesc **image_line) {
    const int64_t prefix = number_of("*PREFIX_BYTES", object, 0);
    const int64_t suffix = number_of("*SUFFIX_BYTES", object, 0);
    if (prefix <= 0 && suffix <= 0)
        return 0;
    const OaObjectClass object_class = OaGetObjectClass(object);
    if (object_class == OA_IMAGE) {
        *image_line = add_image_line(object, std::max<int64_t>(prefix, 0), std::max<int64_t>(suffix, 0));
        return *image_line ? 0 : 1;
    }
    OaReportFailure(530, "%s: prefix and/or suffix bytes are not allowed for %s object.", "OalCreateSDT",
                    OaObjectClasstoStr(object_class));
    return 1;
}

}  // namespace

ObjDesc *OalCreateSDT(ObjDesc *object, OaInterchangeFormat src_interchange_format) {
    constexpr uint8_t largest_alignment_type = 2;
    if (!object) {
        OaReportFailure(501, "%s: object is NULL.", __func__);
        return nullptr;
    }
    if (Oa_profile.dst_alignment_type > largest_alignment_type) {
        OaReportFailure(535, "%s: invalid Oa_profile.dst_alignment_type: %d.", __func__, Oa_profile.dst_alignment_type);
        return nullptr;
    }
    if (object->parent) {
        OdlCutObjDesc(object);
        OaReportFailure(530,
                        "%s: Warning: input node shouldn't have a parent.\n Input node has now been cut off from "
                        "parent node.",
                        __func__);
    }
    ObjDesc *image_line = nullptr;
    if (prepare_prefix_and_suffix(object, &image_line) != 0)
        return nullptr;

    const uint8_t format =
        src_interchange_format == OA_ASCII ? Oa_profile.dst_format_for_ascii : Oa_profile.dst_format_for_binary;
    if (OalPostOrderTraverse(object, OA_BUILD_SLOTS, src_interchange_format, static_cast<OaInterchangeFormat>(format)))
        return nullptr;
    if (image_line) {
        if (finish_interior(object) != 0)
            return nullptr;
        OalSlotOf(image_line)->inserted = true;
    }
    if (OalSlotOf(object) && (OalSourceSize(object) < 0 || OalDestinationSize(object) < 0)) {
        OaReportFailure(502, "%s: the described data are too large.", __func__);
        return nullptr;
    }
    return object;
}

int OalPostOrderTraverse(ObjDesc *node, int mode, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    ObjDesc *current = leftmost_leaf(node);
    for (;;) {
        // Found first, because building inserts siblings and adjusting may end the node's slot.
        ObjDesc *next = current == node ? nullptr : next_in_post_order(current);
        if (mode == OA_BUILD_SLOTS) {
            if (const int failed = OalBuildSDTNode(current, src_format, dst_format))
                return failed;
        } else {
            OalAdjustKwdstoMatchSDT(current, src_format, dst_format);
        }
        if (!next)
            return 0;
        current = next;
    }
}

int OalBuildSDTNode(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    if (src_format != OA_ASCII && src_format != OA_BINARY) {
        OaReportFailure(531, "%s: invalid src_interchange_format: %d", __func__, src_format);
        return 1;
    }
    if (dst_format != OA_ASCII && dst_format != OA_BINARY) {
        OaReportFailure(531, "%s: invalid dst_interchange_format: %d", __func__, dst_format);
        return 1;
    }
    if (OalSlotOf(node))
        return 0;
    return has_slots_below(node) ? build_interior(node) : build_leaf(node, src_format, dst_format);
}

void OalDetermineRepNodeAlignment(ObjDesc *node) {
    OaSlot *slot = OalSlotOf(node);
    for (const ObjDesc *child = LeftmostSDTChild(node); child; child = RightSDTSibling(child))
        if (const OaSlot *below = OalSlotOf(child))
            slot->dst.alignment_req = std::max(slot->dst.alignment_req, below->dst.alignment_req);
    const ObjDesc *left = left_described_sibling(node);
    if (!left)
        return;
    // One repetition of the sibling only, and the node itself stays where it is: readers rely on that layout.
    const OaSlotSide &before = OalSlotOf(left)->dst;
    const int64_t beyond = (before.start_offset + before.size) % slot->dst.alignment_req;
    if (beyond == 0)
        return;
    const int64_t padding = slot->dst.alignment_req - beyond;
    OdlPasteObjDescBefore(new_spare(0, 0, padding), node);
    OaReportFailure(950,
                    "%s: SPARE needed for alignment; inserted a SPARE COLUMN node before %s node, with dst.size: %lld "
                    "and dst.start_offset: %lld.",
                    __func__, OaObjectClasstoStr(OaGetObjectClass(node)), static_cast<long long>(padding), 0LL);
}

int OalCheckForGapInSrcData(ObjDesc *node) {
    const OaSlotSide &src = OalSlotOf(node)->src;
    const ObjDesc *left = left_described_sibling(node);
    const int64_t left_end = left ? source_end(*OalSlotOf(left)) : 0;
    if (left_end < 0 || src.start_offset < left_end) {
        static const OaSlotSide none;
        return report_overlap(__func__, src.start_offset, left ? OalSlotOf(left)->src : none);
    }
    if (src.start_offset > left_end && node->parent)
        OdlPasteObjDescBefore(new_spare(left_end, src.start_offset - left_end, 0), node);
    return 0;
}
