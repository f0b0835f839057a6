// Described objects whole or in part: the plan of their label run over the bytes of their file. Histograms, arrays and
// tables are read through this.
#pragma once

#include "oa/oa.h"
#include "oa/object_bytes.h"

#include <cstdint>
#include <vector>

// Bytes to read of an object: `count` runs of `bytes` bytes, `stride` bytes from one's begin to the next one's, the
// first `first` bytes behind the object's begin.
struct ByteRuns {
    int64_t first = 0;
    int64_t bytes = 0;
    int64_t stride = 0;
    int64_t count = 1;
};

// Converts the runs, which `label` describes as lying one behind the other, to a new object whose label describes the
// result. Before anything is allocated the claim is compared with what the file holds: it must hold a byte of the
// object, and a sixteenth of what is wanted (502). Of a file that ends early the rest becomes blanks where the result
// is text, else zeros, and one notice tells, with the row where runs are rows from `first_row` on (0: they are not).
// Null after reporting in the name of `routine`.
OaObject *read_runs(const char *routine, OdlTree label, OaInterchangeFormat src_format, ObjectBytes *source,
                    const std::vector<ByteRuns> &runs, int64_t first_row);

// A private copy of an object's label without what describes no data (groups, remarks).
OdlTree copy_data_label(const ObjDesc *node);

// The whole object that a node describes. Null after reporting in the name of `routine`.
OaObject *read_described_object(const char *routine, const ObjDesc *node);
