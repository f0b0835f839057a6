// Label trees made plain: containers and arrays become columns, bit columns go. All is done in a copy of the whole
// tree; the original stays as it is.
//
// START_BYTEs of flattened containers are kept as these routines have always given them, one byte low where the first
// column of a container starts at 1: the bytes of fields are located by ColumnInfo, or by OaReadTable of the original,
// which knows containers itself.
#pragma once

#include "tables/model/table_info.h"

struct FlatTable {
    OdlTree root;              // the copy; null while nothing needed changing
    ObjDesc *table = nullptr;  // in the copy, else the original
    int64_t columns = 0;       // number of its columns, as its COLUMNS now says
    bool has_containers = false;
    bool columns_left_out = false;  // there are more than tb_most_columns
};

// Each takes flat->table, the original or what an earlier one left, and makes the copy when something is to be changed.
// 0, or 1 after reporting (530 what the tree lacks, 531 a keyword, 502 a value): the table is then as far as it came.

// Replaces each container by the columns of its repetitions, where it stands.
int ctr_to_cols(FlatTable *flat);
// Replaces each array by a column of as many items as it has elements.
int array_to_column(FlatTable *flat);
// Makes the columns of a table's records those of its label with arrays as columns; `flat`, empty before, must outlive
// the table. Without an array all stays as it is.
int tb_add_arrays(TableInfo *table, FlatTable *flat);
// Cuts every bit column.
int remove_bitcols(FlatTable *flat);
// All three.
int flatten_table(ObjDesc *table, FlatTable *flat);
