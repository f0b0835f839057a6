#include "base/memory.h"
#include "odl/validate.h"
#include "support/label.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

class Messages : public testing::Test {
  protected:
    void SetUp() override {
        odl_suppress_messages = 0;
        odl_message_count = 0;
    }
};

using WrongStatements = Messages;

TEST_F(WrongStatements, DrawTheirMessages) {
    const std::tuple<int, const char *, const char *> cases[] = {
        {308, "9ABC = 1", " Line 1 -- KEYWORD identifier:  \"9ABC\"  does not begin with a letter\n"},
        {308, "A-B-C = 1",
         " Line 1 -- KEYWORD identifier:  \"A-B-C\"  contains 2 embedded\n"
         "           non-alphanumeric or \"_\" characters\n"},
        {308, "A B = 1",
         " Line 1 -- KEYWORD identifier:  \"A B\"  contains 1 embedded non-alphanumeric\n"
         "           or \"_\" character\n"},
        {309, "= 5", " Line 1 -- KEYWORD identifier is missing\n"},
        {308, "^ = 5", " Line 1 -- KEYWORD identifier is missing\n"},
        {309, "A = 1\nB = 1\nA = 2", " Line 3 -- Duplicate KEYWORD identifier:  \"A\"\n"},
        {0, "A = N/A\nB = n/a\nC = NA\nD = \"N__\"\nE = {}", ""},
        {306, "A = N/a", " Line 1 -- Unable to determine the data type of VALUE: \"N/a\"\n"},
        {303, "A = (1,2) <m>", "VALUE LIST not properly enclosed in braces or parentheses\n"},
        {303, "A = (1,{2)}", "Bad nesting in VALUE LIST.  Expected a right brace and found a parenthesis\ninstead.\n"},
        {303, "A = {(1,2})", "Bad nesting in VALUE LIST.  Expected a right parenthesis and found a brace\ninstead.\n"},
        {306, "A = (1, 2X, 'a')", " Line 1 -- Unable to determine the data type of VALUE LIST element 2: \"2X\"\n"},
        {304, "A = \"a\"b\"\"", " Line 1 -- Embedded double quote in VALUE\n"},
        {304, "A = 'it's'", " Line 1 -- Embedded single quote in VALUE\n"},
        {304, "A = 'it", " Line 1 -- Unpaired single quote in VALUE\n"},
        {304, "A = ('it, 2)", " Line 1 -- Unpaired single quote in VALUE LIST element 1\n"},
        {305, "A = X__Y", " Line 1 -- Multiple underscores in VALUE\n"},
        {304, "A = _X", " Line 1 -- First character is an underscore in VALUE\n"},
        {304, "A = X_", " Line 1 -- Last character is an underscore in VALUE\n"},
        {307, "A = 5 <m",
         " Line 1 -- Missing the closing '>' character in the UNITS expression: \"<m\",\n"
         "           for VALUE:  \"5 \"\n"},
        {307, "A = 5 <m> x",
         " Line 1 -- Extraneous characters found after the closing '>' character in\n"
         "           the UNITS expression: \"<m> x\", for VALUE:  \"5 \"\n"},
        {307, "A = (1, 5<a<b>)",
         " Line 1 -- Embedded '<' character found in the UNITS expression: \"<a<b>\",\n"
         "           for VALUE LIST element 2:  \"5\"\n"},
        {308, "OBJECT = 9\nEND_OBJECT = 9",
         " Line 1 -- OBJECT class identifier:  \"9\"  does not begin with a letter\n"
         " Line 2 -- END_OBJECT class identifier:  \"9\"  does not begin with a letter\n"},
        {300, "OBJECT = T\nEND_OBJECT = t", " Line 2 -- OBJECT and END_OBJECT class identifiers do not match\n"},
        {308, "OBJECT = T\nEND_OBJECT =", " Line 2 -- END_OBJECT class identifier is missing\n"},
        {300, "END_OBJECT\nEND_GROUP",
         " Line 1 -- Extra END_OBJECT encountered\n"
         " Line 2 -- Extra END_OBJECT encountered\n"},
    };
    for (const auto &[code, text, messages] : cases) {
        odl_errno = 0;
        const ParsedLabel label = parse_text(std::string(text) + "\nEND");
        EXPECT_EQ(label.messages, messages) << text;
        EXPECT_EQ(odl_errno, code) << text;
    }
}

TEST_F(WrongStatements, AreTrimmedInPlaceByThePublicChecks) {
    const ParsedLabel label = parse_text("NAME = 1\nEND");
    odl_suppress_messages = 1;
    char statement[] = "^NAME\x01  = 5";
    EXPECT_EQ(OdlValidKwd(label.root.get(), statement, statement + 8, "5", nullptr, nullptr, 1), 1);
    EXPECT_STREQ(statement, "^NAME");
    char class_name[] = "TABLE  ";
    EXPECT_EQ(OdlValidObjDesc("= TABLE  ", class_name, nullptr, nullptr, 1), 1);
    EXPECT_STREQ(class_name, "TABLE");
}

