// Fields of a table's rows, read from its data file in any order and with little memory, however large the file is.
#pragma once

#include "tables/model/field_text.h"
#include "tables/model/table_info.h"

#include <memory>

// Fields wider than this are read as far as it.
constexpr int64_t tb_widest_field = int64_t{1} << 20;

// Bytes of one field as they stand in the file; of a spreadsheet its text without line end and quotes. Valid until the
// reader's next call.
struct FieldBytes {
    FieldSpan bytes;     // the column's width, zeros where the file has ended
    int64_t held = 0;    // how many of them the file holds; 0: the field is missing
    int64_t offset = 0;  // of the first in the file, from 0; -1: nowhere
};

class TableReader {
  public:
    virtual ~TableReader() = default;

    // Rows that the file really holds, the last perhaps in part: at most the table's. Of a spreadsheet this counts its
    // lines, once.
    virtual int64_t rows_present() = 0;
    // Whether its fields are text already, as those of a spreadsheet are, and need no formatter.
    virtual bool gives_text() const = 0;
    // Item `item` (from 1) of a column of the reader's table in row `row` (from 0). False, without a report, when the
    // field is missing: the row is beyond the file, a spreadsheet's row has fewer fields, or the label says no place or
    // width for it. A field of a spreadsheet may be there and empty.
    virtual bool read(int64_t row, const ColumnInfo &column, int64_t item, FieldBytes *field) = 0;
};

// Opens the table's data file. The table must outlive the reader. Null after reporting: 700 no such file; null after a
// notice (531) for a spreadsheet without a FIELD_DELIMITER or with an unknown one.
std::unique_ptr<TableReader> tb_open_reader(const TableFileInfo &file, const TableInfo &table);

// What to tell the user, once a display or summary, of a field that is missing.
std::string tb_missing_text(const FieldBytes &field);

// One field for a single look: its bytes. Empty, after a notice of tb_missing_text, when nothing can be read.
std::string tb_read_column_2(TableReader *reader, const ColumnInfo &column, int64_t row, int64_t item);

// The text of a field of a spreadsheet row: of item `item` of a column. False when there is none; no notice.
bool read_field(TableReader *reader, const ColumnInfo &column, int64_t row, int64_t item, std::string *text);
