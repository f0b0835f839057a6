#include "gui/arguments.h"
#include "gui/long_text.h"
#include "support/scratch.h"
#include "support/window_driver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace {

constexpr int TASK = 9001;
using Buttons = std::vector<std::string>;

void run(std::function<void()> body) {
    EXPECT_EQ(run_gui_test(TASK, nullptr, std::move(body)), 0);
}

TEST(Questions, TheButtonChosenIsReturned) {
    run([] {
        const auto ask = [](const Buttons &buttons, const std::function<bool()> &use) {
            when_idle([&] { EXPECT_TRUE(use()); });
            return gui_question("Replace <b>a & b</b>?", buttons);
        };
        const auto press = [](const char *text) { return [=] { return press_box_button(text); }; };
        EXPECT_EQ(ask({"Cancel", "Replace"}, press("Replace")), 1);
        EXPECT_EQ(ask({"Replace", "Cancel"}, close_box), 1) << "Escape declines where a button does";
        EXPECT_EQ(ask({"Yes", "No", "Later"}, close_box), 1);
        EXPECT_EQ(ask({"Display", "Skip"}, close_box), -1);
        when_idle([] {
            EXPECT_EQ(shown_box_text(), "<b>bold?</b>\nsecond line");
            EXPECT_TRUE(close_box());
        });
        gui_error("<b>bold?</b>\nsecond line");
    });
}

TEST(Questions, LongTextsAreCutAndBrokenToFit) {
    EXPECT_EQ(fit_text("short\ntext").text, "short\ntext");
    const QString path = QString(200, 'x');
    EXPECT_FALSE(fit_text(path).cut);
    EXPECT_EQ(fit_text(path).text.count(QChar(0x200b)), 2) << "places to break at";
    EXPECT_EQ(fit_text(path).text.remove(QChar(0x200b)), path);
    EXPECT_LE(fit_text(QString("line\n").repeated(1000)).text.count('\n'), 30);
    EXPECT_TRUE(fit_text(QString("word ").repeated(10000)).cut);
}

TEST(Questions, FileDialogsNameFilesAndDirectories) {
    const ScratchFolder scratch;
    scratch.write("a b.lbl", "");
    std::filesystem::create_directory(scratch.path() / "c d");
    const std::string folder = scratch.path().string();
    run([&] {
        FileSpec chosen;
        const FileRequest request{"Open file:", {folder, ""}, ""};
        when_idle([] { EXPECT_TRUE(answer_file_dialog("a b.lbl")); });
        EXPECT_EQ(gui_open_file(request, &chosen), FileAnswer::Ok);
        EXPECT_EQ(chosen.directory, folder);
        EXPECT_EQ(chosen.name, "a b.lbl");
        when_idle([] { EXPECT_TRUE(close_box()); });
        EXPECT_EQ(gui_open_file(request, &chosen), FileAnswer::Cancel);

        // The extension is added; whether to replace the file is the program's question.
        when_idle([] { EXPECT_TRUE(answer_file_dialog("a b")); });
        EXPECT_EQ(gui_save_file({"Save file as:", {folder, "x.lbl"}, "lbl"}, &chosen), FileAnswer::Ok);
        EXPECT_EQ(chosen.name, "a b.lbl");
        EXPECT_EQ(chosen.directory, folder);

        std::string directory;
        when_idle([&] { EXPECT_TRUE(answer_file_dialog(scratch.file("c d"))); });
        EXPECT_EQ(gui_choose_directory("Select a directory", &directory), FileAnswer::Ok);
        EXPECT_EQ(directory, scratch.file("c d"));
        when_idle([] { EXPECT_TRUE(close_box()); });
        EXPECT_EQ(gui_choose_directory("Select a directory", &directory), FileAnswer::Cancel);
    });
}

TEST(CommandLine, TheToolkitsOptionsAreNotTheProgrammes) {
    const auto split = [](Buttons words) {
        std::vector<char *> argv;
        for (std::string &word : words)
            argv.push_back(word.data());
        const Arguments arguments = split_arguments(static_cast<int>(argv.size()), argv.data());
        std::string text;
        for (int i = 1; i < arguments.program_count(); ++i)
            text.append(arguments.program[static_cast<size_t>(i)]).append(" ");
        text.append("|");
        for (int i = 1; i < arguments.toolkit_count(); ++i)
            text.append(" ").append(arguments.toolkit[static_cast<size_t>(i)]);
        return text.append(" = ").append(arguments.toolkit_value("platform"));
    };
    EXPECT_EQ(split({"lumacart", "-platform", "xcb", "A.LBL"}), "A.LBL | -platform xcb = xcb");
    EXPECT_EQ(split({"lumacart", "A.LBL", "--platform=xcb", "B"}), "A.LBL B | --platform=xcb = xcb");
    EXPECT_EQ(split({"lumacart", "--help", "-reverse", "-x"}), "--help -x | -reverse = ");
    EXPECT_EQ(split({"lumacart", "-", "-platform"}), "- | -platform = ");
}

// In processes of their own, for they change the environment.
TEST(CommandLine, WithoutADisplayTheProgramSaysSo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run_with_display = [](const char *display) {
        for (const char *variable : {"WAYLAND_DISPLAY", "WAYLAND_SOCKET", "QT_QPA_PLATFORM"})
            unsetenv(variable);
        setenv("DISPLAY", display, 1);
        exit(gui_run("Lumacart", TASK, nullptr));
    };
    EXPECT_EXIT(run_with_display(""), testing::ExitedWithCode(1), "Lumacart: there is no display");
    EXPECT_EXIT(run_with_display(":4711"), testing::ExitedWithCode(1), "no Qt platform plugin");
}

}  // namespace
