// The histogram window and the palettes, driven by real events.
#include "support/gif.h"
#include "support/product.h"
#include "support/window_viewer.h"
#include "viewer/histogram_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr int HISTOGRAM = 1050, INVERT = 1027, UNDO = 1023, STRETCH = 1042, PALETTE = 2010, LOGARITHMIC = 2020;
const std::string samples_folder = LUMACART_SAMPLES;

// Every level once, so that no bin is high.
ImageProduct ramp() {
    ImageProduct product;
    product.lines = 2;
    product.samples = 128;
    for (int i = 0; i < 256; ++i)
        product.data += static_cast<char>(i);
    return product;
}

struct Opened {
    Window *image = nullptr;
    Window *histogram = nullptr;

    explicit Opened(Window *image_window) : image(image_window) {
        choose_command(image, HISTOGRAM);
        settle();
        histogram = histogram_of(*window_state(image));
    }
    DisplayControl control() const { return window_state(image)->display_state->control; }
    const ColourTable &colours() const { return window_state(image)->image_info->display_image->colours; }
    HistogramLayout layout() const {
        return lay_out_histogram(*window_state(histogram)->histogram, control(), gui_client_size(histogram));
    }
    GuiPoint place(int level) const {
        const HistogramLayout at = layout();
        return {level_place(at, level), at.plot.top + at.plot.height / 2.0};
    }
    void drag(int from, int to) const {
        mouse_press(histogram, place(from));
        mouse_move(histogram, place((from + to) / 2));
        mouse_move(histogram, place(to));
        mouse_release(histogram, place(to));
        settle();
    }
};

unsigned word(Colour colour) {
    return unsigned(colour.red) << 16 | unsigned(colour.green) << 8 | colour.blue;
}

TEST(HistogramWindow, DraggedBarsSetTheColoursAtOnce) {
    run_viewer([] {
        const ScratchFolder folder;
        const Opened opened(open_in_viewer(write_detached(folder, "RAMP", ramp())));
        ASSERT_TRUE(opened.histogram);
        EXPECT_EQ(gui_title(opened.histogram), "Lumacart - Histogram - RAMP.LBL");
        EXPECT_EQ(opened.colours(), util_grey_colours());

        opened.drag(0, 50);
        EXPECT_EQ(opened.control().lbarh, 50);
        opened.drag(255, 60);
        EXPECT_EQ(opened.control().rbarh, 60);
        EXPECT_EQ(opened.colours(), control_colours({50, 60, 127, 127, false}, util_grey_colours()));
        EXPECT_EQ(shown_pixel(opened.image, 49, 0), 0u) << "black up to the black point";
        EXPECT_EQ(shown_pixel(opened.image, 55, 0), 0x808080u);
        EXPECT_EQ(shown_pixel(opened.image, 60, 0), 0xffffffu);

        opened.drag(127, 137);
        EXPECT_EQ(opened.control().mbarh, 137);
        EXPECT_EQ(shown_pixel(opened.image, 45, 0), 0x808080u) << "shifted by ten levels";
        // Further than the other point, and out of the window.
        opened.drag(50, 200);
        EXPECT_EQ(opened.control().lbarh, 59);
        mouse_press(opened.histogram, opened.place(59));
        mouse_move(opened.histogram, {-500, 5});
        EXPECT_EQ(opened.control().lbarh, 0);
        mouse_release(opened.histogram, {-500, 5});
        mouse_move(opened.histogram, opened.place(20));
        EXPECT_EQ(opened.control().lbarh, 0) << "released";

        // Handles of bars that lie on each other are still apart; a press beside all takes none.
        opened.drag(137, 0);
        const GuiRect handle = opened.layout().handles[static_cast<size_t>(DisplayBar::Shift)];
        const GuiPoint grip = {handle.left + 2.0, handle.top + 2.0};
        mouse_press(opened.histogram, grip);
        mouse_move(opened.histogram, {grip.x + opened.place(30).x - opened.place(0).x, grip.y});
        mouse_release(opened.histogram, grip);
        EXPECT_EQ(opened.control().mbarh, 30);
        EXPECT_EQ(opened.control().lbarh, 0);
        const DisplayControl before = opened.control();
        opened.drag(200, 210);
        EXPECT_EQ(opened.control(), before);
        EXPECT_TRUE(use_control(opened.histogram, 4));
        EXPECT_EQ(opened.control(), DisplayControl());
        EXPECT_EQ(opened.colours(), util_grey_colours());
    });
}

