// Lists of lines: keys, typing, double clicks and the columns on the screen.
#include "support/window_driver.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> uses;

long record(Window *window, const Event &event) {
    if (event.type == EventType::Control)
        uses.push_back((event.use == ControlUse::Activated ? "activated " : "selected ") +
                       std::to_string(gui_selected_line(window, event.number)));
    return 0;
}

void run_list_test(const std::vector<std::string> &lines, const std::function<void(Window *)> &body) {
    run_window_test(9007, record, [&](Window *window) {
        ASSERT_TRUE(gui_set_list(window, 1, lines));
        gui_focus_control(window, 1);
        gui_select_line(window, 1, 0);
        uses.clear();
        body(window);
    });
}

TEST(List, KeysAndClicksSelectAndActivate) {
    run_list_test({"0 zero", "1 one", "2 two"}, [](Window *window) {
        press_key(window, GuiKey::Down);
        press_key(window, GuiKey::Enter);
        press_key(window, GuiKey::End);
        press_key(window, GuiKey::Home);
        double_click_line(window, 1, 1);
        EXPECT_EQ(std::exchange(uses, {}), (std::vector<std::string>{"selected 1", "activated 1", "selected 2",
                                                                     "selected 0", "selected 1", "activated 1"}));
        EXPECT_EQ(gui_list_line(window, 1, 2), "2 two");
        EXPECT_EQ(gui_list_line(window, 1, 3), "");
        gui_select_line(window, 1, 2);
        ASSERT_TRUE(gui_set_list(window, 1, {}));
        press_key(window, GuiKey::Enter);
        press_character(window, 'x');
        EXPECT_EQ(gui_selected_line(window, 1), -1);
        EXPECT_EQ(uses, std::vector<std::string>()) << "what the program does is no event";
        EXPECT_FALSE(gui_set_list(window, 2, {"no such control"}));
    });
}

TEST(List, TypingFindsAnyPartOfALine) {
    run_list_test({"0  ROOT", "1  IMAGE   first", "2  TABLE   Image index", "3  IMAGE   last"}, [](Window *window) {
        const auto type = [window](const char *text) {
            for (; *text; ++text)
                press_character(window, *text);
            return gui_selected_line(window, 1);
        };
        EXPECT_EQ(type("ima"), 1);
        EXPECT_EQ(type("ge i"), 2) << "goes on with what was typed";
        EXPECT_EQ(type("q"), 2) << "nothing found, nothing moved";
        press_key(window, GuiKey::Escape);
        EXPECT_EQ(type("image"), 3) << "something new is sought behind the selected line";
        press_key(window, GuiKey::Escape);
        EXPECT_EQ(type("root"), 0) << "around the end";
    });
}

TEST(List, HoldsVeryManyLinesOfAnyBytes) {
    std::vector<std::string> lines(100000, "a line of some length");
    lines[5] = std::string("\xff\0\n\r\x1b%s\xe2\x80\xa8", 10) + std::string(100000, 'x');
    lines.back() = "needle";
    run_list_test(lines, [](Window *window) {
        for (const char character : {'n', 'e', 'e'})
            press_character(window, character);
        EXPECT_EQ(gui_selected_line(window, 1), 99999);
        EXPECT_FALSE(marked_columns(window, 1, 5).empty());
    });
}

// A digit is as wide as two blanks.
TEST(List, LinesUpColumnsByNarrowBlanks) {
    run_list_test({"7          I", "77        I", "777      I", "7777    I", "77777  I"}, [](Window *window) {
        const int end = marked_columns(window, 1, 0).back();
        for (int line = 1; line < 5; ++line)
            EXPECT_NEAR(marked_columns(window, 1, line).back(), end, 1) << line;
    });
}

}  // namespace
