// The windows that list the objects and the keywords of a label.
#include "support/product.h"
#include "support/scratch.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

namespace {

constexpr int list = 1;

// An image, and behind it whatever else the label describes.
std::string write_label(const ScratchFolder &folder, const std::string &name, const std::string &objects) {
    folder.write("DATA.IMG", "abcdWXYZ");
    return folder.write(name,
                        "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 4\n^IMAGE = (\"DATA.IMG\", 1)\n"
                        "OBJECT = IMAGE\n LINES = 2\n LINE_SAMPLES = 2\n"
                        " SAMPLE_BITS = 8\n SAMPLE_TYPE = UNSIGNED_INTEGER\n NAME = \"the \"first\" 100%s\"\n"
                        "END_OBJECT = IMAGE\n" +
                            objects + "END\n");
}

// Of the same class and data as the first, but one line.
constexpr char second_image[] =
    "OBJECT = IMAGE\n NAME = twin\n LINES = 1\n LINE_SAMPLES = 4\n SAMPLE_BITS = 8\n"
    " SAMPLE_TYPE = UNSIGNED_INTEGER\nEND_OBJECT = IMAGE\n";

std::string object(const std::string &class_name) {
    return "OBJECT = " + class_name + "\nEND_OBJECT = " + class_name + "\n";
}

// The window that a command of another opens; null when none was added.
Window *open_child(Window *window, int command) {
    const size_t before = gui_windows().size();
    EXPECT_TRUE(choose_command(window, command));
    settle();
    return gui_windows().size() > before ? gui_windows().back() : nullptr;
}

Window *open_hierarchy(const std::string &path) {
    Window *image = open_in_viewer(path);
    return image ? open_child(image, 1047) : nullptr;
}

TEST(Hierarchy, ListsTheObjectsOncePerImage) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *image = open_in_viewer(write_label(folder, "LABEL.LBL", object("TABLE")));
        ASSERT_TRUE(image);
        const GuiRect frame = place_on_screen(image);
        Window *window = open_child(image, 1047);
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Object Hierarchy - LABEL.LBL");
        EXPECT_EQ(gui_list_line(window, list, 0), "0            ROOT    ");
        EXPECT_EQ(gui_list_line(window, list, 1), "1              IMAGE   the \"first\" 100%s");
        EXPECT_EQ(gui_list_line(window, list, 2), "2              TABLE   No NAME KEYWORD");
        EXPECT_EQ(gui_selected_line(window, list), 1) << "the object that the image shows";
        EXPECT_EQ(place_on_screen(window).left, frame.left + 10);
        EXPECT_EQ(place_on_screen(window).top, frame.top + 60);
        EXPECT_FALSE(gui_command_enabled(window, 1004)) << "there is no text to save";

        EXPECT_FALSE(open_child(image, 1047)) << "the one that is there comes to the front";
        close_window(image);
        settle();
        press_key(window, GuiKey::Enter);
        settle();
        EXPECT_EQ(gui_windows().size(), 2u) << "the list does not need the window that it came from";
    });
}

TEST(Hierarchy, OpensTheChosenOneOfSeveralTwins) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        Window *window = open_hierarchy(write_label(folder, "LABEL.LBL", second_image));
        ASSERT_TRUE(window);
        for (const char character : {'t', 'w', 'i'})
            press_character(window, character);
        press_key(window, GuiKey::Enter);
        settle();
        ASSERT_EQ(gui_windows().size(), 3u);
        EXPECT_EQ(shown_pixel(gui_windows().back(), 3, 0), 0x010101U * 'd');
        double_click_line(window, list, 1);
        settle();
        ASSERT_EQ(gui_windows().size(), 4u);
        EXPECT_EQ(shown_pixel(gui_windows().back(), 1, 1), 0x010101U * 'd');
        EXPECT_EQ(responder.shown, std::vector<std::string>());
    });
}

