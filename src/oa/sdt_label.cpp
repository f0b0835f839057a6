// Turning the tree back into a label, one that describes the converted data.
#include "oa/sdt_walk.h"

namespace {

const char *format_name(OaInterchangeFormat format) {
    return format == OA_ASCII ? "ASCII" : "BINARY";
}

void set_interchange_format(ObjDesc *node, OaInterchangeFormat format) {
    const char *present = nullptr;
    if (OaKwdValuetoStr("INTERCHANGE_FORMAT", node, &present) == 0 || !node->first_keyword)
        OaStrtoKwdValue("INTERCHANGE_FORMAT", node, format_name(format));
    else
        OdlPasteKwdBefore(OdlNewKwd("INTERCHANGE_FORMAT", format_name(format), nullptr, nullptr, nullptr, 0),
                          node->first_keyword);
}

// The two halves of each complex item become one again.
void rejoin_complex(OaSlot *slot) {
    if (slot->complex_type == OA_NO_DATA_TYPE)
        return;
    slot->total_repetitions /= 2;
    slot->dst.size *= 2;
    slot->dst.data_type = OalComplexOfHalves(slot->dst.data_type);
}

void describe_column(ObjDesc *node, const OaSlot &slot) {
    OaStrtoKwdValue("DATA_TYPE", node, OaKRVDataTypetoStr(slot.dst.data_type));
    OaLongtoKwdValue("START_BYTE", node, slot.dst.start_offset + 1);
    const char *item_bytes = nullptr;
    if (OaKwdValuetoStr("ITEM_BYTES", node, &item_bytes) == 0)
        OaLongtoKwdValue("ITEM_BYTES", node, slot.dst.size);
    OaLongtoKwdValue("BYTES", node, slot.total_repetitions * slot.dst.size);
}

void describe_histogram(ObjDesc *node, const OaSlot &slot, OaInterchangeFormat format) {
    OaLongtoKwdValue("ITEMS", node, slot.total_repetitions);
    OaStrtoKwdValue("DATA_TYPE", node, OaKRVDataTypetoStr(slot.dst.data_type));
    OaLongtoKwdValue("ITEM_BYTES", node, slot.dst.size);
    OaStrtoKwdValue("INTERCHANGE_FORMAT", node, format_name(format));
}

void describe_image(ObjDesc *node, const OaSlot &slot) {
    OaStrtoKwdValue("SAMPLE_TYPE", node, OaKRVDataTypetoStr(slot.dst.data_type));
    OaLongtoKwdValue("SAMPLE_BITS", node, 8 * slot.dst.size);
}

// An image that was planned line by line is again one of samples, described as its line's items are.
void adopt_image_line(ObjDesc *image) {
    for (const ObjDesc *child = LeftmostSDTChild(image); child; child = RightSDTSibling(child)) {
        const OaSlot *line = OalSlotOf(child);
        if (line && line->inserted && line->conversion_type != OA_SKIP) {
            *OalSlotOf(image) = *line;
            return;
        }
    }
}

void remove_inserted(ObjDesc *tree) {
    for (ObjDesc *node = tree; node;) {
        ObjDesc *next = next_in_pre_order(node, tree);
        // Inserted nodes are leaves, so `next` is never below them.
        if (node != tree && OalSlotOf(node) && OalSlotOf(node)->inserted)
            OalFreeSDT(OdlCutObjDesc(node));
        node = next;
    }
}

}  // namespace

void OalAdjustKwdstoMatchSDT(ObjDesc *node, OaInterchangeFormat, OaInterchangeFormat dst_format) {
    OaSlot *slot = OalSlotOf(node);
    if (!slot || slot->dst.size == 0)
        return;
    rejoin_complex(slot);
    switch (OaGetObjectClass(node)) {
        case OA_COLUMN:
            describe_column(node, *slot);
            break;
        case OA_HISTOGRAM:
            describe_histogram(node, *slot, dst_format);
            break;
        case OA_IMAGE:
            describe_image(node, *slot);
            break;
        default:
            break;
    }
    OalFreeSDTStruct(slot);
    node->appl1 = nullptr;
}

void OalSDTtoODLTree(ObjDesc *sdt, OaInterchangeFormat dst_interchange_format) {
    if (!sdt)
        return;
    set_interchange_format(sdt, dst_interchange_format);
    if (OaGetObjectClass(sdt) == OA_IMAGE && OalSlotOf(sdt))
        adopt_image_line(sdt);
    remove_inserted(sdt);
    OalPostOrderTraverse(sdt, OA_ADJUST_KEYWORDS, dst_interchange_format, dst_interchange_format);
    for (ObjDesc *node = sdt; node; node = next_in_pre_order(node, sdt)) {
        OalFreeSDTStruct(OalSlotOf(node));
        node->appl1 = nullptr;
    }
}
