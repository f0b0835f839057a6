// Plots of two columns: the dialog, the simple window and the window of curves.
#include "support/scratch.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"
#include "tables/tables.h"

#include <gtest/gtest.h>

namespace {

using Shown = std::vector<std::string>;
constexpr int column_list = 1, close_button = 2, plot_button = 3, x_label = 4, y_label = 5, first_field = 6,
              last_field = 7, detailed_button = 8;
constexpr int read_out = 2;

// Columns as they are listed.
enum Column { T, V, BINARY, TEXT, MINUS, BITS, REAL, NAMELESS };

// Four rows of 24 bytes.
std::string write_table(const ScratchFolder &folder, int stored_rows = 4) {
    struct Described {
        const char *name, *type;
        int start, bytes;
        const char *more;
    };
    constexpr Described columns[] = {{"\"TIME\"", "ASCII_REAL", 1, 4, "  UNIT = \"s\"\n"},
                                     {"A_NAME_OF_MORE_THAN_THIRTY_CHARACTERS", "ASCII_INTEGER", 5, 4, ""},
                                     {"BINARY", "MSB_INTEGER", 9, 2, "  MISSING_CONSTANT = -1\n"},
                                     {"TEXT", "CHARACTER", 11, 4, ""},
                                     {"MINUS", "CHARACTER", 15, 4, ""},
                                     {"BITS", "MSB_BIT_STRING", 9, 2, ""},
                                     {"REAL", "IEEE_REAL", 19, 4, ""},
                                     {"OTHER", "VAX_REAL", 19, 4, ""}};
    std::string label =
        "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 24\n^TABLE = \"T.DAT\"\nOBJECT = TABLE\n NAME = T\n"
        " INTERCHANGE_FORMAT = BINARY\n ROWS = 4\n COLUMNS = 8\n ROW_BYTES = 24\n";
    for (const Described &column : columns)
        label += std::string(" OBJECT = COLUMN\n  NAME = ") + column.name + "\n  DATA_TYPE = " + column.type +
                 "\n  START_BYTE = " + std::to_string(column.start) + "\n  BYTES = " + std::to_string(column.bytes) +
                 "\n" + column.more + " END_OBJECT = COLUMN\n";
    const std::string rows[] = {" 0.0   5", " 1.0  -5", " 2.0  15", " 4.0   5"};
    const std::string counts[] = {{"\0\7", 2}, {"\377\377", 2}, {"\0\11", 2}, {"\1\0", 2}};
    std::string bytes;
    for (size_t i = 0; i < static_cast<size_t>(stored_rows); ++i)
        bytes += rows[i] + counts[i] + " .5  -5 " + std::string("\x3f\x80\0\0  ", 6);
    folder.write("T.DAT", bytes);
    return folder.write("T.LBL", label + "END_OBJECT = TABLE\nEND\n");
}

struct PlotTest {
    const ScratchFolder folder;
    const SilentReports reports;
    ScriptedResponder responder;
    Window *dialog = nullptr;

