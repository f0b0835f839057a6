#include "support/label.h"

#include <gtest/gtest.h>

namespace {

ObjDesc *new_object(const char *class_name) {
    return OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, "a.lbl", 0, 1);
}

Kwd *new_keyword(const char *name, const char *value = "1") {
    return OdlNewKwd(name, value, nullptr, nullptr, nullptr, 1);
}

// The classes of the children from first to last, and read backwards, which must be the mirror image.
std::string children(const ObjDesc *parent) {
    std::string forward;
    std::string backward;
    for (const ObjDesc *child = parent->first_child; child; child = child->right_sibling)
        forward += child->class_name;
    for (const ObjDesc *child = parent->last_child; child; child = child->left_sibling)
        backward.insert(0, child->class_name);
    EXPECT_EQ(forward, backward);
    return forward;
}

std::string keywords(const ObjDesc *parent) {
    std::string forward;
    std::string backward;
    for (const Kwd *keyword = parent->first_keyword; keyword; keyword = keyword->right_sibling)
        forward += keyword->name;
    for (const Kwd *keyword = parent->last_keyword; keyword; keyword = keyword->left_sibling)
        backward.insert(0, keyword->name);
    EXPECT_EQ(forward, backward);
    return forward;
}

TEST(Tree, RecordsOwnCopiesOfTheirTexts) {
    std::string name = "^IMAGE";
    Kwd *keyword = OdlNewKwd(name.c_str(), "(1,2)", "pre", "line", "a.lbl", 7);
    name = "changed";
    EXPECT_STREQ(keyword->name, "^IMAGE");
    EXPECT_EQ(keyword->size, 5u);
    EXPECT_EQ(keyword->is_a_pointer, 1);
    EXPECT_EQ(keyword->is_a_list, 1);

    Kwd *copy = OdlCopyKwd(keyword);
    EXPECT_NE(copy->value, keyword->value);
    EXPECT_STREQ(copy->pre_comment, "pre");
    EXPECT_STREQ(copy->line_comment, "line");
    EXPECT_STREQ(copy->file_name, "a.lbl");
    EXPECT_EQ(copy->line_number, 7);
    EXPECT_EQ(OdlFreeKwd(keyword), nullptr);
    OdlFreeKwd(copy);

    Kwd *empty = OdlNewKwd("A", nullptr, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(empty->value, nullptr);
    EXPECT_EQ(empty->size, 0u);
    EXPECT_EQ(empty->is_a_list, 0);
    OdlFreeKwd(empty);
}

TEST(Tree, ACopiedObjectIsBare) {
    const ParsedLabel label = parse_text("OBJECT = A /* c */\nX = 1\nOBJECT = B\nEND_OBJECT\nEND_OBJECT\nEND");
    const TreePtr copy(OdlCopyObjDesc(label.root->first_child));
    EXPECT_EQ(outline(copy.get()), "A @1 line{/* c */}\n");
    EXPECT_EQ(copy->level, 0u);
    EXPECT_EQ(copy->parent, nullptr);
}

TEST(Tree, PastesAndCutsKeepBothListsWhole) {
    const TreePtr root(new_object("R"));
    ObjDesc *b = OdlPasteObjDesc(new_object("B"), root.get());
    OdlPasteObjDescBefore(new_object("A"), b);
    OdlPasteObjDescAfter(new_object("D"), b);
    ObjDesc *c = OdlPasteObjDescAfter(new_object("C"), b);
    EXPECT_EQ(children(root.get()), "ABCD");
    for (ObjDesc *cut : {c, root->first_child, root->last_child, b})
        EXPECT_EQ(TreePtr(OdlCutObjDesc(cut))->right_sibling, nullptr);
    EXPECT_EQ(children(root.get()), "");

    Kwd *y = OdlPasteKwd(new_keyword("y"), root.get());
    OdlPasteKwdBefore(new_keyword("x"), y);
    OdlPasteKwdAfter(new_keyword("z"), y);
    EXPECT_EQ(keywords(root.get()), "xyz");
    OdlFreeKwd(OdlCutKwd(y));
    EXPECT_EQ(keywords(root.get()), "xz");
    OdlFreeKwd(OdlCutKwd(root->last_keyword));
    OdlFreeKwd(OdlCutKwd(root->first_keyword));
    EXPECT_EQ(keywords(root.get()), "");
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

TEST(Tree, FreeingALinkedObjectFreesItsRightSiblings) {
    const TreePtr root(new_object("R"));
    OdlPasteObjDesc(new_object("A"), root.get());
    ObjDesc *b = OdlPasteObjDesc(new_object("B"), root.get());
    OdlPasteObjDesc(new_object("C"), b);
    OdlPasteObjDesc(new_object("D"), root.get());
    root->last_child = root->first_child;  // leak checking tells whether B, C and D went
    root->first_child->right_sibling = nullptr;
    EXPECT_EQ(OdlFreeTree(b), nullptr);
    EXPECT_EQ(children(root.get()), "A");
}

TEST(Tree, NullRecordsAndMissingParentsAreErrors) {
    const TreePtr lone(new_object("L"));
    Kwd *keyword = new_keyword("K");
    const auto expect_error = [](bool result) {
        EXPECT_FALSE(result);
        EXPECT_EQ(odl_errno, 1);
        odl_errno = 0;
    };
    odl_errno = 0;
    expect_error(OdlGetObjDescClassName(nullptr));
    expect_error(OdlGetObjDescChildCount(nullptr));
    expect_error(OdlGetFirstKwd(nullptr));
    expect_error(OdlGetKwdValueType(nullptr));
    expect_error(OdlCopyKwd(nullptr));
    expect_error(OdlPasteObjDesc(lone.get(), nullptr));
    expect_error(OdlPasteKwd(keyword, nullptr));
    expect_error(OdlCutObjDesc(nullptr));
    expect_error(OdlFreeKwd(nullptr));
    expect_error(OdlFindKwd(nullptr, "A", nullptr, 0, 0));
    expect_error(OdlNextKwd(nullptr, "A", nullptr, 0, 0));
    const TreePtr other(new_object("O"));
    EXPECT_EQ(OdlPasteObjDescBefore(other.get(), lone.get()), nullptr);
    EXPECT_EQ(odl_errno, 10);
    odl_errno = 0;
    Kwd *detached = new_keyword("D");
    EXPECT_EQ(OdlPasteKwdAfter(keyword, detached), nullptr);
    EXPECT_EQ(odl_errno, 10);
    OdlFreeKwd(keyword);
    OdlFreeKwd(detached);
}

TEST(Tree, TellsTheLabelVersion) {
    EXPECT_STREQ(OdlGetLabelVersion(parse_text("ODL_VERSION_ID = V1\nODL_VERSION_NUMBER = 2\nEND").root.get()), "2");
    EXPECT_STREQ(OdlGetLabelVersion(parse_text("ODL_VERSION_ID = V1\nKRV_VERSION_ID = KRV3\nEND").root.get()), "KRV3");
    EXPECT_EQ(OdlGetLabelVersion(parse_text("OBJECT = A\nKRV_VERSION_ID = 1\nEND_OBJECT\nEND").root.get()), nullptr);
}

// A recursion over siblings or levels would overflow the stack here; anything quadratic would not end.
TEST(Tree, HoldsAMillionSiblingsAndAHundredThousandLevels) {
    TreePtr wide(new_object("R"));
    for (int i = 0; i < 1'000'000; ++i)
        OdlPasteObjDesc(new_object("A"), wide.get());
    EXPECT_EQ(OdlGetObjDescChildCount(wide.get()), 1'000'000u);
    EXPECT_EQ(OdlFindObjDesc(wide.get(), "A", nullptr, nullptr, 1'000'000, SCOPE_CHILDREN), wide->last_child);

    TreePtr deep(new_object("R"));
    ObjDesc *innermost = deep.get();
    for (int i = 0; i < 100'000; ++i)
        innermost = OdlPasteObjDesc(new_object("A"), innermost);
    ObjDesc *last = OdlPasteObjDesc(new_object("LAST"), deep.get());
    EXPECT_EQ(innermost->level, 100'000u);
    EXPECT_EQ(OdlTraverseTree(innermost, 0), last);
    ObjDesc *top = deep->first_child;
    OdlPasteObjDesc(OdlCutObjDesc(top), last);
    EXPECT_EQ(innermost->level, 100'001u);
}

}  // namespace
