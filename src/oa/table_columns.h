// What table labels say of their columns, which are the table's direct children: COLUMNs, CONTAINERs and whatever else
// takes bytes of a row. ALIASes, groups and remarks do not count.
#pragma once

#include "oa/oa.h"

#include <cstdint>
#include <vector>

// A table by its class, or an INDEX.
bool is_table_like(const ObjDesc *node);
std::vector<ObjDesc *> columns_of(const ObjDesc *table);

// Bytes that a column takes of a row, as far as the label says; -1 when it does not.
int64_t column_extent(const ObjDesc *column);

// The keyword's value, or `otherwise` when it is absent.
int64_t number_or(const char *keyword, const ObjDesc *node, int64_t otherwise);
