// Value texts as views: their types, and the elements of lists.
#pragma once

#include "odl/odl.h"

#include <string_view>

namespace odl {

OdlValueType value_type(std::string_view text);

// Takes the next element off a list's text: what stands between brackets and commas, less blanks around it. Quotes
// are no protection. Empty when there is none left.
std::string_view take_element(std::string_view &list);

}  // namespace odl
