// Whole repetitions of a tree's root, converted without walking the tree.
#pragma once

#include "oa/sdt.h"

// Lists the steps of one repetition in the root's slot, or none where that does not pay. `first` is the first leaf of
// an initialised tree; the position is left there.
void OalPlanRows(ObjDesc *root, ObjDesc *first);
// Converts as many whole rows as lie in the bytes and fit in the output buffer, when the position is the start of a
// row. Moves the position and tells how many bytes that took; 0 when nothing was done. -1 after reporting a conversion
// that failed.
int64_t OalProcessRows(ObjDesc *root, const uint8_t *bytes, int64_t byte_count, ObjDesc **leaf);
