// Child processes whose end is an event, and what dialogs tell of fields.
#include "support/scratch.h"
#include "support/window_driver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace {

constexpr int DIALOG = 9003, LINE = 2, BUTTON = 3;

std::vector<int> g_statuses;
std::vector<int> g_focused;

long note_events(Window *window, const Event &event) {
    if (event.type == EventType::ProcessEnded)
        g_statuses.push_back(event.status);
    if (event.type == EventType::ProcessEnded && event.status == 9)
        gui_destroy_window(window);
    if (event.type == EventType::FieldFocus)
        g_focused.push_back(event.number);
    return 0;
}

ChildProcess *run_shell(Window *window, const std::string &directory, const char *command) {
    return gui_start_process(window, {"/bin/sh", "-c", command}, directory, {"GREETING=a b"});
}

TEST(ChildProcesses, TellTheirEndWhenAllThatTheyStartedHaveEnded) {
    const ScratchFolder scratch;
    run_window_test(DIALOG, note_events, [&](Window *window) {
        const auto status_of = [&](const char *command) {
            g_statuses.clear();
            EXPECT_TRUE(run_shell(window, scratch.path().string(), command)) << command;
            EXPECT_TRUE(settle_until([] { return !g_statuses.empty(); })) << command;
            return g_statuses.empty() ? -2 : g_statuses.back();
        };
        EXPECT_EQ(status_of("printf %s \"$GREETING\" > greeting; exit 3"), 3);
        EXPECT_EQ(read_file(scratch.path() / "greeting"), "a b");
        EXPECT_EQ(status_of("kill -TERM $$"), -1);
        EXPECT_EQ(status_of("(sleep 0.2; touch late) & exit 0"), 0);
        EXPECT_TRUE(std::filesystem::exists(scratch.path() / "late"));
        EXPECT_EQ(status_of("read line || exit 9"), 9);  // there is nothing to read
        EXPECT_FALSE(gui_window_exists(window));
    });
}

TEST(ChildProcesses, EndWithTheirWindow) {
    const ScratchFolder scratch;
    g_statuses.clear();
    run_window_test(DIALOG, note_events, [&](Window *window) {
        EXPECT_FALSE(gui_start_process(window, {"/no/such/program"}, "/"));
        EXPECT_FALSE(gui_start_process(window, {"/bin/true"}, scratch.file("absent")));
        constexpr char wait[] = "touch started; (sleep 2; touch survived) & wait";
        gui_end_process(run_shell(window, scratch.path().string(), wait));
        run_shell(window, scratch.path().string(), wait);
        EXPECT_TRUE(settle_until([&] { return !std::filesystem::is_empty(scratch.path()); }));
        gui_destroy_window(window);
        settle();
    });
    sleep(2);
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "survived"));
    EXPECT_TRUE(g_statuses.empty());
}

TEST(Fields, TellWhenTheyGetAndLoseTheKeyboard) {
    run_window_test(DIALOG, note_events, [](Window *window) {
        gui_focus_control(window, BUTTON);
        settle();
        g_focused.clear();
        gui_focus_control(window, LINE);
        gui_focus_control(window, BUTTON);
        settle();
        EXPECT_EQ(g_focused, (std::vector<int>{LINE, LINE}));
    });
}

}  // namespace
