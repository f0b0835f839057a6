// The slot descriptor tree: the plan that turns the bytes of a described object into native memory, built as a
// decoration of a private copy of the object's label.
//
//   copy the label      OaCopyTree
//   plan                OalCreateSDT                          one slot for every label node that carries data
//   simplify            OalCompressSDT                        on a second copy: copies fold into runs
//   start               OalInitializeSDT                      on the output buffer
//   feed                OalProcessSDT, chunk after chunk      scatters and converts
//   describe the result OalSDTtoODLTree                       on the first copy: native types, sizes, offsets
//
// Chunks may be cut anywhere. One reader drives a tree.
#pragma once

#include "oa/binrep.h"
#include "oa/data_type.h"
#include "oa/oa.h"

#include <cstdint>
#include <string>
#include <vector>

enum OaConversion : uint8_t {
    OA_SKIP = 0,
    OA_BINARY_TO_BINARY = 1,
    OA_COPY = 2,
    OA_ASCII_TO_BINARY = 3,
    OA_BINARY_TO_ASCII = 4,
};

// One side of a slot.
struct OaSlotSide {
    int64_t start_offset = 0;  // from the start of the parent's slot, bytes
    int64_t progress = 0;      // source: bytes of the current item already received
    int64_t size = 0;          // bytes of one item
    uint8_t *data = nullptr;   // source: the item being converted; destination: where the next one goes
    OaDataType data_type = OA_NO_DATA_TYPE;
    const BinrepDescrip *binrep = nullptr;  // leaves that convert
    int alignment_req = 1;                  // 1, 2, 4 or 8
};

// How a number is printed: printf's letter, width and precision, or X and o for the bits of every byte.
struct OaAsciiForm {
    char letter = 'd';
    int width = 0;  // without the blank before it
    int digits = 0;
};

struct OaSlot;

// A row's items of one kind that lie one behind the other, also where several columns hold them.
struct OaRowStep {
    const OaSlot *slot = nullptr;  // says how they are converted
    int64_t src = 0;               // from the start of the row
    int64_t dst = 0;               // from the start of the output buffer, of the first row
    int64_t count = 0;             // of items; of copies, bytes
};

struct OaSlot {
    int64_t total_repetitions = 0;  // within one repetition of the parent
    int64_t count = 0;              // while processing: 0 .. total_repetitions - 1
    OaSlotSide src;
    OaSlotSide dst;
    OaConversion conversion_type = OA_SKIP;
    OaDataType complex_type = OA_NO_DATA_TYPE;  // source type of an item that was split into its two halves
    bool inserted = false;              // a COLUMN that the plan added: a SPARE, an image's line, a part of a column
    std::vector<uint8_t> partial_item;  // of an item split between chunks, gathered so far
    BinrepPlan plan;                    // conversion 1; 3 and 4: from or to native numbers
    OaAsciiForm ascii_form;             // conversion 4
    uint8_t *buffer_end = nullptr;      // root: end of the output buffer

    // Root, when whole repetitions of it (rows) are converted at once.
    std::vector<OaRowStep> row_steps;
    int64_t row_bytes = 0;               // of the source
    const ObjDesc *row_start = nullptr;  // the first leaf
};

// The slot of a label node, or null.
inline OaSlot *OalSlotOf(const ObjDesc *node) {
    return static_cast<OaSlot *>(node->appl1);
}

// A zero-filled slot attached to the node, which has none. Never null: out of memory ends the process.
OaSlot *OalNewSDTNode(ObjDesc *node);

// Returns `object` (a root) with its slots, or null after reporting; free it with OalFreeSDT either way.
ObjDesc *OalCreateSDT(ObjDesc *object, OaInterchangeFormat src_interchange_format);
// Bytes of the whole object on either side: repetitions x size of the root; -1 when that is no size.
int64_t OalSourceSize(const ObjDesc *sdt);
int64_t OalDestinationSize(const ObjDesc *sdt);
// A simplified copy; the given tree is not changed. Free it with OalFreeSDT.
ObjDesc *OalCompressSDT(const ObjDesc *sdt);
// Sets the output buffer and its size; returns the first leaf, or null for a null tree or buffer or a tree without
// data.
ObjDesc *OalInitializeSDT(ObjDesc *sdt, void *buffer, int64_t buffer_size);
// Consumes a chunk: 0 when it is used up, 1 when the last data were passed or after reporting a conversion that failed.
// `leaf` is the position, updated; null at the end.
int OalProcessSDT(const void *source_bytes, int64_t byte_count, ObjDesc **leaf);
// The next leaf that receives source bytes, or null at the end of the data.
ObjDesc *OalPositionToNextDataNode(ObjDesc *leaf);
// Converts the item at src.data to dst.data. 0, or 1 after reporting.
int OalConvert(OaSlot *slot);
// The same for `count` items lying one behind the other, copies included. `src` and `dst` may be equal where the sizes
// of an item are.
int OalConvertRun(const OaSlot *slot, const uint8_t *src, uint8_t *dst, int64_t count);
// Rewrites the keywords so that they describe the converted data, removes what the plan inserted and all slots.
void OalSDTtoODLTree(ObjDesc *sdt, OaInterchangeFormat dst_interchange_format);
// Frees the label tree with its slots; null is allowed. Returns null.
ObjDesc *OalFreeSDT(ObjDesc *tree);
void OalFreeSDTStruct(OaSlot *slot);  // null is allowed

// The steps of OalCreateSDT and OalSDTtoODLTree.
enum OaTraverseMode { OA_BUILD_SLOTS = 0, OA_ADJUST_KEYWORDS = 1 };
// Visits children before their parent. Building stops at the first node that fails and returns its code.
int OalPostOrderTraverse(ObjDesc *node, int mode, OaInterchangeFormat src_format, OaInterchangeFormat dst_format);
// The slot of a node whose children have theirs; one that has a slot is left alone. 0, or after reporting 1, or -1 when
// a table's keywords are missing.
int OalBuildSDTNode(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format);
// Chooses conversion and destination of a leaf whose source type and item size are known. 0, or 1 after reporting.
int OalDetermineConvertParameters(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format);
// Raises a node's alignment to the largest of its children's; a SPARE fills up to that what stands before it.
void OalDetermineRepNodeAlignment(ObjDesc *node);
// Fills a gap before the node's source bytes with a SPARE. 0, or 1 after reporting (534) that they overlap what stands
// before.
int OalCheckForGapInSrcData(ObjDesc *node);
// Plans a COLUMN whose `items` of `item_bytes` lie `item_offset` bytes apart; its slot knows type and start. 0, or 1
// after reporting.
int OalAttachItemOffsetNodes(ObjDesc *column, int64_t items, int64_t item_bytes, int64_t item_offset,
                             OaInterchangeFormat src_format, OaInterchangeFormat dst_format);
// Makes the node's keywords describe its converted data and frees its slot.
void OalAdjustKwdstoMatchSDT(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format);

// Neighbours of a label node, or null.
inline ObjDesc *LeftmostSDTChild(const ObjDesc *node) {
    return node->first_child;
}
inline ObjDesc *RightmostSDTChild(const ObjDesc *node) {
    return node->last_child;
}
inline ObjDesc *LeftSDTSibling(const ObjDesc *node) {
    return node->left_sibling;
}
inline ObjDesc *RightSDTSibling(const ObjDesc *node) {
    return node->right_sibling;
}

struct OaSdtDeleter {
    void operator()(ObjDesc *tree) const { OalFreeSDT(tree); }
};
using OaSdt = std::unique_ptr<ObjDesc, OaSdtDeleter>;
