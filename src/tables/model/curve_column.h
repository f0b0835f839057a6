// Columns of tables as curves: numbers of any type, as the formatter shows them.
#pragma once

#include "tables/model/column_text.h"
#include "tables/model/curve_plot.h"
#include "tables/model/table_reader.h"

// Whether there can be numbers in the column's fields: the formatter shows its type as one, or it holds text.
bool is_numeric_column(const TableInfo &table, const ColumnInfo &column);
// Appends the numbers of rows `first` to `last`, counted from 1. What is no number, what the label calls missing or
// invalid (MISSING_CONSTANT ...) and what the file does not hold becomes a NaN.
void read_curve_column(TableReader *reader, const TableInfo &table, const ColumnInfo &column, int64_t first,
                       int64_t last, std::vector<double> *values);
// NAME, and its unit in brackets behind it.
std::string curve_axis_title(const ColumnInfo &column);
