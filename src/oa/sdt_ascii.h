// Conversions from and to text.
#pragma once

#include "oa/sdt.h"
#include "oa/sdt_strided.h"

// Plan a leaf. The first reads the node's FORMAT, or takes the profile's default width, blank included, after reporting
// (601); 0, or 1 after reporting a size that is none. The second needs the destination's description.
int OalPlanBinaryToAscii(ObjDesc *node, OaDataType ascii_type, int default_width);
void OalPlanAsciiToBinary(OaSlot *slot);

// 0, or 1 after reporting (535) a type that is no number.
int OalAsciiToBinary(const OaSlot &slot, const OaStrided &items);
// Items lying one behind the other.
void OalBinaryToAsciiRun(const OaSlot &slot, const uint8_t *src, uint8_t *dst, int64_t count);
