// Image windows on the offscreen platform: real products, real events, real pixels.
#include "support/gif.h"
#include "support/product.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

const std::string samples_folder = LUMACART_SAMPLES;

unsigned grey(int level) {
    return static_cast<unsigned>(level) * 0x010101U;
}

std::string read_out(Window *window, double x, double y) {
    mouse_move(window, {x, y});
    settle();
    return gui_control_shown(window, image_status) ? gui_text(window, image_status) : "";
}

// 3 lines x 4 samples with the levels 10 * line + sample.
ImageProduct numbered_image() {
    ImageProduct product;
    product.lines = 3;
    product.samples = 4;
    for (char line = 1; line <= 3; ++line) {
        for (char sample = 1; sample <= 4; ++sample)
            product.data += static_cast<char>(10 * line + sample);
    }
    return product;
}

TEST(ImageWindow, ShowsReadsOutStretchesInvertsAndUndoes) {
    run_viewer([] {
        const std::string samples = read_file(samples_folder + "/PLAIN_A.IMG");
        const auto level = [&](int x, int y) {
            return static_cast<unsigned char>(samples[static_cast<size_t>(512 * y + x)]);
        };
        Window *window = open_in_viewer(samples_folder + "/PLAIN_A.LBL");
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Image - PLAIN_A.LBL");
        EXPECT_EQ(gui_client_size(window).width, 512);
        EXPECT_EQ(gui_client_size(window).height, 512);
        EXPECT_FALSE(gui_control_shown(window, image_status));
        EXPECT_EQ(shown_pixel(window, 100, 50), grey(level(100, 50)));

        const std::string dn = std::to_string(level(100, 50));
        EXPECT_EQ(read_out(window, 100, 50),
                  "sample: 101  line: 51  DN: " + dn + "  DIS: (" + dn + ", " + dn + ", " + dn + ")");

        ASSERT_TRUE(choose_command(window, 1027));
        EXPECT_EQ(shown_pixel(window, 100, 50), grey(255 - level(100, 50)));
        const std::string inverse = std::to_string(255 - level(100, 50));
        EXPECT_EQ(gui_text(window, image_status),
                  "sample: 101  line: 51  DN: " + dn + "  DIS: (" + inverse + ", " + inverse + ", " + inverse + ")");
        mouse_leave(window);
        settle();
        EXPECT_FALSE(gui_control_shown(window, image_status));
        ASSERT_TRUE(choose_command(window, 1027));
        EXPECT_EQ(shown_pixel(window, 100, 50), grey(level(100, 50))) << "inverting twice undoes";
        EXPECT_FALSE(gui_control_shown(window, image_status));

        ASSERT_TRUE(choose_command(window, 1042));
        int differing = 0;
        for (int x = 0; x < 500; ++x)
            differing += shown_pixel(window, x, 250) != grey(level(x, 250));
        EXPECT_GT(differing, 250) << "the stretch changed hardly a pixel";
        ASSERT_TRUE(choose_command(window, 1023));
        EXPECT_EQ(shown_pixel(window, 100, 250), grey(level(100, 250)));
    });
}

// Wherever a level is shown, the read-out names the line and sample at which it is stored.
TEST(ImageWindow, ReadsOutInEveryDirection) {
    run_viewer([] {
        const ScratchFolder folder;
        for (const char *directions :
             {"DOWN RIGHT", "LEFT DOWN", "LEFT UP", "UP LEFT", "UP RIGHT", "RIGHT UP", "RIGHT DOWN", "DOWN LEFT"}) {
            SCOPED_TRACE(directions);
            const std::string pair = directions;
            ImageProduct product = numbered_image();
            product.more = " LINE_DISPLAY_DIRECTION = \"" + pair.substr(0, pair.find(' ')) +
                           "\"\n SAMPLE_DISPLAY_DIRECTION = " + pair.substr(pair.find(' ') + 1) + "\n";
            Window *window = open_in_viewer(write_detached(folder, "TURNED", product));
            ASSERT_TRUE(window);
            const PixelImage &image = *window_state(window)->image_info->display_image;
            for (int y = 0; y < image.height; ++y) {
                for (int x = 0; x < image.width; ++x) {
                    const int level = image.pixels.get()[y * image.width + x];
                    EXPECT_EQ(shown_pixel(window, x, y), grey(level));
                    EXPECT_EQ(read_out(window, x, y)
                                  .find(util_format("sample: %d  line: %d  DN: %d ", level % 10, level / 10, level)),
                              0u);
                }
            }
            close_window(window);
            settle();
            EXPECT_TRUE(gui_windows().empty());
        }
    });
}

