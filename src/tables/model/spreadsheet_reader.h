// Rows that are lines of text, whose fields stand between delimiters.
#pragma once

#include "base/file.h"
#include "tables/model/table_reader.h"

#include <memory>

// As tb_open_reader.
std::unique_ptr<TableReader> open_spreadsheet(const TableInfo &table, FilePtr data);
