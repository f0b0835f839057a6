// What changes in a label before its tree is built: bytes around records get their places, a column-major table becomes
// one row.
#include "oa/sdt_build.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr const char *builder = "OalBuildSDTNode";
constexpr const char *creator = "OalCreateSDT";

int64_t number_of(const char *keyword, const ObjDesc *node, int64_t otherwise) {
    int64_t value = 0;
    return OaKwdValuetoLong(keyword, node, &value) == 0 ? value : otherwise;
}

// Models the lines of an image that have a prefix or suffix: the image repeats its line, a COLUMN of samples; the bytes
// around that become SPAREs when the tree is built. The line, or null after reporting.
ObjDesc *add_image_line(ObjDesc *image, int64_t prefix, int64_t suffix) {
    int64_t sample_bits = 0;
    int64_t lines = 0;
    int64_t line_samples = 0;
    const char *sample_type = nullptr;
    if (OaKwdValuetoStr("SAMPLE_TYPE", image, &sample_type) != 0) {
        OalReportMissingType(image, OA_IMAGE);
        return nullptr;
    }
    if (!OalRequiredNumber("SAMPLE_BITS", image, 8, &sample_bits) || !OalRequiredNumber("LINES", image, 1, &lines) ||
        !OalRequiredNumber("LINE_SAMPLES", image, 1, &line_samples))
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
    ObjDesc *line = OalNewColumn("IMAGE_LINE");
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

// What the rows have before and after their columns becomes a SPARE on either side. 0, or 1 after reporting.
int add_row_spares(ObjDesc *table, int64_t prefix, int64_t suffix) {
    int64_t row_bytes = 0;
    int64_t suffix_start = 0;
    if (OaKwdValuetoLong("ROW_BYTES", table, &row_bytes) != 0 || row_bytes < 0) {
        OaReportFailure(531, "%s: ROW_BYTES keyword value not found for %s object.", creator,
                        OaObjectClasstoStr(OaGetObjectClass(table)));
        return 1;
    }
    if (!LeftmostSDTChild(table)) {
        OaReportFailure(530, "%s: TABLE-like object without any COLUMNs!", creator);
        return 1;
    }
    if (__builtin_add_overflow(row_bytes, prefix, &suffix_start))
        return OalReportTooLarge();
    for (ObjDesc *child = LeftmostSDTChild(table); prefix > 0 && child; child = RightSDTSibling(child)) {
        const OaObjectClass object_class = OaGetObjectClass(child);
        int64_t start_byte = 0;
        if ((object_class != OA_COLUMN && object_class != OA_CONTAINER) ||
            OaKwdValuetoLong("START_BYTE", child, &start_byte) != 0)
            continue;
        if (start_byte < 1)
            return OalReportMissing("START_BYTE", child);
        if (__builtin_add_overflow(start_byte, prefix, &start_byte))
            return OalReportTooLarge();
        OaLongtoKwdValue("START_BYTE", child, start_byte);
    }
    if (prefix > 0)
        OdlPasteObjDescBefore(OalNewSpare(0, prefix, 0), LeftmostSDTChild(table));
    if (suffix > 0)
        OdlPasteObjDesc(OalNewSpare(suffix_start, suffix, 0), table);
    return 0;
}

// Multiplies the keyword's value; 0, or 1 after reporting.
int multiply_keyword(const char *keyword, ObjDesc *node, int64_t value, int64_t factor) {
    if (__builtin_mul_overflow(value, factor, &value))
        return OalReportTooLarge();
    OaLongtoKwdValue(keyword, node, value);
    return 0;
}

int report_missing_for_column(const char *keyword) {
    OaReportFailure(531, "%s: %s keyword value not found for COLUMN object.", creator, keyword);
    return 1;
}

// Items of one row and of the next must lie equally far apart, or they cannot be counted through. The offset of a
// single item means nothing until other rows follow it. False after reporting.
bool check_pitch(ObjDesc *column, int64_t items, int64_t bytes) {
    int64_t pitch = bytes / items;
    if (OaKwdValuetoLong("ITEM_OFFSET", column, &pitch) == 0 && items == 1)
        OaLongtoKwdValue("ITEM_OFFSET", column, pitch = bytes);
    int64_t row_bytes = 0;
    if (!__builtin_mul_overflow(pitch, items, &row_bytes) && row_bytes == bytes)
        return true;
    OaReportFailure(520, "%s: ITEMS of a COLUMN do not fill its BYTES = %lld in a column-major TABLE.", creator,
                    static_cast<long long>(bytes));
    return false;
}

// The column's values of all rows become items of one. 0, or 1 after reporting.
int gather_rows(ObjDesc *column, int64_t rows) {
    int64_t start_byte = 0;
    int64_t bytes = 0;
    int64_t items = 1;
    if (OaKwdValuetoLong("START_BYTE", column, &start_byte) != 0 || start_byte < 1)
        return report_missing_for_column("START_BYTE");
    if (OaKwdValuetoLong("BYTES", column, &bytes) != 0 || bytes < 0)
        return report_missing_for_column("BYTES");
    if (!OalHasKeyword("ITEMS", column))
        OaLongtoKwdValue("ITEM_BYTES", column, bytes);
    else if (OaKwdValuetoLong("ITEMS", column, &items) != 0 || items < 1)
        return report_missing_for_column("ITEMS");
    if (!check_pitch(column, items, bytes))
        return 1;
    if (__builtin_mul_overflow(start_byte - 1, rows, &start_byte) || __builtin_add_overflow(start_byte, 1, &start_byte))
        return OalReportTooLarge();
    OaLongtoKwdValue("START_BYTE", column, start_byte);
    return multiply_keyword("ITEMS", column, items, rows) != 0 || multiply_keyword("BYTES", column, bytes, rows) != 0
               ? 1
               : 0;
}

}  // namespace

