#include "gui/window.h"

#include <QPointer>
#include <QTimerEvent>

#include <algorithm>

struct Timer final : QObject {
    Timer(Window *owner, int milliseconds) : QObject(owner), window(owner), id(startTimer(milliseconds)) {}

    Window *const window;
    const int id;
    bool running = false;

    // Not again while the handler of the last one still runs, in a message box for instance.
    void timerEvent(QTimerEvent *) override {
        if (running)
            return;
        const QPointer<Timer> self(this);
        running = true;
        Event event;
        event.type = EventType::Timer;
        event.timer = this;
        send_event(window, event);
        if (self)
            running = false;
    }
};

Timer *gui_start_timer(Window *window, int milliseconds) {
    if (!gui_window_exists(window))
        return nullptr;
    auto *timer = new Timer(window, std::max(0, milliseconds));
    window->timers.push_back(timer);
    return timer;
}

void gui_stop_timer(Timer *timer) {
    // Searched for by address alone: the window, and the timer with it, may be gone.
    for (Window *window : all_windows()) {
        if (std::erase(window->timers, timer) == 0)
            continue;
        timer->killTimer(timer->id);
        timer->deleteLater();
        return;
    }
}