TEST(ImageWindow, DirectionsWithoutOrientationAreToldAndLeaveTheImage) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        ImageProduct product = numbered_image();
        product.more = " LINE_DISPLAY_DIRECTION = DOWN\n SAMPLE_DISPLAY_DIRECTION = UP\n";
        Window *window = open_in_viewer(write_detached(folder, "ODD", product));
        ASSERT_TRUE(window);
        EXPECT_EQ(responder.shown, (std::vector<std::string>{
                                       "error: Cannot determine orientation from LINE_DISPLAY_DIRECTION = DOWN and "
                                       "SAMPLE_DISPLAY_DIRECTION = UP",
                                       "error: Image orientation will not be changed"}));
        EXPECT_EQ(shown_pixel(window, 3, 0), grey(14));
    });
}

TEST(ImageWindow, TheSessionMayEndWhileAWindowIsMade) {
    bool asked = false;
    run_viewer([&] {
        const ScratchFolder folder;
        ImageProduct product = numbered_image();
        product.more = " LINE_DISPLAY_DIRECTION = DOWN\n SAMPLE_DISPLAY_DIRECTION = UP\n";
        when_idle([&] {
            asked = true;
            ask_to_quit();
        });
        EXPECT_FALSE(open_in_viewer(write_detached(folder, "ODD", product)));
    });
    EXPECT_TRUE(asked);
}

TEST(ImageWindow, ZoomsByKeysWheelAndMenu) {
    run_viewer([] {
        Window *window = open_in_viewer(samples_folder + "/PLAIN_A.LBL");
        ASSERT_TRUE(window);
        const DisplayState &display = *window_state(window)->display_state;
        press_character(window, '+');
        EXPECT_EQ(display.zoom, 2);
        gui_scroll_to(window, {0, 0});
        EXPECT_EQ(read_out(window, 11, 7).find("sample: 6  line: 4  "), 0u);
        gui_scroll_to(window, {100, 51});
        EXPECT_EQ(gui_text(window, image_status).find("sample: 56  line: 30  "), 0u)
            << "the mouse rests, the image moves";

        // The pixel under the wheel stays there.
        const std::string before = read_out(window, 200, 300);
        turn_wheel(window, {200, 300}, 120, GUI_CONTROL);
        EXPECT_EQ(display.zoom, 3);
        EXPECT_EQ(read_out(window, 200, 300), before);
        turn_wheel(window, {200, 300}, -240, GUI_CONTROL);
        EXPECT_EQ(display.zoom, 1);
        EXPECT_EQ(display.shrink, 1);
        press_character(window, '-');
        press_character(window, '-');
        EXPECT_EQ(display.shrink, 3);
        EXPECT_EQ(read_out(window, 10, 20).find("sample: 31  line: 61  "), 0u);
        ASSERT_TRUE(choose_command(window, 2003));
        EXPECT_EQ(display.shrink, 1);

        resize_window(window, 470, 300);
        settle();
        press_character(window, 'F');
        EXPECT_EQ(display.shrink, 2) << "512 lines in fewer than 300 pixels";
        for (int i = 0; i < 100; ++i)
            press_character(window, '+');
        EXPECT_EQ(display.zoom, 32);
        for (int i = 0; i < 100; ++i)
            press_character(window, '-');
        EXPECT_EQ(display.shrink, 16) << "32 pixels are left";
    });
}

