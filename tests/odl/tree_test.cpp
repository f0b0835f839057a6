#include "support/label.h"

#include <gtest/gtest.h>

namespace {

ObjDesc *new_object(const char *class_name) {
    return OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, "a.lbl", 0, 1);
}

Kwd *new_keyword(const char *name, const char *value = "1") {
    return OdlNewKwd(name, value, nullptr, nullptr, nullptr, 1);
}

const char *name_of(const ObjDesc *object) {
    return object->class_name;
}
const char *name_of(const Kwd *keyword) {
    return keyword->name;
}

// The names of a list from first to last, and read backwards, which must be the mirror image.
template <typename Record>
std::string names(const Record *first, const Record *last) {
    std::string forward;
    std::string backward;
    for (const Record *record = first; record; record = record->right_sibling)
        forward += name_of(record);
    for (const Record *record = last; record; record = record->left_sibling)
        backward.insert(0, name_of(record));
    EXPECT_EQ(forward, backward);
    return forward;
}

std::string children(const TreePtr &parent) {
    return names(parent->first_child, parent->last_child);
}

std::string keywords(const TreePtr &parent) {
    return names(parent->first_keyword, parent->last_keyword);
}

TEST(Tree, RecordsOwnCopiesOfTheirTexts) {
    std::string name = "^IMAGE";
    Kwd *keyword = OdlNewKwd(name.c_str(), "(1,2)", "pre", nullptr, "a.lbl", 7);
    name = "changed";
    EXPECT_STREQ(keyword->name, "^IMAGE");
    EXPECT_EQ(keyword->is_a_pointer + keyword->is_a_list, 2);
    Kwd *copy = OdlCopyKwd(keyword);
    OdlFreeKwd(keyword);
    EXPECT_STREQ(copy->value, "(1,2)");
    EXPECT_STREQ(copy->pre_comment, "pre");
    EXPECT_STREQ(copy->file_name, "a.lbl");
    OdlFreeKwd(copy);
}

TEST(Tree, PastesAndCutsKeepBothListsWhole) {
    const TreePtr root(new_object("R"));
    ObjDesc *b = OdlPasteObjDesc(new_object("B"), root.get());
    OdlPasteObjDescBefore(new_object("A"), b);
    OdlPasteObjDescAfter(new_object("D"), b);
    ObjDesc *c = OdlPasteObjDescAfter(new_object("C"), b);
    EXPECT_EQ(children(root), "ABCD");
    for (ObjDesc *cut : {c, root->first_child, root->last_child, b})
        EXPECT_EQ(TreePtr(OdlCutObjDesc(cut))->right_sibling, nullptr);
    EXPECT_EQ(children(root), "");

    Kwd *y = OdlPasteKwd(new_keyword("y"), root.get());
    OdlPasteKwdBefore(new_keyword("x"), y);
    OdlPasteKwdAfter(new_keyword("z"), y);
    EXPECT_EQ(keywords(root), "xyz");
    OdlFreeKwd(OdlCutKwd(y));
    EXPECT_EQ(keywords(root), "xz");
    OdlFreeKwd(OdlCutKwd(root->last_keyword));
    OdlFreeKwd(OdlCutKwd(root->first_keyword));
    EXPECT_EQ(keywords(root), "");
}

TEST(Tree, LevelsFollowPastesButNotCuts) {
    const TreePtr root(new_object("R"));
    ObjDesc *a = OdlPasteObjDesc(new_object("A"), root.get());
    ObjDesc *b = OdlPasteObjDesc(new_object("B"), a);
    ObjDesc *c = OdlPasteObjDesc(new_object("C"), b);
    ObjDesc *after = OdlPasteObjDesc(new_object("Z"), root.get());
    OdlCutObjDesc(b);
    EXPECT_EQ(b->level, 2u);
    OdlPasteObjDescBefore(b, a);
    EXPECT_EQ(b->level, 1u);
    EXPECT_EQ(c->level, 2u);
    after->level = 77;  // outside of the pasted subtree: not touched
    OdlAdjustObjDescLevel(b);
    EXPECT_EQ(after->level, 77u);
}

TEST(Tree, NullRecordsAndMissingParentsAreErrors) {
    const TreePtr lone(new_object("L"));
    const TreePtr other(new_object("O"));
    const auto expect_error = [](int code, bool result) {
        EXPECT_FALSE(result);
        EXPECT_EQ(odl_errno, code);
        odl_errno = 0;
    };
    expect_error(1, OdlGetFirstKwd(nullptr));
    expect_error(1, OdlCopyKwd(nullptr));
    expect_error(1, OdlPasteObjDesc(lone.get(), nullptr));
    expect_error(1, OdlCutObjDesc(nullptr));
    expect_error(1, OdlFreeKwd(nullptr));
    expect_error(1, OdlFindKwd(nullptr, "A", nullptr, 0, 0));
    expect_error(10, OdlPasteObjDescBefore(other.get(), lone.get()));
}

// A recursion over siblings or levels would overflow the stack here; anything quadratic would not end.
TEST(Tree, HoldsAMillionSiblingsAndAHundredThousandLevels) {
    const TreePtr root(new_object("R"));
    for (int i = 0; i < 1'000'000; ++i)
        OdlPasteObjDesc(new_object("A"), root.get());
    EXPECT_EQ(OdlFindObjDesc(root.get(), "A", nullptr, nullptr, 1'000'000, SCOPE_CHILDREN), root->last_child);
    ObjDesc *innermost = root->first_child;
    for (int i = 0; i < 100'000; ++i)
        innermost = OdlPasteObjDesc(new_object("A"), innermost);
    EXPECT_EQ(OdlTraverseTree(innermost, 0), root->first_child->right_sibling);
    OdlPasteObjDesc(OdlCutObjDesc(root->first_child), root->last_child);
    EXPECT_EQ(innermost->level, 100'002u);
}

}  // namespace
