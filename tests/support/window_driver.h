// Drives real windows on the offscreen platform: real events in, pixels and state out.
#pragma once

#include "gui/gui.h"

#include <functional>
#include <string>
#include <vector>

// Runs `body` in the event loop of an application with this task window, then quits. Returns gui_run's answer.
int run_gui_test(int task_resource, EventHandler task_handler, std::function<void()> body);

// The same with a window of `resource`, which `handler` serves.
void run_window_test(int resource, EventHandler handler, const std::function<void(Window *)> &body);

// Handles what has been posted: paint, size, deferred destruction.
void settle();
// The same for as long as `condition` does not hold, at most five seconds; returns whether it held.
bool settle_until(const std::function<bool()> &condition);

// The newest window with this title; null when there is none.
Window *find_window(const std::string &title);
std::vector<Window *> find_windows(const std::string &title);  // all, oldest first

// Positions are in the client area.
void mouse_move(Window *window, GuiPoint position);
void mouse_press(Window *window, GuiPoint position, int button = 1, unsigned modifiers = 0);
void mouse_release(Window *window, GuiPoint position, int button = 1, unsigned modifiers = 0);
void mouse_click(Window *window, GuiPoint position, int button = 1, unsigned modifiers = 0);
void mouse_double_click(Window *window, GuiPoint position);
void mouse_leave(Window *window);
// 120 units of `angle` are one notch, positive away from the user.
void turn_wheel(Window *window, GuiPoint position, int angle, unsigned modifiers = 0);
void press_key(Window *window, GuiKey key, unsigned modifiers = 0);
void press_character(Window *window, char character, unsigned modifiers = 0);
void drop_files(Window *window, const std::vector<std::string> &files);
// The same on a multi-line text, from where the window must get them.
void drop_files_on_control(Window *window, int control, const std::vector<std::string> &files);

// False when the window has no such item or it is disabled.
bool choose_command(Window *window, int command);
bool choose_item(Window *window, const std::string &text);  // by its text, as an item without a number
bool command_checked(const Window *window, int command);
bool use_control(Window *window, int control);
void type_text(Window *window, int control, const std::string &text);  // by keys, in place of a line's text
void click_line(Window *window, int list, int line);                   // scrolled into view
void double_click_line(Window *window, int list, int line);            // scrolled into view
// The columns, from the left edge of a list, at which something is drawn in this line.
std::vector<int> marked_columns(Window *window, int list, int line);

// Clicks on cells and heads of a grid, scrolled into view, and what stands there on the screen.
void click_cell(Window *window, int grid, GuiCell cell, unsigned modifiers = 0);
void double_click_cell(Window *window, int grid, GuiCell cell);
void click_column_head(Window *window, int grid, int column);
void click_row_head(Window *window, int grid, int row);
std::string cell_on_screen(Window *window, int grid, GuiCell cell);
std::string column_head(Window *window, int grid, int column);
std::string row_head(Window *window, int grid, int row);
GuiCell grid_size(Window *window, int grid);  // rows and columns
bool cell_is_at_the_right(Window *window, int grid, GuiCell cell);
int row_heads_width(Window *window, int grid);
int column_width(Window *window, int grid, int column);
void check_grid_model(Window *window, int grid);  // by the toolkit's own tester, as long as the grid exists
std::string clipboard_text();
std::string accessible_cell(Window *window, int grid, GuiCell cell);

void close_window(Window *window);
void resize_window(Window *window, int width, int height);
bool window_shown(const Window *window);
std::string title_on_screen(const Window *window);

// Repaints this part of the client area, no more, and returns its pixels row by row as 0xRRGGBB.
std::vector<unsigned> shown_pixels(Window *window, GuiRect area);
unsigned shown_pixel(Window *window, int x, int y);
// What stands on the screen now, and an ordinary repaint of a part of it.
std::vector<unsigned> screenshot(Window *window);
void repaint_part(Window *window, GuiRect area);
unsigned document_background(const Window *window);
bool has_scroll_bars(const Window *window);
GuiRect place_on_screen(const Window *window);
bool pointer_is_busy();

// Asks the application to quit, as the session does.
void ask_to_quit();

// Calls `action` from the event loop, which is the one that a box or dialog runs when one is shown next.
void when_idle(std::function<void()> action);
// The text of the message box that is shown, and a press on one of its buttons; empty and false when there is none.
std::string shown_box_text();
bool press_box_button(const std::string &text);
bool box_is_shown();  // or a dialog
// Escape in the box or dialog that is shown; false when there is none.
bool close_box();
// Types a name into the file dialog that is shown and accepts it; false when there is none.
bool answer_file_dialog(const std::string &name);

// Answers from a script and records what was shown. A question or dialog that the script does not foresee is closed
// without an answer and recorded too.
class ScriptedResponder final : public Responder {
  public:
    ScriptedResponder() : previous_(gui_set_responder(this)) {}
    ~ScriptedResponder() override { gui_set_responder(previous_); }

    std::vector<std::string> shown;        // "error: text", "question: text [Cancel|Replace]", "open: prompt" ...
    std::vector<int> answers;              // to the questions to come
    std::vector<FileSpec> files;           // for the file dialogs to come
    std::vector<Colour> colours;           // for the colour dialogs to come
    std::vector<FileRequest> requests;     // of the file dialogs so far
    std::vector<std::string> directories;  // for the directory dialogs to come

    void message(NoticeKind kind, const std::string &text) override;
    int question(const std::string &text, const std::vector<std::string> &buttons) override;
    FileAnswer open_file(const FileRequest &request, FileSpec *chosen) override;
    FileAnswer save_file(const FileRequest &request, FileSpec *chosen) override;
    bool choose_colour(const std::string &prompt, Colour *colour) override;
    FileAnswer choose_directory(const std::string &prompt, std::string *chosen) override;

  private:
    template <typename T>
    static bool take(std::vector<T> *from, T *answer);
    FileAnswer next_file(const char *what, const FileRequest &request, FileSpec *chosen);

    Responder *const previous_;
};
