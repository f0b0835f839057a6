// Images of several bands: the dialogs, the pictures and what the windows on them can do.
#include "support/product.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

constexpr int show = 1, cancel = 2, all_bands = 11, shown_bands = 12, as_grey = 21, as_colours = 22, use = 31,
              leave_out = 32, make_red = 41, make_blue = 43, other_colour = 44, minimum = 51, maximum = 52,
              computed = 53;
const std::string title = "Bands and Colours";
const std::string limits_title = "Band Minimum and Maximum";

// 2 lines x 3 samples of 3 bands: 0 to 5, 10 to 15 and 20 to 25.
ImageProduct three_bands() {
    ImageProduct product;
    product.lines = 2;
    product.samples = 3;
    product.bands = 3;
    product.storage = "BAND_SEQUENTIAL";
    for (char band = 0; band < 3; ++band) {
        for (char sample = 0; sample < 6; ++sample)
            product.data += static_cast<char>(10 * band + sample);
    }
    return product;
}

// Opens a product, doing something in its dialog first.
Window *open_with(const std::string &label, const std::function<void(Window *)> &in_dialog) {
    when_idle([&] {
        Window *dialog = find_window(title);
        ASSERT_TRUE(dialog);
        in_dialog(dialog);
    });
    return open_in_viewer(label);
}
Window *open_at_once(const std::string &label) {
    return open_with(label, [](Window *dialog) { use_control(dialog, show); });
}
bool command_with(Window *window, int command, const std::string &of, const std::function<void(Window *)> &in_dialog) {
    when_idle([&] {
        Window *dialog = find_window(of);
        ASSERT_TRUE(dialog);
        in_dialog(dialog);
    });
    const bool chosen = choose_command(window, command);
    settle();
    return chosen;
}

std::vector<unsigned> pixels_of(Window *window) {
    return shown_pixels(window, {0, 0, 3, 2});
}
const std::vector<unsigned> greys = {0, 0x333333, 0x666666, 0x999999, 0xcccccc, 0xffffff};

TEST(BandsWindow, TheDialogLeadsToPixels) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product = three_bands();
        product.more = " BAND_NAME = (VIOLET, GREEN, \"NEAR INFRARED\")\n";
        const std::string label = write_detached(folder, "BANDS", product);
        ScriptedResponder responder;
        responder.colours = {{255, 128, 0}};
        std::vector<std::string> lines;
        Window *window = open_with(label, [&](Window *dialog) {
            EXPECT_EQ(gui_list_line(dialog, all_bands, 1), "2: GREEN");
            EXPECT_TRUE(gui_control_checked(dialog, as_colours));
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 1), "2: GREEN, green, limits computed");
            use_control(dialog, leave_out);
            use_control(dialog, leave_out);
            use_control(dialog, make_red);
            type_text(dialog, minimum, "22.5");
            type_text(dialog, maximum, "22.5");
            use_control(dialog, show);
            type_text(dialog, maximum, "much");
            use_control(dialog, show);
            type_text(dialog, minimum, "20");
            type_text(dialog, maximum, "21");
            gui_select_line(dialog, all_bands, 0);
            use_control(dialog, use);  // in the first colour that is free
            use_control(dialog, other_colour);
            for (int line = 0; line < 3; ++line)
                lines.push_back(gui_list_line(dialog, shown_bands, line));
            use_control(dialog, show);
        });
        ASSERT_TRUE(window);
        EXPECT_EQ(lines, (std::vector<std::string>{"3: NEAR INFRARED, red, 20 to 21",
                                                   "1: VIOLET, #ff8000, limits computed", ""}));
        EXPECT_EQ(responder.shown,
                  (std::vector<std::string>{
                      "error: The minimum of band 3 must be less than its maximum.",
                      "error: The maximum of band 3 field takes a number; leave it blank to take that of the samples "
                      "shown.",
                      "colour: Colour of Band 1: VIOLET"}));
        EXPECT_EQ(gui_title(window), "Lumacart - Image - BANDS.LBL");
        EXPECT_EQ(pixels_of(window),
                  (std::vector<unsigned>{0x000000, 0xff1a00, 0xff3300, 0xff4d00, 0xff6600, 0xff8000}));
        mouse_move(window, {1, 0});
        settle();
        EXPECT_EQ(gui_text(window, image_status), "sample: 2  line: 1  DN: 0  DIS: (255, 26, 0)");
        EXPECT_EQ(gui_text(window, image_value), "value: band 3: 21  band 1: 1");
        ASSERT_TRUE(choose_command(window, 1057));
        EXPECT_EQ(gui_text(window, image_value), "value: band 3: 21 (0x15)  band 1: 1 (0x01)");
        for (const int command : {1023, 1027, 1028, 1042, 1050})
            EXPECT_FALSE(gui_command_enabled(window, command)) << command;
        for (const int command : {1008, 1047, 1048, 1051, 1053, 1056, 2001})
            EXPECT_TRUE(gui_command_enabled(window, command)) << command;
        ASSERT_TRUE(choose_command(window, 1047));
        EXPECT_TRUE(find_window("Lumacart - Object Hierarchy - BANDS.LBL"));
        ASSERT_TRUE(choose_command(window, 1008));
    });
}

TEST(BandsWindow, CancellingLeavesNoWindow) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string label = write_detached(folder, "BANDS", three_bands());
        EXPECT_FALSE(open_with(label, [](Window *dialog) { use_control(dialog, cancel); }));
        EXPECT_FALSE(open_with(label, [](Window *dialog) { close_window(dialog); }));
        EXPECT_TRUE(gui_windows().empty());
    });
}

