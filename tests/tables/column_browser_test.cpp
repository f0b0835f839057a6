// The window that shows one column at a time, and its summaries.
#include "support/scratch.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"
#include "tables/tables.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Shown = std::vector<std::string>;

std::string column(const std::string &name, const std::string &type, int start, int bytes,
                   const std::string &more = {}) {
    return " OBJECT = COLUMN\n  NAME = " + name + "\n  DATA_TYPE = " + type +
           "\n  START_BYTE = " + std::to_string(start) + "\n  BYTES = " + std::to_string(bytes) + "\n" + more +
           " END_OBJECT = COLUMN\n";
}

std::string bits(const std::string &name, int start, int count) {
    return "  OBJECT = BIT_COLUMN\n   NAME = " + name +
           "\n   BIT_DATA_TYPE = UNSIGNED_INTEGER\n   START_BIT = " + std::to_string(start) +
           "\n   BITS = " + std::to_string(count) + "\n  END_OBJECT = BIT_COLUMN\n";
}

// Two tables. Of 40 rows of seven bytes: COUNT, two bytes, the row; PAIR, two items of a byte, the row and a hundred
// more; FLAGS, a byte of bit columns; KIND, "a" to "d" in turn and a blank. And of 10 rows, as text.
struct BrowserTest {
    const ScratchFolder folder;
    const SilentReports reports;
    ScriptedResponder responder;
    Window *browser = nullptr;

    explicit BrowserTest(int stored_rows = 40, const std::string &rows = "40") {
        std::string bytes;
        for (int row = 1; row <= stored_rows; ++row)
            bytes += {0,
                      static_cast<char>(row),
                      static_cast<char>(row),
                      static_cast<char>(row + 100),
                      static_cast<char>(0xA0 + row % 8),
                      static_cast<char>('a' + row % 4),
                      ' '};
        folder.write("A.DAT", bytes);
        folder.write("B.DAT", "1\n2\n3\n4\n5\n6\n7\n8\n9\nx\n");
        folder.write(
            "T.LBL",
            "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 7\n^TABLE = \"A.DAT\"\n^INDEX_TABLE = \"B.DAT\"\n"
            "OBJECT = TABLE\n NAME = FIRST\n INTERCHANGE_FORMAT = BINARY\n ROWS = " +
                rows + "\n COLUMNS = 4\n ROW_BYTES = 7\n" +
                column("COUNT", "MSB_UNSIGNED_INTEGER", 1, 2, "  DESCRIPTION = \"of what\n      there is\"\n") +
                column("PAIR", "MSB_UNSIGNED_INTEGER", 3, 2, "  ITEMS = 2\n  ITEM_BYTES = 1\n  ITEM_OFFSET = 1\n") +
                column("FLAGS", "MSB_BIT_STRING", 5, 1, bits("HIGH", 1, 4) + bits("LOW", 5, 4)) +
                column("KIND", "CHARACTER", 6, 2) +
                "END_OBJECT = TABLE\nOBJECT = INDEX_TABLE\n NAME = SECOND\n INTERCHANGE_FORMAT = ASCII\n ROWS = 10\n"
                " COLUMNS = 1\n ROW_BYTES = 2\n" +
                column("DIGIT", "ASCII_INTEGER", 1, 1) + "END_OBJECT = INDEX_TABLE\nEND\n");
        Window *list = open_in_viewer(folder.file("T.LBL"));
        use_control(list, 3);
        settle();
        browser = find_window("Lumacart - Column Browser - T.LBL");
    }
    std::string cell(int64_t row) { return cell_on_screen(browser, browser_grid, {row, 0}); }
    // The first row and what stands in it.
    Shown first_row() { return {row_head(browser, browser_grid, 0), cell(0)}; }
    std::string head() { return column_head(browser, browser_grid, 0); }
    void enter(int field, const std::string &text) {
        gui_focus_control(browser, field);
        gui_set_text(browser, field, text);
        press_key(browser, GuiKey::Enter);
    }
    // The lines of the window of summaries, which this empties.
    Shown summaries() {
        settle();
        Window *shown = find_window("Lumacart - Column Summary - T.LBL");
        if (!shown)
            return {};
        const Shown lines = gui_paragraphs(shown, summary_text);
        gui_set_paragraphs(shown, summary_text, {});
        return lines;
    }
};