TEST(Hierarchy, AsksNothingTwiceAndNoticesThatTheLabelChanged) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        responder.answers = {0};
        write_label(folder, "DATA.LBL", second_image);
        Window *window = open_hierarchy(folder.path().string() + "/DATA.IMG");
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Object Hierarchy - DATA.LBL");
        double_click_line(window, list, 2);
        settle();
        EXPECT_EQ(gui_windows().size(), 3u);
        EXPECT_EQ(responder.shown.size(), 1u) << "the question at the first opening";

        for (const std::string &objects : {object("TABLE"), std::string()}) {
            responder.shown.clear();
            write_label(folder, "DATA.LBL", objects);
            press_key(window, GuiKey::Enter);
            EXPECT_EQ(responder.shown, std::vector<std::string>{"error: Open Object - no valid object"});
        }
    });
}

TEST(Hierarchy, SaysWhatCannotBeShown) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        Window *window = open_hierarchy(write_label(
            folder, "LABEL.LBL",
            object("COLLECTION") + object("IMAGE_HEADER") + object("TABLE") + object("QUBE") + object("TEXT")));
        ASSERT_TRUE(window);
        for (int line = 2; line <= 6; ++line)
            double_click_line(window, list, line);
        settle();
        EXPECT_EQ(responder.shown,
                  (std::vector<std::string>{"note: COLLECTION objects are not supported by Lumacart at this time",
                                            "note: HEADER objects may not be selected for display.",
                                            "note: Lumacart has no window for TABLE objects yet.",
                                            "note: Lumacart has no window for QUBE objects yet."}));
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
    run_viewer([] {
        const ScratchFolder folder;
        Window *window = open_hierarchy(write_label(
            folder, "LABEL.LBL",
            "OBJECT = TABLE\nNAME = A\nEND_OBJECT\nOBJECT = TABLE\nNAME = B\nEND_OBJECT\nOBJECT = SPECTRUM\nNAME = "
            "C\nEND_OBJECT\n"));
        ASSERT_TRUE(window);
        const ProductOpener rows[] = {{"*TABLE", nullptr, choose_open, choose_plot},
                                      {"*SPECTRUM", nullptr, choose_open, nullptr}};
        set_product_openers(rows);
        chosen.clear();
        bool plot_of_spectrum = true;
        const auto choose = [&](int line, const std::function<void(Window *)> &answer) {
            when_idle([&] { answer(find_window("Open or Plot")); });
            double_click_line(window, list, line);
            settle();
        };
        choose(3, [](Window *dialog) { use_control(dialog, 2); });
        choose(2, [](Window *dialog) { press_key(dialog, GuiKey::Enter); });
        choose(3, [](Window *dialog) { use_control(dialog, 3); });
        choose(3, [](Window *) { close_box(); });
        choose(4, [&](Window *dialog) {
            plot_of_spectrum = use_control(dialog, 2);
            use_control(dialog, 1);
        });
        choose(2, [&](Window *dialog) {
            gui_destroy_window(window);
            use_control(dialog, 1);
        });
        EXPECT_FALSE(plot_of_spectrum) << "there is no plot of it";
        EXPECT_EQ(chosen, (std::vector<std::string>{"plot B", "open A", "open C"}));
    });
}

TEST(Keywords, ListTheImagesKeywordsOncePerImage) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *image = open_in_viewer(write_label(folder, "LABEL.LBL", ""));
        ASSERT_TRUE(image);
        Window *window = open_child(image, 1048);
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Image Attributes - LABEL.LBL");
        EXPECT_EQ(gui_list_line(window, list, 0), "OBJECT = IMAGE");
        EXPECT_EQ(gui_list_line(window, list, 1), "   LINES = 2");
        EXPECT_EQ(gui_list_line(window, list, 5), "   NAME = \"the \"first\" 100%s\"");
        EXPECT_FALSE(open_child(image, 1048));
        close_window(window);
        settle();
        EXPECT_TRUE(open_child(image, 1048)) << "again after the first was closed";
    });
}

}  // namespace
