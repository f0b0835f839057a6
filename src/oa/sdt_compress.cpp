// Simplifying a tree before it is run: what moves nothing goes, and copies fold into one run.
#include "oa/sdt_walk.h"

namespace {

bool moves_nothing(const ObjDesc *node) {
    const OaSlot *slot = OalSlotOf(node);
    return !slot || slot->total_repetitions < 1 || (slot->src.size == 0 && slot->dst.size == 0 && !node->first_child);
}

void simplify(OaSlot *slot) {
    if (slot->conversion_type == OA_BINARY_TO_BINARY && slot->src.binrep == slot->dst.binrep) {
        slot->conversion_type = OA_COPY;
        slot->src.binrep = slot->dst.binrep = nullptr;
    }
    if (slot->conversion_type != OA_COPY || slot->total_repetitions < 2 || slot->src.size != slot->dst.size)
        return;
    slot->src.size *= slot->total_repetitions;
    slot->dst.size *= slot->total_repetitions;
    slot->total_repetitions = 1;
}

}  // namespace

ObjDesc *OalCompressSDT(const ObjDesc *sdt) {
    ObjDesc *copy = OaCopyTree(sdt, OA_COPY_SDT);
    for (ObjDesc *node = copy; node;) {
        if (node != copy && moves_nothing(node)) {
            ObjDesc *next = next_past(node, copy);
            OalFreeSDT(OdlCutObjDesc(node));
            node = next;
            continue;
        }
        if (OaSlot *slot = OalSlotOf(node))
            simplify(slot);
        node = next_in_pre_order(node, copy);
    }
    return copy;
}
