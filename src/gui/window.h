// A window as this folder sees it. Private to the folder.
//
// The record is a child of its Qt frame and dies with it, by deleteLater and never while one of the window's handlers
// is on the stack. For the program the window ends earlier: at gui_destroy_window. From then on its events are dropped.
#pragma once

#include "gui/gui.h"

#include <QEventLoop>
#include <QObject>
#include <QSize>

#include <map>
#include <string>
#include <vector>

class ClientArea;
class QAction;
class QEvent;
class QWidget;

enum class WindowStage { Building, Live, Closing, Dead };

// The wait for the end of a modal dialog.
struct ModalRun {
    QEventLoop loop;
    int result = 0;
};

struct Window final : QObject {
    explicit Window(QWidget *frame);

    QWidget *const frame;          // QMainWindow, QDialog
    ClientArea *client = nullptr;  // null where the definition has none
    Window *owner = nullptr;
    EventHandler handler = nullptr;
    void *data = nullptr;
    WindowStage stage = WindowStage::Building;
    int handlers_running = 0;
    bool painting = false;
    std::string title;
    std::map<int, QWidget *> controls;
    std::vector<QAction *> commands;
    std::vector<Timer *> timers;
    std::vector<ChildProcess *> processes;
    ModalRun *modal = nullptr;

    bool is_dialog() const;
    bool eventFilter(QObject *watched, QEvent *event) override;
};

// Calls the handler and returns its answer; 0 without a call unless the window is live. The window may be dead
// afterwards, but is not freed before the caller's caller returns to the event loop.
long send_event(Window *window, const Event &event);

// The steps of gui_create_window. Null when there is no such definition.
Window *build_window(int resource, Window *owner, EventHandler handler, void *data);
// Sends Create; false when the window was refused or has destroyed itself, and is dead now.
bool announce_window(Window *window);
void show_window(Window *window);

// Windows of every kind that are not dead, oldest first.
const std::vector<Window *> &all_windows();

// Sends Destroy to what the window owns, then to it, and ends it; whatever it is.
void end_window(Window *window);

// Tie the definition's controls and menu items to the window.
void connect_controls(Window *window);
void connect_commands(Window *window);
