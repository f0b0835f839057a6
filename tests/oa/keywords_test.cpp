#include "support/product.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Keywords : public testing::Test {
  protected:
    OdlTree object(const std::string &class_name) {
        return OdlTree(OdlNewObjDesc(class_name.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0));
    }

    SilentReports reports_;
};

TEST_F(Keywords, ClassesByNameThenBySuffix) {
    const std::pair<std::string, int> cases[] = {{" image ", OA_IMAGE},
                                                 {"SPECTRAL_QUBE", OA_QUBE},
                                                 {"MY_BIT_COLUMN", OA_BIT_COLUMN},
                                                 {"XTABLEX", 0},
                                                 {std::string(75, 'X') + "TABLE", OA_TABLE},
                                                 {std::string(76, 'X') + "TABLE", 0}};
    for (const auto &[name, code] : cases)
        EXPECT_EQ(OaGetObjectClass(object(name).get()), code) << name;
}

TEST_F(Keywords, InterchangeFormats) {
    const std::tuple<const char *, const char *, const char *, int> cases[] = {
        {"TABLE", "INTERCHANGE_FORMAT", "ascii", OA_ASCII},
        {"TABLE", "INTERCHANGE_FORMAT", "\"ASCII_BINARY\"", OA_BINARY},
        {"HISTORY", "INTERCHANGE_FORMAT", "BINARY", OA_ASCII},
        {"TABLE", "INTERCHANGE_FORMAT", "EBCDIC", OA_NO_FORMAT},
    };
    for (const auto &[class_name, name, value, format] : cases) {
        const OdlTree node = object(class_name);
        OaStrtoKwdValue(name, node.get(), value);
        EXPECT_EQ(OaGetObjectInterchangeFormat(node.get()), format) << value;
    }
    EXPECT_EQ(oa_errno, 531);
    EXPECT_EQ(error_string, "OaGetObjectInterchangeFormat: invalid interchange format: EBCDIC.");
}

TEST_F(Keywords, NumbersOfValues) {
    const std::string not_integer = "OaKwdValuetoLong: K keyword value is not an integer.";
    const std::string not_long = "OaKwdValuetoLong: sscanf failed to convert K keyword value to long";
    const struct {
        const char *value;
        int64_t number;
        std::string message;
    } integers[] = {{"+12 <BYTES>", 12, ""},
                    {"2#-101#", -5, ""},
                    {"9223372036854775807", INT64_MAX, ""},
                    {"9223372036854775808", 0, not_long},
                    {"16#FFFFFFFFFFFFFFFFFF#", 0, not_long},
                    {"1.5", 0, not_integer},
                    {"\"12\"", 0, not_integer}};
    const OdlTree node = object("TABLE");
    for (const auto &c : integers) {
        SCOPED_TRACE(c.value);
        OaStrtoKwdValue("K", node.get(), c.value);
        const SilentReports fresh;
        int64_t number = 0;
        EXPECT_EQ(OaKwdValuetoLong("K", node.get(), &number), c.message.empty() ? 0 : 1);
        EXPECT_EQ(number, c.number);
        EXPECT_EQ(error_string, c.message);
        EXPECT_EQ(oa_errno, c.message.empty() ? 0 : 600);
    }
    const struct {
        const char *value;
        int result;
        double number;
    } reals[] = {{"-2.5E-3 <KM>", 0, -0.0025},
                 {"+.5", 0, 0.5},
                 {"16#10#", 0, 16},
                 {"1E400", 1, 0},
                 {"NAN", 1, 0},
                 {"\"1.5\"", 1, 0},
                 {"1.5.2", 1, 0},
                 {"+-1.5", 1, 0}};
    for (const auto &c : reals) {
        OaStrtoKwdValue("K", node.get(), c.value);
        double number = 0;
        EXPECT_EQ(OaKwdValuetoDouble("K", node.get(), &number), c.result) << c.value;
        EXPECT_EQ(number, c.number) << c.value;
    }
}

TEST_F(Keywords, AreFoundByPatternSetAndDeleted) {
    const OdlTree root = parse_label(
        "OBJECT = IMAGE\n LINE_PREFIX_BYTES = 4\n OBJECT = X\n LINES = 9\n END_OBJECT\n"
        "END_OBJECT\nEND\n");
    ObjDesc *image = root->first_child;
    int64_t number = 0;
    EXPECT_EQ(OaKwdValuetoLong("*PREFIX*BYTES", image, &number), 0);
    EXPECT_EQ(number, 4);
    const char *text = nullptr;
    EXPECT_EQ(OaKwdValuetoStr("LINES", image, &text), 1) << "of the node alone";

    OaStrtoKwdValue("LINES", image, "(1, 2)");
    EXPECT_EQ(image->last_keyword->is_a_list, 1);
    OaStrtoKwdValue("LINES", image, image->last_keyword->value);
    EXPECT_STREQ(image->last_keyword->value, "(1, 2)") << "set to its own text";

    EXPECT_EQ(OaDeleteKwd("LINE_*", image), 0);
    EXPECT_STREQ(image->first_keyword->name, "LINES");
    EXPECT_EQ(OaDeleteKwd("LINE_*", image), 1);
}