    void open(int stored_rows = 4) {
        Window *table = open_in_viewer(write_table(folder, stored_rows));
        ASSERT_TRUE(table);
        ASSERT_TRUE(choose_command(table, 2060));
        dialog = find_window("Plot - T.LBL - T");
        ASSERT_TRUE(dialog);
        settle();
    }
    void choose(int x, int y, const std::string &first, const std::string &last) {
        click_line(dialog, column_list, x);
        click_line(dialog, column_list, y);
        type_text(dialog, first_field, first);
        type_text(dialog, last_field, last);
    }
    // The window that the button opens; null when none comes. What was shown is that of this press alone.
    Window *press(int button) {
        responder.shown.clear();
        const size_t before = gui_windows().size();
        use_control(dialog, button);
        settle();
        return gui_windows().size() > before ? gui_windows().back() : nullptr;
    }
};

void run_plot_test(const std::function<void(PlotTest &)> &body) {
    run_viewer([&] {
        PlotTest test;
        body(test);
    });
}

TEST(PlotDialog, PicksAxesByTurnsAndChecksThem) {
    run_plot_test([](PlotTest &test) {
        test.open();
        EXPECT_EQ(gui_text(test.dialog, last_field), "4");
        EXPECT_EQ(gui_list_line(test.dialog, column_list, T), "TIME");
        const std::string same =
            "note: The column selected for the X Axis must not be the same one selected for the Y Axis";
        EXPECT_FALSE(test.press(plot_button));
        EXPECT_EQ(test.responder.shown, Shown{same}) << "nothing is chosen";
        click_line(test.dialog, column_list, T);
        EXPECT_FALSE(test.press(plot_button));
        EXPECT_EQ(test.responder.shown, Shown{"note: Select a column for the Y Axis too"});
        click_line(test.dialog, column_list, T);
        EXPECT_FALSE(test.press(plot_button));
        EXPECT_EQ(test.responder.shown, Shown{same}) << "the same line pressed again";

        gui_focus_control(test.dialog, column_list);
        press_key(test.dialog, GuiKey::Down);
        press_key(test.dialog, GuiKey::Up);
        EXPECT_EQ(gui_text(test.dialog, x_label), "X-Axis is: TIME") << "moving picks nothing";
        press_key(test.dialog, GuiKey::Down);
        press_key(test.dialog, GuiKey::Enter);
        EXPECT_EQ(gui_text(test.dialog, x_label), "X-Axis is: A_NAME_OF_MORE_THAN_THIRTY_CHA");
        press_key(test.dialog, GuiKey::Down);
        press_character(test.dialog, ' ');
        EXPECT_EQ(gui_text(test.dialog, y_label), "Y-Axis is: BINARY");

        const struct {
            const char *first, *last, *note;
        } rows[] = {{"0", "4", "The beginning row must be at least one"},
                    {"x", "4", "The beginning row must be at least one"},
                    {"3", "2", "The beginning row number may not be less than the starting row number"},
                    {"1", "5", "The last row must not be beyond row 4, the table's last"}};
        for (const auto &[first, last, note] : rows) {
            test.choose(T, V, first, last);
            EXPECT_FALSE(test.press(plot_button));
            EXPECT_EQ(test.responder.shown, Shown{std::string("note: ") + note});
        }
        use_control(test.dialog, close_button);
        settle();
        EXPECT_FALSE(gui_window_exists(test.dialog));
    });
}

TEST(PlotWindow, DrawsTheLineInItsFrame) {
    run_plot_test([](PlotTest &test) {
        test.open();
        test.choose(T, V, "1", "4");
        Window *plot = test.press(plot_button);
        ASSERT_TRUE(plot);
        EXPECT_EQ(test.responder.shown, Shown{});
        EXPECT_EQ(gui_title(plot), "Lumacart - Plot - T.LBL");
        const unsigned ground = document_background(plot);
        const GuiPoint drawn[] = {{100, 50}, {500, 250}, {300, 50}, {500, 150}, {199, 249}, {250, 150}};
        for (const GuiPoint &place : drawn)
            EXPECT_NE(shown_pixel(plot, static_cast<int>(place.x), static_cast<int>(place.y)), ground) << place.x;
        for (const GuiPoint &place : {GuiPoint{150, 100}, {400, 200}, {501, 150}, {300, 251}})
            EXPECT_EQ(shown_pixel(plot, static_cast<int>(place.x), static_cast<int>(place.y)), ground) << place.x;

        gui_destroy_window(test.dialog);
        ASSERT_TRUE(choose_command(plot, 2061)) << "the window outlives the dialog";
        EXPECT_TRUE(find_window("Lumacart - Detailed Plot - T.LBL"));
    });
}

TEST(PlotWindow, RefusesWhatItCannotConvert) {
    run_plot_test([](PlotTest &test) {
        const std::string incomplete = "note: Plot conversion code for ";
        const std::string bad_x = "note: X axis data format not valid for plotting";
        const std::string bad_y = "note: Y axis data format not valid for plotting";
        const struct {
            int x, y;
            Shown shown;
        } cases[] = {
            {BINARY, T, {incomplete + "MSB_INTEGER is incomplete", bad_x}},
            {T, BITS, {incomplete + "MSB_BIT_INTEGER is incomplete", bad_y}},
            {T, MINUS, {bad_y}},
            {NAMELESS,
             REAL,
             {incomplete + "this format is incomplete", bad_x, incomplete + "IEEE_REAL is incomplete", bad_y}},
            {T, TEXT, {}},
        };
        test.open();
        for (const auto &[x, y, shown] : cases) {
            test.choose(x, y, "1", "4");
            EXPECT_EQ(test.press(plot_button) != nullptr, shown.empty()) << x << " " << y;
            EXPECT_EQ(test.responder.shown, shown) << x << " " << y;
        }
        gui_destroy_window(test.dialog);
        test.open(2);
        test.choose(T, V, "1", "4");
        EXPECT_TRUE(test.press(plot_button));
        EXPECT_EQ(test.responder.shown,
                  Shown{"warning: The data file holds 2 of the 4 rows chosen.  The others are not plotted."});
        test.choose(T, V, "3", "4");
        EXPECT_FALSE(test.press(plot_button));
        EXPECT_EQ(test.responder.shown, Shown{"error: OaReadObject failed!\n"});
    });
}

TEST(CurveWindow, ShowsAnyNumbersReadsThemOutAndSavesThem) {
    run_plot_test([](PlotTest &test) {
        test.open();
        test.choose(T, BITS, "1", "4");
        EXPECT_FALSE(test.press(detailed_button));
        EXPECT_EQ(test.responder.shown, Shown{"note: The fields of column BITS are no numbers."});
        test.choose(T, BINARY, "1", "4");
        Window *curves = test.press(detailed_button);
        ASSERT_TRUE(curves);
        const auto told = [&](GuiKey key) {
            press_key(curves, key);
            return gui_text(curves, read_out);
        };
        EXPECT_EQ(told(GuiKey::Right), "TIME [s] = 0   BINARY = 7   (point 1 of 4)");
        EXPECT_EQ(told(GuiKey::Right), "TIME [s] = 2   BINARY = 9   (point 3 of 4)") << "the second is missing";
        EXPECT_EQ(told(GuiKey::End), "TIME [s] = 4   BINARY = 256   (point 4 of 4)");
        EXPECT_EQ(told(GuiKey::Right), "TIME [s] = 4   BINARY = 256   (point 4 of 4)");

        EXPECT_TRUE(command_checked(curves, 2062));
        EXPECT_TRUE(choose_command(curves, 2062));
        EXPECT_FALSE(command_checked(curves, 2062));
        EXPECT_TRUE(command_checked(curves, 2063)) << "never nothing";
        const std::vector<unsigned> with_grid = screenshot(curves);
        EXPECT_TRUE(choose_command(curves, 2064));
        EXPECT_NE(screenshot(curves), with_grid);

        const struct {
            int command;
            const char *name, *start;
        } files[] = {
            {2065, "T.png", "\x89PNG"}, {2066, "T.svg", "<?xml"}, {2067, "T.csv", "TIME [s],BINARY\n0,7\n1,\n"}};
        for (const auto &[command, name, start] : files) {
            test.folder.write(name, "before");
            for (const int replaces : {0, 1}) {
                test.responder.files = {{test.folder.path().string(), name}};
                test.responder.answers = {replaces};
                ASSERT_TRUE(choose_command(curves, command));
                EXPECT_TRUE(read_file(test.folder.path() / name).starts_with(replaces ? start : "before")) << name;
            }
            EXPECT_EQ(test.responder.requests.back().proposed.name, name);
        }
    });
}

}  // namespace