TEST(HistogramWindow, KeysChooseAndMoveTheBars) {
    run_viewer([] {
        const ScratchFolder folder;
        const Opened opened(open_in_viewer(write_detached(folder, "RAMP", ramp())));
        ASSERT_TRUE(opened.histogram);
        const auto key = [&](GuiKey which, unsigned modifiers = 0) { press_key(opened.histogram, which, modifiers); };
        key(GuiKey::Right);
        key(GuiKey::Right, GUI_SHIFT);
        key(GuiKey::Left);
        EXPECT_EQ(opened.control().lbarh, 10);
        EXPECT_EQ(shown_pixel(opened.image, 10, 0), 0u);
        key(GuiKey::Tab);
        key(GuiKey::Left, GUI_SHIFT);
        EXPECT_EQ(opened.control().rbarh, 245);
        key(GuiKey::Home);
        EXPECT_EQ(opened.control().rbarh, 11);
        key(GuiKey::End);
        EXPECT_EQ(opened.control().rbarh, 255);
        EXPECT_TRUE(choose_command(opened.histogram, 2024));
        EXPECT_TRUE(command_checked(opened.histogram, 2024));
        key(GuiKey::Down);
        EXPECT_EQ(opened.control().mbarh, 126);
        EXPECT_EQ(gui_text(opened.histogram, 2), "Black point 10   White point 255   Shift -1   256 pixels");
        // Tab goes on to the button, which Space presses, and back again.
        key(GuiKey::Tab);
        press_character(opened.histogram, ' ');
        EXPECT_EQ(opened.control(), DisplayControl());

        mouse_move(opened.histogram, opened.place(70));
        EXPECT_EQ(gui_text(opened.histogram, 3), "Level 70: 1 pixel (0.391 %), shown as 70");
        mouse_leave(opened.histogram);
        EXPECT_EQ(gui_text(opened.histogram, 3), "");
    });
}

TEST(HistogramWindow, DrawsCountsLinearlyAndLogarithmically) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product = ramp();
        product.data.assign(256, 20);
        for (size_t i = 0; i < 192; ++i)
            product.data[i] = static_cast<char>(30 + i % 4);
        product.data[0] = 100;
        ScriptedResponder responder;
        const Opened opened(open_in_viewer(write_detached(folder, "FEW", product)));
        ASSERT_TRUE(opened.histogram);
        EXPECT_TRUE(responder.shown.empty()) << "a quarter is not more than a quarter";
        // The pixels of a level's column that are drawn, from the bottom up.
        const auto height = [&](int level) {
            const GuiRect plot = opened.layout().plot;
            const int x = static_cast<int>(std::lround(level_place(opened.layout(), level)));
            const auto column = shown_pixels(opened.histogram, {x, plot.top, 1, plot.height});
            const unsigned drawn = word(gui_colour(GuiColour::Faint));
            return std::count(column.begin(), column.end(), drawn);
        };
        const int whole = opened.layout().plot.height;
        EXPECT_EQ(height(20), whole);
        EXPECT_LE(height(100), 5);
        EXPECT_EQ(height(60), 0);
        ASSERT_TRUE(choose_command(opened.histogram, LOGARITHMIC));
        EXPECT_TRUE(command_checked(opened.histogram, LOGARITHMIC));
        EXPECT_EQ(height(20), whole);
        EXPECT_NEAR(double(height(100)), whole * 0.166, 2) << "log 2 of log 65";
        // The strip below shows what the levels are shown in.
        ASSERT_TRUE(choose_command(opened.image, PALETTE + 3));
        const HistogramLayout layout = opened.layout();
        EXPECT_EQ(shown_pixel(opened.histogram, static_cast<int>(level_place(layout, 90)), layout.strip.top + 5),
                  word(palette_colours(3)[90]));
    });
}

