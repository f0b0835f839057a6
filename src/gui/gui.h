// The windowing layer. The rest of the program sees only this header: opaque windows, timers and canvases, a plain
// event record, free functions. Everything else is inside the folder, which alone knows the toolkit.
//
// Windows, dialogs and menu bars are Qt Designer files, numbered, compiled in as ":/windows/NUMBER.ui" and
// ":/menus/NUMBER.ui". In such a file
//   - a window names its menu bar by a dynamic property `menuBar` (a number),
//   - a control has a dynamic property `number`,
//   - a menu item has a dynamic property `command` (as may a menu, whose heading it then numbers), or one `edit`, by
//     which the window's grid does it: copy, copyWithNames or selectAll; or, without a grid, its multi-line text: undo,
//     redo, cut, copy, paste or selectAll,
//   - a window or dialog names its page of the help book by a dynamic property `helpPage`,
//   - the drawing area is a widget of class ClientArea; the dynamic property `pictures` gives it a ground on which
//     pictures stand out, instead of that of documents.
// Lengths are logical pixels. Texts are UTF-8; file names are bytes as the system has them.
#pragma once

#include "base/notice.h"
#include "base/pixel_image.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct Window;
struct Timer;
struct Canvas;
struct ChildProcess;

struct GuiPoint {
    double x = 0;
    double y = 0;
};
struct GuiSize {
    int width = 0;
    int height = 0;
};
struct GuiRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

// --- Events -------------------------------------------------------------------------------------------------------

enum class EventType {
    Create,   // before the window is first shown; returning other than 0 refuses it (Destroy still follows)
    Destroy,  // the last event; the window's data may be freed
    Close,    // the user asks to close; the window stays unless the handler destroys it, a dialog goes unless the
              // handler returns other than 0
    Size,     // the client area has another size
    Update,   // draw `area` on `canvas`
    MouseDown,
    MouseUp,
    MouseDouble,
    MouseMove,  // over the client area, whether or not a button is down
    MouseLeave,
    Wheel,     // with Control held; without, the client area scrolls
    Key,       // that no menu item and no control takes; returning 0 lets the client area scroll by it (arrows, pages,
               // Home, End) and a dialog close (Escape) or press its default button (Enter)
    FocusIn,   // the window became the active one
    FocusOut,  // or another did
    Scroll,    // the client area was scrolled to another position
    Control,   // a button was pressed, a line of text edited or entered, a line of a list or a cell of a grid selected
               // or activated (`use`)
    FieldFocus,  // a line of text got or lost the keyboard
    Command,     // a menu item was chosen
    Timer,
    ProcessEnded,  // a child process that the window started
    FileDrop,      // the task window alone: files were dropped on it or on a document window
    Quit,          // the task window alone: the session ends (`query`: may it?); other than 0 refuses a query
};
// All other events come between Create and Destroy. In any event a handler may destroy any window, its own too.

enum GuiModifiers : unsigned { GUI_SHIFT = 1, GUI_CONTROL = 2, GUI_ALT = 4 };

// Tab comes only from the client area; answering 0 lets it move on to the next control.
enum class GuiKey { Character, Left, Right, Up, Down, PageUp, PageDown, Home, End, Enter, Escape, Delete, Tab, Other };

// What the user did to a control. Lists and grids alone are selected; activating is a double click or Enter, of a line
// of text Enter, but in a dialog that presses the default button.
enum class ControlUse { Changed, Selected, Activated };

struct Event {
    EventType type = EventType::Create;
    GuiPoint position;       // mouse and wheel: in the client area
    int button = 0;          // mouse: 1 left, 2 middle, 3 right
    unsigned modifiers = 0;  // GuiModifiers
    int wheel_steps = 0;     // notches, positive away from the user
    GuiKey key = GuiKey::Other;
    char32_t character = 0;  // of GuiKey::Character
    int number = 0;          // of the control, field or command
    ControlUse use = ControlUse::Changed;
    Canvas *canvas = nullptr;  // Update; valid during the event
    GuiRect area;              // Update: the part to draw, in the client area
    Timer *timer = nullptr;
    ChildProcess *process = nullptr;  // ProcessEnded; gone after the event
    int status = 0;                   // its exit status; -1 when a signal ended it
    std::vector<std::string> files;
    bool query = false;
};

