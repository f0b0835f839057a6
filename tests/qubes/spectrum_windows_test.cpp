// Spectra of qubes by click: their plot and their table.
#include "qubes/spectrum_windows.h"

#include "support/qube_product.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Shown = std::vector<std::string>;
constexpr int read_out = 2, keep = 2080, remove_kept = 2081, save_csv = 2067, zoom_in_command = 2001;
const char *const plot_title = "Lumacart - Spectrum Plot - Q.LBL";
const char *const table_title = "Lumacart - Spectrum from QUBE - Q.LBL";

struct SpectrumTest {
    const ScratchFolder folder;
    const SilentReports reports;
    ScriptedResponder responder;
    Window *image = nullptr;

    void open_label(const std::string &label) {
        Window *control = open_in_viewer(label);
        ASSERT_TRUE(control);
        image = window_state(control)->opened_from;
        close_window(control);
    }
    // Four samples, three lines.
    void open(int64_t bands, const std::string &more = "") {
        QubeProduct product;
        product.core = {4, 3, bands};
        product.more = more;
        open_label(write_qube(folder, "Q", product));
        ASSERT_TRUE(image);
        ASSERT_EQ(gui_title(image), "Lumacart - Image from QUBE - Q.LBL");
        ASSERT_TRUE(choose_command(image, zoom_in_command));
    }
    void click(int line, int sample) const {
        mouse_click(image, {2.0 * sample - 1, 2.0 * line - 1});
        settle();
    }
    // What the plot shows, as it saves it.
    std::string curves() {
        responder.files = {{folder.path().string(), "saved.csv"}};
        responder.answers = {1};
        EXPECT_TRUE(choose_command(plot(), save_csv));
        return read_file(folder.path() / "saved.csv");
    }
    static Window *plot() { return find_window(plot_title); }
    static Window *table() { return find_window(table_title); }
    static std::string cell(int64_t row, int column) { return cell_on_screen(table(), table_grid, {row, column}); }
};

void run_spectrum_test(const std::function<void(SpectrumTest &)> &body) {
    run_viewer([&] {
        SpectrumTest test;
        body(test);
    });
}

// Stored values are sample + 8 * line + 32 * band.
const char *const three_bands =
    " CORE_NULL = 75\n CORE_HIGH_REPR_SATURATION = 76\n CORE_NAME = \"RADIANCE\"\n CORE_UNIT = \"W\"\n"
    " BAND_BIN_CENTER = (0.5, 1.25, 2)\n BAND_BIN_UNIT = MICROMETER\n";

TEST(Spectrum, AClickPlotsAndListsItInWindowsThatStay) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(3, three_bands);
        const GuiRect image = gui_window_place(test.image);
        test.click(1, 2);
        ASSERT_TRUE(test.plot() && test.table());
        EXPECT_EQ(test.curves(), "Band centre [MICROMETER],\"line 1, sample 2\"\n0.5,42\n1.25,74\n2,106\n");
        EXPECT_EQ(test.responder.requests.back().proposed.name, "Q_spectrum.csv");
        EXPECT_EQ(grid_size(test.table(), table_grid), (GuiCell{3, 3}));
        EXPECT_EQ(column_head(test.table(), table_grid, 1), "CENTER\nMICROMETER\n");
        EXPECT_EQ(column_head(test.table(), table_grid, 2), "VALUE\nW\nline 1, sample 2");
        EXPECT_EQ(test.cell(1, 0) + " " + test.cell(1, 1) + " " + test.cell(1, 2), "2 1.25 74");
        for (Window *window : {test.plot(), test.table()}) {
            const GuiRect place = gui_window_place(window);
            EXPECT_TRUE(place.left >= image.left + image.width || place.top >= image.top + image.height)
                << gui_title(window) << " hides the image";
        }

        press_key(test.plot(), GuiKey::Right);
        press_key(test.plot(), GuiKey::Right);
        const size_t windows = gui_windows().size();
        test.click(1, 3);
        EXPECT_EQ(gui_windows().size(), windows);
        EXPECT_EQ(test.curves(), "Band centre [MICROMETER],\"line 1, sample 3\"\n0.5,43\n1.25,\n2,107\n");
        EXPECT_EQ(gui_text(test.plot(), read_out), "") << "the band that was told has no data";
        EXPECT_EQ(test.cell(1, 2), "NULL");
        for (const GuiKey key : {GuiKey::Up, GuiKey::Up, GuiKey::Right, GuiKey::Right, GuiKey::Right, GuiKey::Enter})
            press_key(test.image, key);
        EXPECT_EQ(test.cell(1, 2), "HIGH_REPR_SATURATION") << "at the cursor of the keys";

        qube_state(test.image)->box = 3;
        test.click(1, 4);  // four in the image, in the second band two are data
        EXPECT_EQ(test.curves(),
                  "Band centre [MICROMETER],\"line 1, sample 4, 3 x 3\"\n0.5,47.5\n1.25,83.5\n2,111.5\n");
    });
}

