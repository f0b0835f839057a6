// Ways through a slot descriptor tree. Nodes without a slot carry no data of their own and are passed over.
#pragma once

#include "oa/sdt.h"

// What follows the node and its subtree within the subtree of `top`, or null.
inline ObjDesc *next_past(ObjDesc *node, const ObjDesc *top) {
    while (node != top && !node->right_sibling)
        node = node->parent;
    return node == top ? nullptr : node->right_sibling;
}

// The pre-order successor within the subtree of `top`, or null.
inline ObjDesc *next_in_pre_order(ObjDesc *node, const ObjDesc *top) {
    return node->first_child ? node->first_child : next_past(node, top);
}

inline ObjDesc *leftmost_leaf(ObjDesc *node) {
    while (node->first_child)
        node = node->first_child;
    return node;
}

// The post-order successor of a node below `top`. Start at leftmost_leaf(top); `top` itself comes last.
inline ObjDesc *next_in_post_order(ObjDesc *node) {
    return node->right_sibling ? leftmost_leaf(node->right_sibling) : node->parent;
}

// The nearest sibling to the left whose data the label describes: what the plan inserted does not count, because it
// only fills space.
inline ObjDesc *left_described_sibling(const ObjDesc *node) {
    ObjDesc *left = LeftSDTSibling(node);
    while (left && (!OalSlotOf(left) || OalSlotOf(left)->inserted))
        left = LeftSDTSibling(left);
    return left;
}

// The nearest sibling to the left that has a place in the source: not what only fills the destination.
inline ObjDesc *left_source_sibling(const ObjDesc *node) {
    ObjDesc *left = LeftSDTSibling(node);
    while (left && (!OalSlotOf(left) || (OalSlotOf(left)->inserted && OalSlotOf(left)->src.size == 0)))
        left = LeftSDTSibling(left);
    return left;
}

inline bool has_slots_below(const ObjDesc *node) {
    for (const ObjDesc *child = LeftmostSDTChild(node); child; child = RightSDTSibling(child))
        if (OalSlotOf(child))
            return true;
    return false;
}

// Sets where a leaf's next item goes.
void OalPlaceLeaf(ObjDesc *leaf);
