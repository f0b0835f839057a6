#include "support/corpus.h"
#include "support/label.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

namespace {

struct LabelCase {
    const char *what;
    std::string text;
    const char *outline;
    const char *messages = "";
};

void expect_trees(std::initializer_list<LabelCase> cases) {
    for (const LabelCase &one : cases) {
        const ParsedLabel label = parse_text(one.text);
        EXPECT_EQ(label.outline(), one.outline) << one.what;
        EXPECT_EQ(label.messages, one.messages) << one.what;
    }
}

// The tree of a file of these bytes, as the path of a label that a user opens.
std::string outline_of_file(const std::string &bytes) {
    const ScratchFolder folder;
    const TreePtr root(OdlParseLabelFile(folder.write("a.lbl", bytes).c_str(), nullptr, 0, 1));
    return outline(root.get());
}

TEST(Parser, BuildsTheTreeOfALabel) {
    expect_trees({
        {"objects, groups and keywords nest in the order of the text",
         "A = 1\nOBJECT = T\n  B = x\n  GROUP = G\n    C = 2\n  END_GROUP = G\n  ^D = \"F\"\nEND_OBJECT = T\nE = "
         "3\nEND\nF = 4",
         "ROOT @0\n  A = 1 @1\n  E = 3 @9\n  T @2\n    B = x @3\n    ^D = \"F\" @7\n    group G @4\n      C = 2 @5\n"},
        {"either closing word closes either object, and may stand alone",
         "OBJECT = T\nEND_GROUP\nGROUP = G\nEND_OBJECT\nEND", "ROOT @0\n  T @1\n  group G @3\n"},
        {"values are kept as written", "A = ( 1 , 'x' ) \nB={a}\nC = 5 <m>\nd = \"q\"\nEND",
         "ROOT @0\n  A = ( 1 , 'x' ) @1\n  B = {a} @2\n  C = 5 <m> @3\n  d = \"q\" @4\n"},
        {"without a blank before the equals sign OBJECT is a keyword", "OBJECT=T\nEND_OBJECT=T\nEND",
         "ROOT @0\n  OBJECT = T @1\n  END_OBJECT = T @2\n"},
        {"words that only begin like the reserved ones are keywords", "ENDING = 1\nOBJECTS = 2\nEND_OBJECTX = 3\nEND",
         "ROOT @0\n  ENDING = 1 @1\n  OBJECTS = 2 @2\n  END_OBJECTX = 3 @3\n"},
        {"an SFDU header stands only at the beginning", "\nXYZ12I00KRV300000001\nA = 1\nEND",
         "ROOT @0\n  XYZ12I00KRV300000001 = (null) @2\n  A = 1 @3\n"},
    });
}

TEST(Parser, JoinsLinesIntoStatements) {
    expect_trees({
        {"a text over lines, blanks around the break cut", "A = \"one  \n   two\nthree\"\nB = 2\nEND",
         "ROOT @0\n  A = \"one    two three\" @1\n  B = 2 @4\n"},
        {"a name, its equals sign and its value on lines of their own", "A\n=\n5\nEND", "ROOT @0\n  A = 5 @1\n"},
        {"a bracket in a quoted text counts", "A = (\"x(\", 1))\nB = 2\nEND",
         "ROOT @0\n  A = (\"x(\", 1)) @1\n  B = 2 @2\n",
         " Line 1 -- Unpaired double quote in VALUE LIST element 1\n"
         " Line 1 -- Unpaired double quote in VALUE LIST element 2\n"},
        {"tabs are blanks and control characters at the end go", "A\t=\t1\t \x01\x7f\nB = a\tb\nEND",
         "ROOT @0\n  A = 1 @1\n  B = a b @2\n", " Line 2 -- Unable to determine the data type of VALUE: \"a b\"\n"},
    });
}

TEST(Parser, BrokenStatementsDoNotSwallowTheEnd) {
    expect_trees({
        {"a word before END", "A = 1\nNOTE\nEND\nB = 2", "ROOT @0\n  A = 1 @1\n  NOTE = (null) @2\n",
         " Line 2 -- Missing equals sign after KEYWORD identifier:  \"NOTE\"\n"
         " Line 2 -- KEYWORD identifier:  \"NOTE\"  is missing a VALUE\n"},
        {"no value before END", "A =\n  END\nB = 2", "ROOT @0\n  A =  @1\n",
         " Line 1 -- KEYWORD identifier:  \"A\"  is missing a VALUE\n"},
        {"a list that is never closed", "A = (1,\n2\nEND\nB = 2", "ROOT @0\n  A = (1, 2 @1\n",
         "VALUE LIST not properly enclosed in braces or parentheses\n"},
        {"inside a quoted text END is text", "A = \"x\nEND\ny\"\nEND", "ROOT @0\n  A = \"x END y\" @1\n"},
        {"a statement that the input cuts off", "OBJECT = T\nOBJECT", "ROOT @0\n  T @1\n    (null) @2\n",
         " Line 2 -- Missing equals sign after OBJECT statement\n"
         " Line 2 -- Not enough END_OBJECT statements.  Some objects may be\n           incomplete\n"
         " Line 2 -- END statement is missing\n"},
    });
}

TEST(Parser, KeepsComments) {
    expect_trees({
        {"before and on statements; END_OBJECT and END have theirs too",
         "/* a */\n\n/* b */\nOBJECT = T /* c */\n/* d */\nX = 1 /* e\n\n/* f */\nEND_OBJECT /* g */\n/* h */\nEND",
         // The empty lines of a text in memory vanish; those of a file do not.
         "ROOT @0 post{/* h */}\n  T @4 pre{/* a */\r\n/* b */} line{/* c */} post{/* f */} end{/* g */}\n"
         "    X = 1 @6 pre{/* d */} line{/* e}\n"},
        {"not inside quoted texts", "A = \"x /* y\n/* z */\" /* c */\nB = 'a' /* d \"\nEND",
         "ROOT @0\n  A = \"x /* y /* z */\" @1 line{/* c */}\n  B = 'a' @3 line{/* d \"}\n"},
        {"all those of a statement over lines", "A = (1, /* one */\n/* whole */\n2) /* two */\nEND",
         "ROOT @0\n  A = (1, 2) @1 pre{/* whole */} line{/* one */\r\n/* two */}\n"},
    });
    EXPECT_EQ(outline_of_file("\n/* a */\n\n/* b */\n \nA = 1\nEND\n"),
              "ROOT @0\n  A = 1 @6 pre{\r\n/* a */\r\n/* b */\r\n}\n");
}

TEST(Parser, ReadsLinesOfAnyKind) {
    const std::string long_text(600, 'x');
    const std::string pieces = std::string(250, 'x') + " " + std::string(255, 'x') + " " + std::string(95, 'x');
    const std::tuple<const char *, std::string, std::string> cases[] = {
        {"a NUL ends its line only", std::string("A = 1\0 garbage\nB = 2\nEND", 24), "  A = 1 @1\n  B = 2 @2"},
        {"bytes from 128 on", "A = \"caf\xc3\xa9\"\nEND", "  A = \"caf\xc3\xa9\" @1"},
        {"a line of 600 in pieces of 255", "A = \"" + long_text + "\"\nB = 2\nEND",
         "  A = \"" + pieces + "\" @1\n  B = 2 @2"},
        {"a line of exactly 255", std::string("A =") + std::string(252, '1') + "\nB = 2\nEND",
         std::string("  A = ") + std::string(252, '1') + " @1\n  B = 2 @2"},
    };
    for (const auto &[what, bytes, keywords] : cases) {
        const std::string expected = "ROOT @0\n" + keywords + "\n";
        EXPECT_EQ(outline_of_file(bytes), expected) << what;
        if (bytes.find('\0') == std::string::npos) {
            EXPECT_EQ(parse_text(bytes).outline(), expected) << what;
        }
    }
    EXPECT_EQ(parse_text("\r\r\r\r\n\r").outline(), "ROOT @0\n");
    // The way to look for line ends changes with the first lone return.
    EXPECT_EQ(outline_of_file("A = 1\r\nB = 2\n\rC = 3\r\r\nD = 4\r\nE = \"x\ry\"\nF = 6\r\n\nEND\r\n"),
              "ROOT @0 post{\r\n}\n  A = 1 @1\n  B = 2 @2\n  C = 3 @4 pre{\r\n}\n  D = 4 @6 pre{\r\n}\n"
              "  E = \"x y\" @7\n  F = 6 @9\n");
}

TEST(Parser, SaysWhichFilesItCannotOpen) {
    for (const char *path : {"/missing", "/dev/zero"}) {
        const std::string messages = printed([&](FILE *stream) {
            EXPECT_EQ(OdlParseFile(path, nullptr, nullptr, nullptr, stream, 0, 1, 1, 0), nullptr) << path;
        });
        EXPECT_EQ(odl_errno, 200);
        EXPECT_TRUE(messages.ends_with("-\n\nUnable to open the label file.  Parsing cannot continue\n")) << messages;
    }
}

TEST(Parser, LeavesACallersStreamBehindTheLabel) {
    const ScratchFolder folder;
    const std::string path = folder.write("a", "skipped\nA = 1\r\nEND\r\n" + std::string(100'000, 'x'));
    FILE *stream = fopen(path.c_str(), "rb");
    fseek(stream, 8, SEEK_SET);
    const TreePtr root(OdlParseFile(nullptr, stream, nullptr, nullptr, nullptr, 1, 1, 1, 0));
    EXPECT_EQ(outline(root.get()), "ROOT @0\n  A = 1 @1\n");
    EXPECT_EQ(ftell(stream), 20);
    fclose(stream);
}

// Each of these takes for ever, or overflows, when anything is recursive or quadratic.
TEST(Parser, TakesHostileLabels) {
    const auto repeat = [](int count, const std::string &text) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    std::string many_names;
    for (int i = 0; i < 100'000; ++i)
        many_names.append("K").append(std::to_string(i)).append(" = 1\n");
    const std::tuple<const char *, std::string, long> cases[] = {
        {"siblings", repeat(1'000'000, "OBJECT = A\nEND_OBJECT\n") + "END", 0},
        {"levels", repeat(100'000, "OBJECT = A\n") + "END", 1},
        {"keywords of one object", many_names + "K77777 = 2\nEND", 1},
        {"duplicates", repeat(100'000, "A = 1\n") + "END", 99'999},
        {"lines of one text", std::string("A = \"") + repeat(300'000, "x\n") + "\"\nEND", 0},
        {"a quote that is never closed", std::string("A = \"") + repeat(1'000'000, "some data without end\n"), 5},
        {"brackets", std::string("A = ") + repeat(1'000'000, "(") + repeat(1'000'000, ")") + "\nEND", 0},
        {"statements without an equals sign", repeat(300'000, "A\n"), 4},
        {"comments", repeat(300'000, "/* c */\n") + "END", 0},
        {"extra ends", repeat(100'000, "END_OBJECT\n") + "END", 100'000},
    };
    for (const auto &[what, text, messages] : cases) {
        const TreePtr root(OdlParseLabelString(text.c_str(), nullptr, 3, 1));
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(odl_message_count, messages) << what;
    }
}

TEST(Parser, RealLabelsDrawNoMessage) {
    REQUIRE_CORPUS();
    int labels = 0;
    for (const auto &entry : std::filesystem::directory_iterator(corpus_path("real"))) {
        if (entry.path().extension() != ".LBL" && entry.path().filename() != "COUNTS_G.IMG")
            continue;
        const TreePtr root(OdlParseLabelFile(entry.path().c_str(), nullptr, 3, 1));
        EXPECT_EQ(odl_message_count, 0) << entry.path();
        EXPECT_STREQ(OdlGetLabelVersion(root.get()), "KRV3") << entry.path();
        EXPECT_NE(OdlFindKwd(root.get(), "^*", nullptr, 1, SCOPE_SUBTREE), nullptr) << entry.path();
        ++labels;
    }
    EXPECT_EQ(labels, 12);
}

}  // namespace
