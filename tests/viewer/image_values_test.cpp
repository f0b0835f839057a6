// What an image window does with the samples behind its picture: the value read out, and stretches between two values.
#include "support/product.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int ok = 1, own_range = 4, minimum = 11, maximum = 12;

// 2 lines x 3 signed samples, most significant byte first; the label's range leaves 3000 outside.
std::string write_signed_words(const ScratchFolder &folder, const std::string &directions = "") {
    ImageProduct product;
    product.lines = 2;
    product.samples = 3;
    product.bits = 16;
    product.type = "MSB_INTEGER";
    product.more = " MINIMUM = 0\n MAXIMUM = 255\n" + directions;
    product.data = stored<int16_t>({-2, 0, 100, 255, 256, 3000}, std::endian::big);
    return write_detached(folder, "WORDS", product);
}

std::vector<uint8_t> levels(Window *window) {
    const PixelImage &image = *window_state(window)->image_info->display_image;
    return {image.pixels.get(), image.pixels.get() + int64_t{image.width} * image.height};
}

std::string value_at(Window *window, double x, double y) {
    mouse_move(window, {x, y});
    return gui_control_shown(window, image_value) ? gui_text(window, image_value) : "";
}

TEST(ImageValues, AreReadOutAsStoredInDecimalAndHexadecimalAndCopied) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        Window *window = open_in_viewer(
            write_signed_words(folder, " LINE_DISPLAY_DIRECTION = RIGHT\n SAMPLE_DISPLAY_DIRECTION = DOWN\n"));
        ASSERT_TRUE(window);
        ASSERT_TRUE(choose_command(window, 2005));
        EXPECT_EQ(responder.shown.size(), 1u) << "nothing to copy yet";
        EXPECT_EQ(value_at(window, 1, 2), "value: 3000");
        EXPECT_EQ(value_at(window, 0, 0), "value: -2");
        EXPECT_FALSE(command_checked(window, 1057));
        ASSERT_TRUE(choose_command(window, 1057));
        EXPECT_TRUE(command_checked(window, 1057));
        EXPECT_EQ(gui_text(window, image_value), "value: -2 (0xFFFE)");
        mouse_leave(window);
        EXPECT_FALSE(gui_control_shown(window, image_value));
        ASSERT_TRUE(choose_command(window, 2005));
        EXPECT_EQ(clipboard_text(), "sample: 1  line: 1  DN: 254 (0xFE)  DIS: (254, 254, 254)\nvalue: -2 (0xFFFE)");

        ImageProduct real;
        real.samples = 2;
        real.bits = 32;
        real.type = "IEEE_REAL";
        real.data = stored<float>({0.1F, -1e30F}, std::endian::big);
        window = open_in_viewer(write_detached(folder, "REAL", real));
        ASSERT_TRUE(choose_command(window, 1057));
        EXPECT_EQ(value_at(window, 0, 0), "value: 0.1") << "reals have no hexadecimal form";
        press_key(window, GuiKey::Right);
        press_key(window, GuiKey::Right, GUI_SHIFT);
        EXPECT_EQ(gui_text(window, image_value), "value: -1e+30");
    });
}

TEST(ImageValues, TheReadOutDoesNotCoverItsPixel) {
    run_viewer([] {
        Window *window = open_in_viewer(std::string(LUMACART_SAMPLES) + "/PLAIN_A.LBL");
        ASSERT_TRUE(window);
        const auto bottom = shown_pixels(window, {0, 505, 450, 1});
        mouse_move(window, {100, 100});
        EXPECT_NE(shown_pixels(window, {0, 505, 450, 1}), bottom);
        mouse_move(window, {100, 505});
        EXPECT_EQ(shown_pixels(window, {0, 505, 450, 1}), bottom);
    });
}