TEST_F(Keywords, SequencesAreSplitAtCommasOutsideQuotes) {
    using Texts = std::vector<std::string>;
    const struct {
        const char *value;
        Texts texts;
    } cases[] = {{"(A, \"B, (C)\", 'D')", {"A", "B, (C)", "D"}},
                 {"{1.5 <KM>, \"<x>\" <M>}", {"1.5", "<x>"}},
                 {"((1,2),(3,4))", {"1", "2", "3", "4"}},
                 {"(A,,\" \")", {"A", "", " "}},
                 {"( )", {}},
                 {"(\"never closed, B)", {"never closed, B)"}}};
    for (const auto &c : cases) {
        Texts texts;
        EXPECT_EQ(OaSequencetoStrArray(c.value, &texts), 0);
        EXPECT_EQ(texts, c.texts) << c.value;
    }
    std::vector<int64_t> numbers;
    EXPECT_EQ(OaSequencetoLongArray("(12, 16#1F# <BYTES>, -3)", &numbers), 0);
    EXPECT_EQ(numbers, (std::vector<int64_t>{12, 31, -3}));
    for (const char *value : {"(1, B)", "(1,)", "(1.5)"}) {
        EXPECT_EQ(OaSequencetoLongArray(value, &numbers), 1) << value;
        EXPECT_EQ(oa_errno, 600);
    }
}

TEST_F(Keywords, TableSizes) {
    const struct {
        std::string keywords;
        std::string sizes;  // rows, row bytes, prefix, suffix
        std::string message;
    } cases[] = {
        {"RECORDS = 5000\nROW_BYTES = 800\nROW_PREFIX_BYTES = 30\nROW_SUFFIX_BYTES = 4", "5000 800 30 4", ""},
        {"ROWS = -5\nROW_BYTES = 80", "", "OaGetTableKeywords: ROWS keyword missing."},
        {"ROWS = 5\nROW_BYTES = 80\nROW_PREFIX_BYTES = -3", "",
         "OaGetTableKeywords: *PREFIX_BYTES is no number of bytes: -3."},
    };
    for (const auto &c : cases) {
        const SilentReports fresh;
        const OdlTree root = parse_label("OBJECT = TABLE\n" + c.keywords + "\nEND_OBJECT\nEND\n");
        int64_t sizes[4] = {};
        const int result = OaGetTableKeywords(root->first_child, &sizes[0], &sizes[1], &sizes[2], &sizes[3]);
        EXPECT_EQ(result, c.message.empty() ? 0 : -1);
        if (result == 0) {
            EXPECT_EQ(util_format("%ld %ld %ld %ld", sizes[0], sizes[1], sizes[2], sizes[3]), c.sizes);
        }
        EXPECT_EQ(error_string, c.message);
    }
}

TEST_F(Keywords, TreesAreCopiedWhole) {
    const OdlTree root = parse_label(
        "A = 1\nOBJECT = T\n B = 2\n OBJECT = C\n  D = (3)\n  OBJECT = E\n  END_OBJECT\n"
        " END_OBJECT\n OBJECT = F\n END_OBJECT\nEND_OBJECT\nOBJECT = G\nEND_OBJECT\nEND\n");
    const OdlTree copy(OaCopyTree(root->first_child, OA_COPY_LABEL));
    EXPECT_STREQ(copy->class_name, "T");
    EXPECT_STREQ(copy->first_child->first_child->class_name, "E");
    EXPECT_STREQ(copy->last_child->class_name, "F");
    EXPECT_EQ(copy->last_child->level, 1u);
    EXPECT_TRUE(!copy->parent && !copy->right_sibling);
}

TEST_F(Keywords, DeepAndWideTreesAreCopied) {
    const OdlTree root = object("ROOT");
    ObjDesc *deepest = root.get();
    for (int i = 0; i < 200000; ++i)
        OdlPasteObjDesc(object("WIDE").release(), root.get());
    for (int i = 0; i < 200000; ++i)
        deepest = OdlPasteObjDesc(object("DEEP").release(), deepest);
    const OdlTree copy(OaCopyTree(root.get(), OA_COPY_LABEL));
    EXPECT_EQ(OdlGetObjDescChildCount(copy.get()), 200001u);
    EXPECT_EQ(OaCheckODLTree(copy.get()), 0);
}

TEST_F(Keywords, BrokenLinksAreSeen) {
    const OdlTree root = parse_label("A = 1\nB = 2\nOBJECT = T\nEND_OBJECT\nOBJECT = U\nEND_OBJECT\nEND\n");
    EXPECT_EQ(OaCheckODLTree(root.get()), 0);
    ObjDesc *first = root->first_child, *second = root->last_child;
    const auto broken_when = [&](auto &link, auto wrong) {
        const auto right = link;
        link = wrong;
        const int result = OaCheckODLTree(root.get());
        link = right;
        return result;
    };
    EXPECT_EQ(broken_when(second->right_sibling, first), 1) << "a circle of siblings";
    EXPECT_EQ(broken_when(root->last_child, first), 1);
    EXPECT_EQ(broken_when(first->first_child, root.get()), 1) << "a circle of generations";
    EXPECT_EQ(broken_when(root->last_keyword, root->first_keyword), 1);
    EXPECT_EQ(OaCheckODLTree(root.get()), 0);
}

}  // namespace