int OalPreparePrefixAndSuffix(ObjDesc *object, ObjDesc **image_line) {
    const int64_t prefix = std::max<int64_t>(number_of("*PREFIX_BYTES", object, 0), 0);
    const int64_t suffix = std::max<int64_t>(number_of("*SUFFIX_BYTES", object, 0), 0);
    if (prefix == 0 && suffix == 0)
        return 0;
    const OaObjectClass object_class = OaGetObjectClass(object);
    if (object_class == OA_IMAGE) {
        *image_line = add_image_line(object, prefix, suffix);
        return *image_line ? 0 : 1;
    }
    if (OalIsTableLike(object_class))
        return add_row_spares(object, prefix, suffix);
    OaReportFailure(530, "%s: prefix and/or suffix bytes are not allowed for %s object.", creator,
                    OaObjectClasstoStr(object_class));
    return 1;
}

bool OalIsColumnMajor(const ObjDesc *object) {
    const char *storage = nullptr;
    if (OaGetObjectClass(object) != OA_TABLE || OaKwdValuetoStr("TABLE_STORAGE_TYPE", object, &storage) != 0)
        return false;
    std::string_view text(storage);
    while (!text.empty() && (text.front() == '"' || text.front() == '\'' || text.front() == ' '))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == '"' || text.back() == '\'' || text.back() == ' '))
        text.remove_suffix(1);
    return text == "COLUMN_MAJOR";
}

int OalPrepareColumnMajor(ObjDesc *object) {
    if (!OalIsColumnMajor(object))
        return 0;
    int64_t rows = 0;
    int64_t row_bytes = 0;
    if (OaKwdValuetoLong("ROWS", object, &rows) != 0 || rows < 1) {
        OaReportFailure(531, "%s: couldn't find ROWS keyword", creator);
        return 1;
    }
    if (OaKwdValuetoLong("ROW_BYTES", object, &row_bytes) != 0 || row_bytes < 0) {
        OaReportFailure(531, "%s: ROW_BYTES keyword value not found for %s object.", creator, "TABLE");
        return 1;
    }
    for (ObjDesc *child = LeftmostSDTChild(object); child; child = RightSDTSibling(child)) {
        if (OaGetObjectClass(child) != OA_COLUMN) {
            OaReportFailure(530, "%s: object class: %s not allowed in a column-major TABLE", creator,
                            OaObjectClasstoStr(OaGetObjectClass(child)));
            return 1;
        }
        if (gather_rows(child, rows) != 0)
            return 1;
    }
    OaLongtoKwdValue("OLD_ROWS", object, rows);
    OaLongtoKwdValue("ROWS", object, 1);
    return multiply_keyword("ROW_BYTES", object, row_bytes, rows);
}