TEST(ImageWindow, ArrowKeysMoveTheReadOut) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *window = open_in_viewer(write_detached(folder, "SMALL", numbered_image()));
        ASSERT_TRUE(window);
        const auto at = [&] { return gui_text(window, image_status).substr(0, 19); };
        press_key(window, GuiKey::Left);
        settle();
        EXPECT_TRUE(gui_control_shown(window, image_status));
        for (int i = 0; i < 5; ++i)
            press_key(window, GuiKey::Up);
        press_key(window, GuiKey::Left, GUI_SHIFT);
        EXPECT_EQ(at(), "sample: 1  line: 1 ");
        press_key(window, GuiKey::Right);
        press_key(window, GuiKey::Down);
        EXPECT_EQ(at(), "sample: 2  line: 2 ");
        press_key(window, GuiKey::Right, GUI_SHIFT);
        press_key(window, GuiKey::Down, GUI_SHIFT);
        EXPECT_EQ(at(), "sample: 4  line: 3 ");
        press_key(window, GuiKey::Escape);
        settle();
        EXPECT_FALSE(gui_control_shown(window, image_status));
    });
}

// A 5000 x 3000 image of which only the file's size exists: blocks are read where they lie.
TEST(ImageWindow, LargeImagesAreShownBlockByBlock) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product;
        product.lines = 5000;
        product.samples = 3000;
        const std::string label = write_detached(folder, "LARGE", product);
        std::filesystem::resize_file(folder.file("LARGE.IMG"), 5000 * 3000);
        {
            std::fstream file(folder.file("LARGE.IMG"), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(2000 * 3000 + 2000);
            file.put('\x7b');  // line 2001, sample 2001
        }
        Window *window = open_in_viewer(label);
        ASSERT_TRUE(window);
        const auto block = [](Window *of) { return window_state(of)->image_info->block; };
        EXPECT_EQ(block(window), (SampleBlock{1, 2000, 1, 2000}));
        for (const int disabled : {1073, 1071})
            EXPECT_FALSE(gui_command_enabled(window, disabled)) << disabled;
        ASSERT_TRUE(choose_command(window, 1072));
        Window *below = gui_windows().back();
        EXPECT_EQ(block(below), (SampleBlock{2001, 4000, 1, 2000}));
        ASSERT_TRUE(choose_command(below, 1064));
        Window *right = gui_windows().back();
        EXPECT_EQ(block(right), (SampleBlock{2001, 4000, 2001, 3000}));
        EXPECT_FALSE(gui_command_enabled(right, 1064));
        EXPECT_EQ(shown_pixel(right, 0, 0), grey(0x7b));
        EXPECT_EQ(read_out(right, 0, 0).find("sample: 2001  line: 2001  DN: 123 "), 0u);

        // The dialog: a wrong field is told and the dialog stays; then a block of one's own.
        ScriptedResponder responder;
        std::vector<std::string> told;
        when_idle([&] {
            Window *dialog = find_window("Lines and Samples");
            gui_set_text(dialog, 12, "x");
            use_control(dialog, 1);
            gui_set_text(dialog, 12, "2000");
            use_control(dialog, 1);
            told = responder.shown;
            gui_set_text(dialog, 11, "1999");
            gui_set_text(dialog, 12, "2002");
            use_control(dialog, 1);
        });
        ASSERT_TRUE(choose_command(right, 1074));
        settle();
        EXPECT_EQ(told, (std::vector<std::string>{
                            "error: Invalid value entered in the Stop Line field. Value must be a positive integer "
                            "greater than 0",
                            "error: Stop Line value cannot be less than the Start Line value"}));
        EXPECT_EQ(block(gui_windows().back()), (SampleBlock{1999, 2002, 2001, 3000}));
        EXPECT_EQ(shown_pixel(gui_windows().back(), 0, 2), grey(0x7b));
    });
}

