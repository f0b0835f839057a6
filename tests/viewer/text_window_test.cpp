#include "viewer/text_window.h"

#include "support/scratch.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Shown = std::vector<std::string>;

constexpr int close_command = 1003, save_command = 1004, save_as_command = 1005, open_text_command = 1031,
              marks_command = 1059, full_label_command = 1051, quit_command = 1026;
const std::string attached =
    "RECORD_TYPE = STREAM\r\n^IMAGE = ( \"SCENE.IMG\", 200 <BYTES> )\r\nOBJECT = IMAGE\r\n  LINES = 2\r\n"
    "  LINE_SAMPLES = 2\r\n  SAMPLE_BITS = 8\r\n  SAMPLE_TYPE = UNSIGNED_INTEGER\r\nEND_OBJECT\r\nEND\r\n";

// A viewer with a folder and a user who answers from a script.
class TextWindows : public testing::Test {
  protected:
    void run(const std::function<void()> &body) {
        run_viewer([&] {
            ScriptedResponder responder;
            user = &responder;
            body();
            session().unattended = true;  // the end asks nothing more
        });
        session().unattended = false;
    }

    FileSpec here(const std::string &name) const { return {folder.path().string(), name}; }
    Window *open(const std::string &name) {
        user->files = {here(name)};
        const size_t before = gui_windows().size();
        EXPECT_TRUE(choose_command(gui_task_window(), 1030));
        return gui_windows().size() > before ? gui_windows().back() : nullptr;
    }
    Window *open(const std::string &name, const std::string &bytes) {
        folder.write(name, bytes);
        return open(name);
    }
    static void type(Window *window, char character) {
        press_character(window, character);
        EXPECT_TRUE(gui_text_changed(window, text_control));
    }
    // What a command shows to a user who answers so.
    Shown told(Window *window, int command, std::vector<int> answers = {}, std::vector<FileSpec> files = {}) {
        user->shown.clear();
        user->answers = std::move(answers);
        user->files = std::move(files);
        EXPECT_TRUE(choose_command(window, command));
        return user->shown;
    }
    std::string file(const std::string &name) const { return read_file(folder.path() / name); }

    ScratchFolder folder;
    ScriptedResponder *user = nullptr;
};

std::string replace_question(const std::string &name) {
    return "question: File \"" + name + "\" already exists. Replace existing file? [Cancel|Replace]";
}

TEST_F(TextWindows, OpenAnyFileAndSaveItWithLineFeeds) {
    run([&] {
        std::string all;
        for (int byte = 0; byte < 256; ++byte)
            all += static_cast<char>(byte);
        Window *window = open("all.TXT", "one\r\n" + all + "\r\nEND\r\nthree");
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(gui_title(window), "Lumacart - Label/Text - all.TXT");
        EXPECT_TRUE(window_state(window)->label_state->text_only);
        type(window, '>');
        EXPECT_EQ(told(window, save_command, {1}), Shown{replace_question("all.TXT")});
        all[13] = '\n';  // a carriage return alone ends a line, too
        EXPECT_EQ(file("all.TXT"), ">one\n" + all + "\nEND\nthree\n");
        EXPECT_FALSE(gui_text_changed(window, text_control));

        told(open("empty", ""), save_command, {1});
        EXPECT_EQ(file("empty"), "");

        const std::string asked = "open: Open Text";
        for (const auto &[chosen, message] :
             {std::pair{FileSpec{"/absent", "x"}, "Open Text - unable to set directory"},
              {here("absent"), "Label/Text - could not open file absent"},
              {here("."), "Label/Text - could not open file ."},
              {FileSpec{}, "Open Text - bad file name."}})
            EXPECT_EQ(told(window, open_text_command, {}, {chosen}), (Shown{asked, "error: "s + message}));
        EXPECT_EQ(gui_windows().size(), 2u);
    });
}

