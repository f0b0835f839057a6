// Turning the tree back into a label, one that describes the converted data.
#include "oa/sdt_build.h"

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

void set_start_byte(ObjDesc *node, const OaSlot &slot) {
    OaLongtoKwdValue("START_BYTE", node, slot.dst.start_offset + 1);
}

void describe_column(ObjDesc *node, const OaSlot &slot) {
    if (slot.dst.data_type != OA_STRUCTURE)
        OaStrtoKwdValue("DATA_TYPE", node, OaKRVDataTypetoStr(slot.dst.data_type));
    set_start_byte(node, slot);
    for (const char *keyword : {"ITEM_BYTES", "ITEM_OFFSET"})  // converted items lie one behind the other
        if (OalHasKeyword(keyword, node))
            OaLongtoKwdValue(keyword, node, slot.dst.size);
    OaLongtoKwdValue("BYTES", node, slot.total_repetitions * slot.dst.size);
}

void describe_container(ObjDesc *node, const OaSlot &slot) {
    set_start_byte(node, slot);
    OaLongtoKwdValue("BYTES", node, slot.dst.size);
    OaLongtoKwdValue("REPETITIONS", node, slot.total_repetitions);
}

void describe_table(ObjDesc *node, const OaSlot &slot, OaInterchangeFormat format) {
    OaStrtoKwdValue("INTERCHANGE_FORMAT", node, format_name(format));
    OaLongtoKwdValue("ROWS", node, slot.total_repetitions);
    OaLongtoKwdValue("ROW_BYTES", node, slot.dst.size);
    int64_t columns = 0;
    for (const ObjDesc *child = LeftmostSDTChild(node); child; child = RightSDTSibling(child))
        ++columns;
    OaLongtoKwdValue("COLUMNS", node, columns);
    // What lay around the rows was left behind.
    OaDeleteKwd("*PREFIX_BYTES", node);
    OaDeleteKwd("*SUFFIX_BYTES", node);
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

// A column whose items were planned one by one is again one of items, described as one of those is.
void adopt_item(ObjDesc *column) {
    const ObjDesc *items = LeftmostSDTChild(column);
    while (items && !(OalSlotOf(items) && OalSlotOf(items)->inserted && items->first_child))
        items = RightSDTSibling(items);
    if (!items)
        return;
    OaSlot *slot = OalSlotOf(column);
    const OaSlot *item = OalSlotOf(items->first_child);
    slot->total_repetitions = (OalSlotOf(items)->total_repetitions + 1) * item->total_repetitions;
    slot->complex_type = item->complex_type;
    slot->dst.size = item->dst.size;
    slot->dst.data_type = item->dst.data_type;
}

void remove_inserted(ObjDesc *tree) {
    for (ObjDesc *node = tree; node;) {
        const OaSlot *slot = OalSlotOf(node);
        if (node != tree && slot && slot->inserted) {
            ObjDesc *next = next_past(node, tree);
            OalFreeSDT(OdlCutObjDesc(node));
            node = next;
            continue;
        }
        if (slot && OaGetObjectClass(node) == OA_COLUMN)
            adopt_item(node);
        node = next_in_pre_order(node, tree);
    }
}

void divide_keyword(const char *keyword, ObjDesc *node, int64_t divisor) {
    int64_t value = 0;
    if (OaKwdValuetoLong(keyword, node, &value) == 0)
        OaLongtoKwdValue(keyword, node, value / divisor);
}

// Undoes what made a column-major table one row.
void restore_column_major(ObjDesc *table) {
    int64_t rows = 0;
    if (!OalIsColumnMajor(table) || OaKwdValuetoLong("OLD_ROWS", table, &rows) != 0 || rows < 1)
        return;
    OaLongtoKwdValue("ROWS", table, rows);
    OaDeleteKwd("OLD_ROWS", table);
    divide_keyword("ROW_BYTES", table, rows);
    for (ObjDesc *column = LeftmostSDTChild(table); column; column = RightSDTSibling(column)) {
        int64_t start_byte = 0;
        if (OaKwdValuetoLong("START_BYTE", column, &start_byte) == 0)
            OaLongtoKwdValue("START_BYTE", column, (start_byte - 1) / rows + 1);
        divide_keyword("BYTES", column, rows);
        divide_keyword("ITEMS", column, rows);
    }
}

}  // namespace

void OalAdjustKwdstoMatchSDT(ObjDesc *node, OaInterchangeFormat, OaInterchangeFormat dst_format) {
    OaSlot *slot = OalSlotOf(node);
    if (!slot || slot->dst.size == 0)
        return;
    rejoin_complex(slot);
    const OaObjectClass object_class = OaGetObjectClass(node);
    switch (object_class) {
        case OA_ARRAY:
            set_start_byte(node, *slot);
            OaStrtoKwdValue("INTERCHANGE_FORMAT", node, format_name(dst_format));
            break;
        case OA_COLLECTION:
            OaLongtoKwdValue("BYTES", node, slot->dst.size);
            set_start_byte(node, *slot);
            OaStrtoKwdValue("INTERCHANGE_FORMAT", node, format_name(dst_format));
            break;
        case OA_COLUMN:
        case OA_ELEMENT:
            describe_column(node, *slot);
            break;
        case OA_CONTAINER:
            describe_container(node, *slot);
            break;
        case OA_HISTOGRAM:
            describe_histogram(node, *slot, dst_format);
            break;
        case OA_IMAGE:
            describe_image(node, *slot);
            break;
        default:
            if (OalIsTableLike(object_class))
                describe_table(node, *slot, dst_format);
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
    restore_column_major(sdt);
}
