#include "base/text.h"
#include "support/window_driver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int DOCUMENT = 9002;
using Lines = std::vector<std::string>;

// What the window draws, and what it was told.
struct Scene {
    std::unique_ptr<PixelImage> image;
    int left = 0, top = 0, zoom = 1, shrink = 1;
    bool scrolled = false;  // draws at the scroll position instead
    std::vector<Event> events;
    std::vector<GuiRect> drawn;
    long key_answer = 0;
    std::function<void(Canvas *)> draw;
};
Scene g_scene;

long drawing_handler(Window *window, const Event &event) {
    if (event.type == EventType::Update) {
        g_scene.drawn.push_back(event.area);
        gui_clear(event.canvas, event.area);
        const GuiPoint corner = gui_scroll_position(window);
        if (g_scene.scrolled) {
            g_scene.left = -static_cast<int>(corner.x);
            g_scene.top = -static_cast<int>(corner.y);
        }
        if (g_scene.image)
            gui_draw_image(event.canvas, *g_scene.image, g_scene.left, g_scene.top, g_scene.zoom, g_scene.shrink);
        if (g_scene.draw)
            g_scene.draw(event.canvas);
        return 0;
    }
    g_scene.events.push_back(event);
    return event.type == EventType::Key ? g_scene.key_answer : 0;
}

unsigned word(const Colour &colour) {
    return unsigned(colour.red) << 16 | unsigned(colour.green) << 8 | colour.blue;
}

// Neighbours differ in both directions; the table maps no two entries to one colour.
std::unique_ptr<PixelImage> test_image(int width, int height, int bytes_per_pixel) {
    auto image = util_new_pixel_image(width, height, bytes_per_pixel);
    for (int i = 0; i < width * height * bytes_per_pixel; ++i)
        image->pixels.get()[i] = static_cast<uint8_t>(i * 7 + i / 31);
    for (size_t i = 0; i < 256; ++i)
        image->colours[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 3)};
    return image;
}

unsigned expected_pixel(const PixelImage &image, int x, int y, unsigned background) {
    const int column = static_cast<int>(std::floor(double(x - g_scene.left) / g_scene.zoom)) * g_scene.shrink;
    const int row = static_cast<int>(std::floor(double(y - g_scene.top) / g_scene.zoom)) * g_scene.shrink;
    if (column < 0 || row < 0 || column >= image.width || row >= image.height)
        return background;
    const uint8_t *pixel = image.pixels.get() + (row * image.width + column) * image.bytes_per_pixel;
    return image.bytes_per_pixel == 1 ? word(image.colours[*pixel]) : word({pixel[2], pixel[1], pixel[0]});
}

std::string text_of(const Event &event) {
    const auto at = [&](const char *name) { return util_format("%s %g %g", name, event.position.x, event.position.y); };
    const std::string button = util_format(" button %d modifiers %u", event.button, event.modifiers);
    const std::map<EventType, std::string> texts = {
        {EventType::MouseMove, at("move") + button},
        {EventType::MouseDown, at("down") + button},
        {EventType::MouseUp, at("up") + button},
        {EventType::MouseLeave, "leave"},
        {EventType::Wheel, at("wheel") + util_format(" steps %d", event.wheel_steps)},
        {EventType::Key, util_format(event.character ? "key %c modifiers %u" : "key %d modifiers %u",
                                     event.character ? static_cast<int>(event.character) : static_cast<int>(event.key),
                                     event.modifiers)},
    };
    return texts.at(event.type);
}

class Drawing : public testing::Test {
  protected:
    // Runs with a window of 200 x 150 that has been painted.
    void run(std::function<void(Window *)> body) {
        g_scene = {};
        run_window_test(DOCUMENT, drawing_handler, [&](Window *window) {
            gui_set_client_size(window, {200, 150});
            settle();
            g_scene.events.clear();
            body(window);
        });
    }
};

TEST_F(Drawing, ImagesAreExactToThePixel) {
    const std::tuple<int, int, int, int> cases[] = {
        {0, 0, 1, 1},  {20, 10, 1, 1},  {-5, -7, 1, 1}, {0, 0, 3, 1},   {-4, -8, 3, 1},  {7, 5, 16, 1},    {0, 0, 1, 4},
        {-3, 2, 1, 4}, {9, 9, 1, 1000}, {-90, 0, 1, 1}, {199, 0, 5, 1}, {5000, 0, 1, 1}, {-2000, 3, 64, 1}};
    // The whole, a part that begins and ends inside enlarged pixels, a single pixel.
    const GuiRect areas[] = {{0, 0, 200, 150}, {31, 17, 41, 23}, {100, 70, 1, 1}};
    run([&](Window *window) {
        const unsigned background = document_background(window);
        for (const int bytes_per_pixel : {1, 4}) {
            g_scene.image = test_image(90, 61, bytes_per_pixel);
            for (const auto &[left, top, zoom, shrink] : cases) {
                g_scene.left = left, g_scene.top = top;
                g_scene.zoom = zoom, g_scene.shrink = shrink;
                for (const GuiRect &area : areas) {
                    g_scene.drawn.clear();
                    std::vector<unsigned> expected;
                    for (int y = area.top; y < area.top + area.height; ++y) {
                        for (int x = area.left; x < area.left + area.width; ++x)
                            expected.push_back(expected_pixel(*g_scene.image, x, y, background));
                    }
                    EXPECT_TRUE(shown_pixels(window, area) == expected)
                        << left << " " << top << " " << zoom << " " << shrink << " in " << area.width << " x "
                        << area.height;
                    EXPECT_EQ(g_scene.drawn.at(0).width, area.width);
                }
            }
        }
    });
}