TEST_F(TextWindows, CanShowLineEnds) {
    run([&] {
        Window *window = open("a.lbl", "a = 3 <m>\r\nb\n");
        told(window, marks_command);
        EXPECT_TRUE(command_checked(window, marks_command));
        EXPECT_EQ(session().gl_show_cr_lf, 1);
        EXPECT_EQ(gui_paragraphs(window, text_control), (Shown{"a = 3 <m><CR><LF>", "b<LF>"}));
        EXPECT_FALSE(gui_text_changed(window, text_control));
        Window *other = open("b.lbl", "b\r\n");
        told(other, marks_command);
        told(other, marks_command);
        EXPECT_FALSE(command_checked(other, marks_command));
        EXPECT_EQ(gui_paragraphs(other, text_control), Shown{"b\r\n"});
        // The other window's marks are none of this one's; saving removes them.
        told(window, save_command, {1});
        EXPECT_FALSE(command_checked(window, marks_command));
        EXPECT_EQ(file("a.lbl"), "a = 3 <m>\nb\n");
    });
}

TEST_F(TextWindows, SaveOnlyWhatTheUserWants) {
    run([&] {
        Window *window = open("dir.b.c", "text\n");
        type(window, '1');
        EXPECT_EQ(told(window, save_command, {0}), Shown{replace_question("dir.b.c")});
        EXPECT_EQ(told(window, save_command, {-1}),
                  (Shown{replace_question("dir.b.c"), "error: Save - Invalid command"}));

        const std::string asked = "save: Save file as:";
        EXPECT_EQ(told(window, save_as_command), Shown{asked});  // cancelled
        EXPECT_EQ(user->requests.back().proposed.name, "dir.lbl");
        EXPECT_EQ(user->requests.back().file_type, "lbl");
        EXPECT_EQ(told(window, save_as_command, {}, {FileSpec{}}),
                  (Shown{asked, "error: Save - Error getting file name."}));
        EXPECT_EQ(told(window, save_as_command, {}, {{"/absent", "x"}}),
                  (Shown{asked, "error: Save - Unable to open directory"}));
        EXPECT_EQ(told(window, save_as_command, {}, {here("new.lbl")}), Shown{asked});
        EXPECT_EQ(file("new.lbl"), "1text\n");
        EXPECT_EQ(file("dir.b.c"), "text\n");
        EXPECT_EQ(gui_title(window), "Lumacart - Label/Text - new.lbl");
        told(open("noext", ""), save_as_command);
        EXPECT_EQ(user->requests.back().proposed.name, "noext.lbl");
    });
}

TEST_F(TextWindows, WarnBeforeDataAreLost) {
    run([&] {
        std::string product = attached;
        product.resize(199, ' ');
        product += "\x01\x02\x03\x04";
        const std::string path = folder.write("SCENE.IMG", product);
        Window *image = open_in_viewer(path);
        ASSERT_NE(image, nullptr);
        told(image, full_label_command);
        Window *label = gui_windows().back();
        ASSERT_NE(label, image);
        told(image, full_label_command);
        EXPECT_EQ(gui_windows().size(), 2u) << "raised the one that was there";
        EXPECT_EQ(gui_paragraphs(label, text_control).back(), "END\r\n");
        EXPECT_EQ(gui_window_place(label).left, gui_window_place(image).left + 10);

        const std::string asked = "save: Save file as:";
        const std::string warning =
            "question: File \"SCENE.IMG\" holds more than this text, such as the data behind a label. All of it would "
            "be lost.\nSave the text as another file instead? [Save As|Replace|Cancel]";
        // Save As, on the same file again and again.
        EXPECT_EQ(told(label, save_command, {0, 0, 2}, {here("SCENE.IMG"), here("SCENE.IMG")}),
                  (Shown{warning, asked, warning, asked, warning}));
        EXPECT_EQ(told(label, save_command, {1, 0}), (Shown{warning, replace_question("SCENE.IMG")}));
        // Another text over the product: the same.
        EXPECT_EQ(told(open("notes", "END\nnotes\n"), save_as_command, {2}, {here("SCENE.IMG")}),
                  (Shown{asked, warning}));
        // A product that took the place of a plain file since it was shown: the same.
        Window *plain = open("SCENE.TXT", "plain\n");
        fs::rename(folder.write("new", product), folder.path() / "SCENE.TXT");
        EXPECT_EQ(told(plain, save_command, {2}).size(), 1u);
        EXPECT_NE(user->shown.front().find("holds more than this text"), std::string::npos);
        gui_destroy_window(plain);
        EXPECT_EQ(read_file(path), product);

        // The label outlives the image, whose next window has its own.
        gui_destroy_window(image);
        EXPECT_TRUE(gui_window_exists(label));
        gui_destroy_window(label);
        image = open_in_viewer(path);
        told(image, full_label_command);
        gui_destroy_window(gui_windows().back());
        told(image, full_label_command);
        label = gui_windows().back();
        told(label, save_command, {1, 1});
        EXPECT_EQ(read_file(path).substr(0, 21), "RECORD_TYPE = STREAM\n");
        // Saved under another name it is no longer the image's.
        told(label, save_as_command, {}, {here("other.lbl")});
        told(image, full_label_command);
        EXPECT_EQ(gui_title(label), "Lumacart - Label/Text - other.lbl");
        EXPECT_EQ(gui_title(gui_windows().back()), "Lumacart - Label/Text - SCENE.IMG");
    });
}

