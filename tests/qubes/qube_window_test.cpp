// Windows of qubes: bands in an image window, the control window, side data.
#include "qubes/qube_state.h"
#include "support/qube_product.h"
#include "support/window_viewer.h"

#include <filesystem>

namespace {

// Of the control window, and of the dialogs of bands.
constexpr int band_field = 1, previous = 3, next = 4, shown = 5, band_list = 6, on_click = 7, as_plot = 8, box3 = 12,
              description = 20;
constexpr int show = 1, shown_bands = 12, as_grey = 21, minimum = 51, maximum = 52, computed = 53;
constexpr int plane_list = 1, open_plane = 2, plane_remark = 4;

const std::string centers =
    " GROUP = BAND_BIN\n BAND_BIN_CENTER = (0.5, 1.25, 2)\n BAND_BIN_UNIT = MICROMETER\n"
    " END_GROUP = BAND_BIN\n";

QubeProduct three_bands() {
    QubeProduct product;
    product.core = {4, 3, 3};
    product.more = centers;
    return product;
}

// An open qube with its windows.
struct OpenQube {
    Window *image = nullptr;
    Window *control = nullptr;

    explicit OpenQube(const std::string &label) {
        control = open_in_viewer(label);
        const std::vector<Window *> windows = gui_windows();
        if (windows.size() >= 2)
            image = windows[windows.size() - 2];
    }
    std::string value() const {
        mouse_move(image, {1, 0});
        mouse_move(image, {0, 0});
        settle();
        return gui_text(image, image_value);
    }
};

bool is_open(const std::string &title) {
    return find_window(title) != nullptr;
}

void with_dialog(Window *window, int command, const std::string &title, const std::function<void(Window *)> &act) {
    when_idle([&] {
        Window *dialog = find_window(title);
        ASSERT_TRUE(dialog) << title;
        act(dialog);
    });
    ASSERT_TRUE(choose_command(window, command));
    settle();
}

TEST(QubeWindow, OpensBeforeOtherObjectsWithItsControl) {
    run_viewer([] {
        const ScratchFolder folder;
        QubeProduct product = three_bands();
        product.more += " CORE_NULL = NOTHING\n CORE_LOW_REPR_SATURATION = MUCH\n";
        const std::string label = write_qube(folder, "Q", product);
        folder.write("T.LBL",
                     "RECORD_TYPE = UNDEFINED\n^QUBE = \"Q.QUB\"\n^TABLE = \"Q.QUB\"\nOBJECT = TABLE\n ROWS = 1\n"
                     "END_OBJECT = TABLE\n" +
                         product.object() + "END\n");
        ScriptedResponder responder;
        const OpenQube qube(folder.file("T.LBL"));
        ASSERT_TRUE(qube.control && qube.image);
        EXPECT_EQ(gui_title(qube.image), "Lumacart - Image from QUBE - T.LBL");
        EXPECT_EQ(gui_title(qube.control), "Lumacart - Qube Control - T.LBL");
        EXPECT_EQ(gui_text(qube.control, shown), "Shown: band 1: 0.5 MICROMETER");
        EXPECT_EQ(gui_paragraph(qube.control, description, 1), "Core: 4 x 3 x 3 items, MSB_INTEGER, 2 bytes");
        ASSERT_EQ(responder.shown.size(), 1u) << "the remarks are one note";
        EXPECT_NE(responder.shown[0].find("CORE_NULL"), std::string::npos);
        EXPECT_NE(responder.shown[0].find('\n'), std::string::npos);
        EXPECT_EQ(qube.value(), "value: band 1 (0.5 MICROMETER): 41");
        EXPECT_FALSE(gui_command_enabled(qube.image, 1052)) << "there are no suffixes";
        for (const int command : {1042, 1048, 1051, 1057, 2004, 2005})
            EXPECT_TRUE(choose_command(qube.image, command)) << command;
        EXPECT_EQ(qube.value(), "value: band 1 (0.5 MICROMETER): 41 (0x0029)");
        EXPECT_EQ(responder.shown.size(), 1u);

        close_window(qube.control);
        ASSERT_TRUE(choose_command(qube.image, 1054));
        EXPECT_TRUE(is_open("Lumacart - Qube Control - T.LBL"));
        ASSERT_TRUE(choose_command(qube.image, 1047));
        double_click_line(find_window("Lumacart - Object Hierarchy - T.LBL"), 1, 2);
        settle();
        EXPECT_EQ(find_windows("Lumacart - Image from QUBE - T.LBL").size(), 2u);
    });
}

TEST(QubeWindow, WhatCannotBeOpenedIsTold) {
    run_viewer([] {
        const ScratchFolder folder;
        const struct {
            const char *more;
            std::string told;
        } cases[] = {{" AXES = 7\n", "AXES"}, {" CORE_ITEM_BYTES = 3\n", "CORE_ITEM_BYTES"}};
        for (const auto &c : cases) {
            QubeProduct product;
            const std::string object = product.object().insert(product.object().find('\n') + 1, c.more);
            folder.write("Q.QUB", product.data());
            ScriptedResponder responder;
            EXPECT_FALSE(open_in_viewer(
                folder.write("Q.LBL", "RECORD_TYPE = UNDEFINED\n^QUBE = \"Q.QUB\"\n" + object + "END\n")));
            ASSERT_EQ(responder.shown.size(), 1u);
            EXPECT_EQ(responder.shown[0].rfind("error: Open Qube failed\n", 0), 0u) << responder.shown[0];
            EXPECT_NE(responder.shown[0].find(c.told), std::string::npos) << responder.shown[0];
        }
    });
}

TEST(QubeWindow, TheControlStepsThroughTheBands) {
    run_viewer([] {
        const ScratchFolder folder;
        const OpenQube qube(write_qube(folder, "Q", three_bands()));
        ASSERT_TRUE(qube.control && qube.image);
        for (const int command : {2001, 2012, 1027, 1050})
            ASSERT_TRUE(choose_command(qube.image, command)) << command;
        const std::vector<unsigned> pixels = shown_pixels(qube.image, {0, 0, 8, 6});
        settle();

        EXPECT_FALSE(use_control(qube.control, previous));
        ASSERT_TRUE(use_control(qube.control, next));
        EXPECT_EQ(gui_text(qube.control, shown), "Shown: band 2: 1.25 MICROMETER");
        EXPECT_EQ(gui_grid_current(qube.control, band_list), (GuiCell{1, 0}));
        EXPECT_EQ(qube.value(), "value: band 2 (1.25 MICROMETER): 73");
        EXPECT_EQ(shown_pixels(qube.image, {0, 0, 8, 6}), pixels) << "zoom, palette and inversion stay";
        EXPECT_EQ(gui_title(qube.image), "Lumacart - Image from QUBE - Q.LBL");
        EXPECT_TRUE(is_open("Lumacart - Histogram - Q.LBL"));

        ASSERT_TRUE(choose_command(qube.image, 2070));
        EXPECT_EQ(gui_text(qube.control, band_field), "3");
        EXPECT_FALSE(gui_command_enabled(qube.image, 2070));
        EXPECT_FALSE(use_control(qube.control, next));
        ASSERT_TRUE(choose_command(qube.control, 2071));
        EXPECT_EQ(qube_state(qube.image)->plane.number, 2);

        ScriptedResponder responder;
        for (const char *bad : {"0", "4", "-1", "two", "2.5", "", "99999999999999999999"}) {
            type_text(qube.control, band_field, bad);
            press_key(qube.control, GuiKey::Enter);
        }
        EXPECT_EQ(responder.shown, std::vector<std::string>(7, "error: The band is a whole number from 1 to 3."));
        EXPECT_EQ(qube_state(qube.image)->plane.number, 2);
        type_text(qube.control, band_field, " 3 ");
        press_key(qube.control, GuiKey::Enter);
        EXPECT_EQ(gui_text(qube.control, shown), "Shown: band 3: 2 MICROMETER");
        click_cell(qube.control, band_list, {0, 0});
        EXPECT_TRUE(settle_until([&] { return qube_state(qube.image)->plane.number == 1; }));
        EXPECT_EQ(gui_windows().size(), 3u) << "always the same image window";
    });
}

TEST(QubeWindow, ABandBeyondTheFileLeavesTheOneShown) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string label = write_qube(folder, "Q", three_bands());
        std::filesystem::resize_file(folder.file("Q.QUB"), 2 * 24 + 6);
        ScriptedResponder responder;
        const OpenQube qube(label);
        ASSERT_TRUE(qube.control && qube.image);
        ASSERT_TRUE(use_control(qube.control, next));
        EXPECT_TRUE(responder.shown.empty());
        ASSERT_TRUE(use_control(qube.control, next));
        click_cell(qube.control, band_list, {2, 0});
        EXPECT_TRUE(settle_until([&] { return responder.shown.size() == 2; }));
        settle();
        EXPECT_EQ(gui_grid_current(qube.control, band_list), (GuiCell{1, 0}));
        EXPECT_EQ(gui_grid_selection(qube.control, band_list).first.row, 1) << "what was selected is taken back";
        EXPECT_EQ(gui_text(qube.control, band_field), "2");
        EXPECT_EQ(qube.value(), "value: band 2 (1.25 MICROMETER): 73");
    });
}

