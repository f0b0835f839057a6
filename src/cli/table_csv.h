// Rows of a table as comma-separated values.
#pragma once

#include "cli/arguments.h"
#include "tables/model/column_view.h"

#include <cstdio>
#include <vector>

struct CsvRequest {
    const ColumnView *view = nullptr;
    std::vector<int64_t> places;  // of the fields in the view
    Interval rows;                // all of them are there
    bool is_scaled = false;       // SCALING_FACTOR and OFFSET are applied
};

// Writes a line of names and one for each row, ended by CR LF; texts with commas, quotes or line ends are quoted.
// Memory does not grow with the rows. False when the stream takes no more.
bool write_csv(const CsvRequest &request, TableReader *reader, FILE *stream);
