#include "browse/continue_dialogs.h"

#include "base/text.h"
#include "browse/file_dialogs.h"
#include "browse/walk.h"
#include "viewer/viewer.h"

namespace {

constexpr int continue_resource = 140;
constexpr int continue_button = 1;
constexpr int timed_resource = 141;
constexpr int interval_field = 1;
constexpr int reset_button = 2;
constexpr int exit_button = 3;
constexpr int pause_button = 5;
constexpr int resume_button = 6;

Window *g_browse_window = nullptr;  // the timed dialog that owns the timer

void forget(const Window *dialog) {
    if (session().browse_continue_win == dialog)
        session().browse_continue_win = nullptr;
    if (g_browse_window == dialog)
        g_browse_window = nullptr;
}

long continue_eh(Window *dialog, const Event &event) {
    if (event.type == EventType::Control && event.number == continue_button) {
        if (browse_state())
            browse_continue();
        else
            gui_destroy_window(dialog);  // left over by a walk that has ended
    }
    if (event.type == EventType::Close)
        browse_exit(dialog);
    if (event.type == EventType::Destroy)
        forget(dialog);
    return 0;
}

void create_timed(Window *dialog) {
    if (!browse_settings().timed_browse_go || g_browse_window)
        return;
    gui_start_timer(dialog, browse_settings().browse_interval);
    gui_set_text(dialog, interval_field, util_format("%d", browse_settings().browse_interval / 1000));
    g_browse_window = dialog;
}

// Without the bounds of the path dialog; the timer keeps its period.
void browse_timer_reset(Window *dialog) {
    if (gui_has_control(dialog, interval_field))
        browse_settings().browse_interval = browse_milliseconds(gui_text(dialog, interval_field));
    else
        gui_error("Get a new autobrowse interval -- couldn't find static text window");
}

void press_timed(Window *dialog, int button) {
    switch (button) {
        case reset_button:
            return browse_timer_reset(dialog);
        case exit_button:
            return browse_exit(dialog);
        case pause_button:
            browse_settings().timed_browse_go = false;
            return;
        case resume_button:
            browse_settings().timed_browse_go = true;
            return;
        default:
            return;
    }
}

long timed_eh(Window *dialog, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create_timed(dialog);
            break;
        case EventType::Timer:
            // A file that took longer to open than the interval does not cost the next one its turn.
            if (session().unattended && !display_is_due())
                browse_continue();
            break;
        case EventType::Control:
            press_timed(dialog, event.number);
            break;
        case EventType::Close:
            browse_exit(dialog);
            break;
        case EventType::Destroy:
            forget(dialog);
            break;
        default:
            break;
    }
    return 0;
}

}  // namespace

void keep_continue_dialog() {
    if (session().browse_continue_win)
        return gui_raise(session().browse_continue_win);
    const bool timed = browse_settings().timed_browse_go;
    session().browse_continue_win = gui_create_window(timed ? timed_resource : continue_resource, gui_task_window(),
                                                      timed ? timed_eh : continue_eh, nullptr);
    if (!session().browse_continue_win && gui_task_window())
        gui_error(timed ? "Could not open continue browse dialog (141)"
                        : "Could not open continue browse dialog (140)");
}

void open_unkept_continue_dialog() {
    if (!gui_create_window(continue_resource, gui_task_window(), continue_eh, nullptr) && gui_task_window())
        gui_error("Could not open continue browse dialog");
}

void close_continue_dialog() {
    gui_destroy_window(session().browse_continue_win);
}
