// Which formatter a column or bit column gets, and the text of its fields.
#pragma once

#include "tables/model/field_text.h"
#include "tables/model/table_info.h"

#include <array>

// The formatter of a column's fields, chosen by table format, display format and data type. Null where none applies:
// such fields show as asterisks. The choice holds until one of the three texts changes.
FieldFormat tb_column_format(const TableInfo &table, const ColumnInfo &column);
FieldFormat tb_bit_column_format(const TableInfo &table, const ColumnInfo &bit_column);

// Appends a field's text without blanks around it; asterisks, as many as bytes, where there is no formatter or it does
// not know the width.
void tb_append_field(FieldFormat format, FieldSpan bytes, std::string *text);
// The same for item `bit_item` (from 1) of a bit column in the bytes of its column. `swaps`: tb_swaps_bytes of the
// parent.
void tb_append_bit_field(FieldFormat format, const ColumnInfo &bit_column, FieldSpan bytes, int64_t bit_item,
                         bool swaps, std::string *text);
// Asterisks for a field of that many bytes: "****" for less than 1, at most 32767.
void tb_append_asterisks(int64_t width, std::string *text);

// Whether bits of the column are counted in its bytes turned round, as they are in an "LSB BIT STRING".
inline bool tb_swaps_bytes(const ColumnInfo &column) {
    return column.data_type == "LSB BIT STRING";
}

// --- One field, as a text of its own ------------------------------------------------------------------------------

std::string tb_format_column_value_1(const ColumnInfo &column, const uint8_t *bytes, int64_t width,
                                     const TableInfo &table);
std::string tb_format_bit_column_value_1(const TableInfo &table, const ColumnInfo &bit_column, FieldSpan bytes,
                                         int64_t bit_item, int64_t *out_width, const std::string &parent_type);
// The bits of an item, right-justified, high byte first; of more than 32 the last 32. Bits beyond the bytes are 0. With
// `is_signed` the item's first bit fills those above it.
std::array<uint8_t, 4> tb_justify_bit_column_value_1(const ColumnInfo &bit_column, FieldSpan bytes, int64_t bit_item,
                                                     int64_t *out_width, bool is_signed);
