// Tables as text: what other modules use of them. Start here; the headers of tables/model are, lowest first:
// value_lists.h (words of labels), table_info.h (records of a product's tables), field_text.h (bytes as text),
// column_text.h (the formatter of a column), table_reader.h (fields of rows), column_view.h (the fields of a table in a
// row), flatten.h (label trees for the table readers of oa), browser_position.h (moves of a one-column browser),
// column_summary.h (minimum, maximum, average and values of a column).
//
//   const TableProduct product = tb_read_product(label);
//   const ColumnView view(product.tables[0]);
//   const auto reader = tb_open_reader(product.file, product.tables[0]);
//   std::string text;
//   for (int64_t row = 0; row < reader->rows_present(); ++row)
//       for (int64_t i = 0; i < view.size(); ++i)
//           view.append(reader.get(), row, i, &text);
#pragma once

#include "tables/model/browser_position.h"
#include "tables/model/column_summary.h"
#include "tables/model/column_text.h"
#include "tables/model/column_view.h"
#include "tables/model/field_text.h"
#include "tables/model/flatten.h"
#include "tables/model/table_info.h"
#include "tables/model/table_reader.h"
#include "tables/model/value_lists.h"
