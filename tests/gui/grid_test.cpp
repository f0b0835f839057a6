// Grids of cells: keys, clicks, selections, the clipboard, and very many rows.
#include "support/window_driver.h"

#include <gtest/gtest.h>

namespace {

constexpr int grid = 1;
std::vector<std::string> uses;

long record(Window *window, const Event &event) {
    if (event.type == EventType::Control)
        uses.push_back((event.use == ControlUse::Activated ? "activated " : "selected ") +
                       std::to_string(gui_grid_current(window, event.number).row));
    return 0;
}

std::string row_and_column(int64_t row, int column) {
    return std::to_string(row) + "/" + std::to_string(column);
}

GuiGrid numbered_grid(int64_t rows, int columns) {
    GuiGrid numbered;
    numbered.rows = rows;
    for (int column = 0; column < columns; ++column)
        numbered.columns.push_back({{'C', static_cast<char>('A' + column)}, {"KM", "REAL"}, column % 2 == 1});
    numbered.text = row_and_column;
    return numbered;
}

void run_grid_test(GuiGrid shown, const std::function<void(Window *)> &body) {
    run_window_test(9008, record, [&](Window *window) {
        ASSERT_TRUE(gui_set_grid(window, grid, std::move(shown)));
        gui_focus_control(window, grid);
        uses.clear();
        body(window);
    });
}

TEST(Grid, KeysAndClicksMoveAndSelect) {
    run_grid_test({}, [](Window *window) {
        check_grid_model(window, grid);
        ASSERT_TRUE(gui_set_grid(window, grid, numbered_grid(8, 4)));
        EXPECT_EQ(gui_grid_current(window, grid), GuiCell());
        EXPECT_EQ(gui_grid_selection(window, grid), GuiCells());
        gui_set_grid_current(window, grid, {1, 1});
        EXPECT_EQ(uses, std::vector<std::string>()) << "what the program does is no event";
        press_key(window, GuiKey::Down);
        press_key(window, GuiKey::Right, GUI_SHIFT);
        press_key(window, GuiKey::Down, GUI_SHIFT);
        EXPECT_EQ(gui_grid_selection(window, grid), (GuiCells{{2, 1}, {3, 2}}));
        press_key(window, GuiKey::Enter);
        double_click_cell(window, grid, {5, 0});
        EXPECT_EQ(uses, (std::vector<std::string>{"selected 2", "selected 2", "selected 3", "activated 3", "selected 5",
                                                  "activated 5"}));
        click_cell(window, grid, {6, 2}, GUI_SHIFT);
        EXPECT_EQ(gui_grid_selection(window, grid), (GuiCells{{5, 0}, {6, 2}}));
        click_column_head(window, grid, 2);
        EXPECT_EQ(gui_grid_selection(window, grid), (GuiCells{{0, 2}, {7, 2}}));
        click_row_head(window, grid, 3);
        EXPECT_EQ(gui_grid_selection(window, grid), (GuiCells{{3, 0}, {3, 3}}));
        press_character(window, 'a', GUI_CONTROL);
        EXPECT_EQ(gui_grid_selection(window, grid), (GuiCells{{0, 0}, {7, 3}}));
        gui_set_grid_current(window, grid, {70, 0});
        EXPECT_EQ(gui_grid_current(window, grid), GuiCell()) << "no such cell";
        ASSERT_TRUE(gui_set_grid(window, grid, {}));
        press_key(window, GuiKey::Enter);
        press_key(window, GuiKey::Down);
        EXPECT_EQ(grid_size(window, grid), (GuiCell{0, 0}));
        EXPECT_FALSE(gui_set_grid(window, 2, {}));
    });
}

TEST(Grid, CopiesTheSelectionWithTabs) {
    GuiGrid odd = numbered_grid(3, 3);
    odd.columns[1].name = "A\tB";
    odd.text = [](int64_t row, int column) {
        return row == 1 && column == 1 ? std::string("\"50%s\"\t\n%n") : row_and_column(row, column);
    };
    run_grid_test(std::move(odd), [](Window *window) {
        press_character(window, 'a', GUI_CONTROL);
        press_character(window, 'c', GUI_CONTROL);
        EXPECT_EQ(clipboard_text(), "0/0\t0/1\t0/2\n1/0\t\"\"\"50%s\"\"\t\n%n\"\t1/2\n2/0\t2/1\t2/2\n");
        EXPECT_EQ(cell_on_screen(window, grid, {1, 1}), "\"50%s\"  %n") << "in one line";
        click_column_head(window, grid, 1);
        press_character(window, 'c', GUI_CONTROL | GUI_SHIFT);
        EXPECT_EQ(clipboard_text().find("\"A\tB\"\n0/1\n"), 0u);
    });
}

TEST(Grid, HeadsTellNamesUnitsAndNumbers) {
    GuiGrid shown = numbered_grid(2, 2);
    shown.first_row = 3'000'000'000;
    shown.columns[0].name = std::string("N%s\xff\0\r", 6) + std::string(5000, 'x');
    run_grid_test(std::move(shown), [](Window *window) {
        EXPECT_EQ(column_head(window, grid, 1), "CB\nKM\nREAL");
        EXPECT_EQ(row_head(window, grid, 1), "3000000001");
        EXPECT_FALSE(cell_is_at_the_right(window, grid, {0, 0}));
        EXPECT_TRUE(cell_is_at_the_right(window, grid, {0, 1}));
        EXPECT_EQ(accessible_cell(window, grid, {1, 1}), "1/1");
        EXPECT_LT(column_width(window, grid, 0), 1000) << "a width that can be scrolled over";
        EXPECT_LT(column_width(window, grid, 1), column_width(window, grid, 0));
    });
}

TEST(Grid, ShowsWhatRowsItCanOfVeryMany) {
    run_grid_test(numbered_grid(int64_t{1} << 40, 40), [](Window *window) {
        EXPECT_EQ(grid_size(window, grid), (GuiCell{gui_grid_rows, 40}));
        gui_set_grid_current(window, grid, {gui_grid_rows - 1, 39});
        ScriptedResponder responder;
        press_character(window, 'a', GUI_CONTROL);
        press_character(window, 'c', GUI_CONTROL);
        EXPECT_EQ(responder.shown.at(0).find("warning: 400000000 cells are too many"), 0u);
        click_cell(window, grid, {gui_grid_rows - 1, 39});
        press_character(window, 'c', GUI_CONTROL);
        EXPECT_EQ(clipboard_text(), "9999999/39\n");
    });
}

}  // namespace