TEST(ImageWindow, GifFilesOpenWithTheirFirstImage) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *window =
            open_in_viewer(folder.write("small.gif", gif_header(3, 2, 4, "87a") + gif_image(3, 2, "\1\2\3\3\2\1", 2) +
                                                         gif_image(1, 1, "\1", 2) + ";"));
        ASSERT_TRUE(window);
        EXPECT_EQ(read_out(window, 2, 0).find("sample: 3  line: 1  DN: 3 "), 0u);

        // A large one by block, cut out of the whole; the rows are stored in the order of the four passes.
        std::string rows;
        for (const auto &[first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
            for (int row = first; row < 2500; row += step)
                rows.append(3000, static_cast<char>(row / 100));
        window = open_in_viewer(
            folder.write("large.gif", gif_header(3000, 2500) + gif_image(3000, 2500, rows, 8, 0x40) + ";"));
        ASSERT_TRUE(window);
        EXPECT_EQ(window_state(window)->image_info->block, (SampleBlock{1, 2000, 1, 2000}));
        ASSERT_TRUE(choose_command(window, 1072));
        Window *below = gui_windows().back();
        EXPECT_EQ(window_state(below)->image_info->block, (SampleBlock{2001, 2500, 1, 2000}));
        EXPECT_EQ(read_out(below, 0, 0).find("sample: 1  line: 2001  DN: 20 "), 0u);

        ScriptedResponder responder;
        EXPECT_FALSE(open_in_viewer(folder.write("cut.gif", gif_header(3, 2))));
        ASSERT_EQ(responder.shown.size(), 1u);
        EXPECT_TRUE(util_contains(responder.shown[0], "unable to parse label file")) << responder.shown[0];
        EXPECT_TRUE(open_in_viewer(folder.write("short.gif", gif_header(3, 2) + gif_image(3, 2, "\1", 2) + ";")));
        ASSERT_EQ(responder.shown.size(), 2u);
        EXPECT_TRUE(util_contains(responder.shown[1], "Pixels read: 1.")) << responder.shown[1];
    });
}

TEST(ImageWindow, ShortFilesOpen) {
    run_viewer([] {
        const ScratchFolder folder;
        ScriptedResponder responder;
        ImageProduct cut = numbered_image();
        cut.data.resize(6);
        Window *window = open_in_viewer(write_detached(folder, "SHORT", cut));
        ASSERT_TRUE(window);
        ASSERT_EQ(responder.shown.size(), 1u);
        EXPECT_EQ(responder.shown[0].find("error: Bytes read: 6.\nBytes attempted to be read: 12\n"), 0u);
        EXPECT_EQ(shown_pixel(window, 1, 1), grey(22));
        EXPECT_EQ(shown_pixel(window, 2, 1), grey(0));
    });
}