// Every pixel that a level or upright shape covers has its colour, the ones beside it the ground's.
TEST_F(Drawing, LinesAndRectanglesAreExactToThePixel) {
    constexpr Colour red = {200, 0, 0}, green = {0, 200, 0}, blue = {0, 0, 200};
    run([&](Window *window) {
        g_scene.draw = [&](Canvas *canvas) {
            gui_fill_rectangle(canvas, {10, 10, 4, 3}, red);
            gui_fill_rectangle(canvas, {-2000000000, 140, 2000000020, 1}, red);
            gui_fill_rectangle(canvas, {50, 10, -4, 3}, red);
            gui_draw_rectangle(canvas, {20, 10, 10, 8}, green, 2);
            gui_draw_line(canvas, {40, 30}, {60, 30}, blue, 1);
            gui_draw_line(canvas, {70, 20}, {70, 40}, blue, 3);
            gui_draw_line(canvas, {0, 80}, {1e300, NAN}, blue, 3);
        };
        const unsigned ground = document_background(window);
        const std::tuple<int, int, unsigned> cases[] = {
            {10, 10, word(red)},   {13, 12, word(red)}, {14, 12, ground},      {13, 13, ground},
            {19, 140, word(red)},  {20, 140, ground},   {48, 11, ground},      {20, 10, word(green)},
            {29, 17, word(green)}, {30, 17, ground},    {21, 14, word(green)}, {22, 14, ground},
            {50, 30, word(blue)},  {50, 29, ground},    {50, 31, ground},      {69, 30, word(blue)},
            {71, 30, word(blue)},  {68, 30, ground},    {72, 30, ground},      {5, 80, ground},
        };
        for (const auto &[x, y, colour] : cases)
            EXPECT_EQ(shown_pixel(window, x, y), colour) << x << " " << y;
    });
}

// Where a part ends within a screen pixel that pixel is not left to the background.
TEST_F(Drawing, PartsMeetOnAScreenOfFractionalScale) {
    setenv("QT_SCALE_FACTOR", "1.25", 1);
    run([](Window *window) {
        g_scene.image = test_image(300, 200, 1);
        gui_invalidate(window);
        const std::vector<unsigned> whole = screenshot(window);
        EXPECT_FALSE(whole.empty());
        for (int i = 0; i < 20; ++i)
            repaint_part(window, {3 + i, 5 + i, 50 + 3 * i, 31 + 2 * i});
        EXPECT_TRUE(screenshot(window) == whole);
    });
    unsetenv("QT_SCALE_FACTOR");
}

// Beyond what 32 bits count, in the image and on the scaled one; only the rows that are shown are touched.
TEST_F(Drawing, HugeImagesShowTheirFarCorner) {
    constexpr int SIDE = 50000, ZOOM = 8;
    auto huge = util_new_pixel_image(SIDE, SIDE, 1);
    if (!huge)
        GTEST_SKIP() << "this machine lends no 2.5 GB";
    huge->pixels.get()[size_t(SIDE) * SIDE - 1] = 77;
    huge->colours = util_grey_colours();
    run([&](Window *window) {
        g_scene.image = std::move(huge);
        g_scene.zoom = ZOOM;
        g_scene.scrolled = true;
        gui_set_content_size(window, {SIDE * ZOOM, SIDE * ZOOM}, 16);
        settle();
        gui_scroll_to(window, {1e9, 1e9});
        const GuiSize area = gui_client_size(window);
        EXPECT_EQ(gui_scroll_position(window).x, SIDE * ZOOM - area.width);
        EXPECT_EQ(shown_pixel(window, area.width - ZOOM, area.height - ZOOM), 0x4d4d4du);
        EXPECT_EQ(shown_pixel(window, area.width - ZOOM - 1, area.height - 1), 0u);
        g_scene.image.reset();
    });
}

