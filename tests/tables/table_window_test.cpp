// Tables by pages, and the list of a product's tables.
#include "support/scratch.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"
#include "tables/tables.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Shown = std::vector<std::string>;
constexpr int next_rows = 1, previous_rows = 2, row_label = 3, next_columns = 6, previous_columns = 7, column_label = 8;

struct Table {
    std::string class_name = "TABLE";
    int rows = 0;
    int columns = 0;
    std::string counts = {};   // in place of the keywords ROWS, COLUMNS and ROW_BYTES
    int64_t stored_rows = -1;  // -1: all of them
};

// Of unsigned integers of two bytes: 256 times the column and the low byte of the row, both from 1.
void write_table(const ScratchFolder &folder, const std::string &file, const Table &table, std::string *pointers,
                 std::string *objects) {
    *pointers += "^" + table.class_name + " = \"" + file + "\"\n";
    *objects += "OBJECT = " + table.class_name + "\n INTERCHANGE_FORMAT = BINARY\n NAME = T" + file.substr(0, 1) + "\n";
    *objects += !table.counts.empty()
                    ? table.counts
                    : " ROWS = " + std::to_string(table.rows) + "\n COLUMNS = " + std::to_string(table.columns) +
                          "\n ROW_BYTES = " + std::to_string(2 * table.columns) + "\n";
    for (int column = 1; column <= table.columns; ++column)
        *objects += " OBJECT = COLUMN\n  NAME = C" + std::to_string(column) + "\n  DATA_TYPE = MSB_UNSIGNED_INTEGER\n" +
                    "  START_BYTE = " + std::to_string(2 * column - 1) + "\n  BYTES = 2\n" +
                    (column == 1 ? "  UNIT = \"50%s\"\n" : "") + " END_OBJECT = COLUMN\n";
    *objects += "END_OBJECT = " + table.class_name + "\n";
    std::string bytes;
    for (int64_t row = 1; row <= (table.stored_rows < 0 ? table.rows : table.stored_rows); ++row) {
        for (int column = 1; column <= table.columns; ++column)
            bytes += {static_cast<char>(column), static_cast<char>(row)};
    }
    folder.write(file, bytes);
}

struct TableTest {
    const ScratchFolder folder;
    const SilentReports reports;
    ScriptedResponder responder;

    std::string label(const std::vector<Table> &tables) const {
        std::string pointers = "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 60\n";
        std::string objects;
        for (size_t i = 0; i < tables.size(); ++i)
            write_table(folder, std::string(1, static_cast<char>('A' + i)) + ".DAT", tables[i], &pointers, &objects);
        return folder.write("T.LBL", pointers + objects + "END\n");
    }
    Window *open(const std::vector<Table> &tables) {
        responder.shown.clear();
        open_in_viewer(label(tables));
        return gui_windows().empty() ? nullptr : gui_windows().back();
    }
};

void run_table_test(const std::function<void(TableTest &)> &body) {
    run_viewer([&] {
        TableTest test;
        body(test);
    });
}

TEST(TableWindow, PagesRowsFromAHundredOn) {
    run_table_test([](TableTest &test) {
        Window *window = test.open({{.rows = 99, .columns = 30}});
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - Table - T.LBL");
        EXPECT_FALSE(find_window("T.LBL")) << "one page needs no paging dialog";
        EXPECT_EQ(grid_size(window, table_grid), (GuiCell{99, 30}));
        EXPECT_EQ(column_head(window, table_grid, 0), "C1\n50%s\nMSB UNSIGNED INTEGER");
        EXPECT_EQ(cell_on_screen(window, table_grid, {98, 29}), std::to_string(30 * 256 + 99));
        EXPECT_FALSE(choose_command(window, 2021));

        window = test.open({{.rows = 100, .columns = 2}});
        Window *dialog = find_window("T.LBL");
        ASSERT_TRUE(window && dialog);
        EXPECT_EQ(gui_text(dialog, row_label), "Page 1 of 2") << "the announced count";
        EXPECT_EQ(gui_text(dialog, column_label), "Page 1 of 1");
        EXPECT_FALSE(use_control(dialog, previous_rows));
        EXPECT_TRUE(use_control(dialog, next_rows));
        choose_command(window, 2022);
        EXPECT_EQ(test.responder.shown, (Shown{"warning: Can't page rows past end of table",
                                               "warning: Can't page rows past beginning of table"}));
        EXPECT_EQ(gui_text(dialog, row_label), "Page 1 of 2");
    });
}

