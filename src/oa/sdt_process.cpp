// Running the plan: source bytes, cut anywhere, into the output buffer.
#include "oa/sdt_ascii.h"
#include "oa/sdt_rows.h"
#include "oa/sdt_walk.h"

#include <algorithm>
#include <cstring>

namespace {

template <typename Node>
Node *root_of(Node *node) {
    while (node->parent)
        node = node->parent;
    return node;
}

// A node that repeats without taking source bytes is passed over whole; stepping through it would spin.
bool takes_bytes(const ObjDesc *node) {
    const OaSlot *slot = OalSlotOf(node);
    return slot && slot->total_repetitions > 0 && slot->src.size > 0;
}

// `node` or the nearest of its right siblings that takes source bytes.
ObjDesc *first_taker(ObjDesc *node) {
    while (node && !takes_bytes(node))
        node = RightSDTSibling(node);
    return node;
}

// Where the next item of a leaf goes, or null when it goes nowhere.
uint8_t *destination_of(const ObjDesc *leaf) {
    if (OalSlotOf(leaf)->dst.size < 1)
        return nullptr;
    const OaSlot *root = OalSlotOf(root_of(leaf));
    int64_t offset = 0;
    for (const ObjDesc *node = leaf; node; node = node->parent) {
        const OaSlot *slot = OalSlotOf(node);
        offset += slot->dst.start_offset + slot->dst.size * slot->count;
    }
    return offset >= 0 && offset < root->buffer_end - root->dst.data ? root->dst.data + offset : nullptr;
}

ObjDesc *descend_to_leaf(ObjDesc *node) {
    while (ObjDesc *child = first_taker(LeftmostSDTChild(node)))
        node = child;
    return node;
}

bool goes_nowhere(const OaSlot *slot) {
    return !slot->dst.data || slot->dst.size < 1 || slot->conversion_type == OA_SKIP;
}

// Writes bytes of a copied run at `offset` behind its destination; what the output buffer has no room for is dropped.
void copy_bytes(const OaSlot *slot, int64_t offset, const uint8_t *bytes, int64_t count, const uint8_t *buffer_end) {
    const int64_t fitting = std::min(count, buffer_end - slot->dst.data - offset);
    if (fitting > 0)
        memcpy(slot->dst.data + offset, bytes, static_cast<size_t>(fitting));
}

// Delivers whole items as far as the output buffer has room for them. 0, or 1 after reporting.
int deliver(OaSlot *slot, const uint8_t *items, int64_t count, const uint8_t *buffer_end) {
    if (goes_nowhere(slot))
        return 0;
    const int64_t room = buffer_end - slot->dst.data;
    if (slot->conversion_type == OA_COPY) {
        copy_bytes(slot, 0, items, count * slot->src.size, buffer_end);
    } else {
        const int64_t fitting = std::min(count, room / slot->dst.size);
        if (OalConvertRun(slot, items, slot->dst.data, fitting) != 0)
            return 1;
    }
    slot->dst.data += std::min(room, count * slot->dst.size);
    return 0;
}

// Delivers some bytes of the current item, the last of them when `completes`. 0, or 1 after reporting.
int deliver_part(OaSlot *slot, const uint8_t *bytes, int64_t count, bool completes, const uint8_t *buffer_end) {
    if (goes_nowhere(slot))
        return 0;
    if (slot->conversion_type == OA_COPY) {
        copy_bytes(slot, slot->src.progress, bytes, count, buffer_end);
        if (completes)
            slot->dst.data += std::min(buffer_end - slot->dst.data, slot->dst.size);
        return 0;
    }
    slot->partial_item.insert(slot->partial_item.end(), bytes, bytes + count);
    if (!completes)
        return 0;
    const int failed = deliver(slot, slot->partial_item.data(), 1, buffer_end);
    slot->partial_item.clear();
    return failed;
}

}  // namespace

void OalPlaceLeaf(ObjDesc *leaf) {
    OalSlotOf(leaf)->dst.data = destination_of(leaf);
}