TEST_F(Drawing, WhatCannotBeDrawnIsReported) {
    static std::vector<ToolkitError> errors;
    static int answer;
    run([](Window *window) {
        const ScriptedResponder responder;
        gui_set_error_handler([](const ToolkitError &message) {
            errors.push_back(message);
            return answer;
        });
        g_scene.image = test_image(4, 4, 1);
        g_scene.image->pixels.reset();
        for (answer = 1; answer >= 0; --answer) {
            errors.clear();
            shown_pixel(window, 0, 0);
            shown_pixel(window, 0, 0);
            ASSERT_EQ(errors.size(), 2u);
            EXPECT_NE(errors[0].severity, 3);
            EXPECT_EQ(errors[0].identifier >> 16 & 255u, 0x51u);
            settle();
            EXPECT_EQ(responder.shown.empty(), answer == 1) << "shown by the toolkit unless the handler dealt with it";
        }
        gui_set_error_handler(nullptr);
        g_scene.image.reset();
    });
}

TEST_F(Drawing, ScrollingStaysWithinTheContent) {
    run([](Window *window) {
        const auto expect_position = [window](double x, double y, size_t scrolls) {
            EXPECT_EQ(gui_scroll_position(window).x, x);
            EXPECT_EQ(gui_scroll_position(window).y, y);
            size_t seen = 0;
            for (const Event &event : g_scene.events)
                seen += event.type == EventType::Scroll;
            EXPECT_EQ(seen, scrolls);
            g_scene.events.clear();
        };
        gui_set_content_size(window, {1000, 800}, 16);
        settle();
        const GuiSize area = gui_client_size(window);
        const double right = 1000 - area.width, bottom = 800 - area.height;
        expect_position(0, 0, 0);
        for (const size_t scrolls : {1u, 0u}) {
            gui_scroll_to(window, {100, 90});
            expect_position(100, 90, scrolls);
        }
        gui_scroll_to(window, {1e6, -5});
        expect_position(right, 0, 1);
        const auto expect_key = [&](GuiKey key, double x, double y) {
            press_key(window, key);
            expect_position(x, y, 1);
        };
        expect_key(GuiKey::End, right, bottom);
        expect_key(GuiKey::PageUp, right, bottom - area.height);
        expect_key(GuiKey::Left, right - 16, bottom - area.height);
        expect_key(GuiKey::Home, 0, 0);
        g_scene.key_answer = 1;
        press_key(window, GuiKey::End);
        expect_position(0, 0, 0);

        // Four quarters of a notch are one.
        for (int i = 0; i < 4; ++i)
            turn_wheel(window, {5, 5}, -30);
        const double notch = gui_scroll_position(window).y;
        EXPECT_GT(notch, 0);
        EXPECT_EQ(std::fmod(notch, 16), 0);
        g_scene.events.clear();
        turn_wheel(window, {5, 5}, -120, GUI_SHIFT);
        expect_position(notch, notch, 1);

        // A larger window or a smaller content takes the position along; bars go when all is seen.
        gui_scroll_to(window, {1e6, 1e6});
        g_scene.events.clear();
        gui_set_content_size(window, {500, 800}, 16);
        expect_position(500 - area.width, bottom, 1);
        resize_window(window, 540, 400);
        EXPECT_EQ(gui_scroll_position(window).x, 0);
        EXPECT_EQ(gui_scroll_position(window).y, 800 - gui_client_size(window).height);
        gui_set_content_size(window, {500, 300}, 16);
        settle();
        EXPECT_FALSE(has_scroll_bars(window));
        EXPECT_EQ(gui_scroll_position(window).y, 0);
    });
}

TEST_F(Drawing, MouseWheelAndKeysArriveAsTheyWere) {
    run([](Window *window) {
        gui_set_content_size(window, {1000, 800}, 16);
        gui_scroll_to(window, {300, 300});
        g_scene.events.clear();
        mouse_move(window, {10.5, 7.25});
        mouse_press(window, {11, 8}, 3, GUI_SHIFT | GUI_CONTROL);
        mouse_release(window, {12, 9}, 3);
        turn_wheel(window, {13, 14}, 60, GUI_CONTROL);
        turn_wheel(window, {13, 14}, 60, GUI_CONTROL);
        turn_wheel(window, {13, 14}, 100, GUI_CONTROL);
        turn_wheel(window, {13, 14}, -300, GUI_CONTROL);
        mouse_leave(window);
        press_character(window, '+', GUI_SHIFT);
        press_character(window, 'y', GUI_CONTROL);
        press_key(window, GuiKey::Delete, GUI_ALT);
        press_key(window, GuiKey::Tab);

        const Lines expected = {
            "move 10.5 7.25 button 0 modifiers 0",
            "down 11 8 button 3 modifiers 3",
            "up 12 9 button 3 modifiers 0",
            "wheel 13 14 steps 1",
            "wheel 13 14 steps -2",
            "leave",
            "key + modifiers 1",
            "key y modifiers 2",
            "key 11 modifiers 4",
            "key 12 modifiers 0",
        };
        Lines seen;
        for (const Event &event : g_scene.events)
            seen.push_back(text_of(event));
        EXPECT_EQ(seen, expected);
    });
}

}  // namespace
