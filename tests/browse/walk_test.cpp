// Walks by hand, driven through the dialogs.
#include "browse/browser.h"

#include <gtest/gtest.h>

#include <set>
#include <sys/fsuid.h>

namespace {

TEST(Walk, OffersDisplaysAndEnds) {
    const ScratchFolder scratch;
    write_image(scratch, "image");
    scratch.write("notes.txt", "plain text");
    scratch.write("none", "a name without a point");
    scratch.write("broken.lbl", "RECORD_TYPE = STREAM\nEND\n");
    run_viewer([&] {
        ScriptedResponder responder;
        Window *path = enter_browse_mode(&responder, scratch.path().string() + "/");
        ASSERT_TRUE(path);
        EXPECT_EQ(gui_text(path, 20), scratch.path().string());
        EXPECT_EQ(gui_text(path, 6), "6");
        press(path, 2);
        std::set<std::string> labels, others;
        for (int file = 0; file < 3; ++file) {
            ASSERT_TRUE(file_dialog()) << file;
            const bool is_label = kind_of(file_dialog()) == BrowseDialog::Label;
            (is_label ? labels : others).insert(offered_name());
            const bool is_image = offered_name() == "image.IMG";
            press(file_dialog(), 3);
            EXPECT_FALSE(is_label && file_dialog());
            EXPECT_TRUE(!is_image || find_window("Lumacart - Image - image.IMG Browser Number 1"));
            EXPECT_EQ(gui_windows().size(), labels.contains("image.IMG") ? 1u : 0u);
            if (is_label)
                press(browse_dialog(BrowseDialog::Continue), 1);
        }
        EXPECT_EQ(labels, (std::set<std::string>{"image.IMG", "broken.lbl"}));
        EXPECT_EQ(others, std::set<std::string>{"notes.txt"});
        EXPECT_TRUE(find_windows("Browser").empty());
        EXPECT_FALSE(is_browsing());
        EXPECT_EQ(gui_windows().size(), 1u);  // the user closes what was opened by hand
        ASSERT_EQ(responder.shown.size(), 2u);
        EXPECT_EQ(responder.shown[0], "directory: Select a directory");
        EXPECT_TRUE(responder.shown[1].starts_with("error: Open Object - no valid object"));
        EXPECT_FALSE(std::filesystem::exists(session().working_directory + "lumacart.jnk"));
    });
}

TEST(Walk, IsTheOnlyOne) {
    const ScratchFolder scratch;
    run_viewer([&] {
        ScriptedResponder responder;
        autobros(gui_task_window());  // nothing chosen
        EXPECT_FALSE(is_browsing());
        Window *path = enter_browse_mode(&responder, scratch.path().string());
        responder.shown.clear();
        press(path, 9);
        press(path, 10);
        EXPECT_TRUE(session().browse_stretch_image && session().browse_size);
        autobros(nullptr);
        EXPECT_EQ(responder.shown,
                  std::vector<std::string>{"note: There is already an open browser.  That is the maximum allowed."});
        EXPECT_FALSE(session().browse_stretch_image || session().browse_size);

        press(path, 4);
        EXPECT_TRUE(session().unattended && browse_settings().timed_browse_go);
        testing::internal::CaptureStderr();
        autobros(nullptr);
        EXPECT_NE(testing::internal::GetCapturedStderr().find(
                      "There is a timed browser open already. You may not open another browser"),
                  std::string::npos);
        press(path, 4);
        EXPECT_FALSE(session().unattended || browse_settings().timed_browse_go);
        press(path, 3);
        EXPECT_FALSE(is_browsing() || browse_dialog(BrowseDialog::Path));
    });
}

TEST(Walk, BoundsTheIntervalWhenItsFieldChangesFocus) {
    const ScratchFolder scratch;
    run_viewer([&] {
        ScriptedResponder responder;
        Window *path = enter_browse_mode(&responder, scratch.path().string());
        for (const auto &[text, milliseconds] :
             {std::pair{"1", 3000}, {"7", 7000}, {"100", 30000}, {"x", 3000}, {"-1", 3000}, {"99999999999", 30000}}) {
            type_text(path, 6, text);
            gui_focus_control(path, 8);
            settle();
            EXPECT_EQ(browse_settings().browse_interval, milliseconds) << text;
        }
        press(path, 2);  // an empty directory ends the walk at once
        EXPECT_FALSE(is_browsing());
        EXPECT_TRUE(find_windows("Browser").empty());
    });
}

TEST(Walk, SkipsExtensionsAndFollowsTheExclusiveOne) {
    const ScratchFolder scratch;
    for (const char *name : {"a.one", "b.one", "c.one", "d.two", "e.two"})
        scratch.write(name, "data");
    run_viewer([&] {
        ScriptedResponder responder;
        press(enter_browse_mode(&responder, scratch.path().string()), 2);
        press(browse_dialog(BrowseDialog::OtherFile), 4);
        ASSERT_TRUE(file_dialog());
        press(file_dialog(), 4);
        EXPECT_FALSE(is_browsing());

        Window *path = enter_browse_mode(&responder, scratch.path().string());
        type_text(path, 8, "two");
        press(path, 2);
        std::set<std::string> offered;
        for (; file_dialog(); press(file_dialog(), 5))  // of no effect: the path is not in capitals
            offered.insert(offered_name());
        EXPECT_EQ(offered, (std::set<std::string>{"d.two", "e.two"}));
    });
}

TEST(Walk, MakesLabelsOfOtherFiles) {
    const ScratchFolder scratch;
    const std::string file = scratch.write("data.raw", "not FITS");
    run_viewer([&] {
        ScriptedResponder responder;
        for (const int button : {6, 7}) {
            press(enter_browse_mode(&responder, scratch.path().string()), 2);
            press(browse_dialog(BrowseDialog::OtherFile), button);
            Window *label = find_window("Lumacart - New Label - data.raw");
            ASSERT_TRUE(label);
            EXPECT_EQ(gui_paragraph(label, text_control, 0).substr(0, 14), button == 6 ? "KRV_VERSION_ID" : "");
            EXPECT_FALSE(session().browse_continue_win);
            EXPECT_TRUE(choose_command(label, 1005));
            ASSERT_FALSE(responder.requests.empty());
            EXPECT_EQ(responder.requests.back().proposed.name, "data.lbl");
            EXPECT_EQ(responder.requests.back().proposed.directory, scratch.path().string());
            gui_destroy_window(label);
            Window *unkept = browse_dialog(BrowseDialog::Continue);
            press(unkept, 1);
            EXPECT_FALSE(is_browsing());
            ASSERT_TRUE(gui_window_exists(unkept));  // nobody remembers it
            press(unkept, 1);
            EXPECT_TRUE(find_windows("Browser").empty());
        }
        EXPECT_EQ(read_file(file), "not FITS");
    });
}

TEST(Walk, EndsFromEachDialog) {
    const ScratchFolder scratch;
    scratch.write("a.lbl", "x");
    run_viewer([&] {
        ScriptedResponder responder;
        responder.answers = {1};
        const auto expect_end = [](Window *dialog, const char *what) {
            ASSERT_TRUE(dialog) << what;
            close_window(dialog);
            settle();
            EXPECT_FALSE(is_browsing()) << what;
            EXPECT_TRUE(find_windows("Browser").empty()) << what;
        };
        expect_end(enter_browse_mode(&responder, scratch.path().string()), "path");
        press(enter_browse_mode(&responder, scratch.path().string()), 2);
        expect_end(browse_dialog(BrowseDialog::Label), "file");
        press(enter_browse_mode(&responder, scratch.path().string()), 2);
        press(browse_dialog(BrowseDialog::Label), 3);
        expect_end(browse_dialog(BrowseDialog::Continue), "continue");
        use_control(enter_browse_mode(&responder, "/"), 2);
        expect_end(browse_dialog(BrowseDialog::Listing), "listing");
        EXPECT_FALSE(std::filesystem::exists(session().working_directory + "lumacart.jnk"));
    });
}

TEST(Walk, ListsDirectoriesOfAnyName) {
    const ScratchFolder scratch, working;
    run_viewer([&] {
        ScriptedResponder responder;
        session().working_directory = working.path().string() + "/";
        const std::string long_name(240, 'n');
        for (const std::string name : {"a b'\"$(touch x)`touch y`", "-delete", "line\nfeed", "\xff", "*;&|<>"}) {
            std::filesystem::create_directory(scratch.path() / name);
            scratch.write(name + "/" + long_name + "\xfe.lbl", "RECORD_TYPE = STREAM\nEND\n");
            press(enter_browse_mode(&responder, scratch.file(name)), 2);
            EXPECT_EQ(offered_name(), long_name + " .lbl") << name;
            responder.shown.clear();
            press(browse_dialog(BrowseDialog::Label), 3);
            ASSERT_EQ(responder.shown.size(), 1u);  // its label was read
            EXPECT_TRUE(responder.shown[0].starts_with("error: Open Object - no valid object"));
            close_window(browse_dialog(BrowseDialog::Continue));
            EXPECT_TRUE(std::filesystem::is_empty(working.path())) << name;
        }
        responder.shown.clear();
        session().working_directory = working.file("absent") + "/";
        press(enter_browse_mode(&responder, scratch.path().string()), 2);
        EXPECT_EQ(responder.shown.back(), "note: Unable to open scratch file.");
        EXPECT_FALSE(is_browsing());
    });
}

TEST(Walk, OffersWhatCannotBeReadAsALabel) {
    const ScratchFolder scratch;
    for (const char *name : {"one.dat", "two.dat"})
        std::filesystem::permissions(scratch.write(name, "x"), std::filesystem::perms::none);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    run_viewer([&] {
        ScriptedResponder responder;
        press(enter_browse_mode(&responder, scratch.path().string()), 2);
        Window *first = file_dialog();
        ASSERT_TRUE(first);
        constexpr unsigned nobody = 65534;
        const auto before = static_cast<unsigned>(setfsuid(nobody));  // the superuser may read all
        press(first, kind_of(first) == BrowseDialog::Label ? 4 : 3);
        setfsuid(before);
        ASSERT_TRUE(browse_dialog(BrowseDialog::Label));
        close_window(file_dialog());
    });
}

}  // namespace