TEST(ColumnBrowser, ShowsKeywordsAndBlocksOfRows) {
    run_viewer([] {
        BrowserTest test;
        ASSERT_TRUE(test.browser);
        EXPECT_EQ(gui_text(test.browser, browser_table_pane),
                  "Name         FIRST\nClass        TABLE\nFile         A.DAT"
                  "\nFormat       BINARY\nRows         40\nRow bytes    7\nColumns      4");
        EXPECT_EQ(gui_text(test.browser, browser_column_pane),
                  "Name         COUNT\nType         MSB UNSIGNED INTEGER\nBytes        2\nStart byte   1\n"
                  "Items        1\nDescription\n  of what there is");
        EXPECT_EQ(grid_size(test.browser, browser_grid), (GuiCell{15, 1}));
        EXPECT_EQ(test.first_row(), (Shown{"1", "1"}));
        struct {
            int command;
            const char *first;
        } const steps[] = {{2031, "16"}, {2031, "26"}, {2031, "26"}, {2032, "11"}, {2033, "1"}, {2034, "26"}};
        for (const auto &step : steps) {
            choose_command(test.browser, step.command);
            EXPECT_EQ(test.first_row(), Shown(2, step.first)) << step.command;
        }
        for (const auto &[typed, first] : {std::pair("7", "7"), {"0", "1"}, {"-3", "1"}, {"39", "26"}, {"x", "1"}}) {
            test.enter(row_field, typed);
            EXPECT_EQ(test.first_row(), Shown(2, first)) << typed;
        }
        click_cell(test.browser, browser_grid, {14, 0});
        press_key(test.browser, GuiKey::Down);
        EXPECT_EQ(test.first_row(), Shown(2, "2")) << "a step beyond the block";
        EXPECT_EQ(gui_grid_current(test.browser, browser_grid).row, 14);
        use_control(test.browser, 12);
        EXPECT_EQ(gui_text(test.browser, browser_place), "Table 1 of 2   Rows 17 to 31 of 40   Column 1 of 4   TEXT");
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(ColumnBrowser, MovesAmongColumnsItemsAndBitColumns) {
    run_viewer([] {
        BrowserTest test;
        const auto expect_name = [&](const char *name) {
            EXPECT_EQ(test.head().substr(0, test.head().find('\n')), name);
        };
        gui_focus_control(test.browser, browser_grid);
        press_key(test.browser, GuiKey::Right);
        EXPECT_EQ(test.head(), "PAIR\nMSB UNSIGNED INTEGER, item 1 of 2");
        press_key(test.browser, GuiKey::Right);
        expect_name("FLAGS");
        choose_command(test.browser, 2042);
        EXPECT_TRUE(command_checked(test.browser, 2042));
        EXPECT_TRUE(gui_control_checked(test.browser, 17));
        press_key(test.browser, GuiKey::Left);
        EXPECT_EQ(test.head(), "PAIR\nMSB UNSIGNED INTEGER, item 2 of 2");
        EXPECT_EQ(test.cell(4), "105");
        EXPECT_FALSE(choose_command(test.browser, 2043)) << "it has no bit columns";
        test.enter(skip_field, "1");
        EXPECT_EQ(gui_text(test.browser, skip_field), "");
        expect_name("FLAGS");
        EXPECT_TRUE(use_control(test.browser, 18));
        EXPECT_EQ(test.head(), "FLAGS: HIGH\nUNSIGNED INTEGER");
        EXPECT_EQ(test.cell(2), "10");
        choose_command(test.browser, 2036);
        EXPECT_EQ(test.cell(2), "3");
        EXPECT_EQ(gui_paragraph(test.browser, browser_column_pane, 3), "Start bit    5");
        choose_command(test.browser, 2046);
        EXPECT_EQ(test.cell(2), "00000003");
        test.enter(name_field, "HI");
        expect_name("FLAGS: HIGH");
        use_control(test.browser, 18);
        test.enter(name_field, "CO");
        expect_name("COUNT");
        test.enter(name_field, "NONE");
        expect_name("COUNT");
        EXPECT_EQ(gui_text(test.browser, browser_note), "No column's name begins with NONE.");
        test.enter(skip_field, "99");
        expect_name("KIND");
        EXPECT_FALSE(gui_control_shown(test.browser, browser_note));
        test.enter(skip_field, "-1");
        expect_name("FLAGS");
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(ColumnBrowser, ShowsAColumnInFourFormats) {
    run_viewer([] {
        BrowserTest test;
        test.enter(row_field, "18");
        const std::pair<int, const char *> formats[] = {
            {2045, "00000000 00010010"}, {2046, "0012"}, {2047, "0022"}, {2044, "18"}};
        for (const auto &[command, expected] : formats) {
            choose_command(test.browser, command);
            EXPECT_EQ(test.cell(0), expected);
            EXPECT_TRUE(command_checked(test.browser, command));
        }
        choose_command(test.browser, 2046);
        choose_command(test.browser, 2036);
        EXPECT_EQ(test.cell(0), "18") << "each column has its own";
    });
}

TEST(ColumnBrowser, GoesToOtherTables) {
    run_viewer([] {
        BrowserTest test;
        test.enter(name_field, "FLAGS");
        use_control(test.browser, 18);
        ASSERT_TRUE(choose_command(test.browser, 1048));
        EXPECT_TRUE(choose_command(test.browser, 2040));
        EXPECT_FALSE(use_control(test.browser, 18)) << "its first column is shown, which has no bit columns";
        EXPECT_EQ(grid_size(test.browser, browser_grid), (GuiCell{10, 1}));
        EXPECT_EQ(test.cell(9), "x");
        choose_command(test.browser, 2031);
        EXPECT_EQ(test.first_row(), Shown(2, "1")) << "all rows are shown";
        const size_t windows = gui_windows().size();
        EXPECT_TRUE(choose_command(test.browser, 1048));
        EXPECT_EQ(gui_windows().size(), windows + 1) << "the keywords of the other table";
        choose_command(test.browser, 2040);
        EXPECT_EQ(test.head(), "DIGIT\nASCII INTEGER") << "the last table";
        use_control(test.browser, 15);
        EXPECT_EQ(test.head().substr(0, 5), "COUNT");
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(ColumnBrowser, TellsOnceADisplayWhatTheFileLacks) {
    run_viewer([] {
        BrowserTest test(20);
        choose_command(test.browser, 2031);
        EXPECT_EQ(test.cell(4), "20");
        EXPECT_EQ(test.cell(5), "(missing)");
        const std::string missing = "0 bytes read. Current byte location in data file is 140";
        EXPECT_EQ(test.responder.shown, Shown{"error: " + missing});
        EXPECT_EQ(gui_text(test.browser, browser_note), missing);
        std::filesystem::remove(test.folder.file("B.DAT"));
        test.responder.shown.clear();
        choose_command(test.browser, 2040);
        ASSERT_EQ(test.responder.shown.size(), 1u);
        EXPECT_EQ(test.responder.shown[0].find("error: The column cannot be displayed."), 0u);
        choose_command(test.browser, 2036);
        EXPECT_EQ(test.responder.shown.size(), 1u);
    });
}

TEST(ColumnBrowser, SumsColumnsUp) {
    run_viewer([] {
        BrowserTest test;
        choose_command(test.browser, summary_command);
        EXPECT_EQ(test.summaries(), (Shown{"FIRST, COUNT", "     Minimum:             1",
                                           "     Maximum:             40", "     Approximate Average: 20.500000"}));
        test.enter(name_field, "FLAGS");
        choose_command(test.browser, summary_command);
        EXPECT_EQ(test.responder.shown,
                  Shown{"note:      Unable to display a summary for this data type and/or column size.\n"});
        use_control(test.browser, 18);
        use_control(test.browser, 19);
        EXPECT_EQ(test.summaries()[1], "     Minimum:             10");
        use_control(test.browser, 18);
        test.enter(name_field, "KIND");
        use_control(test.browser, 19);
        choose_command(test.browser, 2040);
        use_control(test.browser, 19);
        EXPECT_EQ(test.summaries(),
                  (Shown{"FIRST, KIND", "     Column contains: ", "     a -- 10 occurrences",
                         "     b -- 10 occurrences", "     c -- 10 occurrences", "     d -- 10 occurrences", "",
                         "SECOND, DIGIT", "", "     WARNING: Numeric column contains suspicious characters.",
                         "     WARNING: Computed values may be incorrect.", "", "     Minimum:             1",
                         "     Maximum:             9", "     Approximate Average: 5.000000"}));
        EXPECT_FALSE(gui_text_changed(find_window("Lumacart - Column Summary - T.LBL"), summary_text));
    });
}

// Calls the action once a box is shown.
void once_boxed(const std::function<bool()> &action) {
    when_idle([action] {
        if (!action())
            once_boxed(action);
    });
}

TEST(ColumnBrowser, ALongSummaryEndsWhenCancelledAndWithItsWindow) {
    run_viewer([] {
        BrowserTest test(1, "2000000000");
        std::filesystem::resize_file(test.folder.file("A.DAT"), 14'000'000'000);
        test.responder.shown.clear();
        once_boxed(close_box);
        choose_command(test.browser, summary_command);
        const Shown lines = test.summaries();
        ASSERT_EQ(lines.size(), 5u);
        EXPECT_EQ(lines[4].find("     Stopped: of the first "), 0u);
        EXPECT_FALSE(pointer_is_busy());
        once_boxed([&test] {
            if (box_is_shown())
                gui_destroy_window(test.browser);
            return !gui_window_exists(test.browser);
        });
        choose_command(test.browser, summary_command);
        EXPECT_FALSE(gui_window_exists(test.browser));
        EXPECT_FALSE(box_is_shown());
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(ColumnBrowser, OpensFromTheHierarchyAndTheTableWindow) {
    run_viewer([] {
        BrowserTest test;
        ASSERT_TRUE(choose_command(test.browser, 1047));
        settle();
        Window *hierarchy = gui_windows().back();
        close_window(test.browser);
        settle();
        when_idle([] { use_control(find_window("Open or Plot"), 4); });
        double_click_line(hierarchy, 1, 2);
        settle();
        test.browser = find_window("Lumacart - Column Browser - T.LBL");
        ASSERT_TRUE(test.browser);
        EXPECT_EQ(test.head(), "DIGIT\nASCII INTEGER");
        close_window(test.browser);
        settle();
        when_idle([] { use_control(find_window("Open or Plot"), 1); });
        double_click_line(hierarchy, 1, 2);
        settle();
        ASSERT_TRUE(choose_command(gui_windows().back(), browse_columns_command));
        settle();
        test.browser = gui_windows().back();
        EXPECT_EQ(test.head(), "DIGIT\nASCII INTEGER");
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

}  // namespace