TEST(QubeWindow, ClicksShowSpectraWhileTheyAreAskedFor) {
    run_viewer([] {
        const ScratchFolder folder;
        const OpenQube qube(write_qube(folder, "Q", three_bands()));
        ASSERT_TRUE(qube.control && qube.image);
        ASSERT_TRUE(use_control(qube.control, on_click));
        mouse_click(qube.image, {1, 1});
        settle();
        EXPECT_EQ(gui_windows().size(), 2u);
        ASSERT_TRUE(use_control(qube.control, on_click));
        ASSERT_TRUE(use_control(qube.control, box3));
        ASSERT_TRUE(use_control(qube.control, as_plot));
        EXPECT_EQ(qube_state(qube.image)->box, 3);
        mouse_click(qube.image, {1, 1});
        settle();
        EXPECT_EQ(gui_windows().size(), 3u) << "the table alone";
    });
}

TEST(QubeWindow, BandsInColoursAndBack) {
    run_viewer([] {
        const ScratchFolder folder;
        QubeProduct product = three_bands();
        product.core = {4, 3, 12};
        product.more = " BAND_BIN_CENTER = (1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12)\n";
        const OpenQube qube(write_qube(folder, "Q", product));
        ASSERT_TRUE(qube.control && qube.image);
        const unsigned plain = shown_pixel(qube.image, 1, 0);
        with_dialog(qube.image, 1053, "Bands and Colours", [](Window *dialog) {
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 0), "11: 11, red, limits computed");
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 2), "3: 3, blue, limits computed");
            use_control(dialog, show);
        });
        EXPECT_EQ(shown_pixel(qube.image, 3, 2), 0xffffffU);
        EXPECT_EQ(gui_text(qube.control, shown), "Shown: band 11 in red, 7 in green, 3 in blue");
        EXPECT_EQ(gui_grid_current(qube.control, band_list), GuiCell());
        EXPECT_FALSE(gui_command_enabled(qube.image, 1050));
        EXPECT_EQ(qube.value(), "value: band 11 (11): 361\nband 7 (7): 233\nband 3 (3): 105");
        for (const int command : {1052, 1054, 2070, 2071})
            EXPECT_EQ(gui_command_enabled(qube.image, command), command == 1054 || command == 2070) << command;
        click_cell(qube.control, band_list, {0, 0});
        EXPECT_TRUE(settle_until([&] { return gui_command_enabled(qube.image, 1050); }));
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), plain);

        const std::string limits = "Band Minimum and Maximum";
        with_dialog(qube.image, 1056, limits, [](Window *dialog) {
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 0), "1: 1, grey, limits computed");
            type_text(dialog, minimum, "0");
            type_text(dialog, maximum, "42");
            use_control(dialog, show);
        });
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), 0xffffffU);
        ASSERT_TRUE(choose_command(qube.image, 1023));
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), plain);
        with_dialog(qube.image, 1028, "Stretch the Image", [](Window *dialog) {
            type_text(dialog, 12, "42");
            use_control(dialog, 1);
        });
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), 0xffffffU);
        ASSERT_TRUE(choose_command(qube.image, 2070));
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), plain) << "each band has limits of its own";
        with_dialog(qube.image, 1053, "Bands and Colours", [](Window *dialog) {
            use_control(dialog, as_grey);
            EXPECT_EQ(gui_list_line(dialog, shown_bands, 0), "2: 2, grey, limits computed");
            type_text(dialog, maximum, "1000");
            use_control(dialog, show);
        });
        with_dialog(qube.image, 1028, limits, [](Window *dialog) {
            EXPECT_EQ(gui_text(dialog, maximum), "1000");
            use_control(dialog, computed);
            use_control(dialog, show);
        });
        EXPECT_EQ(shown_pixel(qube.image, 1, 0), plain);
    });
}