// Returns 0 unless the event's comment says otherwise.
using EventHandler = long (*)(Window *window, const Event &event);

// --- Application --------------------------------------------------------------------------------------------------

// Runs `program` with the process's arguments, without the options that the toolkit takes (-platform, -style ...), and
// with one more of the platform's own behind them.
int gui_main(int argc, char **argv, int (*program)(int argc, char **argv));

// Makes the application with its task window (definition `resource`) and runs the event loop until gui_quit. Returns
// the process's exit status; 1 after a message on standard error when there is no display or no such definition, or
// when the handler refused.
int gui_run(const char *application_name, int resource, EventHandler task_handler);

// Destroys all windows, the task window last, and ends the event loop. Destroying the task window does the same.
void gui_quit();

Window *gui_task_window();

// Severity 3 is a remark; a graver message that the handler answers with 0 is shown by the toolkit itself.
struct ToolkitError {
    int severity = 1;
    uint32_t identifier = 0;  // bits 20-23 major, bits 16-19 minor; (5, 1) is memory
    std::string text;
};
using ToolkitErrorHandler = int (*)(const ToolkitError &message);
void gui_set_error_handler(ToolkitErrorHandler handler);

// The folder that the running program's file is in; only while the application runs.
std::string gui_program_directory();
// Name and version of the toolkit that the program runs with.
std::string gui_toolkit_version();

// Puts a text on the clipboard.
void gui_copy_text(const std::string &text);

// While one exists the pointer shows that the program is busy.
class BusyCursor {
  public:
    BusyCursor();
    ~BusyCursor();
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;
};

// Tells how far long work is in a box with a Cancel button, which comes once the work proves to be long; until then the
// pointer shows that the program is busy. While the box is there events are handled, but the user reaches no window.
class Progress {
  public:
    Progress(Window *owner, const std::string &text);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // To be called now and then with the part that is done, from 0 to 1. False from when the user cancelled, the owner
    // went or the application ends.
    bool go_on(double part);

  private:
    struct Box;
    std::unique_ptr<Box> box_;
};

// --- Windows ------------------------------------------------------------------------------------------------------

// Whether a window or dialog definition of that number was compiled in.
bool gui_has_definition(int resource);

// Makes a window from a definition and shows it after its Create event. `owner` may be null; destroying an owner
// destroys what it owns first. Null when there is no such definition, the handler refused, or the program is ending.
Window *gui_create_window(int resource, Window *owner, EventHandler handler, void *data);
// Sends Destroy and ends the window, at once. Nothing happens to a window that does not exist.
void gui_destroy_window(Window *window);
bool gui_window_exists(const Window *window);
// All document windows (task window and dialogs excluded), oldest first.
std::vector<Window *> gui_windows();

void *gui_window_data(const Window *window);
void gui_set_window_data(Window *window, void *data);
std::string gui_title(const Window *window);
void gui_set_title(Window *window, const std::string &title);
void gui_raise(Window *window);
void gui_maximize(Window *window);
GuiSize gui_client_size(const Window *window);
GuiSize gui_client_size_without_bars(const Window *window);  // what it were if nothing had to be scrolled
// Gives the client area this size, scroll bars excluded, or as much of it as the screen has less 64 pixels. The bars
// that the content needs then are added to the window, so set the content's size first.
void gui_set_client_size(Window *window, GuiSize size);
GuiRect gui_screen_place(const Window *window);  // of the screen that the window is on, without task bars
// Outer frame on the screen. Some desktops do not tell (0, 0) and place windows as they like.
GuiRect gui_window_place(const Window *window);
// Puts the top left corner of the frame there and gives the window, frame excluded, this size, all as far as the
// screen has room for it. In the Create event, before the frame is known, too.
void gui_place_window(Window *window, GuiRect place);
GuiRect gui_own_place(const Window *window);  // that puts another window where this one is
void gui_invalidate(Window *window);          // asks for an Update of the whole client area