TEST(TableWindow, TurnsPagesAndGoesToRows) {
    run_table_test([](TableTest &test) {
        Window *window = test.open({{.rows = 250, .columns = 31}});
        Window *dialog = find_window("T.LBL");
        ASSERT_TRUE(window && dialog);
        EXPECT_EQ(gui_text(dialog, column_label), "Page 1 of 2");
        EXPECT_TRUE(use_control(dialog, next_rows));
        EXPECT_EQ(gui_text(dialog, row_label), "Page 2 of 3");
        EXPECT_EQ(row_head(window, table_grid, 99), "200");
        EXPECT_TRUE(choose_command(window, 2021));
        EXPECT_EQ(grid_size(window, table_grid).row, 50);
        EXPECT_FALSE(use_control(dialog, next_rows)) << "the last page";
        EXPECT_TRUE(use_control(dialog, next_columns));
        EXPECT_EQ(gui_text(dialog, column_label), "Page 2 of 2");
        EXPECT_EQ(grid_size(window, table_grid), (GuiCell{50, 1}));
        EXPECT_EQ(cell_on_screen(window, table_grid, {49, 0}), std::to_string(31 * 256 + 250));
        EXPECT_FALSE(use_control(dialog, next_columns));
        EXPECT_TRUE(use_control(dialog, previous_rows));
        EXPECT_EQ(row_head(window, table_grid, 0), "101");
        EXPECT_EQ(cell_on_screen(window, table_grid, {0, 0}), std::to_string(31 * 256 + 101)) << "of the same columns";

        const auto go_to = [&](const char *row) {
            when_idle([=] {
                Window *question = find_window("Go to Row");
                gui_set_text(question, 1, row);
                use_control(question, 2);
                if (gui_window_exists(question))
                    use_control(question, 3);
            });
            choose_command(window, 2025);
        };
        go_to("7");
        EXPECT_EQ(gui_grid_current(window, table_grid), (GuiCell{6, 0}));
        EXPECT_EQ(gui_text(dialog, row_label), "Page 1 of 3");
        EXPECT_FALSE(use_control(dialog, previous_rows));
        EXPECT_EQ(test.responder.shown, Shown{});
        for (const char *row : {"251", "0", "x", "99999999999999999999"})
            go_to(row);
        EXPECT_EQ(test.responder.shown, Shown(4, "warning: Rows are counted from 1 to 250."));

        close_window(dialog);
        settle();
        EXPECT_FALSE(gui_window_exists(dialog));
        choose_command(window, 2021);
        choose_command(window, 2026);
        dialog = find_window("T.LBL");
        ASSERT_TRUE(dialog);
        EXPECT_EQ(gui_text(dialog, row_label), "Page 2 of 3");
        EXPECT_EQ(gui_text(dialog, column_label), "Page 2 of 2");
        close_window(window);
        settle();
        EXPECT_FALSE(gui_window_exists(dialog)) << "the dialog goes with the window";
    });
}

TEST(TableWindow, PagesColumnsOfShortTables) {
    run_table_test([](TableTest &test) {
        Window *window = test.open({{.rows = 50, .columns = 60}});
        Window *dialog = find_window("T.LBL");
        ASSERT_TRUE(window && dialog);
        EXPECT_EQ(gui_text(dialog, row_label), "Page 1 of 1");
        EXPECT_FALSE(use_control(dialog, next_rows));
        EXPECT_FALSE(use_control(dialog, previous_columns));
        EXPECT_TRUE(use_control(dialog, next_columns));
        EXPECT_EQ(column_head(window, table_grid, 29).substr(0, 3), "C60");
        choose_command(window, 2023);
        EXPECT_EQ(test.responder.shown, Shown{"warning: Can't page columns past end of table"});
    });
}

