// Drives the help window, and reads menu bars as the user sees them.
#pragma once

#include "gui/gui.h"

#include <string>
#include <vector>

void press_help_key(Window *window);
void press_help_key_in_box();  // the message box shown

// Title of the page that the help window shows; empty when it is not shown.
std::string help_page_shown();
// Presses the button of that name as the window system would: nothing happens while a dialog blocks the window.
void press_help_button(const char *name);
// Chooses a line of the contents or looks a word up in the index, by keys; false when there is no such line.
bool choose_help_contents(const std::string &title);
bool look_up_in_help(const std::string &word);
// Goes to the first link of the page and follows it, by keys.
void follow_first_help_link();
void go_to_help_url(const std::string &url);
// What is marked in the page after a search for `text`.
std::string find_in_help(const std::string &text);
void close_help_window_by_key();

struct MenuItem {
    std::string menu;      // texts of the menus on the way, as "View/Part of the Image"; empty for a menu of the bar
    std::string text;      // without the mark of the mnemonic
    std::string mnemonic;  // upper-case letter, or empty
    std::string shortcut;
    int command = 0;  // 0: none
    bool is_menu = false;
    bool edits_text = false;  // undo, copy and the like, which the text control itself does
};
// The items and menus of menu bar `resource`, separators excluded; empty when there is no such menu bar.
std::vector<MenuItem> menu_items(int resource);