TEST(Spectrum, KeptOnesAreComparedUntilTheyAreRemoved) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(2, " BAND_BIN_CENTER = (0.5)\n");
        test.responder.shown.clear();
        EXPECT_FALSE(choose_command(test.image, remove_kept)) << "none is kept";
        EXPECT_TRUE(choose_command(test.image, keep));
        EXPECT_EQ(test.responder.shown, Shown{"note: There is no spectrum yet. Click on the image to see one."});
        test.click(1, 1);
        EXPECT_FALSE(choose_command(test.plot(), remove_kept));
        EXPECT_TRUE(choose_command(test.plot(), keep));
        EXPECT_FALSE(choose_command(test.image, keep)) << "it is kept";
        EXPECT_EQ(gui_text(test.plot(), read_out), "1 spectrum is kept. Click on the image to add another.");
        test.click(2, 1);
        EXPECT_TRUE(choose_command(test.image, keep));
        close_window(test.plot());
        test.click(3, 1);
        EXPECT_EQ(test.curves(),
                  "Band,\"line 1, sample 1\",\"line 2, sample 1\",\"line 3, sample 1\"\n1,41,49,57\n2,73,81,89\n");
        EXPECT_TRUE(choose_command(test.plot(), remove_kept));
        EXPECT_EQ(test.curves(), "Band,\"line 3, sample 1\"\n1,57\n2,89\n");
        EXPECT_FALSE(choose_command(test.image, remove_kept));
    });
}

TEST(Spectrum, PointsAtTheEndsOfAllNumbersAreFound) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(3, " BAND_BIN_CENTER = (1E-310, 2E-310, 3E-310)\n CORE_BASE = 1.7E308\n CORE_MULTIPLIER = 1E300\n");
        test.click(1, 1);
        press_key(test.plot(), GuiKey::Right);
        settle();
        EXPECT_TRUE(gui_text(test.plot(), read_out).ends_with("(point 1 of 3)"));
        gui_destroy_window(test.image);
        test.open(3, " BAND_BIN_CENTER = (1E-310, 2E-310, 3E-310)\n CORE_MULTIPLIER = 0\n");
        test.click(1, 1);
        const GuiSize size = gui_client_size(test.plot());
        for (int x = 0; x < size.width / 2; x += 5)
            mouse_move(test.plot(), {1.0 * x, size.height / 2.0});
        EXPECT_NE(gui_text(test.plot(), read_out).find("(point "), std::string::npos);
    });
}

TEST(Spectrum, SaysWhereThereIsLittleToPlot) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(1, " CORE_NULL = 42\n");
        test.click(1, 1);
        EXPECT_EQ(gui_text(test.plot(), read_out), "The qube has one band: its spectrum is a single point.");
        test.click(1, 2);
        EXPECT_EQ(gui_text(test.plot(), read_out), "No data at line 1, sample 2: the only band is NULL.");
        gui_destroy_window(test.image);
        test.open(2, " CORE_NULL = 42\n CORE_VALID_MINIMUM = 100\n");
        test.click(1, 1);
        EXPECT_EQ(gui_text(test.plot(), read_out), "No data at line 1, sample 1: all 2 bands are BELOW_MINIMUM.");
        test.click(1, 2);
        EXPECT_EQ(gui_text(test.plot(), read_out), "No data at line 1, sample 2: none of the 2 bands is valid.");
        EXPECT_EQ(test.curves(), "Band,\"line 1, sample 2 (no data)\"\n1,\n2,\n");
    });
}

