// Tables: whole, or a page of rows and columns that is read where it lies.
//
// What is planned is a table of the wanted rows and columns only, whose row begins with the first and ends with the
// last of these columns; so whatever the size of the file, only the bytes between are read.
#include "oa/object_read.h"
#include "oa/sdt_build.h"
#include "oa/table_columns.h"

#include <algorithm>
#include <vector>

namespace {

struct Table {
    const ObjDesc *node = nullptr;
    int64_t rows = 0;
    int64_t row_bytes = 0;
    int64_t prefix = 0;
    int64_t stride = 0;  // from row to row
    bool column_major = false;
    std::vector<ObjDesc *> columns;
};

// Rows from 1, both inclusive; columns from 0, the last exclusive.
struct Part {
    int64_t first_row = 1;
    int64_t last_row = 0;
    size_t columns_begin = 0;
    size_t columns_end = 0;

    int64_t rows() const { return last_row - first_row + 1; }
};

// --- What the label says ------------------------------------------------------------------------------------------

bool measure_table(const char *routine, const ObjDesc *node, Table *table) {
    if (OaCheckODLTree(node) != 0 || !is_table_like(node)) {
        OaReportFailure(501, "%s: input ODL tree node must be a table.", routine);
        return false;
    }
    int64_t suffix = 0;
    table->node = node;
    if (OaGetTableKeywords(node, &table->rows, &table->row_bytes, &table->prefix, &suffix) != 0)
        return false;
    table->column_major = OalIsColumnMajor(node);
    table->columns = columns_of(node);
    if (table->columns.empty()) {
        OaReportFailure(530, "%s: TABLE-like object without any COLUMNs!", routine);
        return false;
    }
    int64_t bytes = 0;
    if (table->row_bytes < 1 || __builtin_add_overflow(table->prefix, table->row_bytes, &table->stride) ||
        __builtin_add_overflow(table->stride, suffix, &table->stride) ||
        __builtin_mul_overflow(table->stride, table->rows, &bytes)) {
        OaReportFailure(502, "%s: ROWS = %lld, ROW_BYTES = %lld with %lld bytes before and %lld behind are no size.",
                        routine, static_cast<long long>(table->rows), static_cast<long long>(table->row_bytes),
                        static_cast<long long>(table->prefix), static_cast<long long>(suffix));
        return false;
    }
    if (table->column_major && table->stride != table->row_bytes) {
        OaReportFailure(520, "%s: prefix and/or suffix bytes are not supported for a column-major TABLE.", routine);
        return false;
    }
    return true;
}

// --- The label of a part ------------------------------------------------------------------------------------------

void set_class_name(ObjDesc *node, const char *name) {
    OaFree(node->class_name);
    node->class_name = OaCopyText(name);
}

// The table's own keywords, describing `rows` rows of `row_bytes` bytes without anything around them, and copies of the
// part's columns.
OdlTree label_of_part(const Table &table, const Part &part, int64_t rows, int64_t row_bytes) {
    OdlTree label(OdlCopyObjDesc(table.node));
    for (const Kwd *keyword = table.node->first_keyword; keyword; keyword = keyword->right_sibling)
        OdlPasteKwd(OdlCopyKwd(keyword), label.get());
    if (OaGetObjectClass(label.get()) == OA_UNKNOWN_CLASS)  // an INDEX: planned as the table that it is
        set_class_name(label.get(), "TABLE");
    for (const char *pattern : {"RECORDS", "*PREFIX_BYTES", "*SUFFIX_BYTES"})
        while (OaDeleteKwd(pattern, label.get()) == 0) {
        }
    OaLongtoKwdValue("ROWS", label.get(), rows);
    OaLongtoKwdValue("ROW_BYTES", label.get(), row_bytes);
    for (size_t i = part.columns_begin; i < part.columns_end; ++i)
        OdlPasteObjDesc(copy_data_label(table.columns[i]).release(), label.get());
    return label;
}

// What is read, and the label that describes it as if it were all.
struct Selection {
    OdlTree label;
    std::vector<ByteRuns> runs;
};

Selection select_rows(const Table &table, const Part &part) {
    const ObjDesc *last = table.columns[part.columns_end - 1];
    int64_t begin = number_or("START_BYTE", table.columns[part.columns_begin], 1) - 1;
    // Columns outside the row are for the plan to refuse.
    if (begin < 0 || begin >= table.row_bytes)
        begin = 0;
    const int64_t extent = column_extent(last);
    int64_t end = 0;
    if (extent < 0 || __builtin_add_overflow(number_or("START_BYTE", last, 1) - 1, extent, &end) || end <= begin ||
        end > table.row_bytes)
        end = table.row_bytes;

    Selection selection;
    selection.label = label_of_part(table, part, part.rows(), end - begin);
    for (ObjDesc *column = selection.label->first_child; begin > 0 && column; column = column->right_sibling) {
        const int64_t start_byte = number_or("START_BYTE", column, 1);
        if (start_byte > 0)
            OaLongtoKwdValue("START_BYTE", column, std::max<int64_t>(1, start_byte - begin));
    }
    selection.runs = {
        {(part.first_row - 1) * table.stride + table.prefix + begin, end - begin, table.stride, part.rows()}};
    return selection;
}

bool required_bytes(const char *routine, const char *keyword, const ObjDesc *column, int64_t *out) {
    if (OaKwdValuetoLong(keyword, column, out) == 0 && *out >= 1)
        return true;
    OaReportFailure(531, "%s: %s keyword value not found for COLUMN object.", routine, keyword);
    return false;
}

// Each column is one run; without the columns left out they lie closely. False after reporting.
bool select_column_runs(const char *routine, const Table &table, const Part &part, Selection *selection) {
    selection->label = label_of_part(table, part, part.rows(), table.row_bytes);
    int64_t row_bytes = 0;
    for (ObjDesc *column = selection->label->first_child; column; column = column->right_sibling) {
        if (OaGetObjectClass(column) != OA_COLUMN) {
            OaReportFailure(530, "%s: object class: %s not allowed in a column-major TABLE", routine,
                            OaObjectClasstoStr(OaGetObjectClass(column)));
            return false;
        }
        int64_t start_byte = 0;
        int64_t bytes = 0;
        if (!required_bytes(routine, "START_BYTE", column, &start_byte) ||
            !required_bytes(routine, "BYTES", column, &bytes))
            return false;
        if (bytes > table.row_bytes || start_byte - 1 > table.row_bytes - bytes) {
            OaReportFailure(534,
                            "%s: error: COLUMN with START_BYTE = %lld and BYTES = %lld ends behind ROW_BYTES = %lld",
                            routine, static_cast<long long>(start_byte), static_cast<long long>(bytes),
                            static_cast<long long>(table.row_bytes));
            return false;
        }
        const int64_t wanted = bytes * part.rows();  // as all sizes here no more than the whole table's
        selection->runs.push_back({(start_byte - 1) * table.rows + (part.first_row - 1) * bytes, wanted, wanted, 1});
        OaLongtoKwdValue("START_BYTE", column, row_bytes + 1);
        if (__builtin_add_overflow(row_bytes, bytes, &row_bytes)) {
            OaReportFailure(502, "%s: the columns are no size.", routine);
            return false;
        }
    }
    OaLongtoKwdValue("ROW_BYTES", selection->label.get(), row_bytes);
    return true;
}

// --- Reading ------------------------------------------------------------------------------------------------------

// While a column-major table is read: START_BYTEs of its rows can be told only where columns lie closely.
class PackedProfile {
  public:
    explicit PackedProfile(bool packs) : saved_(Oa_profile) {
        if (packs)
            Oa_profile.dst_alignment_type = 0;
    }
    ~PackedProfile() { Oa_profile = saved_; }
    PackedProfile(const PackedProfile &) = delete;
    PackedProfile &operator=(const PackedProfile &) = delete;