TEST(ImageStretch, MapsSamplesBetweenTheTypedValuesUntilUndone) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        Window *window = open_in_viewer(
            write_signed_words(folder, " LINE_DISPLAY_DIRECTION = UP\n SAMPLE_DISPLAY_DIRECTION = RIGHT\n"));
        ASSERT_TRUE(window);
        const std::vector<uint8_t> as_opened = {255, 0, 184, 254, 0, 100};  // -2, 256 and 3000 wrap around
        EXPECT_EQ(levels(window), as_opened);

        when_idle([] {
            Window *dialog = find_window("Stretch the Image");
            EXPECT_EQ(gui_text(dialog, 3), "Samples shown: from -2 to 3000");
            for (const auto &[low, high] :
                 {std::pair{"x", "5"}, {"", "5"}, {"1", "nan"}, {"1", "1e999"}, {"7", "7"}, {"7", "6.5"}}) {
                type_text(dialog, minimum, low);
                type_text(dialog, maximum, high);
                use_control(dialog, ok);
            }
            use_control(dialog, own_range);
            EXPECT_EQ(gui_text(dialog, maximum), "3000");
            type_text(dialog, minimum, " -.5e1 ");
            type_text(dialog, maximum, "+251");
            use_control(dialog, ok);
        });
        ASSERT_TRUE(choose_command(window, 1027));
        ASSERT_TRUE(choose_command(window, 1028));
        const std::string bad = "error: Invalid value entered in the ";
        EXPECT_EQ(responder.shown,
                  (std::vector<std::string>{
                      bad + "Minimum field. Value must be a number", bad + "Minimum field. Value must be a number",
                      bad + "Maximum field. Value must be a number",
                      "error: Overflow has occurred while converting the value in the Maximum field",
                      "error: Minimum and Maximum values cannot be equal",
                      "error: Maximum value cannot be less than the Minimum value"}));
        EXPECT_EQ(levels(window), (std::vector<uint8_t>{255, 255, 255, 3, 5, 105}));
        EXPECT_EQ(shown_pixel(window, 2, 1), 0x696969U) << "in grey, the inversion has gone";

        // Cancelled, it changes nothing and proposes what holds.
        when_idle([] {
            Window *dialog = find_window("Stretch the Image");
            EXPECT_EQ(gui_text(dialog, minimum) + " " + gui_text(dialog, maximum), "-5 251");
            type_text(dialog, minimum, "0");
            close_box();
        });
        ASSERT_TRUE(choose_command(window, 1028));
        EXPECT_EQ(levels(window)[3], 3);
        ASSERT_TRUE(choose_command(window, 1027));
        ASSERT_TRUE(choose_command(window, 1023));
        EXPECT_EQ(levels(window), as_opened);
        EXPECT_EQ(shown_pixel(window, 2, 1), 0x646464U);
    });
}

TEST(ImageWindow, BrowseSettingsFillTheScreenAndStretch) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product;
        product.lines = 100;
        product.samples = 200;
        for (int i = 0; i < 20000; ++i)
            product.data += static_cast<char>(50 + i % 100);
        session().browse_size = session().browse_stretch_image = true;
        Window *window = open_in_viewer(write_detached(folder, "SMALL", product));
        session().browse_size = session().browse_stretch_image = false;
        ASSERT_TRUE(window);
        const GuiSize client = gui_client_size(window);
        const DisplayState &display = *window_state(window)->display_state;
        EXPECT_GT(client.width, 600);
        EXPECT_EQ(display.zoom, std::min(client.width / 200, client.height / 100));
        EXPECT_EQ(window_state(window)->image_info->display_image->colours[50].red, 0);
        resize_window(window, 500, 400);
        EXPECT_EQ(display.zoom, 2);
        press_character(window, '+');
        resize_window(window, 700, 700);
        EXPECT_EQ(display.zoom, 3) << "the user's own";
    });
}

TEST(TimeParser, TellsTheDayOfATimeAndWhatIsWrong) {
    run_viewer([] {
        const ScratchFolder folder;
        when_idle([] {
            Window *dialog = find_window("Time Parser");
            const auto shown = [dialog] {
                std::string all;
                for (const int control : {21, 22, 23, 24})
                    all += gui_text(dialog, control) + "|";
                return all;
            };
            EXPECT_EQ(shown(), "–|–|–|–|");
            type_text(dialog, 11, "1996-366T06:00Z");
            EXPECT_EQ(shown(), "1996-12-31|1996-366|06:00:00 UTC|2450448.75|");
            type_text(dialog, 11, "1995-366");
            EXPECT_EQ(shown(), "–|–|–|–|");
            EXPECT_EQ(gui_text(dialog, 20), "1995 is no leap year: it has 365 days.");
            use_control(dialog, 2);
        });
        ASSERT_TRUE(choose_command(gui_task_window(), 1032));

        // From an image it starts with the label's own time.
        std::string label = read_file(write_signed_words(folder));
        Window *window = open_in_viewer(folder.write("TIMED.LBL", "START_TIME = 1977-09-05T12:56\n" + label));
        std::string proposed;
        when_idle([&] {
            proposed = gui_text(find_window("Time Parser"), 22);
            close_box();
        });
        ASSERT_TRUE(choose_command(window, 1032));
        EXPECT_EQ(proposed, "1977-248");
    });
}

}  // namespace