TEST(Spectrum, OfManyBandsIsListedByPagesOfRowsAlone) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(120);
        test.click(1, 1);
        Window *paging = find_window("Q.LBL");
        ASSERT_TRUE(paging);
        constexpr int next_rows = 1, row_label = 3, column_label = 8;
        for (const int control : {6, 7})
            EXPECT_FALSE(use_control(paging, control)) << control;
        EXPECT_EQ(gui_text(paging, column_label), "Page 1 of 1");
        EXPECT_TRUE(use_control(paging, next_rows));
        EXPECT_EQ(test.cell(19, 2), std::to_string(core_value(1, 1, 120)));
        gui_set_grid_current(test.table(), table_grid, {5, 2});
        test.click(2, 3);
        EXPECT_EQ(gui_text(paging, row_label), "Page 2 of 2") << "the next spectrum is shown on the same page";
        EXPECT_EQ(gui_grid_current(test.table(), table_grid), (GuiCell{5, 2}));
        EXPECT_EQ(test.cell(19, 2), std::to_string(core_value(3, 2, 120)));
        gui_copy_grid(test.table(), table_grid, true);
        EXPECT_EQ(clipboard_text(), "VALUE\n" + std::to_string(core_value(3, 2, 106)) + "\n");
        for (const int of_files : {2020, 2030, 2060})
            EXPECT_FALSE(choose_command(test.table(), of_files)) << of_files;
        for (const int of_label : {1047, 1048, 1051})
            EXPECT_TRUE(choose_command(test.table(), of_label)) << of_label;
        settle();
        Window *hierarchy = find_window("Lumacart - Object Hierarchy - Q.LBL");
        ASSERT_TRUE(hierarchy);
        EXPECT_EQ(gui_list_line(hierarchy, 1, gui_selected_line(hierarchy, 1)),
                  "1              QUBE   No NAME KEYWORD");
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(Spectrum, ItsWindowsCanBeClosedMovedAndSwitchedOff) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(2);
        test.click(1, 1);
        const GuiRect moved = {200, 210, 400, 300};
        gui_place_window(test.table(), moved);
        gui_place_window(test.plot(), moved);
        close_window(test.table());
        close_window(test.plot());
        settle();
        EXPECT_FALSE(test.table() || test.plot());
        test.click(2, 2);
        ASSERT_TRUE(test.table() && test.plot());
        for (Window *window : {test.plot(), test.table()}) {
            const GuiRect place = gui_own_place(window);
            EXPECT_EQ(std::vector({place.left, place.top, place.width, place.height}),
                      std::vector({moved.left, moved.top, moved.width, moved.height}));
        }

        choose_spectrum_view(test.image, SpectrumView::Table, false);
        EXPECT_FALSE(test.table());
        test.click(3, 3);
        EXPECT_FALSE(test.table());
        choose_spectrum_view(test.image, SpectrumView::Table, true);
        ASSERT_TRUE(test.table());
        EXPECT_EQ(test.cell(0, 2), std::to_string(core_value(3, 3, 1))) << "the one shown last";
        choose_spectrum_view(test.image, SpectrumView::Plot, false);
        choose_spectrum_view(test.image, SpectrumView::Table, false);
        EXPECT_FALSE(show_spectrum(test.image, 1, 1));
        EXPECT_EQ(gui_windows().size(), 1u);

        choose_spectrum_view(test.image, SpectrumView::Plot, true);
        choose_spectrum_view(test.image, SpectrumView::Table, true);
        EXPECT_EQ(gui_windows().size(), 3u);
        close_window(test.image);
        settle();
        EXPECT_TRUE(gui_windows().empty());
    });
}

TEST(Spectrum, TellsOnceWhatItCannotRead) {
    run_spectrum_test([](SpectrumTest &test) {
        test.open(2);
        EXPECT_FALSE(show_spectrum(test.image, 4, 1));
        ASSERT_EQ(test.responder.shown.size(), 1u);
        EXPECT_TRUE(test.responder.shown[0].starts_with("error: ")) << test.responder.shown[0];
        EXPECT_EQ(gui_windows().size(), 1u);
        close_window(test.image);

        test.responder.shown.clear();
        const std::string label =
            "RECORD_TYPE = UNDEFINED\n^QUBE = \"Q.QUB\"\nOBJECT = QUBE\n AXES = 3\n CORE_ITEMS = (4, 3, "
            "1099511627776)\n"
            " CORE_ITEM_BYTES = 1\n CORE_ITEM_TYPE = UNSIGNED_INTEGER\nEND_OBJECT = QUBE\nEND\n";
        test.folder.write("Q.QUB", "Twelve bytes");
        test.open_label(test.folder.write("Q.LBL", label));
        ASSERT_TRUE(test.image);
        test.click(1, 1);
        EXPECT_EQ(test.responder.shown,
                  Shown{"error: Spectra of more than 1000000 bands are not shown. The qube has 1099511627776."});
    });
}

TEST(Spectrum, FewAreKeptOfAMillionBands) {
    run_spectrum_test([](SpectrumTest &test) {
        std::filesystem::resize_file(test.folder.write("Q.QUB", ""), 12'000'000);
        test.open_label(test.folder.write("Q.LBL",
                                          "RECORD_TYPE = UNDEFINED\n^QUBE = \"Q.QUB\"\nOBJECT = QUBE\n"
                                          " CORE_ITEMS = (1000000, 4, 3)\n AXIS_NAME = (BAND, SAMPLE, LINE)\n"
                                          " CORE_ITEM_BYTES = 1\n CORE_ITEM_TYPE = UNSIGNED_INTEGER\n"
                                          "END_OBJECT = QUBE\nEND\n"));
        ASSERT_TRUE(test.image && choose_command(test.image, zoom_in_command));
        for (int sample = 1; sample <= 4; ++sample) {
            test.click(1, sample);
            EXPECT_TRUE(choose_command(test.image, keep)) << sample;
        }
        test.click(2, 1);
        ASSERT_TRUE(choose_command(test.image, keep));
        EXPECT_EQ(test.responder.shown, Shown{"note: At most 4 spectra are kept."});
    });
}

TEST(Spectrum, ItsImageMayGoDuringAMessage) {
    run_viewer([] {
        SpectrumTest test;
        test.open(2);
        test.click(1, 1);
        test.folder.write("Q.QUB", "cut");
        gui_set_responder(nullptr);
        std::string told;
        when_idle([&] {
            told = shown_box_text();
            gui_destroy_window(test.image);
            close_box();
        });
        test.click(1, 1);
        EXPECT_NE(told, "");
        EXPECT_TRUE(gui_windows().empty());
        gui_set_responder(&test.responder);
    });
}

}  // namespace
