// Making, measuring and freeing the slots of a tree.
#include "oa/sdt_walk.h"

#include <new>

OaSlot *OalNewSDTNode(ObjDesc *node) {
    auto *slot = new (std::nothrow) OaSlot;
    if (!slot)
        OaFatal(720, "%s: OaMalloc returned error", __func__);
    node->appl1 = slot;
    return slot;
}

void OalFreeSDTStruct(OaSlot *slot) {
    delete slot;
}

ObjDesc *OalFreeSDT(ObjDesc *tree) {
    for (ObjDesc *node = tree; node; node = next_in_pre_order(node, tree)) {
        OalFreeSDTStruct(OalSlotOf(node));
        node->appl1 = nullptr;
    }
    return OdlFreeTree(tree);
}

namespace {

int64_t size_of_all(const OaSlot *slot, const OaSlotSide OaSlot::*side) {
    int64_t size = 0;
    if (!slot || slot->total_repetitions < 0 || (slot->*side).size < 0 ||
        __builtin_mul_overflow(slot->total_repetitions, (slot->*side).size, &size))
        return -1;
    return size;
}

}  // namespace

int64_t OalSourceSize(const ObjDesc *sdt) {
    return size_of_all(OalSlotOf(sdt), &OaSlot::src);
}

int64_t OalDestinationSize(const ObjDesc *sdt) {
    return size_of_all(OalSlotOf(sdt), &OaSlot::dst);
}
