#include "viewer/text_window.h"

#include "support/scratch.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <csignal>
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

    Window *open(const std::string &name) {
        user->files = {{folder.path().string(), name}};
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
    // What was shown since the last call.
    Shown shown() { return std::exchange(user->shown, {}); }
    std::string file(const std::string &name) const { return read_file(folder.path() / name); }

    ScratchFolder folder;
    ScriptedResponder *user = nullptr;
};

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
        shown();
        user->answers = {1};
        EXPECT_TRUE(choose_command(window, save_command));
        EXPECT_EQ(shown(), Shown{"question: File \"all.TXT\" already exists. Replace existing file? [Cancel|Replace]"});
        std::string lines = all;
        lines[13] = '\n';  // a carriage return alone ends a line, too
        EXPECT_EQ(file("all.TXT"), ">one\n" + lines + "\nEND\nthree\n");
        EXPECT_FALSE(gui_text_changed(window, text_control));

        Window *empty = open("empty", "");
        shown();
        user->answers = {1};
        choose_command(empty, save_command);
        EXPECT_EQ(file("empty"), "");

        user->files = {{"/absent", "x"}, {folder.path().string(), "absent"}, {folder.path().string(), "."}, {"", ""}};
        shown();
        for (int i = 0; i < 4; ++i)
            choose_command(window, open_text_command);
        EXPECT_EQ(shown(), (Shown{"open: Open Text", "error: Open Text - unable to set directory", "open: Open Text",
                                  "error: Label/Text - could not open file absent", "open: Open Text",
                                  "error: Label/Text - could not open file .", "open: Open Text",
                                  "error: Open Text - bad file name."}));
        EXPECT_EQ(gui_windows().size(), 2u);
    });
}

TEST_F(TextWindows, CanShowLineEnds) {
    run([&] {
        Window *window = open("a.lbl", "a = 3 <m>\r\nb\n");
        EXPECT_TRUE(choose_command(window, marks_command));
        EXPECT_TRUE(command_checked(window, marks_command));
        EXPECT_EQ(session().gl_show_cr_lf, 1);
        EXPECT_EQ(gui_paragraphs(window, text_control), (Shown{"a = 3 <m><CR><LF>", "b<LF>"}));
        EXPECT_FALSE(gui_text_changed(window, text_control));
        Window *other = open("b.lbl", "b\r\n");
        choose_command(other, marks_command);
        choose_command(other, marks_command);
        EXPECT_FALSE(command_checked(other, marks_command));
        EXPECT_EQ(gui_paragraphs(other, text_control), Shown{"b\r\n"});
        // The other window's marks are none of this one's; saving removes them.
        user->answers = {1};
        choose_command(window, save_command);
        EXPECT_FALSE(command_checked(window, marks_command));
        EXPECT_EQ(file("a.lbl"), "a = 3 <m>\nb\n");
    });
}

TEST_F(TextWindows, SaveOnlyWhatTheUserWants) {
    run([&] {
        Window *window = open("dir.b.c", "text\n");
        type(window, '1');
        const std::string question =
            "question: File \"dir.b.c\" already exists. Replace existing file? [Cancel|Replace]";
        shown();
        for (const int answer : {0, -1}) {
            user->answers = {answer};
            choose_command(window, save_command);
        }
        EXPECT_EQ(shown(), (Shown{question, question, "error: Save - Invalid command"}));
        EXPECT_EQ(file("dir.b.c"), "text\n");

        choose_command(window, save_as_command);  // cancelled
        EXPECT_EQ(user->requests.back().proposed.name, "dir.lbl");
        EXPECT_EQ(user->requests.back().file_type, "lbl");
        user->files = {{"", ""}, {"/absent", "x"}, {folder.path().string(), "new.lbl"}};
        shown();
        for (int i = 0; i < 3; ++i)
            choose_command(window, save_as_command);
        EXPECT_EQ(shown(),
                  (Shown{"save: Save file as:", "error: Save - Error getting file name.",
                         "save: Save file as:", "error: Save - Unable to open directory", "save: Save file as:"}));
        EXPECT_EQ(file("new.lbl"), "1text\n");
        EXPECT_EQ(file("dir.b.c"), "text\n");
        EXPECT_EQ(gui_title(window), "Lumacart - Label/Text - new.lbl");
        choose_command(open("noext", ""), save_as_command);
        EXPECT_EQ(user->requests.back().proposed.name, "noext.lbl");
    });
}