TEST(HistogramWindow, AsksOnceAboutHighCounts) {
    constexpr char question[] =
        "question: Bin 7 contains more than 1/4 of the pixels.\nDo you want to ignore these "
        "values? [Yes|No]";
    struct Case {
        std::vector<int> answers;
        bool ignored;
        bool unattended;
        std::vector<std::string> shown;
    };
    const Case cases[] = {
        {{0}, true, false, {question}},
        {{1}, false, false, {question}},
        {{}, false, false, {question, "error: High pixel count - invalid command"}},
        {{}, false, true, {}},
    };
    run_viewer([&] {
        const ScratchFolder folder;
        ImageProduct product = ramp();
        std::fill_n(product.data.begin(), 100, '\7');
        const std::string label = write_detached(folder, "HIGH", product);
        for (const Case &test : cases) {
            ScriptedResponder responder;
            responder.answers = test.answers;
            session().unattended = test.unattended;
            const Opened opened(open_in_viewer(label));
            ASSERT_TRUE(opened.histogram);
            choose_command(opened.image, HISTOGRAM);
            EXPECT_EQ(responder.shown, test.shown);
            const LevelHistogram &histogram = window_state(opened.histogram)->histogram->histogram;
            EXPECT_EQ(histogram.ignored[7], test.ignored);
            EXPECT_EQ(histogram_scale(histogram), test.ignored ? 1 : 100);
            EXPECT_EQ(gui_windows().size(), 2u) << "asked for again it is brought to the front";
            close_window(opened.image);
            settle();
            EXPECT_TRUE(gui_windows().empty()) << "the histogram goes with its image";
        }
        session().unattended = false;
    });
}

TEST(HistogramWindow, TheImageMayGoWhileAQuestionWaits) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product = ramp();
        product.data.assign(256, 7);
        Window *image = open_in_viewer(write_detached(folder, "ONE", product));
        when_idle([&] {
            gui_destroy_window(image);
            close_box();
        });
        choose_command(image, HISTOGRAM);
        while (close_box())
            settle();
        EXPECT_TRUE(gui_windows().empty());
    });
}

