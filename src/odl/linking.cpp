// Pasting and cutting: the doubly linked lists of children and of keywords.
#include "odl/odl.h"

namespace {

ObjDesc *&first_of(ObjDesc &parent, const ObjDesc *) {
    return parent.first_child;
}
ObjDesc *&last_of(ObjDesc &parent, const ObjDesc *) {
    return parent.last_child;
}
Kwd *&first_of(ObjDesc &parent, const Kwd *) {
    return parent.first_keyword;
}
Kwd *&last_of(ObjDesc &parent, const Kwd *) {
    return parent.last_keyword;
}

// Links the record under `parent` between two neighbours, of which either may be null.
template <typename Record>
void link(Record *record, ObjDesc *parent, Record *left, Record *right) {
    record->parent = parent;
    record->left_sibling = left;
    record->right_sibling = right;
    (left ? left->right_sibling : first_of(*parent, record)) = record;
    (right ? right->left_sibling : last_of(*parent, record)) = record;
}

template <typename Record>
void unlink(Record *record) {
    ObjDesc &parent = *record->parent;
    Record *left = record->left_sibling;
    Record *right = record->right_sibling;
    (left ? left->right_sibling : first_of(parent, record)) = right;
    (right ? right->left_sibling : last_of(parent, record)) = left;
    record->parent = nullptr;
    record->left_sibling = nullptr;
    record->right_sibling = nullptr;
}

bool both_given(const void *one, const void *other) {
    if (one && other)
        return true;
    odl_errno = 1;
    return false;
}

template <typename Record>
bool can_paste_beside(const Record *record, const Record *old) {
    if (!both_given(record, old))
        return false;
    if (old->parent)
        return true;
    odl_errno = 10;
    return false;
}

// The object after `object` in the subtree of `top`, or null.
ObjDesc *next_in_subtree(ObjDesc *object, const ObjDesc *top) {
    if (object->first_child)
        return object->first_child;
    while (object && object != top && !object->right_sibling)
        object = object->parent;
    return object && object != top ? object->right_sibling : nullptr;
}

}  // namespace

ObjDesc *OdlPasteObjDesc(ObjDesc *object, ObjDesc *parent) {
    if (!both_given(object, parent))
        return nullptr;
    link(object, parent, parent->last_child, static_cast<ObjDesc *>(nullptr));
    return OdlAdjustObjDescLevel(object);
}

ObjDesc *OdlPasteObjDescBefore(ObjDesc *object, ObjDesc *old) {
    if (!can_paste_beside(object, old))
        return nullptr;
    link(object, old->parent, old->left_sibling, old);
    return OdlAdjustObjDescLevel(object);
}

ObjDesc *OdlPasteObjDescAfter(ObjDesc *object, ObjDesc *old) {
    if (!can_paste_beside(object, old))
        return nullptr;
    link(object, old->parent, old, old->right_sibling);
    return OdlAdjustObjDescLevel(object);
}

ObjDesc *OdlCutObjDesc(ObjDesc *object) {
    if (!both_given(object, object))
        return nullptr;
    if (object->parent)
        unlink(object);
    return object;
}

ObjDesc *OdlAdjustObjDescLevel(ObjDesc *object) {
    if (!both_given(object, object))
        return nullptr;
    for (ObjDesc *visited = object; visited; visited = next_in_subtree(visited, object))
        visited->level = visited->parent ? visited->parent->level + 1 : 0;
    return object;
}

Kwd *OdlPasteKwd(Kwd *keyword, ObjDesc *object) {
    if (!both_given(keyword, object))
        return nullptr;
    link(keyword, object, object->last_keyword, static_cast<Kwd *>(nullptr));
    return keyword;
}

Kwd *OdlPasteKwdBefore(Kwd *keyword, Kwd *old) {
    if (!can_paste_beside(keyword, old))
        return nullptr;
    link(keyword, old->parent, old->left_sibling, old);
    return keyword;
}

Kwd *OdlPasteKwdAfter(Kwd *keyword, Kwd *old) {
    if (!can_paste_beside(keyword, old))
        return nullptr;
    link(keyword, old->parent, old, old->right_sibling);
    return keyword;
}

Kwd *OdlCutKwd(Kwd *keyword) {
    if (!both_given(keyword, keyword))
        return nullptr;
    if (keyword->parent)
        unlink(keyword);
    return keyword;
}
