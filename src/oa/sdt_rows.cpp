#include "oa/sdt_rows.h"

#include "oa/binrep_layout.h"
#include "oa/sdt_ascii.h"
#include "oa/sdt_walk.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t most_steps = 4096;         // of a row; more are walked through
constexpr int64_t block_bytes = 16 * 1024;  // of rows converted column by column: both sides stay in the first cache

bool copies(const OaSlot *slot) {
    return slot->conversion_type == OA_COPY;
}
// Bytes of one of a step's `count`.
int64_t src_unit(const OaRowStep &step) {
    return copies(step.slot) ? 1 : step.slot->src.size;
}
int64_t dst_unit(const OaRowStep &step) {
    return copies(step.slot) ? 1 : step.slot->dst.size;
}
int64_t dst_end(const OaRowStep &step) {
    return step.dst + step.count * dst_unit(step);
}

// Whether one run can hold the items of both.
bool same_conversion(const OaSlot *a, const OaSlot *b) {
    if (copies(a) || copies(b))
        return copies(a) && copies(b);
    return a->conversion_type == OA_BINARY_TO_BINARY && b->conversion_type == OA_BINARY_TO_BINARY &&
           a->plan.run == b->plan.run && a->plan.run != BinrepConvertByLayout && a->src.size == b->src.size &&
           a->dst.size == b->dst.size;
}

void append_step(std::vector<OaRowStep> *steps, const OaRowStep &step) {
    if (!steps->empty()) {
        OaRowStep &last = steps->back();
        if (same_conversion(last.slot, step.slot) && last.src + last.count * src_unit(last) == step.src &&
            dst_end(last) == step.dst) {
            last.count += step.count;
            return;
        }
    }
    steps->push_back(step);
}

bool converts(const OaSlot *slot) {
    return slot->dst.data && slot->dst.size > 0 && slot->conversion_type != OA_SKIP;
}

// Walks through the first row. False where the row has too many steps or writes out of order: then what is written last
// would depend on the order of the steps.
bool list_steps(OaSlot *root, ObjDesc *leaf) {
    size_t visited = 0;
    while (leaf && root->count == 0) {
        const OaSlot *slot = OalSlotOf(leaf);
        if (++visited > most_steps || (copies(slot) && slot->src.size != slot->dst.size))
            return false;
        int64_t src_size = 0;
        int64_t dst_size = 0;
        if (__builtin_mul_overflow(slot->total_repetitions, slot->src.size, &src_size) ||
            __builtin_mul_overflow(slot->total_repetitions, slot->dst.size, &dst_size))
            return false;
        if (converts(slot)) {
            const OaRowStep step = {slot, root->row_bytes, slot->dst.data - root->dst.data,
                                    copies(slot) ? src_size : slot->total_repetitions};
            const int64_t behind = root->row_steps.empty() ? root->dst.start_offset : dst_end(root->row_steps.back());
            if (step.dst < behind || dst_size > root->dst.start_offset + root->dst.size - step.dst)
                return false;
            append_step(&root->row_steps, step);
        } else if (slot->dst.size > 0 && slot->conversion_type != OA_SKIP) {
            return false;  // no room even for the first row
        }
        if (__builtin_add_overflow(root->row_bytes, src_size, &root->row_bytes))
            return false;
        leaf = OalPositionToNextDataNode(leaf);
    }
    return true;
}

// --- Rows -----------------------------------------------------------------------------------------------------------

// Gathers the few items that each row has, so that one run converts those of many rows.
constexpr int64_t gathered_bytes = 4096;
void convert_gathered(const OaRowStep &step, OaStrided rows) {
    uint8_t gathered[gathered_bytes];
    uint8_t converted[gathered_bytes];
    const int64_t src_bytes = step.count * src_unit(step);
    const int64_t dst_bytes = step.count * dst_unit(step);
    const int64_t most_rows = gathered_bytes / std::max(src_bytes, dst_bytes);
    while (rows.count > 0) {
        const int64_t some = std::min(rows.count, most_rows);
        OalCopyStrided({rows.src, rows.src_stride, gathered, src_bytes, some}, src_bytes);
        BinrepConvertRun(step.slot->plan, gathered, converted, some * step.count);
        OalScatter(converted, dst_bytes, rows.dst, rows.dst_stride, some);
        rows.src += some * rows.src_stride;
        rows.dst += some * rows.dst_stride;
        rows.count -= some;
    }
}

