// The menu bars as they are defined.
#include "support/window_help.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace {

constexpr int APPLICATION_MENU = 1, LABEL_MENU = 2, HISTOGRAM_MENU = 201, TABLE_MENU = 220, BROWSER_MENU = 230;
constexpr int PLOT_MENU = 260, SPECTRUM_MENU = 250, CURVE_MENU = 261;
constexpr int part_of_image_heading = 1055;

bool has_command(const std::vector<MenuItem> &items, int number) {
    return std::any_of(items.begin(), items.end(), [number](const MenuItem &item) { return item.command == number; });
}

// No key stands for two items, no item is without a command, no mnemonic twice in a menu.
void expect_distinct(const std::vector<MenuItem> &items) {
    std::map<std::string, std::string> shortcuts;
    std::map<std::string, std::set<std::string>> mnemonics;
    for (const MenuItem &item : items) {
        EXPECT_TRUE(item.is_menu || item.edits_text || item.command != 0) << item.text << " does nothing";
        EXPECT_FALSE(item.mnemonic.empty()) << item.text << " cannot be reached by a letter";
        EXPECT_TRUE(mnemonics[item.menu].insert(item.mnemonic).second)
            << item.mnemonic << " stands twice in " << item.menu << ", for " << item.text;
        if (!item.shortcut.empty()) {
            EXPECT_TRUE(shortcuts.emplace(item.shortcut, item.text).second)
                << item.shortcut << ": " << shortcuts[item.shortcut] << " and " << item.text;
        }
    }
}

TEST(Menus, ReachEveryCommandByDistinctKeys) {
    run_viewer([] {
        const std::multimap<CommandDispatcher, std::vector<MenuItem>> bars = {
            {CommandDispatcher::Application, menu_items(APPLICATION_MENU)},
            {CommandDispatcher::Application, menu_items(TABLE_MENU)},
            {CommandDispatcher::Application, menu_items(BROWSER_MENU)},
            {CommandDispatcher::Label, menu_items(LABEL_MENU)},
            {CommandDispatcher::Label, menu_items(PLOT_MENU)},
            {CommandDispatcher::Label, menu_items(SPECTRUM_MENU)},
            {CommandDispatcher::Label, menu_items(CURVE_MENU)}};
        for (const auto &[dispatcher, items] : bars) {
            ASSERT_FALSE(items.empty());
            expect_distinct(items);
            for (const MenuItem &item : items) {
                const auto fits = [&, wanted = dispatcher](const CommandRow &row) {
                    return row.number == item.command && row.dispatcher == wanted;
                };
                EXPECT_TRUE(item.is_menu || item.edits_text || std::ranges::any_of(lumacart_commands(), fits))
                    << item.text << ": " << item.command << " is in no row of the command table";
            }
        }
        const auto in_a_menu = [&](CommandDispatcher dispatcher, int number) {
            const auto [first, last] = bars.equal_range(dispatcher);
            return std::any_of(first, last, [number](const auto &bar) { return has_command(bar.second, number); });
        };
        for (const CommandRow &row : lumacart_commands())
            EXPECT_TRUE(in_a_menu(row.dispatcher, row.number)) << row.number << " is in no menu";
        EXPECT_TRUE(in_a_menu(CommandDispatcher::Application, part_of_image_heading));
        expect_distinct(menu_items(HISTOGRAM_MENU));
    });
}

TEST(Menus, FollowTheDesktopsKeys) {
    run_viewer([] {
        const std::map<int, std::string> keys = {
            {1002, "Ctrl+O"}, {1007, "Ctrl+O"}, {1003, "Ctrl+W"}, {1008, "Ctrl+W"},       {1011, "Ctrl+Q"},
            {1026, "Ctrl+Q"}, {1023, "Ctrl+Z"}, {1004, "Ctrl+S"}, {1005, "Ctrl+Shift+S"}, {2090, "F1"}};
        for (const int bar : {APPLICATION_MENU, LABEL_MENU, TABLE_MENU, PLOT_MENU, SPECTRUM_MENU, CURVE_MENU}) {
            for (const MenuItem &item : menu_items(bar)) {
                const auto key = keys.find(item.command);
                EXPECT_TRUE(key == keys.end() || key->second == item.shortcut) << item.text << ": " << item.shortcut;
            }
        }
    });
}

}  // namespace