ObjDesc *OalInitializeSDT(ObjDesc *sdt, void *buffer, int64_t buffer_size) {
    if (!sdt || !OalSlotOf(sdt) || !buffer || buffer_size < 0)
        return nullptr;
    for (ObjDesc *node = sdt; node; node = next_in_pre_order(node, sdt)) {
        if (OaSlot *slot = OalSlotOf(node)) {
            slot->count = 0;
            slot->src.progress = 0;
            slot->partial_item.clear();
        }
    }
    OaSlot *root = OalSlotOf(sdt);
    root->dst.data = static_cast<uint8_t *>(buffer);
    root->buffer_end = root->dst.data + buffer_size;
    if (!takes_bytes(sdt))
        return nullptr;
    ObjDesc *leaf = descend_to_leaf(sdt);
    if (leaf != sdt) {
        OalPlaceLeaf(leaf);
        OalPlanRows(sdt, leaf);
        OalPlaceLeaf(leaf);
    }
    return leaf;
}

ObjDesc *OalPositionToNextDataNode(ObjDesc *leaf) {
    ObjDesc *node = leaf;
    while (node) {
        ObjDesc *next = first_taker(RightSDTSibling(node));
        if (!next) {
            node = node->parent;
            if (!node)
                return nullptr;
            OaSlot *slot = OalSlotOf(node);
            if (++slot->count < slot->total_repetitions)
                next = first_taker(LeftmostSDTChild(node));
            else
                slot->count = 0;
        }
        if (next) {
            next = descend_to_leaf(next);
            OalPlaceLeaf(next);
            return next;
        }
    }
    return nullptr;
}

int OalProcessSDT(const void *source_bytes, int64_t byte_count, ObjDesc **leaf) {
    const auto *bytes = static_cast<const uint8_t *>(source_bytes);
    if (!*leaf)
        return 1;
    ObjDesc *root = root_of(*leaf);
    const uint8_t *buffer_end = OalSlotOf(root)->buffer_end;
    while (byte_count > 0) {
        if (const int64_t taken = OalProcessRows(root, bytes, byte_count, leaf)) {
            if (taken < 0 || !*leaf)
                return 1;
            bytes += taken;
            byte_count -= taken;
            continue;
        }
        OaSlot *slot = OalSlotOf(*leaf);
        const int64_t needed = slot->src.size - slot->src.progress;
        const bool whole_items = slot->src.progress == 0 && byte_count >= needed;
        int64_t consumed = std::min(needed, byte_count);
        int64_t items = consumed == needed ? 1 : 0;
        int failed = 0;
        if (whole_items) {
            items = std::min(byte_count / slot->src.size, slot->total_repetitions - slot->count);
            consumed = items * slot->src.size;
            failed = deliver(slot, bytes, items, buffer_end);
        } else {
            failed = deliver_part(slot, bytes, consumed, items == 1, buffer_end);
            slot->src.progress = items == 1 ? 0 : slot->src.progress + consumed;
        }
        if (failed)
            return 1;
        bytes += consumed;
        byte_count -= consumed;
        slot->count += items;
        if (slot->count == slot->total_repetitions) {
            slot->count = 0;
            *leaf = OalPositionToNextDataNode(*leaf);
            if (!*leaf)
                return 1;
        }
    }
    return 0;
}

int OalConvertRun(const OaSlot *slot, const uint8_t *src, uint8_t *dst, int64_t count) {
    switch (slot->conversion_type) {
        case OA_BINARY_TO_BINARY:
            BinrepConvertRun(slot->plan, src, dst, count);
            return 0;
        case OA_COPY:
            if (src != dst)
                memcpy(dst, src, static_cast<size_t>(count * slot->src.size));
            return 0;
        case OA_ASCII_TO_BINARY:
            return OalAsciiToBinary(*slot, {src, slot->src.size, dst, slot->dst.size, count});
        case OA_BINARY_TO_ASCII:
            OalBinaryToAsciiRun(*slot, src, dst, count);
            return 0;
        default:
            OaReportFailure(535, "%s: invalid conversion type: %d.", "OalConvert", slot->conversion_type);
            return 1;
    }
}

int OalConvert(OaSlot *slot) {
    return OalConvertRun(slot, slot->src.data, slot->dst.data, 1);
}
