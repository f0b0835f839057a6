// The windows that list the objects and the keywords of a label.
#include "support/scratch.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

namespace {

constexpr int list = 1;

// An image, and behind it whatever else the label describes.
void write_label(const ScratchFolder &folder, const std::string &objects) {
    folder.write("DATA.IMG", "abcd");
    folder.write("DATA.LBL",
                 "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 4\n^IMAGE = \"DATA.IMG\"\nOBJECT = IMAGE\n"
                 " LINES = 2\n LINE_SAMPLES = 2\n SAMPLE_BITS = 8\n SAMPLE_TYPE = UNSIGNED_INTEGER\n"
                 " NAME = \"the \"first\" 100%s\"\nEND_OBJECT = IMAGE\n" +
                     objects + "END\n");
}

std::string object(const std::string &class_name, const std::string &keywords) {
    return "OBJECT = " + class_name + "\n" + keywords + "\nEND_OBJECT = " + class_name + "\n";
}

// Of the same class and data as the first, but one line.
const std::string twin =
    object("IMAGE", "NAME = twin\nLINES = 1\nLINE_SAMPLES = 4\nSAMPLE_BITS = 8\nSAMPLE_TYPE = UNSIGNED_INTEGER");

// The window that a command of another opens; null when none was added.
Window *open_child(Window *window, int command) {
    const size_t before = gui_windows().size();
    EXPECT_TRUE(choose_command(window, command));
    settle();
    return gui_windows().size() > before ? gui_windows().back() : nullptr;
}

struct Lists {
    const ScratchFolder folder;
    ScriptedResponder responder;
    Window *image = nullptr;
    Window *hierarchy = nullptr;
};

// Opens the data file, takes the label beside it when asked, and opens the hierarchy.
void run_lists_test(const std::string &objects, const std::function<void(Lists &)> &body) {
    run_viewer([&] {
        Lists lists;
        write_label(lists.folder, objects);
        lists.responder.answers = {0};
        lists.image = open_in_viewer(lists.folder.path().string() + "/DATA.IMG");
        ASSERT_TRUE(lists.image);
        lists.hierarchy = open_child(lists.image, 1047);
        ASSERT_TRUE(lists.hierarchy);
        EXPECT_EQ(lists.responder.shown.size(), 1u) << "the question at the first opening";
        lists.responder.shown.clear();
        body(lists);
    });
}

TEST(Hierarchy, ListsTheObjectsOncePerImage) {
    run_lists_test(object("TABLE", ""), [](Lists &lists) {
        EXPECT_EQ(gui_title(lists.hierarchy), "Lumacart - Object Hierarchy - DATA.LBL");
        EXPECT_EQ(gui_list_line(lists.hierarchy, list, 2), "2              TABLE   No NAME KEYWORD");
        EXPECT_EQ(gui_selected_line(lists.hierarchy, list), 1) << "the object that the image shows";
        EXPECT_EQ(place_on_screen(lists.hierarchy).left, place_on_screen(lists.image).left + 10);
        EXPECT_EQ(place_on_screen(lists.hierarchy).top, place_on_screen(lists.image).top + 60);
        EXPECT_FALSE(gui_command_enabled(lists.hierarchy, 1004)) << "there is no text to save";
        EXPECT_FALSE(open_child(lists.image, 1047)) << "the one that is there comes to the front";
        close_window(lists.image);
        press_key(lists.hierarchy, GuiKey::Enter);
        settle();
        EXPECT_EQ(gui_windows().size(), 2u) << "the list does not need the window that it came from";
    });
}

TEST(Hierarchy, OpensTheChosenTwinUnlessTheLabelChanged) {
    run_lists_test(twin, [](Lists &lists) {
        for (const char character : {'t', 'w', 'i'})
            press_character(lists.hierarchy, character);
        press_key(lists.hierarchy, GuiKey::Enter);
        settle();
        ASSERT_EQ(gui_windows().size(), 3u);
        EXPECT_EQ(shown_pixel(gui_windows().back(), 3, 0), 0x010101U * 'd');
        EXPECT_EQ(lists.responder.shown, std::vector<std::string>());
        for (const std::string &objects : {object("TABLE", ""), std::string()}) {
            lists.responder.shown.clear();
            write_label(lists.folder, objects);
            double_click_line(lists.hierarchy, list, 2);
            EXPECT_EQ(lists.responder.shown, std::vector<std::string>{"error: Open Object - no valid object"});
        }
    });
}

TEST(Hierarchy, SaysWhatCannotBeShown) {
    run_lists_test(object("COLLECTION", "") + object("HEADER", "") + object("TEXT", ""), [](Lists &lists) {
        for (int line = 2; line <= 4; ++line)
            double_click_line(lists.hierarchy, list, line);
        EXPECT_EQ(lists.responder.shown,
                  (std::vector<std::string>{"note: COLLECTION objects are not supported by Lumacart at this time",
                                            "note: HEADER objects may not be selected for display."}));
        EXPECT_EQ(gui_windows().size(), 2u);
    });
}

std::vector<std::string> chosen;

void choose_open(std::unique_ptr<GenericState> state) {
    chosen.push_back(std::string("open ") + state->label_state->current_object->first_keyword->value);
}
void choose_plot(std::unique_ptr<GenericState> state) {
    chosen.push_back(std::string("plot ") + state->label_state->current_object->first_keyword->value);
}

TEST(Hierarchy, LetsTheUserOpenOrPlotATable) {
    const std::string tables = object("TABLE", "NAME = A") + object("TABLE", "NAME = B");
    run_lists_test(tables + object("SPECTRUM", "NAME = C"), [](Lists &lists) {
        const ProductOpener rows[] = {{"*TABLE", nullptr, choose_open, choose_plot},
                                      {"*SPECTRUM", nullptr, choose_open, nullptr}};
        set_product_openers(rows);
        chosen.clear();
        const auto choose = [&](int line, const std::function<void(Window *)> &answer) {
            when_idle([&] { answer(find_window("Open or Plot")); });
            double_click_line(lists.hierarchy, list, line);
            settle();
        };
        choose(3, [](Window *dialog) { use_control(dialog, 2); });
        choose(2, [](Window *dialog) { press_key(dialog, GuiKey::Enter); });
        choose(3, [](Window *dialog) { use_control(dialog, 3); });
        choose(3, [](Window *) { close_box(); });
        choose(4, [](Window *dialog) {
            EXPECT_FALSE(use_control(dialog, 2)) << "there is no plot of it";
            use_control(dialog, 1);
        });
        choose(2, [&](Window *dialog) {
            gui_destroy_window(lists.hierarchy);
            use_control(dialog, 1);
        });
        EXPECT_EQ(chosen, (std::vector<std::string>{"plot B", "open A", "open C"}));
    });
}

TEST(Keywords, ListTheImagesKeywordsOncePerImage) {
    run_lists_test("", [](Lists &lists) {
        Window *window = open_child(lists.image, 1048);
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Image Attributes - DATA.LBL");
        EXPECT_EQ(gui_list_line(window, list, 0), "OBJECT = IMAGE");
        EXPECT_EQ(gui_list_line(window, list, 5), "   NAME = \"the \"first\" 100%s\"");
        EXPECT_FALSE(open_child(lists.image, 1048));
        close_window(window);
        EXPECT_TRUE(open_child(lists.image, 1048)) << "again after the first was closed";
    });
}

}  // namespace
