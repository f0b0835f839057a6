// Building the tree: one slot for every label node that carries data, post-order, with SPAREs where the label leaves
// bytes undescribed.
#include "oa/sdt_build.h"

#include <algorithm>

namespace {

// Stepping from leaf to leaf costs time for every level, and no label nests like that.
constexpr int deepest = 256;

bool is_too_deep(const ObjDesc *top) {
    int depth = 0;
    for (const ObjDesc *node = top; node && depth <= deepest;) {
        if (node->first_child) {
            node = node->first_child;
            ++depth;
            continue;
        }
        for (; node != top && !node->right_sibling; node = node->parent)
            --depth;
        node = node == top ? nullptr : node->right_sibling;
    }
    return depth > deepest;
}

}  // namespace

ObjDesc *OalCreateSDT(ObjDesc *object, OaInterchangeFormat src_interchange_format) {
    constexpr uint8_t largest_alignment_type = 2;
    if (!object) {
        OaReportFailure(501, "%s: object is NULL.", __func__);
        return nullptr;
    }
    if (Oa_profile.dst_alignment_type > largest_alignment_type) {
        OaReportFailure(535, "%s: invalid Oa_profile.dst_alignment_type: %d.", __func__, Oa_profile.dst_alignment_type);
        return nullptr;
    }
    if (is_too_deep(object)) {
        OaReportFailure(530, "%s: objects are nested more than %d deep.", __func__, deepest);
        return nullptr;
    }
    if (object->parent) {
        OdlCutObjDesc(object);
        OaReportFailure(530,
                        "%s: Warning: input node shouldn't have a parent.\n Input node has now been cut off from "
                        "parent node.",
                        __func__);
    }
    ObjDesc *image_line = nullptr;
    if (OalPreparePrefixAndSuffix(object, &image_line) != 0 || OalPrepareColumnMajor(object) != 0)
        return nullptr;

    const uint8_t format =
        src_interchange_format == OA_ASCII ? Oa_profile.dst_format_for_ascii : Oa_profile.dst_format_for_binary;
    if (OalPostOrderTraverse(object, OA_BUILD_SLOTS, src_interchange_format, static_cast<OaInterchangeFormat>(format)))
        return nullptr;
    if (image_line) {
        if (OalFinishInterior(object) != 0)
            return nullptr;
        OalSlotOf(image_line)->inserted = true;
    }
    if (OalSlotOf(object) && (OalSourceSize(object) < 0 || OalDestinationSize(object) < 0)) {
        OaReportFailure(502, "%s: the described data are too large.", __func__);
        return nullptr;
    }
    return object;
}

int OalPostOrderTraverse(ObjDesc *node, int mode, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    ObjDesc *current = leftmost_leaf(node);
    for (;;) {
        // Found first, because building inserts siblings and adjusting may end the node's slot.
        ObjDesc *next = current == node ? nullptr : next_in_post_order(current);
        if (mode == OA_BUILD_SLOTS) {
            if (const int failed = OalBuildSDTNode(current, src_format, dst_format))
                return failed;
        } else {
            OalAdjustKwdstoMatchSDT(current, src_format, dst_format);
        }
        if (!next)
            return 0;
        current = next;
    }
}

int OalBuildSDTNode(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    if (src_format != OA_ASCII && src_format != OA_BINARY) {
        OaReportFailure(531, "%s: invalid src_interchange_format: %d", __func__, src_format);
        return 1;
    }
    if (dst_format != OA_ASCII && dst_format != OA_BINARY) {
        OaReportFailure(531, "%s: invalid dst_interchange_format: %d", __func__, dst_format);
        return 1;
    }
    if (OalSlotOf(node))
        return 0;
    return has_slots_below(node) ? OalBuildInterior(node) : OalBuildLeaf(node, src_format, dst_format);
}

void OalDetermineRepNodeAlignment(ObjDesc *node) {
    OaSlot *slot = OalSlotOf(node);
    for (const ObjDesc *child = LeftmostSDTChild(node); child; child = RightSDTSibling(child))
        if (const OaSlot *below = OalSlotOf(child))
            slot->dst.alignment_req = std::max(slot->dst.alignment_req, below->dst.alignment_req);
    const ObjDesc *left = left_described_sibling(node);
    if (!left)
        return;
    // One repetition of the sibling only, and the node itself stays where it is: readers rely on that layout.
    const OaSlotSide &before = OalSlotOf(left)->dst;
    const int64_t beyond = (before.start_offset + before.size) % slot->dst.alignment_req;
    if (beyond == 0)
        return;
    const int64_t padding = slot->dst.alignment_req - beyond;
    OdlPasteObjDescBefore(OalNewSpare(0, 0, padding), node);
    OaReportFailure(950,
                    "%s: SPARE needed for alignment; inserted a SPARE COLUMN node before %s node, with dst.size: %lld "
                    "and dst.start_offset: %lld.",
                    __func__, OaObjectClasstoStr(OaGetObjectClass(node)), static_cast<long long>(padding), 0LL);
}

int OalCheckForGapInSrcData(ObjDesc *node) {
    const OaSlotSide &src = OalSlotOf(node)->src;
    const ObjDesc *left = left_source_sibling(node);
    const int64_t left_end = left ? OalSourceEnd(*OalSlotOf(left)) : 0;
    if (left_end < 0 || src.start_offset < left_end) {
        static const OaSlotSide none;
        return OalReportOverlap(__func__, src.start_offset, left ? OalSlotOf(left)->src : none);
    }
    if (src.start_offset > left_end && node->parent)
        OdlPasteObjDescBefore(OalNewSpare(left_end, src.start_offset - left_end, 0), node);
    return 0;
}