TEST(BandsWindow, CommandsShowAnotherChoiceInTheSameWindow) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product = three_bands();
        product.more = " LINE_DISPLAY_DIRECTION = UP\n SAMPLE_DISPLAY_DIRECTION = LEFT\n";
        Window *window = open_at_once(write_detached(folder, "BANDS", product));
        ASSERT_TRUE(window);
        EXPECT_EQ(pixels_of(window), std::vector<unsigned>(greys.rbegin(), greys.rend())) << "turned by half";

        ASSERT_TRUE(command_with(window, 1056, limits_title, [](Window *dialog) {
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 0), "1, red, 0 (computed) to 5 (computed)");
            double_click_line(dialog, shown_bands, 0);
            press_character(dialog, '4');
            EXPECT_EQ(gui_text(dialog, minimum), "4");
            use_control(dialog, computed);
            type_text(dialog, maximum, "1");
            use_control(dialog, show);
        }));
        EXPECT_EQ(pixels_of(window),
                  (std::vector<unsigned>{0xffffff, 0xffcccc, 0xff9999, 0xff6666, 0xff3333, 0x000000}));
        ASSERT_TRUE(command_with(window, 1056, limits_title, [](Window *dialog) {
            EXPECT_EQ(gui_text(dialog, maximum), "1");
            use_control(dialog, computed);
            use_control(dialog, cancel);
        }));
        EXPECT_EQ(pixels_of(window)[1], 0xffccccU);
        ASSERT_TRUE(command_with(window, 1056, limits_title, [](Window *dialog) {
            use_control(dialog, computed);
            use_control(dialog, show);
        }));
        EXPECT_EQ(pixels_of(window)[1], 0xccccccU);

        ASSERT_TRUE(command_with(window, 1053, title, [](Window *dialog) {
            use_control(dialog, as_grey);
            gui_select_line(dialog, all_bands, 2);
            use_control(dialog, use);
            use_control(dialog, show);
        }));
        EXPECT_EQ(pixels_of(window)[0], 0x191919U) << "the stored sample 25";
        for (const char *limit : {"25", "30"}) {
            ASSERT_TRUE(command_with(window, 1028, limits_title, [&](Window *dialog) {
                type_text(dialog, maximum, limit);
                use_control(dialog, show);
            }));
        }
        EXPECT_EQ(pixels_of(window)[0], 0x808080U);
        ASSERT_TRUE(choose_command(window, 1023));
        EXPECT_EQ(pixels_of(window)[0], 0x191919U) << "both stretches are undone";
        ASSERT_TRUE(choose_command(window, 1027));
        EXPECT_EQ(pixels_of(window)[0], 0xe6e6e6U);
        ASSERT_TRUE(command_with(window, 1053, title, [](Window *dialog) {
            EXPECT_TRUE(gui_control_checked(dialog, as_grey));
            use_control(dialog, as_colours);
            use_control(dialog, make_blue);
            use_control(dialog, show);
        }));
        EXPECT_EQ(pixels_of(window)[0], 0x00ffffU);
        EXPECT_FALSE(gui_command_enabled(window, 1027));
        EXPECT_EQ(gui_windows().size(), 1u);
    });
}

TEST(BandsWindow, BlocksKeepTheChoice) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product;
        product.lines = 4500;
        product.samples = 10;
        product.bands = 2;
        product.storage = "LINE_INTERLEAVED";
        const std::string label = write_detached(folder, "LONG", product);
        std::filesystem::resize_file(folder.file("LONG.IMG"), 4500 * 20);
        {
            std::fstream file(folder.file("LONG.IMG"), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(2000 * 20 + 10);
            file.put('\x40');  // line 2001, first sample of the second band
        }
        Window *window = open_with(label, [](Window *dialog) {
            use_control(dialog, leave_out);
            type_text(dialog, maximum, "255");
            use_control(dialog, show);
        });
        ASSERT_TRUE(window);
        ASSERT_TRUE(choose_command(window, 1072));
        Window *below = gui_windows().back();
        ASSERT_NE(below, window);
        EXPECT_EQ(window_state(below)->image_info->block, (SampleBlock{2001, 4000, 1, 10}));
        EXPECT_EQ(shown_pixel(below, 0, 0), 0x004040U);
        ASSERT_TRUE(command_with(below, 1056, limits_title, [](Window *dialog) { use_control(dialog, show); }));
        for (const int command : {1055, 1073, 1074})
            EXPECT_TRUE(gui_command_enabled(below, command)) << command;
        EXPECT_FALSE(gui_command_enabled(below, 1064));
        EXPECT_EQ(shown_pixel(below, 0, 0), 0x004040U);
    });
}

TEST(BandsWindow, UnattendedTheUsualBandsAreShown) {
    run_viewer([] {
        const ScratchFolder folder;
        session().unattended = true;
        Window *window = open_in_viewer(write_detached(folder, "BANDS", three_bands()));
        ASSERT_TRUE(window);
        EXPECT_EQ(pixels_of(window), greys);
        ImageProduct broken = three_bands();
        broken.bits = 12;
        EXPECT_FALSE(open_in_viewer(write_detached(folder, "BROKEN", broken)));
        session().unattended = false;
    });
}

// The window, and all others with it, may go while its dialog is open.
TEST(BandsWindow, TheSessionMayEndInTheDialog) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *window = open_at_once(write_detached(folder, "BANDS", three_bands()));
        ASSERT_TRUE(window);
        ASSERT_TRUE(command_with(window, 1053, title, [&](Window *) { gui_destroy_window(window); }));
        EXPECT_TRUE(gui_windows().empty());
        when_idle([] { ask_to_quit(); });
        EXPECT_FALSE(open_in_viewer(folder.file("BANDS.LBL")));
    });
}

}  // namespace
