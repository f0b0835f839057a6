#include "gui/window.h"

#include "gui/application.h"
#include "gui/client_area.h"
#include "gui/definition.h"
#include "gui/drop.h"
#include "gui/input.h"

#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace {

std::vector<Window *> g_windows;

Event plain_event(EventType type) {
    Event event;
    event.type = type;
    return event;
}

long call_handler(Window *window, const Event &event) {
    ++window->handlers_running;
    const long answer = window->handler(window, event);
    --window->handlers_running;
    if (window->stage == WindowStage::Dead && window->handlers_running == 0)
        window->frame->deleteLater();
    return answer;
}

Window *newest_owned_by(const Window *owner) {
    for (auto window = g_windows.rbegin(); window != g_windows.rend(); ++window) {
        if ((*window)->owner == owner && (*window)->stage != WindowStage::Closing)
            return *window;
    }
    return nullptr;
}

// A dialog closes unless its handler answers other than 0; any other window stays unless its handler destroys it.
void close_by_user(Window *window) {
    const long answer = send_event(window, plain_event(EventType::Close));
    if (window->is_dialog() && answer == 0 && window->stage == WindowStage::Live)
        gui_end_dialog(window, 0);
}

// True when nothing more is to be done with the key.
bool take_key(Window *window, const QKeyEvent &key) {
    // The client area asks about Tab by itself, before the key moves the focus.
    if (is_modifier_key(key) || key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab)
        return false;
    if (send_event(window, key_event(key)) != 0 || window->stage != WindowStage::Live)
        return true;
    if (window->is_dialog() && key.key() == Qt::Key_Escape) {
        close_by_user(window);
        return true;
    }
    return window->client && window->client->scroll_by_key(key.key());
}

// Tells the window system that one window belongs to the other. It owns nothing: the frames have no parents, so that
// each goes when its own last handler has returned.
void set_transient_parent(Window *window) {
    if (!window->owner || !window->is_dialog())
        return;
    window->frame->winId();
    if (QWindow *parent = window->owner->frame->windowHandle())
        window->frame->windowHandle()->setTransientParent(parent);
}

}  // namespace

// --- Events -------------------------------------------------------------------------------------------------------

Window::Window(QWidget *widget) : QObject(widget), frame(widget) {}

bool Window::is_dialog() const {
    return qobject_cast<QDialog *>(frame) != nullptr;
}

long send_event(Window *window, const Event &event) {
    return window && window->stage == WindowStage::Live ? call_handler(window, event) : 0;
}

bool Window::eventFilter(QObject *watched, QEvent *source) {
    switch (source->type()) {
        case QEvent::Close:
            source->ignore();
            close_by_user(this);
            return true;
        case QEvent::KeyPress:
            if (!take_key(this, static_cast<QKeyEvent &>(*source)))
                return false;
            source->accept();
            return true;
        case QEvent::WindowActivate:
            send_event(this, plain_event(EventType::FocusIn));
            return false;
        case QEvent::WindowDeactivate:
            send_event(this, plain_event(EventType::FocusOut));
            return false;
        case QEvent::Resize:
            if (!client)
                send_event(this, plain_event(EventType::Size));
            return false;
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
            return take_drop(this, source);
        default:
            return QObject::eventFilter(watched, source);
    }
}

// --- Life ---------------------------------------------------------------------------------------------------------

const std::vector<Window *> &all_windows() {
    return g_windows;
}

Window *build_window(int resource, Window *owner, EventHandler handler, void *data) {
    if (is_quitting() || (owner && (!gui_window_exists(owner) || owner->stage == WindowStage::Closing)))
        return nullptr;
    QWidget *frame = load_window_definition(resource).release();
    if (!frame)
        return nullptr;
    auto *window = new Window(frame);
    window->client = frame->findChild<ClientArea *>();
    window->owner = owner;
    window->handler = handler;
    window->data = data;
    gui_set_title(window, frame->windowTitle().toStdString());
    connect_controls(window);
    connect_commands(window);
    if (window->client) {
        window->client->attach(window);
        window->client->setFocus();
    }
    frame->setAcceptDrops(true);
    frame->installEventFilter(window);
    g_windows.push_back(window);
    return window;
}

