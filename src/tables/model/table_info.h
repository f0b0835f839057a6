// What a label says of its tables: the data file, each table, its columns, bit columns and containers. The records are
// plain data; nodes point into the label tree, which must outlive them. Lists are vectors in the order of the label.
//
// Texts that the label lacks are "Unknown", numbers that it lacks -1, unless a comment says otherwise. A value that is
// no integer counts as absent; nothing here reports or fails.
#pragma once

#include "oa/oa.h"

#include <cstdint>
#include <string>
#include <vector>

// More rows than any file holds; their counts leave room to step beyond them.
constexpr int64_t tb_most_rows = INT64_MAX - 1000;

// Columns of a table, bit columns included, and fields of a view: what is beyond them is left out and told.
constexpr int64_t tb_most_columns = 50000;

struct TableFileInfo {
    std::string record_type = "Unknown";    // of tb_record_types
    std::string blocking_type = "Unknown";  // of tb_blocking_types
    int64_t block_bytes = -1;
    int64_t block_records = -1;
    int64_t record_bytes = -1;
    int64_t file_records = -1;
};

// A column, a field of a spreadsheet, or a bit column.
struct ColumnInfo {
    const ObjDesc *object = nullptr;
    std::string name = "Unknown";         // without double quotes, as far as 1024 bytes
    std::string class_name = "COLUMN";    // of a bit column "BIT_COLUMN"
    std::string data_type = "Unknown";    // of tb_data_types or tb_bit_data_types
    std::string display_format = "TEXT";  // of tb_display_formats
    int64_t bytes = -1;                   // of one item; of a bit column: bits
    int64_t start_byte = -1;              // 1-based in the row; of a bit column the bit, 1 the highest of the column
    int64_t items = 1;                    // as written: may be below 1
    int64_t item_offset = -1;             // from item to item; the column's bytes when the label is silent
    bool in_container = false;
    int64_t container_number = 0;  // place of the innermost container in the table's list, from 1; 0: none
    std::string repetition;        // "_k" for each repeated container around it, outermost first
    int64_t items_before = 0;      // items of the columns before it: fields of a spreadsheet row
    std::vector<ColumnInfo> bit_columns;
};

struct ContainerInfo {
    int64_t start_byte = -1;
    int64_t repetitions = -1;
    int64_t bytes = -1;
    std::string name;  // "" when the label is silent
    int64_t number = 0;
};

struct TableInfo {
    const ObjDesc *object = nullptr;
    std::vector<ColumnInfo> columns;
    std::string name = "Unknown";
    std::string type = "TABLE";         // the object's class; of an INDEX "TABLE"
    std::string file_name = "Unknown";  // as it opens, or the last name tried; "Unknown" without a pointer
    std::string interchange_format = "Unknown";
    int64_t rows = 1;  // 0 where the label says less, tb_most_rows where it says more
    int64_t row_bytes = -1;
    int64_t row_prefix_bytes = 0;
    int64_t row_suffix_bytes = 0;
    int64_t start_byte = 1;  // of the first row in the file, 1-based
    std::vector<ContainerInfo> containers;
    bool columns_left_out = false;  // there are more than tb_most_columns

    int64_t column_count() const { return static_cast<int64_t>(columns.size()); }
    bool is_spreadsheet() const;  // rows are lines, fields stand between delimiters
};

struct TableProduct {
    const ObjDesc *root = nullptr;
    TableFileInfo file;
    std::vector<TableInfo> tables;
};

// Whether an object counts as a table: TABLE, SERIES, SPECTRUM, GAZETTEER, PALLETTE or SPREADSHEET by the end of its
// class, or INDEX. Groups do not.
bool tb_is_table(const ObjDesc *node);

// Fills the product's file record from the keywords of its root.
void tb_get_file_info(TableProduct *product);
// Makes the records of all tables below the root, in the order of the label. The file record must be filled.
void tb_get_table_info(TableProduct *product);
// Both, for a label that must outlive the result.
TableProduct tb_read_product(const ObjDesc *root);

// The record of one object of the product, whatever its class; of a table of the product a copy.
TableInfo tb_table_of(const TableProduct &product, const ObjDesc *object);

// What to tell the user where columns were left out; "" when none were.
std::string tb_columns_remark(const TableInfo &table);

// --- Steps of the above -------------------------------------------------------------------------------------------

void get_table_key_words(const ObjDesc *object, TableInfo *table, const TableFileInfo &file);
// Appends the columns below `object`, those of containers once for each repetition, to the table's list.
void tb_get_column_info_2(const ObjDesc *object, TableInfo *table);
void tb_get_bit_column_info_1(const ObjDesc *object, ColumnInfo *column, int64_t room);
// Adds a container's record to the table and numbers it. Its place in the list.
size_t get_container_params(const ObjDesc *object, TableInfo *table);