// Runs a modal dialog from a definition until gui_end_dialog or its closing (0). -1 when there is no such definition or
// the handler refused it.
int gui_run_dialog(int resource, Window *owner, EventHandler handler, void *data);
void gui_end_dialog(Window *dialog, int result);

// --- Scrolling the client area ------------------------------------------------------------------------------------

// The client area shows part of a content of this size, at the top left when it is smaller. Scroll bars, arrow keys and
// the lines of the wheel move it by `step`, page keys by the client area.
void gui_set_content_size(Window *window, GuiSize content, int step);
GuiPoint gui_scroll_position(const Window *window);     // content pixel at the client area's top left
void gui_scroll_to(Window *window, GuiPoint position);  // as far as the content reaches; sends Scroll when it moved

// --- Controls and menu items --------------------------------------------------------------------------------------
// By number; a number that the window does not have is ignored (empty, false).

bool gui_has_control(const Window *window, int control);
std::string gui_text(const Window *window, int control);
void gui_set_text(Window *window, int control, const std::string &text);
void gui_show_control(Window *window, int control, bool shown);
bool gui_control_shown(const Window *window, int control);
void gui_move_control(Window *window, int control, GuiRect place);  // in the client area
GuiSize gui_wanted_size(const Window *window, int control);         // that its present text needs
void gui_enable_control(Window *window, int control, bool enabled);
void gui_focus_control(Window *window, int control);
void gui_check_control(Window *window, int control, bool checked);  // a check box or radio button; sends no event
bool gui_control_checked(const Window *window, int control);

// A QListView: lines of text counted from 0, one of which may be selected. It finds lines by any part of their text as
// the user types. The dynamic property `narrowBlanks` shows runs of blanks half as wide as digits. With the dynamic
// property `selectsByPress` lines are selected by a press on them, also again, or by Enter or Space, not by moving.
bool gui_set_list(Window *window, int control, std::vector<std::string> lines);  // false: no such control
std::string gui_list_line(const Window *window, int control, int line);
int gui_selected_line(const Window *window, int control);     // -1 when there is none
void gui_select_line(Window *window, int control, int line);  // and brings it into view; sends no event

// A QTableView: rows and columns counted from 0, fed by a callback that is asked for what is on the screen only, and to
// copy. Numbers stand at the right, texts at the left; bytes that are not text are shown as signs. Columns are as wide
// as their heads and first rows need, up to a bound, and the user may change that. One rectangle of cells can be
// selected; Ctrl+A selects all, Ctrl+C copies as lines of cells with tabs between them, Ctrl+Shift+C with a line of the
// names first.
struct GuiGridColumn {
    std::string name;
    std::vector<std::string> remarks;  // further lines of the head: unit, type
    bool is_number = false;
};
struct GuiGrid {
    int64_t rows = 0;
    int64_t first_row = 1;  // the number that the head of row 0 shows
    std::vector<GuiGridColumn> columns;
    std::function<std::string(int64_t row, int column)> text;
};
struct GuiCell {
    int64_t row = -1;  // -1: there is none
    int column = -1;

    bool operator==(const GuiCell &) const = default;
};
struct GuiCells {
    GuiCell first;
    GuiCell last;  // inclusive

    bool operator==(const GuiCells &) const = default;
};
// Rows that a grid shows at most: the toolkit keeps a record of each and counts their pixels in 32 bits. Show more by
// page.
constexpr int64_t gui_grid_rows = 10'000'000;
// Cells that are copied at most; of a greater selection none is, after a warning.
constexpr int64_t gui_grid_copied_cells = 5'000'000;

// Shows the grid in place of the one before, from its top left on; nothing is selected. Where the heads are the same no
// column becomes narrower than it was. False: no such control.
bool gui_set_grid(Window *window, int control, GuiGrid grid);
GuiCell gui_grid_current(const Window *window, int control);
void gui_set_grid_current(Window *window, int control, GuiCell cell);  // and brings it into view; sends no event
GuiCells gui_grid_selection(const Window *window, int control);
void gui_copy_grid(Window *window, int control, bool with_names);  // what is selected, to the clipboard