TEST(TableWindow, TellsWhatTheLabelLacks) {
    const std::string no_rows =
        "warning: This table has no ROWS keyword.  Will use RECORDS value, or if no RECORDS keyword present, will "
        "assume 1 row.";
    const std::string no_bytes = "warning: This table has no ROW_BYTES keyword.  Will use BYTES keyword if one exists.";
    run_table_test([&](TableTest &test) {
        Window *window = test.open({{.rows = 3, .columns = 2, .counts = " COLUMNS = 2\n ROW_BYTES = 4\n"}});
        EXPECT_EQ(test.responder.shown,
                  (Shown{no_rows, "warning: No ROWS or RECORDS keyword found.  Will assume 1 row."}));
        EXPECT_EQ(grid_size(window, table_grid), (GuiCell{1, 2}));
        window = test.open({{.rows = 3, .columns = 2, .counts = " ROWS = 3\n ROW_BYTES = 4\n"}});
        EXPECT_EQ(test.responder.shown, Shown{"warning: This table has no COLUMNS keyword.  Will assume 1 column."});
        EXPECT_EQ(grid_size(window, table_grid), (GuiCell{3, 1}));
        gui_destroy_window(window);
        const size_t before = gui_windows().size();
        test.open({{.rows = 3, .columns = 2, .counts = " ROWS = 3\n COLUMNS = 2\n"}});
        EXPECT_EQ(test.responder.shown, (Shown{no_bytes, "error: Open Table - get ROW_BYTES and BYTES failed"}));
        session().unattended = true;
        test.open({{.rows = 3, .columns = 2, .counts = " ROWS = 3\n COLUMNS = 2\n"}});
        EXPECT_EQ(gui_windows().size(), before);
        window = test.open(
            {{.rows = 300, .columns = 2, .counts = " COLUMNS = 2\n ROW_BYTES = 4\n"}, {.rows = 1, .columns = 1}});
        session().unattended = false;
        EXPECT_EQ(test.responder.shown, Shown{}) << "nobody is there to read it";
        EXPECT_EQ(gui_title(window), "Lumacart - Table - T.LBL") << "the first of two";
    });
}

TEST(TableWindow, ShowsRowsThatTheFileLacksAsMissing) {
    run_table_test([](TableTest &test) {
        Window *window = test.open({{.rows = 150, .columns = 2, .stored_rows = 40}});
        ASSERT_TRUE(window);
        EXPECT_EQ(cell_on_screen(window, table_grid, {39, 1}), std::to_string(2 * 256 + 40));
        EXPECT_EQ(cell_on_screen(window, table_grid, {40, 1}), "(missing)");
        choose_command(window, 2021);
        EXPECT_EQ(cell_on_screen(window, table_grid, {0, 0}), "(missing)");
        EXPECT_EQ(test.responder.shown, Shown{"warning: The data file holds 40 of the 150 rows that the label gives.  "
                                              "The others are shown as missing."});

        test.folder.write("S.DAT", "ab");
        test.folder.write("S.LBL",
                          "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 1\n^TABLE = \"S.DAT\"\nOBJECT = TABLE\n"
                          " INTERCHANGE_FORMAT = ASCII\n ROWS = 3\n ROW_BYTES = 1\n COLUMNS = 2\n"
                          " OBJECT = COLUMN\n  NAME = NOWHERE\n  BYTES = 1\n END_OBJECT\n"
                          " OBJECT = COLUMN\n  NAME = HERE\n  START_BYTE = 1\n  BYTES = 1\n END_OBJECT\n"
                          "END_OBJECT\nEND\n");
        window = open_in_viewer(test.folder.file("S.LBL"));
        ASSERT_TRUE(window);
        EXPECT_EQ(cell_on_screen(window, table_grid, {1, 0}), "*");
        EXPECT_EQ(cell_on_screen(window, table_grid, {2, 0}), "(missing)") << "though the label does not place it";
    });
}

