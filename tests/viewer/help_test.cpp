// The help book, its window, and how it is found.
#include "support/scratch.h"
#include "support/window_help.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr int ABOUT = 1076, CONTENTS = 2090, KEYBOARD = 2091;

fs::path book() {
    return fs::path(gui_program_directory()) / "lumacart.qch";
}

std::string bytes_of(const fs::path &file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

size_t files_beside(const fs::path &file) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(file.parent_path()), {}));
}

TEST(Help, ShowsThePageOfTheWindowInFocus) {
    run_viewer([] {
        const size_t files = files_beside(book());
        press_help_key(gui_task_window());
        EXPECT_EQ(help_page_shown(), "Lumacart");
        Window *image = open_in_viewer(LUMACART_SAMPLES "/PLAIN_A.LBL");
        ASSERT_TRUE(image);
        press_help_key(image);
        EXPECT_EQ(help_page_shown(), "Image window");
        ASSERT_TRUE(choose_command(image, KEYBOARD));
        EXPECT_EQ(help_page_shown(), "Keyboard");
        ASSERT_TRUE(choose_command(gui_task_window(), CONTENTS));
        EXPECT_EQ(help_page_shown(), "Lumacart");
        EXPECT_EQ(gui_windows().size(), 1u) << "the help window is no document";
        gui_destroy_window(image);
        EXPECT_EQ(help_page_shown(), "Lumacart") << "it outlives the window that asked";

        // In a message box, whose answer it leaves to the user.
        when_idle([] {
            press_help_key_in_box();
            EXPECT_EQ(help_page_shown(), "Questions and messages");
            EXPECT_EQ(shown_box_text(), "text");
            close_box();
        });
        gui_error("text");
        close_help_window_by_key();
        EXPECT_EQ(help_page_shown(), "");
        EXPECT_EQ(files_beside(book()), files) << "nothing is written beside the book";
    });
}

TEST(Help, CanBeUsedWhileADialogWaits) {
    run_viewer([] {
        press_help_key(gui_task_window());
        when_idle([] {
            Window *about = find_window("About Lumacart");
            ASSERT_TRUE(about);
            press_help_button("first");
            press_help_key(about);
            EXPECT_EQ(help_page_shown(), "About Lumacart");
            press_help_button("back");
            EXPECT_EQ(help_page_shown(), "Lumacart");
            EXPECT_NE(gui_text(about, 2).find("0."), std::string::npos);
            EXPECT_NE(gui_text(about, 3).find("Qt 6."), std::string::npos);
            EXPECT_NE(gui_text(about, 3).find("libjpeg"), std::string::npos);
            gui_raise(about);
            settle();
            EXPECT_TRUE(close_box());
        });
        ASSERT_TRUE(choose_command(gui_task_window(), ABOUT));
        EXPECT_FALSE(find_window("About Lumacart"));
        press_help_button("forward");
        EXPECT_EQ(help_page_shown(), "About Lumacart");
    });
}

TEST(Help, FollowsContentsIndexAndLinks) {
    run_viewer([] {
        press_help_key(gui_task_window());
        EXPECT_TRUE(choose_help_contents("Formats"));
        EXPECT_EQ(help_page_shown(), "Formats");
        EXPECT_TRUE(look_up_in_help("percentiles"));
        EXPECT_EQ(help_page_shown(), "Image window");
        press_help_button("back");
        EXPECT_EQ(help_page_shown(), "Formats");
        press_help_button("forward");
        press_help_button("first");
        follow_first_help_link();
        EXPECT_EQ(help_page_shown(), "Image window");
        EXPECT_EQ(find_in_help("Read-Out"), "Read-out");
        for (const char *elsewhere : {"file:///etc/hostname", "http://localhost/", "absent.html", "../../x.html"}) {
            go_to_help_url(elsewhere);
            EXPECT_EQ(help_page_shown(), "Image window") << elsewhere;
        }
        gui_show_help("absent.html");
        EXPECT_EQ(help_page_shown(), "Lumacart");
    });
}

TEST(Help, ABookThatIsNotFoundIsAskedFor) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string scratch = folder.path().string();
        std::ofstream(folder.file("other.txt")) << "no help";
        session().help_directories = {scratch};
        ScriptedResponder responder;
        press_help_key(gui_task_window());
        EXPECT_EQ(responder.shown, Lines{"open: Please Find and Open help file..."});
        EXPECT_EQ(help_page_shown(), "");

        responder.shown.clear();
        responder.files = {{scratch, ""},
                           {scratch, "absent.qch"},
                           {fs::path(scratch).parent_path().string(), folder.path().filename().string()},
                           {scratch, "other.txt"},
                           {book().parent_path().string(), book().filename().string()}};
        press_help_key(gui_task_window());
        const std::string asked = "open: Please Find and Open help file...";
        const std::string unreadable = "error: Help file is unreadable, please choose another.";
        EXPECT_EQ(responder.shown, (Lines{asked, unreadable, asked, unreadable, asked, unreadable, asked,
                                          "error: Invalid help file, please choose another.", asked}));
        EXPECT_EQ(help_page_shown(), "Lumacart");
        press_help_key(gui_task_window());
        EXPECT_EQ(responder.shown.size(), 9u) << "once found, it stays open";
    });
}

TEST(Help, DamagedBooksAreRefusedOrShown) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string whole = bytes_of(book());
        ASSERT_GT(whole.size(), 10000u);
        unsigned state = 1;
        for (size_t round = 0; round < 24; ++round) {
            std::string damaged = whole;
            if (round < 6)
                damaged.resize(whole.size() * round / 6);
            for (size_t place = 0; place < 40 * round; ++place) {
                state = state * 1664525u + 1013904223u;
                damaged[state % damaged.size()] = static_cast<char>(state >> 24);
            }
            const std::string file = folder.file("damaged.qch");
            std::ofstream(file, std::ios::binary | std::ios::trunc) << damaged;
            if (gui_open_help(file) == HelpAnswer::Ok)
                gui_show_help("formats.html");
            settle();
        }
        EXPECT_EQ(gui_open_help(book().string()), HelpAnswer::Ok);
        gui_show_help("formats.html");
        EXPECT_EQ(help_page_shown(), "Formats");
    });
}

}  // namespace