std::vector<int> gui_commands(const Window *window);  // of its menu bar
void gui_enable_command(Window *window, int command, bool enabled);
bool gui_command_enabled(const Window *window, int command);
void gui_check_command(Window *window, int command, bool checked);  // choosing the item leaves its mark as it is
void gui_set_command_strip(Window *window, int command, const ColourTable &colours);  // a strip of them at the item

// --- Multi-line text ----------------------------------------------------------------------------------------------
// A QPlainTextEdit, in the desktop's fixed-pitch font where its definition names no other. A text is a list of
// paragraphs counted from 0, any bytes: whatever is not text, also NUL and line ends inside a paragraph, is shown as a
// sign and comes back as it was. The line feed, carriage return or pair of both that ends a paragraph is kept, unseen,
// until the user removes the line. A control without any text has no paragraphs.

bool gui_has_paragraphs(const Window *window, int control);  // whether there is such a control
size_t gui_paragraph_count(const Window *window, int control);
std::vector<std::string> gui_paragraphs(const Window *window, int control);
std::string gui_paragraph(const Window *window, int control, size_t paragraph);  // empty behind the last
// Replaces all; nothing can be undone, and the text counts as not changed.
void gui_set_paragraphs(Window *window, int control, const std::vector<std::string> &texts);
// Changes that can be undone; adding to a text that is empty sets it.
void gui_append_paragraphs(Window *window, int control, const std::vector<std::string> &texts);
void gui_set_paragraph(Window *window, int control, size_t paragraph, const std::string &bytes);
int gui_columns_width(const Window *window, int control, int columns);   // that shows lines of so many characters
void gui_show_paragraph(Window *window, int control, size_t paragraph);  // at the top, with the cursor in it
size_t gui_first_paragraph_shown(const Window *window, int control);
// Whether the text differs from the one last set or marked as not changed; the window's title shows a mark then.
bool gui_text_changed(const Window *window, int control);
void gui_set_text_changed(Window *window, int control, bool changed);

// --- Drawing ------------------------------------------------------------------------------------------------------

void gui_clear(Canvas *canvas, const GuiRect &area);  // with the ground that the desktop's colours give it
// Draws the image with its top-left corner at (left, top), each pixel `zoom` x `zoom`, or (zoom 1) every `shrink`-th
// pixel of every `shrink`-th row. Converts only what is exposed. Raises a toolkit error (5, 1) when memory for that is
// out or the image has no pixels.
void gui_draw_image(Canvas *canvas, const PixelImage &image, int left, int top, int zoom, int shrink);
// A one-pixel frame with a hair on each side, that stands out on any background.
void gui_draw_cross_hair(Canvas *canvas, const GuiRect &place);

// Lines that run neither level nor upright are smoothed. `pen_width` is in pixels.
void gui_draw_line(Canvas *canvas, GuiPoint from, GuiPoint to, Colour colour, double pen_width = 1);
void gui_draw_lines(Canvas *canvas, const std::vector<GuiPoint> &points, Colour colour, double pen_width = 1);
void gui_draw_rectangle(Canvas *canvas, const GuiRect &place, Colour colour, int pen_width = 1);  // a frame, within
void gui_fill_rectangle(Canvas *canvas, const GuiRect &place, Colour colour);

// In the desktop's font at this size; a size of 0 is the desktop's own.
enum class TextAlign { Left, Centre, Right };
// On one line, in the middle of the place's height; whatever is too long goes beyond the place.
void gui_draw_text(Canvas *canvas, const GuiRect &place, const std::string &text, Colour colour, double points = 0,
                   TextAlign align = TextAlign::Left);
GuiSize gui_text_size(const std::string &text, double points = 0);

// Colours of the desktop, light or dark, for drawings that are to look like the rest of the window.
enum class GuiColour {
    Ground,  // of documents
    Text,    // on it
    Faint,   // between the two: grids, axes, what is out of use
    Accent,  // of what is selected
};
Colour gui_colour(GuiColour role);

