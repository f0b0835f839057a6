// Label trees made plain for the table readers: containers and arrays become columns, bit columns go. Each works on a
// copy of the whole tree; the original stays as it is.
//
// START_BYTEs of flattened containers are kept as these routines have always given them, one byte low where the first
// column of a container starts at 1: the bytes of fields are located by ColumnInfo, not by a flattened label.
#pragma once

#include "oa/oa.h"

struct FlatTable {
    OdlTree root;              // the copy; null where nothing needed changing
    ObjDesc *table = nullptr;  // in the copy, else the original
    int64_t columns = 0;       // COLUMNS as the table now says
    bool has_containers = false;
};

// Makes `flat` hold the table with each container replaced by the columns of its repetitions. 0, or 1 after reporting
// (the table is then as far as it came).
int ctr_to_cols(ObjDesc *table, FlatTable *flat);
// One container that is the child of a table in a private copy: cut out and freed. 0, or 1 after reporting.
int redo_container(ObjDesc *container, ObjDesc *table);
// The same for arrays.
int array_to_column(ObjDesc *table, FlatTable *flat);
int redo_array(ObjDesc *array, ObjDesc *table);
// Cuts every BIT_COLUMN below the table of a private copy. 0, or 1 after reporting.
int remove_bitcols(ObjDesc *table);
