#include "viewer/model/hierarchy_list.h"

#include "support/product.h"

namespace {

TEST(HierarchyLines, ListWhatIsNoInsideOfATable) {
    const OdlTree root = parse_label(
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
    const std::vector<std::string> lines = hierarchy_lines(parse_label(label + "END\n").get());
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
    const std::vector<std::string> lines = hierarchy_lines(parse_label(label + "END\n").get());
    ASSERT_EQ(lines.size(), 13u);
    EXPECT_EQ(lines[8], "8" + std::string(10 + 18, ' ') + "O   No NAME KEYWORD");
    EXPECT_EQ(lines[9], "9" + std::string(10 + 20, ' ') + "O   No NAME KEYWORD");
    EXPECT_EQ(lines[12], "12" + std::string(8 + 20, ' ') + "O   No NAME KEYWORD");
}

TEST(ListedObject, IsChosenByTheFirstRuleForItsClass) {
    using enum ListedObject;
    const std::pair<const char *, ListedObject> choices[] = {
        {"BROWSE_IMAGE", Opened},     {"SPECTRAL_QUBE", Opened},  {"TIME_SERIES", Opened}, {"SPREADSHEET", Opened},
        {"INDEX_TABLE", TableOrPlot}, {"GAZETTEER", TableOrPlot}, {"ROOT", Ignored},
    };
    const char *note = nullptr;
    for (const auto &[class_name, choice] : choices) {
        EXPECT_EQ(listed_object(class_name, false, &note), choice) << class_name;
        EXPECT_EQ(listed_object(class_name, true, &note), Opened) << class_name;
    }
    EXPECT_EQ(listed_object("BIT_COLUMN", true, &note), Refused);
    EXPECT_STREQ(note,
                 "Neither COLUMN nor CONTAINER objects may be selected for display.  Select the table containing these "
                 "objects instead");
    EXPECT_EQ(listed_object("FIELD", true, &note), Refused);
    EXPECT_STREQ(
        note, "FIELD objects may not be selected for display. Select the spreadsheet containing these objects instead");
    EXPECT_EQ(listed_object("IMAGE_HEADER", true, &note), Refused);
    EXPECT_STREQ(note, "HEADER objects may not be selected for display.");
}

TEST(KeywordLines, CutLongValuesAndShowLineEndsAsBlanks) {
    const std::string sixty(60, 'x');
    std::string e_acute;
    for (int i = 0; i < 61; ++i)
        e_acute += "\xC3\xA9";
    const OdlTree root =
        parse_label("OBJECT = IMAGE\n^IMAGE = 5\nA = \"one\r\ntwo\nthree\"\nB = " + sixty + "\nC = " + sixty +
                    "y\nD = \"" + e_acute + "\"\nOBJECT = INSIDE\nE = 1\nEND_OBJECT\nEND_OBJECT\nEND\n");
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