// One step of many rows. 0, or 1 after reporting.
int convert_step(const OaRowStep &step, const OaStrided &rows) {
    const OaSlot *slot = step.slot;
    const int64_t src_bytes = step.count * src_unit(step);
    const int64_t dst_bytes = step.count * dst_unit(step);
    const bool gapless = src_bytes == rows.src_stride && dst_bytes == rows.dst_stride;
    if (copies(slot)) {
        if (gapless)
            memcpy(rows.dst, rows.src, static_cast<size_t>(rows.count * src_bytes));
        else
            OalCopyStrided(rows, src_bytes);
        return 0;
    }
    if (gapless)
        return OalConvertRun(slot, rows.src, rows.dst, rows.count * step.count);
    if (step.count == 1 && slot->conversion_type == OA_ASCII_TO_BINARY)
        return OalAsciiToBinary(*slot, rows);
    if (slot->conversion_type == OA_BINARY_TO_BINARY && std::max(src_bytes, dst_bytes) <= gathered_bytes / 16) {
        convert_gathered(step, rows);
        return 0;
    }
    for (int64_t row = 0; row < rows.count; ++row)
        if (OalConvertRun(slot, rows.src + row * rows.src_stride, rows.dst + row * rows.dst_stride, step.count) != 0)
            return 1;
    return 0;
}

int convert_rows(const OaSlot *root, const uint8_t *src, int64_t rows) {
    uint8_t *dst = root->dst.data + root->count * root->dst.size;
    const int64_t block =
        root->row_steps.size() == 1 ? rows : std::clamp<int64_t>(block_bytes / root->row_bytes, 1, rows);
    for (; rows > 0; rows -= block, src += block * root->row_bytes, dst += block * root->dst.size)
        for (const OaRowStep &step : root->row_steps)
            if (convert_step(step, {src + step.src, root->row_bytes, dst + step.dst, root->dst.size,
                                    std::min(block, rows)}) != 0)
                return 1;
    return 0;
}

bool stands_at_row_start(const ObjDesc *root, const ObjDesc *leaf) {
    if (leaf != OalSlotOf(root)->row_start || OalSlotOf(leaf)->src.progress != 0)
        return false;
    for (; leaf != root; leaf = leaf->parent)
        if (OalSlotOf(leaf)->count != 0)
            return false;
    return true;
}

}  // namespace

void OalPlanRows(ObjDesc *root, ObjDesc *first) {
    OaSlot *slot = OalSlotOf(root);
    slot->row_steps.clear();
    slot->row_bytes = 0;
    slot->row_start = first;
    if (!first || first == root || slot->total_repetitions < 2 || slot->dst.size < 1)
        return;
    if (!list_steps(slot, first))
        slot->row_steps.clear();
    for (ObjDesc *node = root; node; node = next_in_pre_order(node, root))
        if (OalSlotOf(node))
            OalSlotOf(node)->count = 0;
}

int64_t OalProcessRows(ObjDesc *root, const uint8_t *bytes, int64_t byte_count, ObjDesc **leaf) {
    OaSlot *slot = OalSlotOf(root);
    if (slot->row_steps.empty() || byte_count < slot->row_bytes || !stands_at_row_start(root, *leaf))
        return 0;
    const int64_t room = slot->buffer_end - slot->dst.data - dst_end(slot->row_steps.back());
    const int64_t fitting = room < 0 ? 0 : room / slot->dst.size + 1;
    const int64_t rows =
        std::min({byte_count / slot->row_bytes, slot->total_repetitions - slot->count, fitting - slot->count});
    if (rows < 1)
        return 0;
    if (convert_rows(slot, bytes, rows) != 0)
        return -1;
    slot->count += rows;
    if (slot->count == slot->total_repetitions) {
        slot->count = 0;
        *leaf = nullptr;
    } else {
        OalPlaceLeaf(*leaf);
    }
    return rows * slot->row_bytes;
}