bool announce_window(Window *window) {
    const long refused = call_handler(window, plain_event(EventType::Create));
    if (window->stage == WindowStage::Dead)
        return false;
    if (refused != 0) {
        end_window(window);
        return false;
    }
    window->stage = WindowStage::Live;
    return true;
}

void show_window(Window *window) {
    set_transient_parent(window);
    window->frame->show();
}

void end_window(Window *window) {
    if (!gui_window_exists(window) || window->stage == WindowStage::Closing)
        return;
    window->stage = WindowStage::Closing;
    while (Window *owned = newest_owned_by(window))
        end_window(owned);
    while (!window->processes.empty())
        gui_end_process(window->processes.back());
    call_handler(window, plain_event(EventType::Destroy));
    window->stage = WindowStage::Dead;
    std::erase(g_windows, window);
    if (window->modal)
        window->modal->loop.quit();
    // A widget that is being painted must not be hidden.
    if (!window->painting)
        window->frame->hide();
    if (window->handlers_running == 0)
        window->frame->deleteLater();
}

Window *gui_create_window(int resource, Window *owner, EventHandler handler, void *data) {
    Window *window = build_window(resource, owner, handler, data);
    if (!window || !announce_window(window))
        return nullptr;
    show_window(window);
    return gui_window_exists(window) ? window : nullptr;
}

void gui_destroy_window(Window *window) {
    if (window && window == gui_task_window())
        gui_quit();
    else
        end_window(window);
}

bool gui_window_exists(const Window *window) {
    return window && std::find(g_windows.begin(), g_windows.end(), window) != g_windows.end();
}

std::vector<Window *> gui_windows() {
    std::vector<Window *> documents;
    for (Window *window : g_windows) {
        if (!window->is_dialog() && window != gui_task_window())
            documents.push_back(window);
    }
    return documents;
}

int gui_run_dialog(int resource, Window *owner, EventHandler handler, void *data) {
    ModalRun run;
    Window *window = build_window(resource, owner, handler, data);
    if (!window)
        return -1;
    window->modal = &run;
    window->frame->setWindowModality(Qt::ApplicationModal);
    if (!announce_window(window))
        return -1;
    const OrdinaryCursor cursor;
    show_window(window);
    if (gui_window_exists(window))
        run.loop.exec();
    // The event loop also ends when the whole application does.
    if (gui_window_exists(window))
        end_window(window);
    return run.result;
}

void gui_end_dialog(Window *dialog, int result) {
    if (!gui_window_exists(dialog))
        return;
    if (dialog->modal)
        dialog->modal->result = result;
    end_window(dialog);
}

// --- Properties ---------------------------------------------------------------------------------------------------

void *gui_window_data(const Window *window) {
    return window->data;
}
void gui_set_window_data(Window *window, void *data) {
    window->data = data;
}

std::string gui_title(const Window *window) {
    return window->title;
}

void gui_set_title(Window *window, const std::string &title) {
    window->title = title;
    // In a title "[*]" stands for the mark of a changed document, and for itself when doubled.
    QString shown = QString::fromStdString(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
    window->frame->setWindowTitle(shown + QLatin1String("[*]"));
}

void gui_raise(Window *window) {
    if (window->frame->isMinimized())
        window->frame->showNormal();
    window->frame->raise();
    window->frame->activateWindow();
}

void gui_maximize(Window *window) {
    window->frame->showMaximized();
}

void gui_invalidate(Window *window) {
    if (window->client)
        window->client->viewport()->update();
    else
        window->frame->update();
}

// --- Scrolling ----------------------------------------------------------------------------------------------------

void gui_set_content_size(Window *window, GuiSize content, int step) {
    if (window->client)
        window->client->set_content({content.width, content.height}, step);
}

GuiPoint gui_scroll_position(const Window *window) {
    const QPoint position = window->client ? window->client->position() : QPoint();
    return {double(position.x()), double(position.y())};
}

void gui_scroll_to(Window *window, GuiPoint position) {
    if (window->client)
        window->client->scroll_to(QPointF(position.x, position.y).toPoint());
}
