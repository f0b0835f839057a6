// How large windows and their client areas are.
#include "gui/client_area.h"
#include "gui/window.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace {

// Of the screen, kept free around a client area for title, menu bar and frame.
constexpr int SCREEN_MARGIN = 64;

GuiSize size_of(QSize size) {
    return {size.width(), size.height()};
}

QWidget *central_widget(const Window &window) {
    auto *main_window = qobject_cast<QMainWindow *>(window.frame);
    return main_window && main_window->centralWidget() ? main_window->centralWidget() : window.frame;
}

// What a window holds around its client area. A client area so large that nothing else decides on the window's size
// shows it, before the window is first laid out too.
QSize surroundings(const Window &window) {
    constexpr QSize large(8192, 8192);
    window.frame->ensurePolished();
    window.client->set_size_hint(large);
    const QSize around = window.frame->sizeHint() - large;
    window.client->set_size_hint({});
    return around;
}

// What the desktop puts around a window; a guess before it has done so.
QSize decoration(const QWidget &frame) {
    if (frame.isVisible())
        return frame.frameGeometry().size() - frame.size();
    return {0, frame.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &frame)};
}

void keep_on_screen(QWidget *frame) {
    const QRect screen = frame->screen()->availableGeometry();
    const QRect place = frame->frameGeometry();
    const int left = qMax(screen.left(), qMin(place.left(), screen.right() + 1 - place.width()));
    const int top = qMax(screen.top(), qMin(place.top(), screen.bottom() + 1 - place.height()));
    if (QPoint(left, top) != place.topLeft())
        frame->move(left, top);
}

}  // namespace

GuiSize gui_client_size(const Window *window) {
    if (!window->client)
        return size_of(central_widget(*window)->size());
    if (window->client->isVisible())
        return size_of(window->client->viewport()->size());
    return size_of(window->client->viewport_size_in(window->frame->size() - surroundings(*window)));
}

GuiSize gui_client_size_without_bars(const Window *window) {
    return window->client ? size_of(window->client->maximumViewportSize()) : gui_client_size(window);
}

void gui_set_client_size(Window *window, GuiSize size) {
    QWidget *frame = window->frame;
    if (!window->client || frame->isMaximized() || frame->isFullScreen())
        return;
    const QSize screen = frame->screen()->availableGeometry().size();
    const QSize around = surroundings(*window);
    const QSize wanted = QSize(size.width, size.height).boundedTo(screen - QSize(SCREEN_MARGIN, SCREEN_MARGIN));
    const QSize whole = window->client->size_for_viewport(wanted) + around;
    frame->resize(whole.boundedTo(screen - decoration(*frame)));
    if (frame->isVisible())
        keep_on_screen(frame);
}

GuiRect gui_screen_place(const Window *window) {
    const QRect place = window->frame->screen()->availableGeometry();
    return {place.x(), place.y(), place.width(), place.height()};
}

GuiRect gui_window_place(const Window *window) {
    const QRect place = window->frame->frameGeometry();
    return {place.x(), place.y(), place.width(), place.height()};
}

GuiRect gui_own_place(const Window *window) {
    const QWidget &frame = *window->frame;
    return {frame.frameGeometry().x(), frame.frameGeometry().y(), frame.width(), frame.height()};
}

void gui_place_window(Window *window, GuiRect place) {
    QWidget *frame = window->frame;
    const QScreen *screen = QGuiApplication::screenAt(QPoint(place.left, place.top));
    const QRect room = (screen ? screen : frame->screen())->availableGeometry();
    const QSize around = decoration(*frame);
    frame->resize(QSize(place.width, place.height).boundedTo(room.size() - around));
    const QSize whole = frame->size() + around;
    frame->move(qMax(room.left(), qMin(place.left, room.right() + 1 - whole.width())),
                qMax(room.top(), qMin(place.top, room.bottom() + 1 - whole.height())));
}
