// A part of a table in memory: some of its columns, packed into a table of their own.
#include "base/text.h"
#include "oa/sdt_build.h"
#include "oa/table_columns.h"

#include <cstring>
#include <string_view>

namespace {

constexpr const char *routine = "OaGetSubTable";

// Where the values of a column lie: `bytes` a row.
struct Field {
    const ObjDesc *column = nullptr;
    int64_t first = 0;
    int64_t stride = 0;
    int64_t bytes = 0;
};

struct Rows {
    int64_t rows = 0;
    int64_t row_bytes = 0;
    bool column_major = false;
};

// The bytes that the label says are there; false after reporting that the object has not so many.
bool measure_rows(const OaObject &object, Rows *rows) {
    int64_t prefix = 0;
    int64_t suffix = 0;
    if (OaGetTableKeywords(object.odl, &rows->rows, &rows->row_bytes, &prefix, &suffix) != 0)
        return false;
    rows->column_major = OalIsColumnMajor(object.odl);
    int64_t bytes = 0;
    if (__builtin_mul_overflow(rows->rows, rows->row_bytes, &bytes) || bytes > object.size) {
        OaReportFailure(502, "%s: ROWS = %lld and ROW_BYTES = %lld are more than the %lld bytes of the object.",
                        routine, static_cast<long long>(rows->rows), static_cast<long long>(rows->row_bytes),
                        static_cast<long long>(object.size));
        return false;
    }
    return true;
}

std::string plain_name(std::string_view name) {
    return util_upper(util_trim(name, " \"'"));
}

const ObjDesc *find_column(const std::vector<ObjDesc *> &columns, const char *name) {
    const char *text = nullptr;
    for (const ObjDesc *column : columns)
        if (name && OaKwdValuetoStr("NAME", column, &text) == 0 && plain_name(text) == plain_name(name))
            return column;
    OaReportFailure(502, "%s: the table has no column of the name %s.", routine, name ? name : "NULL");
    return nullptr;
}

bool locate(const Rows &rows, const ObjDesc *column, Field *field) {
    const int64_t start_byte = number_or("START_BYTE", column, 1);
    const int64_t bytes = column_extent(column);
    if (start_byte < 1 || bytes < 0 || bytes > rows.row_bytes || start_byte - 1 > rows.row_bytes - bytes) {
        OaReportFailure(502, "%s: START_BYTE = %lld with %lld bytes is not within ROW_BYTES = %lld.", routine,
                        static_cast<long long>(start_byte), static_cast<long long>(bytes),
                        static_cast<long long>(rows.row_bytes));
        return false;
    }
    *field = rows.column_major ? Field{column, (start_byte - 1) * rows.rows, bytes, bytes}
                               : Field{column, start_byte - 1, rows.row_bytes, bytes};
    return true;
}

OdlTree describe_part(const ObjDesc *table, const std::vector<Field> &fields, int64_t rows, int64_t row_bytes) {
    OdlTree label(OdlCopyObjDesc(table));
    for (const Kwd *keyword = table->first_keyword; keyword; keyword = keyword->right_sibling)
        OdlPasteKwd(OdlCopyKwd(keyword), label.get());
    for (const char *keyword : {"TABLE_STORAGE_TYPE", "FIRST_ROW", "FIRST_COLUMN"})
        OaDeleteKwd(keyword, label.get());
    OaLongtoKwdValue("ROWS", label.get(), rows);
    OaLongtoKwdValue("ROW_BYTES", label.get(), row_bytes);
    OaLongtoKwdValue("COLUMNS", label.get(), static_cast<int64_t>(fields.size()));
    int64_t start_byte = 1;
    for (const Field &field : fields) {
        ObjDesc *column = OdlPasteObjDesc(OaCopyTree(field.column, OA_COPY_LABEL), label.get());
        OaLongtoKwdValue("START_BYTE", column, start_byte);
        start_byte += field.bytes;
    }
    return label;
}

void pack(const OaObject &object, const std::vector<Field> &fields, int64_t first_row, int64_t rows, uint8_t *out) {
    const auto *data = static_cast<const uint8_t *>(object.data);
    for (int64_t row = first_row - 1; row < first_row - 1 + rows; ++row)
        for (const Field &field : fields) {
            memcpy(out, data + field.first + row * field.stride, static_cast<size_t>(field.bytes));
            out += field.bytes;
        }
}

}  // namespace

OaObject *OaGetSubTable(const OaObject *object, int64_t first_row, int64_t last_row, const char *const *names,
                        int64_t count) {
    if (!object || !is_table_like(object->odl) || !object->data || !names || count < 1) {
        OaReportFailure(501, "%s: object must be a table that was read, with names of columns.", __func__);
        return nullptr;
    }
    Rows table;
    if (!measure_rows(*object, &table))
        return nullptr;
    if (first_row < 1 || last_row < first_row || last_row > table.rows) {
        OaReportFailure(502, "%s: invalid inputs. first_row = %lld, last_row = %lld of %lld", __func__,
                        static_cast<long long>(first_row), static_cast<long long>(last_row),
                        static_cast<long long>(table.rows));
        return nullptr;
    }
    const std::vector<ObjDesc *> columns = columns_of(object->odl);
    std::vector<Field> fields(static_cast<size_t>(count));
    int64_t row_bytes = 0;
    for (size_t i = 0; i < fields.size(); ++i) {
        const ObjDesc *column = find_column(columns, names[i]);
        if (!column || !locate(table, column, &fields[i]))
            return nullptr;
        row_bytes += fields[i].bytes;
    }
    const int64_t rows = last_row - first_row + 1;
    int64_t bytes = 0;
    OaPtr<uint8_t> packed;
    if (!__builtin_mul_overflow(rows, row_bytes, &bytes))
        packed.reset(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(bytes))));
    if (!packed) {
        OaReportFailure(720, "%s: OaMalloc failed to allocate %lld rows of %lld bytes.", __func__,
                        static_cast<long long>(rows), static_cast<long long>(row_bytes));
        return nullptr;
    }
    pack(*object, fields, first_row, rows, packed.get());
    return OaNewOaObject(describe_part(object->odl, fields, rows, row_bytes).release(), packed.release(), bytes);
}