  private:
    OaProfile saved_;
};

// A table of no rows is described as one of a row would be, and no byte of its file is read.
OaObject *empty_table(const Table &table, Part part, const OaFileKeywords &file) {
    part.last_row = part.first_row;
    OaSdt sdt(select_rows(table, part).label.release());
    if (!OalCreateSDT(sdt.get(), file.interchange_format))
        return nullptr;
    OalSDTtoODLTree(sdt.get(), static_cast<OaInterchangeFormat>(file.interchange_format == OA_ASCII
                                                                    ? Oa_profile.dst_format_for_ascii
                                                                    : Oa_profile.dst_format_for_binary));
    OaLongtoKwdValue("ROWS", sdt.get(), 0);
    set_class_name(sdt.get(), table.node->class_name);
    return OaNewOaObject(sdt.release(), OaMalloc(0), 0);
}

OaObject *read_part(const char *routine, const Table &table, const Part &part) {
    OaFileKeywords file;
    if (OaGetFileKeywords(table.node, &file) != 0)
        return nullptr;
    const PackedProfile packed(table.column_major);
    if (part.rows() < 1)
        return empty_table(table, part, file);
    int64_t end = 0;
    if (__builtin_add_overflow(file.start, table.stride * table.rows, &end)) {
        OaReportFailure(502, "%s: the table ends behind any position.", routine);
        return nullptr;
    }
    Selection selection;
    if (!table.column_major)
        selection = select_rows(table, part);
    else if (!select_column_runs(routine, table, part, &selection))
        return nullptr;
    ObjectBytes source;
    if (!source.open(routine, file) || (!table.column_major && !source.take_records_as_rows(table.stride)))
        return nullptr;
    OaObject *object = read_runs(routine, std::move(selection.label), file.interchange_format, &source, selection.runs,
                                 table.column_major ? 0 : part.first_row);
    if (object)
        set_class_name(object->odl, table.node->class_name);
    return object;
}

}  // namespace

OaObject *OaReadTable(const ObjDesc *node) {
    Table table;
    if (!measure_table(__func__, node, &table))
        return nullptr;
    return read_part(__func__, table, {1, table.rows, 0, table.columns.size()});
}

OaObject *OaReadSubTable(const ObjDesc *node, int64_t first_row, int64_t last_row, int64_t first_column,
                         int64_t last_column) {
    Table table;
    if (!measure_table(__func__, node, &table))
        return nullptr;
    const auto columns = static_cast<int64_t>(table.columns.size());
    if (first_row < 1 || last_row < first_row || last_row > table.rows || first_column < 1 ||
        last_column < first_column || last_column > columns) {
        OaReportFailure(502,
                        "%s: invalid inputs. first_row = %lld, last_row = %lld of %lld\nfirst_column = %lld, "
                        "last_column = %lld of %lld",
                        __func__, static_cast<long long>(first_row), static_cast<long long>(last_row),
                        static_cast<long long>(table.rows), static_cast<long long>(first_column),
                        static_cast<long long>(last_column), static_cast<long long>(columns));
        return nullptr;
    }
    OaObject *object =
        read_part(__func__, table,
                  {first_row, last_row, static_cast<size_t>(first_column) - 1, static_cast<size_t>(last_column)});
    if (object) {
        OaLongtoKwdValue("FIRST_ROW", object->odl, first_row);
        OaLongtoKwdValue("FIRST_COLUMN", object->odl, first_column);
    }
    return object;
}
