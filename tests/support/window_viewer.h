// The viewer's own task window and tables around a test's body.
#pragma once

#include "app/command_table.h"
#include "app/opener_table.h"
#include "support/window_driver.h"
#include "viewer/viewer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

constexpr int image_status = 2;  // the read-out of an image window
constexpr int image_value = 3;   // and the sample as it is stored

inline void run_viewer(std::function<void()> body) {
    set_command_table(lumacart_commands());
    set_product_openers(lumacart_openers());
    char program[] = "lumacart";
    char platform[] = "platform";
    char *arguments[] = {program, platform};
    begin_session(2, arguments);
    EXPECT_EQ(run_gui_test(100, task_eh, std::move(body)), 0);
}

// Opens a file and returns the newest document window; null when none was added.
inline Window *open_in_viewer(const std::string &path) {
    const size_t before = gui_windows().size();
    open_file(path);
    settle();
    const std::vector<Window *> windows = gui_windows();
    return windows.size() > before ? windows.back() : nullptr;
}