TEST(OpenProduct, FailuresAreToldInOneBoxAndLeaveNoWindow) {
    run_viewer([] {
        const SilentReports silent;
        const ScratchFolder folder;
        const std::string good = read_file(write_detached(folder, "GOOD", numbered_image()));
        const auto changed = [&](const char *from, const char *to) {
            std::string label = good;
            label.replace(label.find(from), std::string(from).size(), to);
            return label;
        };
        struct Case {
            std::string label;
            const char *told;
        };
        const std::vector<Case> cases = {
            {changed(" LINES = 3", ""), "error: Open Image - get LINES failed"},
            {changed(" LINE_SAMPLES = 4", ""), "error: Open Image - get LINE_SAMPLES failed"},
            {changed("SAMPLE_BITS = 8", "SAMPLE_BITS = 12"),
             "error: Open Image - SAMPLE_BITS not equal to 8, 16, 32 or 64"},
            {changed("LINES = 3", "LINES = 2000000000"), "LINES = 2000000000"},
            {changed("LINES = 3", "LINES = -3"), "error: Open Image - get LINES failed\nLINES = -3 is not a size."},
            {changed("GOOD.IMG", "ABSENT.IMG"), "ABSENT.IMG"},
            {changed("1 <BYTES>", "90 <BYTES>"), "LINE_SAMPLES = 4"},
            {"RECORD_TYPE = STREAM\nEND\n",
             "error: Open Object - no valid object\n\nOnly FILE, IMAGE, and TABLE objects are supported at this time"},
            {"nothing\n", "question: Label/Object not found."},
        };
        for (const Case &c : cases) {
            ScriptedResponder responder;
            responder.answers = {1};
            EXPECT_FALSE(open_in_viewer(folder.write("bad.txt", c.label))) << c.label;
            ASSERT_EQ(responder.shown.size(), 1u) << c.label;
            EXPECT_NE(responder.shown[0].find(c.told), std::string::npos) << responder.shown[0];
        }
        ScriptedResponder responder;
        EXPECT_FALSE(open_in_viewer(folder.file("vanished.lbl")));
        EXPECT_FALSE(open_in_viewer(folder.file("no/such/folder.lbl")));
        EXPECT_FALSE(open_in_viewer(folder.path().string()));
        ASSERT_EQ(responder.shown.size(), 3u);
        EXPECT_EQ(responder.shown[1],
                  "error: old parser: " + folder.file("no/such") + "  could not convert string to a directory path");
        // Chosen in the dialog, gone before it was opened.
        responder.files = {{folder.path().string(), "vanished.lbl"}};
        open_object(0);
        EXPECT_NE(responder.shown.back().find("No such file"), std::string::npos) << responder.shown.back();
        EXPECT_TRUE(open_in_viewer(folder.file("GOOD.LBL"))) << "the program lives";
    });
}

TEST(OpenProduct, MissingStructuresAreToldInOneBox) {
    run_viewer([] {
        const ScratchFolder folder;
        ImageProduct product = numbered_image();
        for (int i = 0; i < 50; ++i)
            product.more += "^A_STRUCTURE = \"gone" + std::to_string(i) + ".fmt\"\n";
        ScriptedResponder responder;
        EXPECT_TRUE(open_in_viewer(write_detached(folder, "SCENE", product)));
        ASSERT_EQ(responder.shown.size(), 1u);
        EXPECT_NE(responder.shown[0].find("note: Line 9: Unable to locate required format file: gone0.fmt\nLine 10: "),
                  std::string::npos)
            << responder.shown[0];
    });
}

TEST(OpenProduct, FilesOfAnyNameOpen) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string good = read_file(write_detached(folder, "GOOD", numbered_image()));
        const std::string longest = std::string(251, 'n') + ".lbl";
        for (const std::string &name : {longest, std::string("\xff\x80.lbl"), std::string("<b>\n%n%s\\&amp;\".lbl")}) {
            ScriptedResponder responder;
            EXPECT_TRUE(open_in_viewer(folder.write(name, good))) << name;
            EXPECT_TRUE(responder.shown.empty());
        }
    });
}

TEST(OpenProduct, WhatIsNoFileIsToldInOneBox) {
    run_viewer([] {
        const ScratchFolder folder;
        ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
        std::filesystem::create_symlink("circle", folder.file("circle"));
        std::filesystem::create_symlink("/dev/zero", folder.file("device"));
        folder.write("empty.lbl", "");
        struct Case {
            std::string path;
            const char *told;
        };
        for (const Case &c :
             {Case{folder.file("pipe"), "Not a regular file"}, Case{folder.file("device"), "Not a regular file"},
              Case{folder.file("circle"), "Too many levels"}, Case{folder.file("empty.lbl"), "Label/Object not found"},
              Case{folder.file(std::string(300, 'x')), "File name too long"}, Case{"/", "Is a directory"}}) {
            ScriptedResponder responder;
            responder.answers = {1};
            EXPECT_FALSE(open_in_viewer(c.path)) << c.path;
            ASSERT_EQ(responder.shown.size(), 1u) << c.path;
            EXPECT_NE(responder.shown[0].find(c.told), std::string::npos) << responder.shown[0];
        }
    });
}

