// What the parts of building a slot descriptor tree share.
#pragma once

#include "oa/sdt_walk.h"

// A COLUMN of that name, without parent and slot.
ObjDesc *OalNewColumn(const char *name);
// A COLUMN for bytes that nobody asked for, with its slot, marked as ours.
ObjDesc *OalNewSpare(int64_t src_start, int64_t src_size, int64_t dst_size);

// Where the slot's data end within the parent, or -1 when that is no position.
int64_t OalSourceEnd(const OaSlot &slot);
int64_t OalDestinationEnd(const OaSlot &slot);

// These report and return 1.
int OalReportOverlap(const char *routine, int64_t start, const OaSlotSide &previous);  // 534
int OalReportTooLarge();                                                               // 502
int OalReportMissing(const char *keyword, const ObjDesc *node);                        // 531
int OalReportMissingType(const ObjDesc *node, OaObjectClass object_class);             // 531

bool OalHasKeyword(const char *keyword, const ObjDesc *node);
// The value of a keyword that must be there and at least `minimum`; false after reporting otherwise (531).
bool OalRequiredNumber(const char *keyword, const ObjDesc *node, int64_t minimum, int64_t *out);
// The same, but `otherwise` where the keyword is absent.
bool OalOptionalNumber(const char *keyword, const ObjDesc *node, int64_t minimum, int64_t otherwise, int64_t *out);
// START_BYTE - 1, and the repetitions and bytes of an item of a COLUMN. False after reporting.
bool OalMeasureColumn(const ObjDesc *node, OaSlot *slot);
// START_BYTE - 1 (0 where there is none) and BYTES, once. False after reporting.
bool OalMeasureElement(const ObjDesc *node, OaSlot *slot);

bool OalIsTableLike(OaObjectClass object_class);

// The steps of OalBuildSDTNode, and of OalCreateSDT before it; 0, or what the caller returns after reporting.
int OalBuildLeaf(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format);
int OalBuildInterior(ObjDesc *node);
// Settles a node with children once its own repetitions and source size are known.
int OalFinishInterior(ObjDesc *node);
// Makes a column-major TABLE one of a single row whose columns hold the values of all rows.
int OalPrepareColumnMajor(ObjDesc *object);
bool OalIsColumnMajor(const ObjDesc *object);
// Makes room for the bytes that the label puts before or after each record of the object. `image_line`: the COLUMN that
// stands for an image's line, when one was added.
int OalPreparePrefixAndSuffix(ObjDesc *object, ObjDesc **image_line);
// Splits a complex item into its two halves.
int OalSplitComplex(const ObjDesc *node, OaSlot *slot);
