// A table as a plain list of displayable fields, in order: what pages, CSV files and the clipboard show.
#pragma once

#include "tables/model/column_text.h"
#include "tables/model/table_reader.h"

#include <vector>

struct ColumnViewOptions {
    bool items = true;        // a column of several ITEMS as that many fields, else its first item only
    bool bit_columns = true;  // a column with BIT_COLUMNs as these, else as itself
};

// One field of each row.
struct ViewField {
    const ColumnInfo *column = nullptr;
    const ColumnInfo *bit_column = nullptr;  // null: the whole column
    int64_t item = 1;                        // of the column
    int64_t bit_item = 1;                    // of the bit column
    FieldFormat format = nullptr;
};

// The fields of a table, which must outlive the view and whose columns may not change while it is used.
class ColumnView {
  public:
    explicit ColumnView(const TableInfo &table, ColumnViewOptions options = {});

    int64_t size() const { return static_cast<int64_t>(fields_.size()); }
    const ViewField &operator[](int64_t i) const { return fields_[static_cast<size_t>(i)]; }
    const TableInfo &table() const { return table_; }

    // NAME, with _k behind it for each repetition of a container, each item and each bit item there are several of.
    std::string name(int64_t i) const;
    std::string unit(int64_t i) const;  // "" when the label has none
    const std::string &data_type(int64_t i) const;
    int64_t width(int64_t i) const;  // bytes; of a bit column bits; -1 unknown
    std::string remark() const;      // what to tell the user where fields were left out; else ""

    // Appends the text of field `i` of a row; asterisks when the label says no place or width for it. False when the
    // file does not hold the field: then nothing is appended.
    bool append(TableReader *reader, int64_t row, int64_t i, std::string *text) const;

  private:
    void add_column(const ColumnInfo &column, ColumnViewOptions options);
    bool add(const ViewField &field);

    const TableInfo &table_;
    std::vector<ViewField> fields_;
    bool left_out_ = false;
};