// A drawing of this size as a PNG file, `scale` pixels to one of the drawing; empty when memory is out.
std::string gui_png(GuiSize size, int scale, const std::function<void(Canvas *canvas)> &draw);

enum class PointerShape { Arrow, Cross, LeftRight };
void gui_set_pointer(Window *window, PointerShape shape);  // over the client area

// --- Timers -------------------------------------------------------------------------------------------------------

// Sends Timer to the window every `milliseconds` until stopped or the window goes; not again while the handler still
// works on the last one.
Timer *gui_start_timer(Window *window, int milliseconds);
void gui_stop_timer(Timer *timer);

// --- Child processes ----------------------------------------------------------------------------------------------

// Starts a program, given by its full path, in a directory and a process group of its own, with nothing on its standard
// input, our other streams, and `settings` (NAME=VALUE) in its environment. ProcessEnded goes to the window when it and
// all it started have ended. Null with errno set when it does not start.
ChildProcess *gui_start_process(Window *window, const std::vector<std::string> &command, const std::string &directory,
                                const std::vector<std::string> &settings = {});
// Kills it and what it started, without an event. The end of the window, before its Destroy event, does the same.
void gui_end_process(ChildProcess *process);

// --- Help ---------------------------------------------------------------------------------------------------------

// A help book is a compressed file of pages with contents and index. The toolkit shows it in a window of its own, the
// definition `gui_help_window`, which is none of gui_windows(), outlives whatever window help was asked for in, and can
// be used while a dialog waits.
constexpr int gui_help_window = 200;

enum class HelpAnswer { Ok, Unreadable, NotHelp };
// Opens a book in place of the one open before, which stays unless the answer is Ok. Nothing is written beside it.
HelpAnswer gui_open_help(const std::string &file);
bool gui_help_is_open();
void gui_close_help();
// Shows a page of the open book by its file name; the book's first page when the name is empty or there is none such.
void gui_show_help(const std::string &page);

std::string gui_help_page(const Window *window);  // as its definition names it; may be empty
// Called with the page of the window in focus when F1 is pressed where no menu item takes it. The page is empty for
// message boxes and file dialogs.
using HelpHandler = void (*)(const std::string &page);
void gui_set_help_handler(HelpHandler handler);

// --- Questions to the user ----------------------------------------------------------------------------------------

// Answers of the file dialogs.
enum class FileAnswer { Bad = 0, Cancel = 1, Ok = 2 };
struct FileSpec {
    std::string directory;
    std::string name;
};
struct FileRequest {
    std::string prompt;
    FileSpec proposed;      // directory to start in (empty: the current one), and for saving the proposed name
    std::string file_type;  // extension to filter by, without point; empty: all files
};

// Every message box and every file or colour dialog goes through the installed responder. The ordinary one asks the
// user; unattended work and tests install their own, which must outlive its use.
class Responder {
  public:
    virtual ~Responder() = default;
    virtual void message(NoticeKind kind, const std::string &text) = 0;
    // Index of the button chosen; -1 when the question was closed without one.
    virtual int question(const std::string &text, const std::vector<std::string> &buttons) = 0;
    virtual FileAnswer open_file(const FileRequest &request, FileSpec *chosen) = 0;
    virtual FileAnswer save_file(const FileRequest &request, FileSpec *chosen) = 0;
    // False, leaving the colour, when none is chosen, as where nobody can be asked.
    virtual bool choose_colour(const std::string &, Colour *) { return false; }
    virtual FileAnswer choose_directory(const std::string &prompt, std::string *chosen) = 0;  // its full path
};
// Returns the one installed before; null restores the ordinary one.
Responder *gui_set_responder(Responder *responder);

void gui_note(const std::string &text);
void gui_warning(const std::string &text);
void gui_error(const std::string &text);
int gui_question(const std::string &text, const std::vector<std::string> &buttons);
FileAnswer gui_open_file(const FileRequest &request, FileSpec *chosen);
FileAnswer gui_save_file(const FileRequest &request, FileSpec *chosen);
bool gui_choose_colour(const std::string &prompt, Colour *colour);  // starts from the colour given
FileAnswer gui_choose_directory(const std::string &prompt, std::string *chosen);
