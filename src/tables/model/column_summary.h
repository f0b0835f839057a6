// The summary of a column: minimum, maximum, approximate average and, of columns of text, how often each value occurs.
#pragma once

#include "tables/model/table_info.h"

#include <functional>
#include <string>

enum class SummaryClass { None, Real, Character, Signed, Unsigned, Date };

// What of a column, or of a bit column in a table of that format, is summed up.
SummaryClass ts_map_type_1(const TableInfo &table, const ColumnInfo &column, bool is_bit_column);

struct SummaryRequest {
    const TableFileInfo *file = nullptr;
    const TableInfo *table = nullptr;
    const ColumnInfo *column = nullptr;
    const ColumnInfo *bit_column = nullptr;
    int64_t item = 1;            // of the column
    int64_t bit_item = 1;        // of the bit column
    bool of_bit_column = false;  // the bit column is wanted, not the column
    // Asked now and then with the number of rows that are done; false ends the pass. May be empty.
    std::function<bool(int64_t rows)> go_on = {};
};

enum class SummaryOutcome {
    Done,
    Refused,     // the text tells what is missing
    NoSummary,   // of such a column; the note says so
    EndedEarly,  // fewer rows are there than the table has; the text is of these, the note tells where they end
    Stopped,     // by go_on; the text is of the rows so far
};

struct ColumnSummary {
    SummaryOutcome outcome = SummaryOutcome::Done;
    std::string text;  // lines to show, each ends with a line feed
    std::string note;  // to be posted, else ""
    int64_t rows_read = 0;
};

// Reads every row of the table. Numbers are read from the text of fields as TEXT shows them, whichever display format
// the column has; fields without a number count for nothing. Memory does not grow with the table.
ColumnSummary ts_summarize_column_1(const SummaryRequest &request);