TEST(QubeWindow, BlocksAreOnTheSameQube) {
    run_viewer([] {
        const ScratchFolder folder;
        QubeProduct product = three_bands();
        product.core = {4, 4500, 3};
        product.type = "LSB_INTEGER";
        product.bytes = 4;
        const OpenQube qube(write_qube(folder, "Q", product));
        ASSERT_TRUE(qube.control && qube.image);
        ASSERT_TRUE(use_control(qube.control, next));
        EXPECT_TRUE(gui_command_enabled(qube.image, 1072)) << "stepping leaves the block";
        std::filesystem::rename(folder.file("Q.QUB"), folder.file("MOVED.QUB"));
        ASSERT_TRUE(choose_command(qube.image, 1072));
        OpenQube below = qube;
        below.image = gui_windows().back();
        ASSERT_TRUE(qube_state(below.image));
        EXPECT_EQ(gui_title(below.image), gui_title(qube.image));
        EXPECT_EQ(window_state(below.image)->image_info->block, (SampleBlock{2001, 4000, 1, 4}));
        EXPECT_EQ(below.value(), "value: band 2 (1.25 MICROMETER): 16073");
        ASSERT_TRUE(choose_command(below.image, 2070));
        EXPECT_EQ(below.value(), "value: band 3 (2 MICROMETER): 16105");
        EXPECT_EQ(gui_text(qube.control, band_field), "2") << "the other window's";
        with_dialog(below.image, 1053, "Bands and Colours", [](Window *dialog) { use_control(dialog, show); });
        ASSERT_TRUE(choose_command(below.image, 1072));
        below.image = gui_windows().back();
        EXPECT_EQ(window_state(below.image)->image_info->block.first_line, 4001);
        EXPECT_EQ(
            below.value(),
            "value: band 3 (2 MICROMETER): 32105\nband 2 (1.25 MICROMETER): 32073\nband 1 (0.5 MICROMETER): 32041");
    });
}