TEST_F(TextWindows, WarnBeforeDataAreLost) {
    run([&] {
        std::string product = attached;
        product.resize(199, ' ');
        product += "\x01\x02\x03\x04";
        const fs::path path = folder.write("SCENE.IMG", product);
        Window *image = open_in_viewer(path.string());
        ASSERT_NE(image, nullptr);
        ASSERT_TRUE(choose_command(image, full_label_command));
        Window *label = gui_windows().back();
        ASSERT_NE(label, image);
        EXPECT_TRUE(choose_command(image, full_label_command)) << "raises the one that is there";
        EXPECT_EQ(gui_windows().size(), 2u);
        EXPECT_EQ(gui_paragraphs(label, text_control).back(), "END\r\n");
        EXPECT_EQ(gui_window_place(label).left, gui_window_place(image).left + 10);

        const std::string warning =
            "question: File \"SCENE.IMG\" holds more than this text, such as the data behind a label. All of it would "
            "be lost.\nSave the text as another file instead? [Save As|Replace|Cancel]";
        const std::string question =
            "question: File \"SCENE.IMG\" already exists. Replace existing file? [Cancel|Replace]";
        shown();
        user->answers = {0, 0, 2};  // Save As, on the same file again
        user->files = {{folder.path().string(), "SCENE.IMG"}, {folder.path().string(), "SCENE.IMG"}};
        choose_command(label, save_command);
        EXPECT_EQ(shown(), (Shown{warning, "save: Save file as:", warning, "save: Save file as:", warning}));
        user->answers = {1, 0};
        choose_command(label, save_command);
        EXPECT_EQ(shown(), (Shown{warning, question}));
        EXPECT_EQ(read_file(path), product);

        // Another text over the product: the same.
        Window *notes = open("notes", "END\nnotes\n");
        shown();
        user->files = {{folder.path().string(), "SCENE.IMG"}};
        user->answers = {2};
        choose_command(notes, save_as_command);
        EXPECT_EQ(shown(), (Shown{"save: Save file as:", warning}));
        EXPECT_EQ(read_file(path), product);

        // The label outlives the image, whose next window has its own.
        gui_destroy_window(image);
        EXPECT_TRUE(gui_window_exists(label));
        gui_destroy_window(label);
        image = open_in_viewer(path.string());
        choose_command(image, full_label_command);
        label = gui_windows().back();
        gui_destroy_window(label);
        choose_command(image, full_label_command);
        EXPECT_EQ(gui_paragraph_count(gui_windows().back(), text_control), 9u);
        user->answers = {1, 1};
        label = gui_windows().back();
        choose_command(label, save_command);
        EXPECT_EQ(read_file(path).substr(0, 21), "RECORD_TYPE = STREAM\n");

        // Saved under another name it is no longer the image's.
        user->files = {{folder.path().string(), "other.lbl"}};
        choose_command(label, save_as_command);
        choose_command(image, full_label_command);
        EXPECT_EQ(gui_title(label), "Lumacart - Label/Text - other.lbl");
        EXPECT_EQ(gui_title(gui_windows().back()), "Lumacart - Label/Text - SCENE.IMG");
    });
}

TEST_F(TextWindows, ReportWhatCannotBeWritten) {
    run([&] {
        Window *window = open("a", std::string(200000, 'x') + "\n");
        type(window, 'y');
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const auto handler = signal(SIGXFSZ, SIG_IGN);
        const rlimit full = {1000, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        shown();
        user->answers = {1};
        choose_command(window, save_command);
        setrlimit(RLIMIT_FSIZE, &before);
        signal(SIGXFSZ, handler);
        ASSERT_EQ(user->shown.size(), 2u);
        EXPECT_EQ(user->shown[1], "error: Save - Unable to write file a\nFile too large");
        EXPECT_EQ(file("a"), std::string(200000, 'x') + "\n");
        EXPECT_TRUE(gui_text_changed(window, text_control));

        user->answers = {1};
        user->files = {{"/dev", "full"}, {"/proc", "read-only"}};
        shown();
        choose_command(window, save_as_command);
        choose_command(window, save_as_command);
        EXPECT_EQ(shown(), (Shown{"save: Save file as:",
                                  "question: File \"full\" already exists. Replace existing file? [Cancel|Replace]",
                                  "error: Save - Unable to open file for writing",
                                  "save: Save file as:", "error: Save - Unable to open file for writing"}));
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << "nothing is left behind";

        // A link stays one, permissions stay.
        fs::create_symlink("a", folder.path() / "link");
        chmod((folder.path() / "a").c_str(), 0640);
        user->answers = {1};
        choose_command(open("link"), save_command);
        EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
        EXPECT_EQ(fs::status(folder.path() / "a").permissions(), fs::perms(0640));
    });
}

TEST_F(TextWindows, AskBeforeAChangedTextGoes) {
    run([&] {
        Window *same = open("same", "s");
        Window *window = open("a", "a");
        type(window, '1');
        shown();
        const std::string question =
            "question: File \"a\" was changed. Save it before it closes? [Save|Discard|Cancel]";
        user->answers = {2, -1, 2};
        close_window(window);
        choose_command(window, close_command);
        choose_command(same, quit_command);
        EXPECT_EQ(shown(), (Shown{question, question, question}));
        ASSERT_TRUE(gui_window_exists(window));
        user->answers = {0, 0};  // Save, but do not replace
        close_window(window);
        ASSERT_TRUE(gui_window_exists(window));
        user->answers = {0, 1};
        close_window(window);
        EXPECT_FALSE(gui_window_exists(window));
        EXPECT_EQ(file("a"), "1a\n");
        close_window(same);
        EXPECT_FALSE(gui_window_exists(same));
        window = open("a");
        type(window, '2');
        user->answers = {1};
        choose_command(window, close_command);
        EXPECT_FALSE(gui_window_exists(window));
        EXPECT_EQ(file("a"), "1a\n");
        window = open("a");
        type(window, '3');
        session().unattended = true;
        shown();
        close_window(window);
        EXPECT_EQ(shown(), Shown{});
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