TEST_F(TextWindows, ReportWhatCannotBeWritten) {
    run([&] {
        const std::string text = std::string(200000, 'x') + "\n";
        Window *window = open("a", text);
        type(window, 'y');
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full = {1000, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        const Shown shown = told(window, save_command, {1});
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(shown, (Shown{replace_question("a"), "error: Save - Unable to write file a\nFile too large"}));
        EXPECT_EQ(file("a"), text);
        EXPECT_TRUE(gui_text_changed(window, text_control));

        const std::string asked = "save: Save file as:", failed = "error: Save - Unable to open file for writing";
        EXPECT_EQ(told(window, save_as_command, {1}, {{"/dev", "full"}}),
                  (Shown{asked, replace_question("full"), failed}));
        EXPECT_EQ(told(window, save_as_command, {}, {{"/proc", "read-only"}}), (Shown{asked, failed}));
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << "nothing is left behind";
        // A link stays one, permissions stay.
        fs::create_symlink("a", folder.path() / "link");
        chmod(folder.file("a").c_str(), 0640);
        told(open("link"), save_command, {1});
        EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
        EXPECT_EQ(fs::status(folder.path() / "a").permissions(), fs::perms(0640));
    });
}

TEST_F(TextWindows, AskBeforeAChangedTextGoes) {
    run([&] {
        Window *same = open("same", "s");
        Window *window = open("a", "a");
        type(window, '1');
        const Shown question = {"question: File \"a\" was changed. Save it before it closes? [Save|Discard|Cancel]"};
        EXPECT_EQ(told(window, close_command, {2}), question);
        EXPECT_EQ(told(window, close_command, {-1}), question);
        EXPECT_EQ(told(same, quit_command, {2}), question);
        user->answers = {0, 0};  // Save, but do not replace
        close_window(window);
        ASSERT_TRUE(gui_window_exists(window));
        user->answers = {0, 1};
        close_window(window);
        EXPECT_FALSE(gui_window_exists(window));
        EXPECT_EQ(file("a"), "1a\n");
        EXPECT_EQ(told(same, close_command), Shown{});
        EXPECT_FALSE(gui_window_exists(same));
        window = open("a");
        type(window, '2');
        told(window, close_command, {1});
        EXPECT_FALSE(gui_window_exists(window));
        EXPECT_EQ(file("a"), "1a\n");
        window = open("a");
        type(window, '3');
        session().unattended = true;
        EXPECT_EQ(told(window, close_command), Shown{});
    });
}

TEST_F(TextWindows, EnableWhatTheirMenuOrTheTaskWindowCanDo) {
    run([&] {
        Window *window = open("a", "a");
        for (const int command : {1002, 1003, save_command, save_as_command, 1021, 1026, 1031, marks_command})
            EXPECT_TRUE(gui_command_enabled(window, command)) << command;
        EXPECT_FALSE(choose_item(window, "Undo"));
        press_character(window, '!');
        EXPECT_TRUE(choose_item(window, "Undo"));
        EXPECT_FALSE(gui_text_changed(window, text_control));
        EXPECT_FALSE(choose_item(window, "Cut"));
        EXPECT_TRUE(choose_item(window, "Select All") && choose_item(window, "Cut"));
        EXPECT_TRUE(choose_item(window, "Paste") && choose_item(window, "Paste"));
        EXPECT_EQ(gui_paragraph(window, text_control, 0), "aa");
    });
}

}  // namespace
