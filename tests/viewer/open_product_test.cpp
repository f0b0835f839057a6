// Classifying files and tidying labels, with the user's answers given by a script.
#include "support/scratch.h"
#include "support/window_driver.h"
#include "viewer/viewer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr char attached_label[] = "RECORD_TYPE = FIXED_LENGTH\nOBJECT = IMAGE\nEND_OBJECT\nEND\n";

struct Classified {
    LabelCheck check;
    std::string file_name;
    std::vector<std::string> shown;
};

Classified classify(const ScratchFolder &folder, const std::string &name, std::vector<int> answers = {}) {
    ScriptedResponder responder;
    responder.answers = std::move(answers);
    LabelState state;
    state.file_name = name;
    std::string reason;
    const LabelCheck check = validate_label(folder.path().string(), &state, &reason);
    return {check, state.file_name, responder.shown};
}

TEST(ValidateLabel, ClassifiesByNameAndFirstBytes) {
    const ScratchFolder folder;
    folder.write("attached.IMG", attached_label);
    folder.write("late.IMG", std::string(10001, ' ') + attached_label);
    folder.write("nul.IMG", std::string("\x1e\0", 2) + attached_label);
    folder.write("picture.gif", "GIF89a...");
    folder.write("picture.jp2", std::string("\0\0\0\x0CjP  \r\n\x87\n", 12));
    folder.write("notes.lbl", "OBJECT = TEXT\nEND\n");
    folder.write("notes.lbl.LBL", "OBJECT = TEXT\nEND\n");
    folder.write("odd.lbl.LBL", "nothing here\n");
    folder.write("ab", "x");
    folder.write("scene.data", "x");
    folder.write("scene.lbl", attached_label);
    folder.write("empty", "");
    struct Case {
        const char *name;
        LabelCheck check;
    };
    for (const Case &c : {Case{"attached.IMG", LabelCheck::Attached}, Case{"late.IMG", LabelCheck::NoLabel},
                          Case{"nul.IMG", LabelCheck::Attached}, Case{"picture.gif", LabelCheck::Attached},
                          Case{"picture.jp2", LabelCheck::Attached}, Case{"notes.lbl", LabelCheck::NoLabel},
                          Case{"notes.lbl.LBL", LabelCheck::TextOnly}, Case{"odd.lbl.LBL", LabelCheck::NoLabel},
                          Case{"ab", LabelCheck::NoLabel}, Case{"scene.data", LabelCheck::NoLabel},
                          Case{"empty", LabelCheck::NoLabel}, Case{"absent.IMG", LabelCheck::Unreadable}}) {
        const Classified found = classify(folder, c.name);
        EXPECT_EQ(found.check, c.check) << c.name;
        EXPECT_EQ(found.file_name, c.name);
        EXPECT_TRUE(found.shown.empty()) << c.name;
    }
    folder.write("x", "");
    LabelState directory;
    directory.file_name = ".";
    std::string reason;
    EXPECT_EQ(validate_label(folder.path().string(), &directory, &reason), LabelCheck::Unreadable);
    EXPECT_EQ(reason, "Is a directory");
}

TEST(ValidateLabel, OffersTheLabelBesideTheFile) {
    const ScratchFolder folder;
    folder.write("scene.IMG", "data");
    folder.write("scene.LBL", "no record type: not taken for a label");
    EXPECT_EQ(classify(folder, "scene.IMG").check, LabelCheck::NoLabel);
    folder.write("scene.LBL", attached_label);

    const Classified accepted = classify(folder, "scene.IMG", {0});
    EXPECT_EQ(accepted.check, LabelCheck::AnotherFile);
    EXPECT_EQ(accepted.file_name, "scene.LBL");
    ASSERT_EQ(accepted.shown.size(), 1u);
    EXPECT_EQ(accepted.shown[0],
              "question: Label not found in file \"scene.IMG\"\nLabel file \"scene.LBL\" found\n"
              "Would you like to use this file instead? [Yes|No]");
    const Classified refused = classify(folder, "scene.IMG", {1});
    EXPECT_EQ(refused.check, LabelCheck::NoLabel);
    EXPECT_EQ(refused.file_name, "scene.IMG");
    EXPECT_EQ(classify(folder, "scene.IMG", {-1}).shown.back(), "error: Change Filename - invalid command");

    session().unattended = true;
    const Classified unasked = classify(folder, "scene.IMG");
    session().unattended = false;
    EXPECT_EQ(unasked.check, LabelCheck::AnotherFileUnasked);
    EXPECT_EQ(unasked.file_name, "scene.LBL");
}

std::string keyword_names(const ObjDesc *object) {
    std::string names;
    for (const Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling)
        names += std::string(keyword->name) + "=" + keyword->value + " ";
    return names;
}

std::string tidied_root(const char *label) {
    const OdlTree root(OdlParseLabelString(label, nullptr, 0, 1));
    remove_file_object(root.get());
    return keyword_names(root.get());
}

TEST(RemoveFileObject, LiftsFileKeywordsBehindTheFirst) {
    EXPECT_EQ(tidied_root("A=1\nB=2\nOBJECT = FILE\nRECORD_TYPE=FIXED_LENGTH\nRECORD_BYTES=10\nFILE_RECORDS=3\n"
                          "FILE_NAME=\"X\"\nOBJECT = IMAGE\nINTERCHANGE_FORMAT=BINARY\nEND_OBJECT\nEND_OBJECT\nEND\n"),
              "A=1 FILE_NAME=\"X\" FILE_RECORDS=3 RECORD_TYPE=FIXED_LENGTH INTERCHANGE_FORMAT=BINARY RECORD_BYTES=10 "
              "B=2 ");
    // No keyword to stand behind; RECORD_BYTES from the rows; a keyword that is itself the root's first.
    EXPECT_EQ(tidied_root("OBJECT = FILE\nOBJECT = TABLE\nROW_BYTES=7\nEND_OBJECT\nEND_OBJECT\nEND\n"),
              "RECORD_BYTES=7 ");
    EXPECT_EQ(tidied_root("RECORD_TYPE=STREAM\nB=2\nOBJECT = FILE\nEND_OBJECT\nEND\n"), "B=2 RECORD_TYPE=STREAM ");
    EXPECT_EQ(tidied_root("RECORD_TYPE=STREAM\nOBJECT = IMAGE\nRECORD_BYTES=1\nEND_OBJECT\nEND\n"),
              "RECORD_TYPE=STREAM ");
    EXPECT_EQ(tidied_root("OBJECT = FILE\nEND_OBJECT\nEND\n"), "") << "nothing to make RECORD_BYTES of";
}

}  // namespace