TEST(TableWindow, ReachesTheLastPageOfAHugeFile) {
    run_table_test([](TableTest &test) {
        const std::string label =
            test.label({{.columns = 25, .counts = " ROWS = 2000000000\n COLUMNS = 25\n ROW_BYTES = 50\n"}});
        std::filesystem::resize_file(test.folder.file("A.DAT"), 100'000'000'000);
        Window *window = open_in_viewer(label);
        EXPECT_EQ(test.responder.shown, Shown{"warning: This table contains 20000001 pages.  Will display only "
                                              "trailing digits of this number."});
        Window *dialog = find_window("T.LBL");
        ASSERT_TRUE(window && dialog);
        EXPECT_EQ(gui_text(dialog, row_label), "Page 1 of 1");
        test.responder.shown.clear();
        const int width_of_hundreds = row_heads_width(window, table_grid);
        when_idle([] {
            gui_set_text(find_window("Go to Row"), 1, "2000000000");
            use_control(find_window("Go to Row"), 2);
        });
        choose_command(window, 2025);
        EXPECT_EQ(row_head(window, table_grid, 99), "2000000000");
        EXPECT_GT(row_heads_width(window, table_grid), width_of_hundreds);
        EXPECT_EQ(cell_on_screen(window, table_grid, {99, 24}), "0");
        EXPECT_EQ(test.responder.shown.size(), 2u) << "large counts and numbers, each told once";
        EXPECT_EQ(gui_text(dialog, row_label), "Page 0 of 0");
    });
}

TEST(TableWindow, GivesSideDataHierarchyAndLabel) {
    run_table_test([](TableTest &test) {
        Window *window = test.open({{.rows = 5, .columns = 2}});
        ASSERT_TRUE(choose_command(window, 2020));
        Window *side = find_window("Lumacart - Side Data - T.LBL");
        ASSERT_TRUE(side);
        EXPECT_EQ(gui_paragraph(side, 1, 0), "TABLE NAME:  T.LBL");
        EXPECT_EQ(gui_paragraph(side, 1, 1), "Rows:  5   Columns:  2");
        EXPECT_EQ(gui_paragraph(side, 1, 8), "C1");
        for (const int command : {1047, 1048, 1051}) {
            const size_t before = gui_windows().size();
            EXPECT_TRUE(choose_command(window, command)) << command;
            EXPECT_EQ(gui_windows().size(), before + 1) << command;
        }
        EXPECT_TRUE(find_window("Lumacart - Table Attributes - T.LBL"));
        EXPECT_TRUE(choose_command(window, 1008));
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

TEST(TableList, ListsSeveralTablesAndOpensTheChosenOne) {
    run_table_test([](TableTest &test) {
        Window *list = test.open({{.rows = 3, .columns = 2}, {.class_name = "TIME_SERIES", .rows = 4, .columns = 5}});
        ASSERT_TRUE(list);
        EXPECT_EQ(gui_title(list), "Lumacart - Tables - T.LBL");
        const Shown expected = {"TIME_SERIES", "TB", "4 x 5", "B.DAT"};
        EXPECT_EQ(row_head(list, table_list_grid, 1), "2");
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(cell_on_screen(list, table_list_grid, {1, column}), expected[static_cast<size_t>(column)]);
        press_key(list, GuiKey::Down);
        press_key(list, GuiKey::Enter);
        settle();
        EXPECT_EQ(grid_size(gui_windows().back(), table_grid), (GuiCell{4, 5}));
        double_click_cell(list, table_list_grid, {0, 2});
        settle();
        EXPECT_EQ(grid_size(gui_windows().back(), table_grid), (GuiCell{3, 2}));
        test.folder.write("T.LBL", "RECORD_TYPE = STREAM\nOBJECT = NOTE\nEND_OBJECT\nEND\n");
        use_control(list, 2);
        EXPECT_EQ(test.responder.shown, Shown{"error: Open Object - no valid object"});
        use_control(list, 5);
        EXPECT_FALSE(gui_window_exists(list));
    });
}

TEST(TableList, TheHierarchyLeadsToTheVeryTable) {
    run_table_test([](TableTest &test) {
        test.open({{.rows = 3, .columns = 2}, {.rows = 4, .columns = 5}});
        press_key(gui_windows().back(), GuiKey::Enter);
        settle();
        ASSERT_TRUE(choose_command(gui_windows().back(), 1047));
        when_idle([] { press_key(find_window("Open or Plot"), GuiKey::Enter); });
        Window *hierarchy = gui_windows().back();
        double_click_line(hierarchy, 1, 2);
        settle();
        ASSERT_NE(gui_windows().back(), hierarchy);
        EXPECT_EQ(grid_size(gui_windows().back(), table_grid), (GuiCell{4, 5}));
        EXPECT_EQ(test.responder.shown, Shown{});
    });
}

// A palette is none of the listed kinds; one without columns shows its rows' bytes.
TEST(TableList, OpensALoneObjectWithoutColumns) {
    run_table_test([](TableTest &test) {
        test.folder.write("P.DAT", "\x01\x02\x03\x0a\x0b\x0c");
        test.folder.write("P.LBL",
                          "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 3\n^PALETTE = \"P.DAT\"\nOBJECT = PALETTE\n"
                          " INTERCHANGE_FORMAT = BINARY\n ROWS = 2\n ROW_BYTES = 3\n COLUMNS = 0\n"
                          "END_OBJECT\nEND\n");
        Window *window = open_in_viewer(test.folder.file("P.LBL"));
        EXPECT_EQ(test.responder.shown, Shown{});
        ASSERT_TRUE(window);
        EXPECT_EQ(cell_on_screen(window, table_grid, {1, 0}), "0a0b0c");
        EXPECT_EQ(column_head(window, table_grid, 0), "PALETTE\n") << "what is shown as bytes is of no type";
        test.folder.write("N.LBL",
                          "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 3\n^TABLE = \"NONE.DAT\"\nOBJECT = TABLE\n"
                          " ROWS = 2\n ROW_BYTES = 3\n COLUMNS = 1\nEND_OBJECT\nEND\n");
        EXPECT_FALSE(open_in_viewer(test.folder.file("N.LBL")));
        ASSERT_EQ(test.responder.shown.size(), 1u);
        EXPECT_EQ(test.responder.shown[0].find("error: Open Table - unable to create window\n"), 0u);
    });
}

}  // namespace