// Pixel value i of the ramp lies at sample i of line 1, so that a pixel shows its entry.
TEST(Palettes, AreChosenInvertedAndUndone) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *image = open_in_viewer(write_detached(folder, "RAMP", ramp()));
        const auto shown = [&](int level) { return shown_pixel(image, level, 0); };
        EXPECT_TRUE(command_checked(image, PALETTE));
        for (int palette = 6; palette > 0; --palette) {
            ASSERT_TRUE(choose_command(image, PALETTE + palette));
            EXPECT_EQ(shown(100), GetPaletteColor(palette, 100));
            EXPECT_TRUE(command_checked(image, PALETTE + palette));
            EXPECT_FALSE(command_checked(image, PALETTE));
        }
        EXPECT_FALSE(choose_command(image, 2017)) << "the file has no colours";
        ASSERT_TRUE(choose_command(image, INVERT));
        EXPECT_EQ(shown(100), GetPaletteColor(1, 155));
        ASSERT_TRUE(choose_command(image, INVERT));
        EXPECT_EQ(shown(100), GetPaletteColor(1, 100));
        ASSERT_TRUE(choose_command(image, STRETCH));
        EXPECT_EQ(shown(1), GetPaletteColor(1, 0)) << "half a per cent is black";
        ASSERT_TRUE(choose_command(image, UNDO));
        EXPECT_EQ(shown(100), 0x646464u);
        EXPECT_TRUE(command_checked(image, PALETTE));

        // With the histogram open its bars, the inversion and the palette hold together.
        ASSERT_TRUE(choose_command(image, INVERT));
        const Opened opened(image);
        EXPECT_EQ(shown(100), 0x646464u) << "a histogram starts on the plain display";
        opened.drag(0, 50);
        ASSERT_TRUE(choose_command(image, INVERT));
        ASSERT_TRUE(choose_command(opened.histogram, PALETTE + 2));
        EXPECT_EQ(opened.colours(), control_colours({50, 255, 127, 127, true}, palette_colours(2)));
        EXPECT_TRUE(command_checked(opened.histogram, INVERT));
        ASSERT_TRUE(choose_command(opened.histogram, UNDO));
        EXPECT_EQ(opened.control(), DisplayControl());
        EXPECT_EQ(opened.colours(), util_grey_colours());
        EXPECT_TRUE(command_checked(opened.histogram, PALETTE));
        // A stretch moves the bars to where it begins and ends.
        ASSERT_TRUE(choose_command(image, STRETCH));
        EXPECT_EQ(gui_text(opened.histogram, 2), "Black point 2   White point 254   Shift +0   256 pixels");
        close_window(opened.histogram);
        settle();
        EXPECT_EQ(gui_windows(), std::vector<Window *>{image});
        EXPECT_EQ(shown(1), 0u) << "closing the histogram leaves the display";
    });
}

TEST(Palettes, OfAGifFileAreOffered) {
    run_viewer([] {
        const ScratchFolder folder;
        std::string file("GIF89a\4\0\1\0\x81\0\0", 13);
        file +=
            std::string("\1\2\3\x10\x20\x30\xff\x80\x40\0\0\0", 12) + gif_image(4, 1, std::string("\0\1\2\3", 4), 2);
        Window *image = open_in_viewer(folder.write("own.gif", file + ";"));
        ASSERT_TRUE(image);
        EXPECT_EQ(shown_pixel(image, 1, 0), 0x010101u) << "indices in grey at first";
        ASSERT_TRUE(choose_command(image, 2017));
        EXPECT_EQ(shown_pixel(image, 1, 0), 0x102030u);
        EXPECT_EQ(shown_pixel(image, 2, 0), 0xff8040u);
        const Opened opened(image);
        ASSERT_TRUE(opened.histogram);
        opened.drag(127, 128);
        EXPECT_EQ(shown_pixel(image, 1, 0), 0xff8040u) << "the bars map the file's colours too";
    });
}

TEST(Palettes, StretchingASingleLevelIsToldInTheStatusLine) {
    run_viewer([] {
        const ScratchFolder folder;
        for (const char level : {'\0', '\x4d'}) {
            ImageProduct product = ramp();
            product.data.assign(256, level);
            Window *image = open_in_viewer(write_detached(folder, level ? "ONE" : "NONE", product));
            ASSERT_TRUE(choose_command(image, PALETTE + 3));
            ASSERT_TRUE(choose_command(image, STRETCH));
            EXPECT_EQ(shown_pixel(image, 5, 0), GetPaletteColor(3, level)) << "the table stays";
            EXPECT_TRUE(gui_control_shown(image, image_status));
            EXPECT_EQ(gui_text(image, image_status),
                      "Nothing to stretch: the picture is all background, or of a single level.");
            ASSERT_TRUE(choose_command(image, UNDO));
            EXPECT_FALSE(gui_control_shown(image, image_status)) << "no longer true of what is shown";
            ASSERT_TRUE(choose_command(image, STRETCH));
            mouse_move(image, {5, 0});
            EXPECT_EQ(gui_text(image, image_status).find("sample: 6 "), 0u) << "the read-out takes its place";
        }
    });
}

}  // namespace