TEST(Commands, MenusOfferExactlyWhatRuns) {
    run_viewer([] {
        const ScratchFolder folder;
        Window *task = gui_task_window();
        for (const int enabled : {1007, 1011, 1030, 1061, 1076})
            EXPECT_TRUE(gui_command_enabled(task, enabled)) << enabled;
        for (const int disabled : {1008, 1023, 1027, 1028, 1042, 1047, 1048, 1050, 1051, 1053, 1056, 2001})
            EXPECT_FALSE(gui_command_enabled(task, disabled)) << disabled;
        do_WIN_MENUBAR(task, 4711);

        // File > Open: cancelled, then chosen.
        ScriptedResponder responder;
        ASSERT_TRUE(choose_command(task, 1007));
        write_detached(folder, "SMALL", numbered_image());
        responder.files = {{folder.path().string(), "SMALL.LBL"}};
        ASSERT_TRUE(choose_command(task, 1007));
        ASSERT_EQ(gui_windows().size(), 1u);
        Window *window = gui_windows()[0];
        for (const int command : gui_commands(window)) {
            const bool known = find_command(command, CommandDispatcher::Application, window) != nullptr;
            const bool of_large_images = command == 1064 || (command >= 1071 && command <= 1074);
            const bool of_gif_files = command == 2017;
            EXPECT_EQ(gui_command_enabled(window, command), known && !of_large_images && !of_gif_files) << command;
        }
        drop_files(window, {folder.file("SMALL.LBL"), folder.file("SMALL.LBL")});
        EXPECT_TRUE(settle_until([] { return gui_windows().size() == 3; }));
        ASSERT_TRUE(choose_command(window, 1008));
        EXPECT_EQ(gui_windows().size(), 2u);
        ASSERT_TRUE(choose_command(gui_windows()[0], 1011));
    });
}

TEST(Session, TakesAFileOnlyFromThreeArguments) {
    char program[] = "lumacart";
    char platform[] = "platform";
    std::string name(300, 'n');
    char *two[] = {program, platform};
    char *three[] = {program, name.data(), platform};
    begin_session(2, two);
    EXPECT_EQ(session().cmdline_fname, "");
    begin_session(3, three);
    EXPECT_EQ(session().cmdline_fname, name.substr(0, 254));
    session().cmdline_fname.clear();
}

// Out of memory while drawing is told later, once, and ends the application.
TEST(Session, ToolkitMemoryErrorIsReportedFromTheEventLoop) {
    run_viewer([] {
        ScriptedResponder responder;
        EXPECT_EQ(on_toolkit_error({3, 0x510000, "a remark"}), 0);
        EXPECT_EQ(on_toolkit_error({1, 0, "unknown"}), 1);
        EXPECT_EQ(on_toolkit_error({1, 0x520000, "another"}), 1);
        Window *closed = open_in_viewer(samples_folder + "/PLAIN_A.LBL");
        EXPECT_EQ(on_toolkit_error({1, 0x510000, "memory"}), 1);
        Window *window = open_in_viewer(samples_folder + "/PLAIN_A.LBL");
        ASSERT_TRUE(window);
        close_window(closed);  // the timer goes with it
        EXPECT_EQ(on_toolkit_error({1, 0x510000, "memory"}), 1);
        EXPECT_EQ(on_toolkit_error({1, 0x510000, "memory again"}), 1);
        EXPECT_TRUE(responder.shown.empty());
        EXPECT_TRUE(settle_until([&] { return !responder.shown.empty(); }));
        EXPECT_EQ(responder.shown, std::vector<std::string>{"error: Trapped Error\nOut of Memory\nprogram aborting\n"
                                                            "increase available memory"});
    });
}

}  // namespace
