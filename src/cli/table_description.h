// What a label says of a table, for people.
#pragma once

#include "tables/model/column_view.h"

#include <cstdio>

// Prints the table, the `number`-th of its product, and a line for each of its fields.
void print_table(const ColumnView &view, int64_t number, FILE *stream);