TEST(QubeWindow, SuffixPlanesAreImages) {
    run_viewer([] {
        const ScratchFolder folder;
        QubeProduct product = three_bands();
        product.suffix = {2, 1, 2};
        product.more +=
            " SAMPLE_SUFFIX_NAME = PATH\n BAND_SUFFIX_NAME = (LATITUDE, LONGITUDE)\n BAND_SUFFIX_UNIT = (DEGREE, "
            "DEGREE)\n";
        const OpenQube qube(write_qube(folder, "Q", product));
        ASSERT_TRUE(qube.control && qube.image);
        ASSERT_TRUE(choose_command(qube.image, 1052));
        Window *list = find_window("Lumacart - Qube Side Data - Q.LBL");
        ASSERT_TRUE(list);
        EXPECT_EQ(grid_size(list, plane_list), (GuiCell{5, 5}));
        EXPECT_EQ(cell_on_screen(list, plane_list, {2, 1}), "bottom plane (samples x bands)");
        EXPECT_EQ(cell_on_screen(list, plane_list, {3, 0}), "LATITUDE");
        EXPECT_FALSE(gui_control_shown(list, plane_remark));
        const auto opened = [&](int64_t row) {
            gui_set_grid_current(list, plane_list, {row, 0});
            use_control(list, open_plane);
            settle();
            OpenQube plane = qube;
            plane.image = gui_windows().back();
            return plane;
        };
        const OpenQube side = opened(1);
        EXPECT_EQ(gui_title(side.image), "Lumacart - Image from QUBE - Q.LBL - PATH 2");
        EXPECT_EQ(side.value(), "value: PATH 2 at line 1, band 1: 11031");
        EXPECT_EQ(opened(2).value(), "value: LINE suffix 1 at sample 1, band 1: 19031");
        mouse_click(side.image, {1, 1});
        double_click_cell(list, plane_list, {4, 0});
        OpenQube back = qube;
        back.image = find_window("Lumacart - Image from QUBE - Q.LBL - LONGITUDE");
        ASSERT_TRUE(back.image);
        EXPECT_EQ(back.value(), "value: LONGITUDE: 29031 DEGREE");
        for (const int command : {1052, 1053, 1054, 1056, 2070, 2071})
            EXPECT_FALSE(gui_command_enabled(back.image, command)) << command;
        const size_t windows = gui_windows().size();
        mouse_click(back.image, {1, 1});
        settle();
        EXPECT_GT(gui_windows().size(), windows) << "the spectrum there";
        close_window(qube.image);
        settle();
        EXPECT_FALSE(is_open("Lumacart - Qube Side Data - Q.LBL"));
        EXPECT_EQ(back.value(), "value: LONGITUDE: 29031 DEGREE") << "the qube stays open";
    });
}

