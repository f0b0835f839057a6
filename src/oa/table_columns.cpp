#include "oa/table_columns.h"

#include "base/text.h"
#include "oa/sdt_build.h"

#include <algorithm>

namespace {

bool is_column(const ObjDesc *node) {
    if (node->is_a_group)
        return false;
    switch (OaGetObjectClass(node)) {
        case OA_COLUMN:
        case OA_CONTAINER:
        case OA_ARRAY:
        case OA_COLLECTION:
        case OA_ELEMENT:
            return true;
        default:
            return false;
    }
}

}  // namespace

int64_t number_or(const char *keyword, const ObjDesc *node, int64_t otherwise) {
    int64_t value = 0;
    return OaKwdValuetoLong(keyword, node, &value) == 0 ? value : otherwise;
}

bool is_table_like(const ObjDesc *node) {
    return OalIsTableLike(OaGetObjectClass(node)) ||
           (node && node->class_name && util_upper(util_trim(node->class_name)) == "INDEX");
}

std::vector<ObjDesc *> columns_of(const ObjDesc *table) {
    std::vector<ObjDesc *> columns;
    for (ObjDesc *child = table->first_child; child; child = child->right_sibling)
        if (is_column(child))
            columns.push_back(child);
    return columns;
}

int64_t column_extent(const ObjDesc *column) {
    const int64_t bytes = number_or("BYTES", column, -1);
    const int64_t item_offset = number_or("ITEM_OFFSET", column, -1);
    int64_t extent = 0;
    switch (OaGetObjectClass(column)) {
        case OA_CONTAINER:
            return __builtin_mul_overflow(bytes, number_or("REPETITIONS", column, -1), &extent) ? -1 : extent;
        case OA_ARRAY:
            return -1;
        case OA_COLUMN:
            if (item_offset < 0)
                return bytes;
            if (__builtin_mul_overflow(number_or("ITEMS", column, 1) - 1, item_offset, &extent) ||
                __builtin_add_overflow(extent, number_or("ITEM_BYTES", column, bytes), &extent))
                return -1;
            return std::max(bytes, extent);
        default:
            return bytes;
    }
}
