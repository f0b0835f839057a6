#include "base/text.h"
#include "viewer/session.h"

#include <cstdlib>
#include <memory>

namespace {

constexpr int remark_severity = 3;
constexpr int report_delay = 500;  // milliseconds

struct ErrorTrap {
    Window *window = nullptr;
    Timer *timer = nullptr;
    Window *timer_window = nullptr;
    int major = 0;
    int minor = 0;
};
ErrorTrap trap;

// Given back to the system before the last message, which needs memory itself.
constexpr size_t reserve_size = size_t{4} << 20;
std::unique_ptr<void, decltype(&free)> error_reserve(nullptr, free);

bool is_memory_error() {
    return trap.major == 5 && trap.minor == 1;
}

}  // namespace

void set_error_window(Window *window) {
    trap.window = window;
}

void forget_error_window(Window *window) {
    if (trap.window == window)
        trap.window = nullptr;
    if (trap.timer_window == window)
        trap.timer = nullptr;  // it went with the window
}

int on_toolkit_error(const ToolkitError &message) {
    if (message.severity == remark_severity)
        return 0;
    if (message.identifier == 0)
        return 1;
    trap.major = static_cast<int>(message.identifier >> 20 & 15);
    trap.minor = static_cast<int>(message.identifier >> 16 & 15);
    if (!trap.timer && is_memory_error()) {
        trap.timer_window = trap.window ? trap.window : gui_task_window();
        trap.timer = gui_start_timer(trap.timer_window, report_delay);
    }
    return 1;
}

bool handle_error_timer(const Event &event) {
    if (!trap.timer || event.timer != trap.timer)
        return false;
    if (is_memory_error()) {
        gui_stop_timer(trap.timer);
        trap.timer = nullptr;
        fatal_out_of_memory("Trapped Error");
        trap.major = 0;
    }
    return true;
}

void hold_error_reserve() {
    error_reserve.reset(malloc(reserve_size));
}

void fatal_out_of_memory(const std::string &context) {
    constexpr size_t longest_report = 200;
    error_reserve.reset();
    const std::string report =
        util_format("%s\nOut of Memory\nprogram aborting\nincrease available memory", context.c_str());
    gui_error(report.substr(0, longest_report));
    gui_quit();
}
