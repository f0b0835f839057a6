// Special values as labels write them.
#pragma once

#include "oa/qube.h"

#include <string_view>

// The bits of the native value that a label's text gives for an item, in the low bytes: a number of the item's type, or
// a based integer (16#FF7FFFFB#), which is the value's bit pattern, most significant byte first. Nothing when the type
// holds no such value.
std::optional<uint64_t> parse_stored_value(std::string_view text, const OaQubeItem &item);
