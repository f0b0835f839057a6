#include "support/window_driver.h"

#include <gtest/gtest.h>

namespace {

constexpr int task = 9001, text_definition = 9006, text = 1;
using Texts = std::vector<std::string>;

long no_answer(Window *, const Event &) {
    return 0;
}

void with_text_window(const std::function<void(Window *)> &body) {
    run_window_test(text_definition, no_answer, [&](Window *window) {
        gui_focus_control(window, text);
        body(window);
    });
}

Texts after_setting(Window *window, const Texts &texts) {
    gui_set_paragraphs(window, text, texts);
    return gui_paragraphs(window, text);
}

TEST(MultiLineText, GivesAllBytesBack) {
    with_text_window([](Window *window) {
        std::string all;
        for (int byte = 0; byte < 256; ++byte)
            all += static_cast<char>(byte);
        Texts texts = {all, all + "\r\n", "", "\n", "\r", "a\n\r", "a\r\r\n", "\r\nb", "a\xc2\xa0\xe2\x80\xa8z\r"};
        // What a text document or our own signs could be taken for; what is nearly UTF-8.
        for (const char *odd : {"\xe2\x80\xa9", "\xef\xb7\x90\xef\xb7\x91", "\xef\xbf\xbc\xef\xbb\xbf", "\xee\xb7\xbf",
                                "\xee\xb8\x80\xee\xbb\xbf", "\xed\xa0\x80", "\xc0\x80", "\xf4\x90\x80\x80", "\xe2\x82",
                                "\xf0\x9f\x98\x80 \xe6\x97\xa5\n"})
            texts.emplace_back(odd);
        std::string lengthy;
        while (lengthy.size() < 100000)
            lengthy += all + "\xf0\x9f\x98\x80";
        texts.push_back(lengthy + "\r\n");
        texts.push_back("behind");
        ASSERT_EQ(after_setting(window, texts), texts);
        EXPECT_EQ(gui_paragraph_count(window, text), texts.size());
        EXPECT_EQ(gui_paragraph(window, text, texts.size() - 2), lengthy + "\r\n");
        EXPECT_EQ(gui_paragraph(window, text, texts.size()), "");

        // Through the clipboard, too; line ends become plain ones there.
        const Texts plain = {all.substr(14) + "\xc2\xa0", lengthy, "", "end"};
        gui_set_paragraphs(window, text, plain);
        press_character(window, 'A', GUI_CONTROL);
        press_character(window, 'X', GUI_CONTROL);
        EXPECT_EQ(gui_paragraph_count(window, text), 0u);
        press_character(window, 'V', GUI_CONTROL);
        EXPECT_EQ(gui_paragraphs(window, text), plain);
    });
}

TEST(MultiLineText, IsReachedByParagraph) {
    with_text_window([](Window *window) {
        EXPECT_TRUE(gui_has_paragraphs(window, text));
        EXPECT_FALSE(gui_has_paragraphs(window, 99));
        EXPECT_EQ(after_setting(window, {}), Texts());
        gui_append_paragraphs(window, text, {"a\r\n", std::string(5000, 'b')});
        gui_append_paragraphs(window, text, {"c", ""});
        const Texts expected = {"a\r\n", std::string(5000, 'b'), "c", ""};
        EXPECT_EQ(gui_paragraphs(window, text), expected);
        gui_set_paragraph(window, text, 1, "short\n");
        gui_set_paragraph(window, text, 2, std::string(4001, 'd'));
        gui_set_paragraph(window, text, 9, "nowhere");
        const Texts changed = {"a\r\n", "short\n", std::string(4001, 'd'), ""};
        EXPECT_EQ(gui_paragraphs(window, text), changed);

        Texts many(500, "line");
        many[100] = std::string(7000, 'x');
        gui_set_paragraphs(window, text, many);
        gui_show_paragraph(window, text, 300);
        EXPECT_EQ(gui_first_paragraph_shown(window, text), 300u);
        press_character(window, '!');
        EXPECT_EQ(gui_paragraph(window, text, 300), "!line");
    });
}

TEST(MultiLineText, KnowsWhetherItChanged) {
    with_text_window([](Window *window) {
        gui_set_title(window, "a [*] b");
        gui_set_paragraphs(window, text, {"line\r\n", "next"});
        EXPECT_FALSE(gui_text_changed(window, text));
        EXPECT_EQ(title_on_screen(window).find("a [*] b"), 0u);
        const std::string unchanged = title_on_screen(window);
        press_key(window, GuiKey::End);
        press_character(window, '!');
        EXPECT_TRUE(gui_text_changed(window, text));
        EXPECT_NE(title_on_screen(window), unchanged);
        // What is typed at the end of a line stands before its line end.
        EXPECT_EQ(gui_paragraph(window, text, 0), "line!\r\n");
        press_character(window, 'Z', GUI_CONTROL);
        EXPECT_FALSE(gui_text_changed(window, text));
        press_key(window, GuiKey::Enter);
        EXPECT_EQ(gui_paragraph_count(window, text), 3u);
        gui_set_text_changed(window, text, false);
        EXPECT_EQ(title_on_screen(window), unchanged);
        gui_set_paragraphs(window, text, {});
        EXPECT_EQ(title_on_screen(window), unchanged) << "an empty text is as it was set too";
    });
}

TEST(MultiLineText, LeavesDroppedFilesToTheTaskWindow) {
    static std::vector<std::string> dropped;
    const EventHandler task_handler = [](Window *, const Event &event) {
        if (event.type == EventType::FileDrop)
            dropped = event.files;
        return 0L;
    };
    EXPECT_EQ(run_gui_test(task, task_handler,
                           [] {
                               Window *window = gui_create_window(text_definition, nullptr, no_answer, nullptr);
                               drop_files_on_control(window, text, {"/some file"});
                               EXPECT_EQ(dropped, Texts{"/some file"});
                               EXPECT_EQ(gui_paragraph_count(window, text), 0u);
                           }),
              0);
}

TEST(WindowPlace, StaysOnTheScreen) {
    with_text_window([](Window *window) {
        const GuiRect screen = gui_screen_place(window);
        gui_place_window(window, {30, 40, 200, 100});
        EXPECT_EQ(gui_window_place(window).left, 30);
        EXPECT_EQ(gui_window_place(window).top, 40);
        gui_place_window(window, {-500, screen.height - 10, 100 * screen.width, 200});
        const GuiRect place = gui_window_place(window);
        EXPECT_EQ(place.left, 0);
        EXPECT_LE(place.width, screen.width);
        EXPECT_LE(place.top + place.height, screen.height);
    });
}

}  // namespace
