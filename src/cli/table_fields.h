// The fields of a table that a user names.
#pragma once

#include "cli/arguments.h"
#include "tables/model/column_view.h"

#include <optional>
#include <string>
#include <vector>

// Places in the view: all of them; those of an interval; or those whose name, with or without the number of an item,
// matches one of the names between commas, in which * stands for any text. Returns an empty text, or what is wrong.
std::string choose_fields(const ColumnView &view, const std::optional<std::string> &columns,
                          std::vector<int64_t> *places);

// The first field that the name matches; a column that is shown as its bit columns counts too, behind these.
std::optional<ViewField> find_field(const ColumnView &view, const std::string &name);