TEST(QubeWindow, NamesAndUnitsOfAnyLengthStayShort) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string much = "\"A\nB" + std::string(100'000, 'x') + "\"\n";
        QubeProduct product;
        product.suffix = {0, 0, 1};
        product.more = " BAND_BIN_CENTER = (1, 2)\n BAND_BIN_UNIT = " + much + " CORE_NAME = " + much +
                       " CORE_UNIT = " + much + " BAND_SUFFIX_NAME = " + much + " BAND_SUFFIX_UNIT = " + much;
        const OpenQube qube(write_qube(folder, "Q", product));
        ASSERT_TRUE(qube.control && qube.image);
        ASSERT_TRUE(choose_command(qube.image, 1052));
        Window *list = gui_windows().back();
        for (const std::string &text : {gui_text(qube.control, shown), gui_paragraph(qube.control, description, 2),
                                        cell_on_screen(list, plane_list, {0, 4}), qube.value()}) {
            EXPECT_NE(text.find("A Bxxx"), std::string::npos) << text.substr(0, 80);
            EXPECT_LT(text.size(), 200u);
        }
        EXPECT_LT(place_on_screen(qube.control).width, 1000);
    });
}

TEST(QubeWindow, ListsOfAnyLength) {
    run_viewer([] {
        const ScratchFolder folder;
        folder.write("Q.QUB", std::string(1024, '\1'));
        const OpenQube qube(folder.write("Q.LBL", R"(RECORD_TYPE = UNDEFINED
^QUBE = "Q.QUB"
OBJECT = QUBE
 CORE_ITEMS = (4, 4, 1099511627776)
 CORE_ITEM_BYTES = 1
 CORE_ITEM_TYPE = UNSIGNED_INTEGER
 SUFFIX_ITEMS = (0, 0, 1000000000000)
END_OBJECT = QUBE
END
)"));
        ASSERT_TRUE(qube.control && qube.image);
        EXPECT_EQ(grid_size(qube.control, band_list).row, 1000000);
        ScriptedResponder responder;
        type_text(qube.control, band_field, "1099511627776");
        press_key(qube.control, GuiKey::Enter);
        EXPECT_EQ(responder.shown.size(), 1u);
        ASSERT_TRUE(choose_command(qube.image, 1052));
        EXPECT_EQ(gui_text(gui_windows().back(), plane_remark), "The first 1000000 of 1000000000000 planes.");
    });
}

TEST(QubeWindow, ClosesInAnyOrder) {
    run_viewer([] {
        const ScratchFolder folder;
        const std::string label = write_qube(folder, "Q", three_bands());
        std::filesystem::resize_file(folder.file("Q.QUB"), 24);
        {
            const OpenQube qube(label);
            close_window(qube.control);
            ASSERT_TRUE(choose_command(qube.image, 2001)) << "the image stays";
            close_window(qube.image);
        }
        {
            const OpenQube qube(label);
            close_window(qube.image);
            settle();
            EXPECT_FALSE(is_open("Lumacart - Qube Control - Q.LBL"));
        }
        for (const bool image_goes : {false, true}) {  // while a message is shown
            const OpenQube qube(label);
            type_text(qube.control, band_field, "3");
            when_idle([&] {
                EXPECT_NE(shown_box_text().find("plane 3"), std::string::npos) << shown_box_text();
                gui_destroy_window(image_goes ? qube.image : qube.control);
                close_box();
            });
            press_key(qube.control, GuiKey::Enter);
            settle();
            EXPECT_FALSE(gui_window_exists(qube.control));
            EXPECT_EQ(gui_window_exists(qube.image), !image_goes);
            gui_destroy_window(qube.image);
        }
        const OpenQube qube(label);
        when_idle([] { ask_to_quit(); });
        use_control(qube.control, next);
        EXPECT_TRUE(gui_windows().empty());
    });
}

TEST(QubeWindow, UnattendedTheBandAlone) {
    run_viewer([] {
        const ScratchFolder folder;
        set_unattended(true);
        EXPECT_TRUE(open_in_viewer(write_qube(folder, "Q", three_bands())));
        EXPECT_EQ(gui_windows().size(), 1u);
        set_unattended(false);
    });
}

}  // namespace
