// Copies and checks of label trees.
#include "oa/oa.h"
#include "oa/sdt.h"

namespace {

ObjDesc *copy_node(const ObjDesc *node, int options) {
    ObjDesc *copy = OdlCopyObjDesc(node);
    copy->child_count = node->child_count;
    for (const Kwd *keyword = node->first_keyword; keyword; keyword = keyword->right_sibling)
        OdlPasteKwd(OdlCopyKwd(keyword), copy);
    if (options & OA_COPY_SDT)
        if (const OaSlot *slot = OalSlotOf(node))
            copy->appl1 = new OaSlot(*slot);
    return copy;
}

bool keywords_agree(const ObjDesc *node) {
    const Kwd *last = nullptr;
    for (const Kwd *keyword = node->first_keyword; keyword; keyword = keyword->right_sibling) {
        if (keyword->parent != node || keyword->left_sibling != last)
            return false;
        last = keyword;
    }
    return last == node->last_keyword;
}

// Each child names its parent and its left neighbour, and none is `top`: then neither a chain of right neighbours nor
// the way down runs in a circle.
bool children_agree(const ObjDesc *node, const ObjDesc *top) {
    const ObjDesc *last = nullptr;
    for (const ObjDesc *child = node->first_child; child; child = child->right_sibling) {
        if (child->parent != node || child->left_sibling != last || child == top)
            return false;
        last = child;
    }
    return last == node->last_child;
}

// Pre-order successor within the subtree of `top`.
const ObjDesc *next_in_subtree(const ObjDesc *node, const ObjDesc *top) {
    if (node->first_child)
        return node->first_child;
    while (node != top && !node->right_sibling)
        node = node->parent;
    return node == top ? nullptr : node->right_sibling;
}

}  // namespace

ObjDesc *OaCopyTree(const ObjDesc *node, int options) {
    if (!node) {
        OaReportFailure(501, "%s: node is NULL.", __func__);
        return nullptr;
    }
    ObjDesc *const root = copy_node(node, options);
    ObjDesc *copy = root;
    for (const ObjDesc *original = node;;) {
        if (original->first_child) {
            original = original->first_child;
        } else {
            for (; original != node && !original->right_sibling; original = original->parent)
                copy = copy->parent;
            if (original == node)
                return root;
            original = original->right_sibling;
            copy = copy->parent;
        }
        copy = OdlPasteObjDesc(copy_node(original, options), copy);
    }
}

int OaCheckODLTree(const ObjDesc *node) {
    for (const ObjDesc *at = node; at; at = next_in_subtree(at, node))
        if (!keywords_agree(at) || !children_agree(at, node))
            return 1;
    return node ? 0 : 1;
}