TEST_F(Messages, AreWrappedUnderTheirBody) {
    const auto x = [](size_t count) { return std::string(count, 'x'); };
    const std::string blank = " ";
    const std::string prefix = " Line 12 -- ";
    const std::string indent(12, ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"", "\n"},
        {x(75), x(75) + "\n"},
        {x(76), x(75) + "\nx\n"},
        {x(75) + " y", x(75) + "\ny\n"},  // a blank behind a full line may end it
        {x(70) + " " + x(10), x(70) + "\n" + x(10) + "\n"},
        {blank + x(80), blank + x(74) + "\n" + x(6) + "\n"},  // but a leading blank cannot
        {prefix + x(60) + " " + x(63) + " " + x(64),
         prefix + x(60) + "\n" + indent + x(63) + "\n" + indent + x(63) + "\n" + indent + "x\n"},
        {x(68) + " -- " + x(6), x(68) + " --\n" + std::string(72, ' ') + "xxx\n" + std::string(72, ' ') + "xxx\n"},
        {x(69) + " -- " + x(6), x(69) + " --\n" + x(6) + "\n"},  // no room under such a body
    };
    for (const auto &[text, lines] : cases)
        EXPECT_EQ(OaPtr<char>(OdlFormatMessage(text.c_str())).get(), lines);
}

TEST_F(Messages, QuoteSoMuchOnly) {
    const std::string messages = parse_text("A = " + std::string(100000, '=') + "\nB = (1, 2__3)\nEND\n").messages;
    EXPECT_LT(messages.size(), 50000u);
    EXPECT_NE(messages.find("===...\n"), std::string::npos) << messages.substr(0, 1000);
}

TEST_F(Messages, AreCountedAlsoWhenSuppressed) {
    const auto two_messages = [](FILE *stream) {
        OdlPrintMessage(nullptr, stream, 12, "one");
        OdlPrintMessage(nullptr, stream, 0, nullptr);
        OdlPrintLine(nullptr, stream, "as it is");
    };
    EXPECT_EQ(printed(two_messages), " Line 12 -- one\n Unknown error\nas it is");
    EXPECT_EQ(odl_errno, 1);
    odl_suppress_messages = 1;
    EXPECT_EQ(printed(two_messages), "");
    EXPECT_EQ(odl_message_count, 4);
}

TEST_F(Messages, GoToTheFileTheHandleOrTheTerminal) {
    const ScratchFolder folder;
    const std::string path = folder.write("messages.txt", "before\n");
    OdlPrintMessage(path.c_str(), nullptr, 0, "one");
    OdlPrintLine(path.c_str(), nullptr, nullptr);
    EXPECT_EQ(read_file(path), "before\none\nUnknown error\n");
    testing::internal::CaptureStdout();
    OdlPrintMessage(folder.file("no/such/folder").c_str(), nullptr, 3, "two");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Unable to open the output file.  Messages will be written to the terminal\n Line 3 -- two\n");
    EXPECT_EQ(odl_errno, 200);
}

TEST_F(Messages, OfAParseStandBetweenBannerAndMetrics) {
    const ScratchFolder folder;
    const std::string path = folder.file("messages.txt");
    const char *const text =
        "A = 1 /* c */\nA = 2\n/* d */\nOBJECT = T\nNAME = \"x\"\nOBJECT = U\nEND_OBJECT\nEND_OBJECT";
    OdlFreeTree(OdlParseFile(nullptr, nullptr, text, path.c_str(), nullptr, 0, 0, 0, 0));
    const std::string dashes = std::string(74, '-') + "\n";
    EXPECT_EQ(read_file(path), std::string("\n") + dashes + "Parsing File:  (no file name provided)\n" + dashes + "\n" +
                                   " Line 2 -- Duplicate KEYWORD identifier:  \"A\"\n"
                                   " Line 8 -- END statement is missing\n"
                                   "           | Parsing Metrics:              |\n"
                                   "           |                               |\n"
                                   "           |       2 Syntax Messages       |\n"
                                   "           |       2 OBJECT Statements     |\n"
                                   "           |       2 END_OBJECT Statements |\n"
                                   "           |       3 Keywords              |\n"
                                   "           |       2 Comments              |\n"
                                   "           |-------------------------------|\n\n"
                                   " Line 0     0 <no name>  --  ROOT\n"
                                   " Line 4      1   \"x\"  --  T\n"
                                   " Line 6       2     <no name>  --  U\n");
}

TEST_F(Messages, AHierarchyOfManyLevelsStaysReadable) {
    const TreePtr root(OdlNewObjDesc(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 123456));
    ObjDesc *innermost = root.get();
    for (int i = 0; i < 20'000; ++i)
        innermost = OdlPasteObjDesc(OdlNewObjDesc("A", nullptr, nullptr, nullptr, nullptr, nullptr, 0, 1), innermost);
    const std::string listing = printed([&](FILE *stream) { OdlPrintHierarchy(root.get(), nullptr, stream); });
    EXPECT_LT(listing.size(), 20'000u * 400);
    EXPECT_TRUE(listing.starts_with(" Line 123456 0 <no name>  --  <no class>\n"));
}

}  // namespace
