#include "viewer/model/hierarchy_list.h"

#include "oa/oa.h"

#include <gtest/gtest.h>

namespace {

OdlTree parse(const std::string &label) {
    return OdlTree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
}

TEST(HierarchyLines, ListWhatIsNoInsideOfATable) {
    const OdlTree root = parse(
        "NAME = top\nOBJECT = TABLE\nOBJECT = COLUMN\nNAME = c\nEND_OBJECT\nOBJECT = BIT_COLUMN\nEND_OBJECT\n"
        "OBJECT = CONTAINER\nOBJECT = HISTOGRAM\nEND_OBJECT\nEND_OBJECT\nOBJECT = FIELD\nEND_OBJECT\n"
        "OBJECT = BIT_ELEMENT\nEND_OBJECT\nEND_OBJECT\nOBJECT = IMAGE\nNAME = \"A \"B\" 100%s\r\nend\t\"\n"
        "END_OBJECT\nEND\n");
    EXPECT_EQ(hierarchy_lines(root.get()), (std::vector<std::string>{
                                               "0            ROOT    ",
                                               "1              TABLE   No NAME KEYWORD",
                                               "2                  HISTOGRAM   No NAME KEYWORD",
                                               "3              IMAGE   A \"B\" 100%s end ",
                                           }));
    ObjDesc *image = object_of_line(root.get(), 3);
    ASSERT_TRUE(image);
    EXPECT_STREQ(image->class_name, "IMAGE");
    EXPECT_EQ(object_of_line(root.get(), 4), nullptr);
    EXPECT_EQ(line_of_object(root.get(), image), 3);
    EXPECT_EQ(line_of_object(root.get(), OdlFindObjDesc(root.get(), "BIT_COLUMN", nullptr, nullptr, 1, 1)), 1);
    EXPECT_EQ(class_of_line(hierarchy_lines(root.get())[2]), "HISTOGRAM");
    EXPECT_EQ(class_of_line("7"), "");
}

TEST(HierarchyLines, LineUpWithBlanksOfHalfADigit) {
    std::string label;
    for (int i = 0; i < 10000; ++i)
        label += "OBJECT = IMAGE\nEND_OBJECT\n";
    const std::vector<std::string> lines = hierarchy_lines(parse(label + "END\n").get());
    ASSERT_EQ(lines.size(), 10001u);
    for (const size_t number : {1, 9, 10, 99, 100, 999, 1000, 9999, 10000}) {
        const size_t digits = std::to_string(number).size();
        EXPECT_EQ(2 * digits + lines[number].find('I') - digits, 16u) << number;
    }
}

TEST(HierarchyLines, IndentTenLevelsAtMost) {
    std::string label;
    for (int level = 0; level < 12; ++level)
        label += "OBJECT = O\n";
    const std::vector<std::string> lines = hierarchy_lines(parse(label + "END\n").get());
    ASSERT_EQ(lines.size(), 13u);
    EXPECT_EQ(lines[8], "8" + std::string(10 + 18, ' ') + "O   No NAME KEYWORD");
    EXPECT_EQ(lines[9], "9" + std::string(10 + 20, ' ') + "O   No NAME KEYWORD");
    EXPECT_EQ(lines[12], "12" + std::string(8 + 20, ' ') + "O   No NAME KEYWORD");
}

TEST(ListedObject, IsChosenByTheFirstRuleForItsClass) {
    constexpr char columns[] =
        "Neither COLUMN nor CONTAINER objects may be selected for display.  Select the table containing these objects "
        "instead";
    struct Case {
        const char *class_name;
        ListedObject choice;
        const char *note;
        ListedObject unattended;
    };
    using enum ListedObject;
    for (const Case &c : {
             Case{"BIT_COLUMN", Refused, columns, Refused},
             Case{"CONTAINER", Refused, columns, Refused},
             Case{"FIELD", Refused,
                  "FIELD objects may not be selected for display. Select the spreadsheet containing these objects "
                  "instead",
                  Refused},
             Case{"COLLECTION", Refused, "COLLECTION objects are not supported by Lumacart at this time", Refused},
             Case{"IMAGE_HEADER", Refused, "HEADER objects may not be selected for display.", Refused},
             Case{"BROWSE_IMAGE", Opened, nullptr, Opened},
             Case{"SPECTRAL_QUBE", Opened, nullptr, Opened},
             Case{"TIME_SERIES", Opened, nullptr, Opened},
             Case{"SPREADSHEET", Opened, nullptr, Opened},
             Case{"INDEX_TABLE", TableOrPlot, nullptr, Opened},
             Case{"GAZETTEER", TableOrPlot, nullptr, Opened},
             Case{"ROOT", Ignored, nullptr, Opened},
         }) {
        const char *note = nullptr;
        EXPECT_EQ(listed_object(c.class_name, false, &note), c.choice) << c.class_name;
        EXPECT_STREQ(note, c.note);
        EXPECT_EQ(listed_object(c.class_name, true, &note), c.unattended) << c.class_name;
    }
}

TEST(KeywordLines, CutLongValuesAndShowLineEndsAsBlanks) {
    const std::string sixty(60, 'x');
    std::string e_acute;
    for (int i = 0; i < 61; ++i)
        e_acute += "\xC3\xA9";
    const OdlTree root =
        parse("OBJECT = IMAGE\n^IMAGE = 5\nA = \"one\r\ntwo\nthree\"\nB = " + sixty + "\nC = " + sixty + "y\nD = \"" +
              e_acute + "\"\nOBJECT = INSIDE\nE = 1\nEND_OBJECT\nEND_OBJECT\nEND\n");
    EXPECT_EQ(keyword_lines(root->first_child), (std::vector<std::string>{
                                                    "OBJECT = IMAGE",
                                                    "   ^IMAGE = 5",
                                                    "   A = \"one two three\"",
                                                    "   B = " + sixty,
                                                    "   C = " + sixty + " ...",
                                                    "   D = \"" + e_acute.substr(0, 118) + " ...",
                                                }));
}

}  // namespace
