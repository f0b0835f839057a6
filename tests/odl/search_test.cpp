#include "support/label.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

//  ROOT        N = 1
//    A         N = 2
//      B       N = 3, M = x
//      C       N = 4, N = 5
//    D         (no keyword)
//      B       N = 6
const char *const label_text =
    "N = 1\n"
    "OBJECT = A\nN = 2\nOBJECT = B\nN = 3\nM = x\nEND_OBJECT\nOBJECT = C\nN = 4\nN = 5\nEND_OBJECT\nEND_OBJECT\n"
    "OBJECT = D\nOBJECT = B\nN = 6\nEND_OBJECT\nEND_OBJECT\nEND\n";

class Search : public testing::Test {
  protected:
    // The values of N that the search meets, each instance asked for in turn until there is none.
    std::string values(ObjDesc *start, int scope) {
        std::string found;
        for (uint32_t instance = 1; const Kwd *keyword = OdlFindKwd(start, "N", nullptr, instance, scope); ++instance)
            found += keyword->value;
        return found;
    }

    ParsedLabel label_ = parse_text(label_text);
    ObjDesc *root_ = label_.root.get();
    ObjDesc *a_ = root_->first_child;
    ObjDesc *c_ = a_->last_child;
};

TEST_F(Search, VisitsTheStartAndThenItsScope) {
    struct {
        ObjDesc *start;
        int scope;
        const char *values;
    } const cases[] = {
        {root_, SCOPE_SUBTREE, "123456"},
        {a_, SCOPE_SUBTREE, "2345"},
        {a_, SCOPE_TO_END, "23456"},
        {a_, SCOPE_CHILDREN, "2345"},
        {root_, SCOPE_CHILDREN, "12"},
        {a_, SCOPE_SIBLINGS, "2"},
        {a_->first_child, SCOPE_SIBLINGS, "345"},
        {a_->first_child, SCOPE_SUBTREE, "345"},  // a childless start goes on to its right siblings
        {c_, SCOPE_SUBTREE, "45"},                // and ends where the climb reaches its own level
        {c_, SCOPE_SIBLINGS, "45"},
        {a_, SCOPE_THIS_OBJECT, "2"},
    };
    for (const auto &one : cases)
        EXPECT_EQ(values(one.start, one.scope), one.values) << one.start->class_name << " " << one.scope;
}

TEST_F(Search, FindsObjectsByClassAndTheirFirstKeywordOfAName) {
    const auto find = [&](const char *class_name, const char *name, const char *value, uint32_t instance = 0) {
        return OdlFindObjDesc(root_, class_name, name, value, instance, SCOPE_SUBTREE);
    };
    EXPECT_EQ(find("B", nullptr, nullptr, 1), a_->first_child);
    EXPECT_EQ(find("B", nullptr, nullptr, 2), root_->last_child->first_child);
    EXPECT_EQ(find("b", nullptr, nullptr), nullptr);
    EXPECT_EQ(find(nullptr, "M", "*"), a_->first_child);
    EXPECT_EQ(find(nullptr, "N", "4"), c_);
    EXPECT_EQ(find(nullptr, "N", "5"), nullptr) << "only the first N of an object counts";
    EXPECT_EQ(find("D", "N", nullptr), nullptr) << "an object's children do not count";
    EXPECT_EQ(find("B", nullptr, "3"), nullptr) << "a value without a name matches nothing";
}

TEST_F(Search, GoesOnFromAKeyword) {
    const auto next = [](Kwd *start, uint32_t instance, int scope) {
        const Kwd *keyword = OdlNextKwd(start, "N", nullptr, instance, scope);
        return std::string(keyword ? keyword->value : "none");
    };
    Kwd *four = c_->first_keyword;
    EXPECT_EQ(next(four->right_sibling, 1, SCOPE_THIS_OBJECT), "5");
    EXPECT_EQ(next(four->right_sibling, 2, SCOPE_THIS_OBJECT), "none");
    EXPECT_EQ(next(four, 3, SCOPE_TO_END), "6");
    EXPECT_EQ(next(four, 3, SCOPE_SUBTREE), "none");
}

TEST(WildCard, StarStandsForAnyRun) {
    const std::tuple<const char *, std::vector<const char *>, std::vector<const char *>> cases[] = {
        {"ABC", {"ABC"}, {"", "abc", "ABCD", "AB"}},
        {"*", {"", "A", "*x"}, {}},
        {"A*", {"A", "AB"}, {"", "BA"}},
        {"A*B", {"AB", "AxBxB", "A*B"}, {"A", "AxBx"}},
        {"A*C*E", {"ABCDE", "ABDCE"}, {"ABDE"}},
        {"*A*", {"xAx"}, {""}},
        {"*aab", {"aaaaab"}, {"aaaaba"}},
        {"A**B", {"AB"}, {"A"}},
        {"A**", {"AB"}, {"A"}},  // a star that more pattern follows does not match at the text's end
        {"**", {"x"}, {""}},
        {"^*STRUCTURE", {"^STRUCTURE", "^A_STRUCTURE"}, {"^STRUCTURES"}},
    };
    for (const auto &[pattern, matching, others] : cases) {
        for (const char *text : matching)
            EXPECT_TRUE(OdlWildCardCompare(pattern, text)) << pattern << " on " << text;
        for (const char *text : others)
            EXPECT_FALSE(OdlWildCardCompare(pattern, text)) << pattern << " on " << text;
    }
}

TEST(WildCard, ManyStarsDoNotMultiply) {
    std::string pattern;
    for (int i = 0; i < 1000; ++i)
        pattern += "a*";
    EXPECT_FALSE(OdlWildCardCompare((pattern + "b").c_str(), std::string(100'000, 'a').c_str()));
}

}  // namespace
