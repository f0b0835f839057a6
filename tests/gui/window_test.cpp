#include "support/window_driver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

namespace {

constexpr int TASK = 9001, DOCUMENT = 9002, DIALOG = 9003, UNKNOWN_CLASS = 9004, NO_MENU = 9005;
constexpr int OK_BUTTON = 3, LINE = 2, STATUS = 1;
using Lines = std::vector<std::string>;

// What the windows of a test do in which event, and what they did. Their data is their name.
struct Script {
    std::map<EventType, std::function<long(Window *, const Event &)>> actions;
    Lines log;
};
Script g_script;

long scripted_handler(Window *window, const Event &event) {
    const auto *name = static_cast<const char *>(gui_window_data(window));
    if (event.type == EventType::Create || event.type == EventType::Destroy)
        g_script.log.push_back((event.type == EventType::Create ? "create " : "destroy ") +
                               std::string(name ? name : "task"));
    if (event.type == EventType::Update)
        gui_clear(event.canvas, event.area);
    const auto action = g_script.actions.find(event.type);
    return action == g_script.actions.end() ? 0 : action->second(window, event);
}

Window *create(const char *name, Window *owner = nullptr, int resource = DOCUMENT) {
    return gui_create_window(resource, owner, scripted_handler, const_cast<char *>(name));
}

long destroy_itself(Window *window, const Event &) {
    gui_destroy_window(window);
    return 0;
}

class Windows : public testing::Test {
  protected:
    void SetUp() override { g_script = {}; }
    void run(std::function<void()> body) { EXPECT_EQ(run_gui_test(TASK, scripted_handler, std::move(body)), 0); }
};

TEST_F(Windows, RefusedOrUndefinedOnesLeaveNothing) {
    run([] {
        for (const int resource : {9999, UNKNOWN_CLASS, NO_MENU})
            EXPECT_EQ(create("a", nullptr, resource), nullptr) << resource;
        g_script.actions[EventType::Create] = [](Window *, const Event &) { return 1L; };
        g_script.log.clear();
        EXPECT_EQ(create("a"), nullptr);
        EXPECT_EQ(gui_run_dialog(DIALOG, nullptr, scripted_handler, nullptr), -1);
        EXPECT_TRUE(gui_windows().empty());
        EXPECT_EQ(g_script.log, (Lines{"create a", "destroy a", "create task", "destroy task"}));
    });
    EXPECT_EQ(gui_run("Window test", 9999, scripted_handler), 1);
    EXPECT_EQ(gui_run("Window test", TASK, scripted_handler), 1) << "refused";
}

// A window that destroys itself in one of its own events is gone at once, sees nothing more, and nothing of it is
// touched afterwards.
TEST_F(Windows, EndInAnyOfTheirEvents) {
    static constexpr GuiPoint here = {9, 9};
    const std::pair<EventType, std::function<void(Window *)>> cases[] = {
        {EventType::Close, close_window},
        {EventType::Size, [](Window *window) { resize_window(window, 500, 400); }},
        {EventType::Update, [](Window *window) { shown_pixel(window, 0, 0); }},
        {EventType::Scroll, [](Window *window) { gui_scroll_to(window, here); }},
        {EventType::MouseDown, [](Window *window) { mouse_click(window, here); }},
        {EventType::MouseUp, [](Window *window) { mouse_click(window, here); }},
        {EventType::MouseDouble, [](Window *window) { mouse_double_click(window, here); }},
        {EventType::MouseMove, [](Window *window) { mouse_move(window, here); }},
        {EventType::MouseLeave, mouse_leave},
        {EventType::Wheel, [](Window *window) { turn_wheel(window, here, 120, GUI_CONTROL); }},
        {EventType::Key, [](Window *window) { press_key(window, GuiKey::End); }},
        {EventType::Command, [](Window *window) { choose_command(window, 1059); }},
        {EventType::Timer,
         [](Window *window) {
             gui_start_timer(window, 0);
             settle_until([window] { return !gui_window_exists(window); });
         }},
    };
    run([&] {
        for (const auto &[type, provoke] : cases) {
            g_script = {};
            Window *window = create("a");
            gui_set_content_size(window, {1000, 1000}, 16);
            settle();
            g_script.actions[type] = destroy_itself;
            provoke(window);
            EXPECT_FALSE(gui_window_exists(window)) << static_cast<int>(type);
            settle();
            EXPECT_EQ(g_script.log, (Lines{"create a", "destroy a"})) << static_cast<int>(type);
        }
        g_script.actions[EventType::Create] = destroy_itself;
        EXPECT_EQ(create("a"), nullptr);
    });
}

// The same while a box is shown on the window: for as long as its handler waits for the answer, and when the box goes
// with the window on which another one's handler has it shown.
TEST_F(Windows, EndWhileTheyWaitForTheUser) {
    run([] {
        int answer = 0;
        Window *window = create("a");
        g_script.actions[EventType::MouseDown] = [&](Window *, const Event &) {
            when_idle([=] {
                gui_destroy_window(window);
                settle();
                EXPECT_TRUE(close_box());
            });
            answer = gui_question("Go on?", {"Yes", "Maybe"});
            return 0L;
        };
        mouse_click(window, {9, 9});
        EXPECT_EQ(answer, -1);
        settle();
        EXPECT_EQ(g_script.log, (Lines{"create task", "create a", "destroy a"}));

        Window *parent = create("b");
        settle();
        when_idle([=] {
            gui_destroy_window(parent);
            when_idle([] { EXPECT_FALSE(close_box()); });
        });
        EXPECT_EQ(gui_question("Go on?", {"Yes", "No"}), -1);
    });
}

TEST_F(Windows, EndWithTheirOwner) {
    run([] {
        Window *a = create("a", gui_task_window());
        Window *b = create("b", a);
        Window *c = create("c", b);
        Window *d = create("d", a);
        EXPECT_EQ(gui_windows(), (std::vector<Window *>{a, b, c, d}));
        g_script.log.clear();
        g_script.actions[EventType::Destroy] = [=](Window *window, const Event &) {
            // Whatever a handler tries now, each window ends once.
            gui_destroy_window(a);
            gui_destroy_window(window);
            EXPECT_EQ(create("late", window), nullptr);
            return 0L;
        };
        gui_destroy_window(a);
        EXPECT_EQ(g_script.log, (Lines{"destroy d", "destroy c", "destroy b", "destroy a"}));
        EXPECT_TRUE(gui_windows().empty());
        g_script.actions.clear();
    });
}

TEST_F(Windows, AllEndWhenTheProgramQuits) {
    run([] {
        Window *a = create("a", gui_task_window());
        create("b", a);
        g_script.actions[EventType::Command] = [](Window *, const Event &) {
            gui_destroy_window(gui_task_window());
            EXPECT_EQ(gui_task_window(), nullptr);
            EXPECT_EQ(create("late"), nullptr);
            return 0L;
        };
        choose_command(a, 1008);
    });
    EXPECT_EQ(g_script.log, (Lines{"create task", "create a", "create b", "destroy b", "destroy a", "destroy task"}));

    // Before the event loop has begun too.
    g_script.actions[EventType::Create] = [](Window *, const Event &) {
        gui_quit();
        return 0L;
    };
    EXPECT_EQ(gui_run("Window test", TASK, scripted_handler), 0);
}

TEST_F(Windows, TheTaskWindowIsAskedBeforeTheSessionEnds) {
    run([] {
        long refuse = 1;
        Lines seen;
        g_script.actions[EventType::Quit] = [&](Window *window, const Event &event) {
            EXPECT_EQ(window, gui_task_window());
            seen.push_back(event.query ? "query" : "quit");
            return event.query ? refuse : 0;
        };
        ask_to_quit();
        settle();
        refuse = 0;
        ask_to_quit();
        settle();
        EXPECT_EQ(seen, (Lines{"query", "query", "quit"}));
    });
}

TEST_F(Windows, DialogsReturnTheirResult) {
    run([] {
        Window *dialog = nullptr;
        g_script.actions[EventType::Create] = [&](Window *window, const Event &) {
            dialog = window;
            gui_focus_control(window, LINE);
            return 0L;
        };
        g_script.actions[EventType::Control] = [](Window *window, const Event &event) {
            EXPECT_EQ(event.number, OK_BUTTON);
            gui_end_dialog(window, 7);
            return 0L;
        };
        const auto run_dialog = [&](const std::function<void()> &use) {
            when_idle(use);
            return gui_run_dialog(DIALOG, gui_task_window(), scripted_handler, nullptr);
        };
        EXPECT_EQ(run_dialog([&] { press_key(dialog, GuiKey::Enter); }), 7);
        EXPECT_EQ(run_dialog([&] { press_key(dialog, GuiKey::Escape); }), 0);
        EXPECT_EQ(run_dialog([&] { close_window(dialog); }), 0);
        EXPECT_EQ(run_dialog([&] { gui_destroy_window(dialog); }), 0);
        EXPECT_TRUE(gui_windows().empty());
        // A handler that answers keeps it open.
        g_script.actions[EventType::Close] = [](Window *, const Event &) { return 1L; };
        const auto close_and_end = [&] {
            close_window(dialog);
            gui_end_dialog(dialog, 5);
        };
        EXPECT_EQ(run_dialog(close_and_end), 5);
        EXPECT_EQ(run_dialog(gui_quit), 0);
    });
}

TEST_F(Windows, CommandsAreEnabledCheckedAndChosen) {
    run([] {
        std::vector<int> chosen;
        g_script.actions[EventType::Command] = [&](Window *, const Event &event) {
            chosen.push_back(event.number);
            return 0L;
        };
        Window *window = create("a");
        Window *other = create("b");
        EXPECT_EQ(gui_commands(window), (std::vector<int>{1008, 1059, 2001}));
        gui_enable_command(window, 2001, false);
        EXPECT_FALSE(gui_command_enabled(window, 2001));
        EXPECT_TRUE(gui_command_enabled(other, 2001));
        EXPECT_FALSE(choose_command(window, 2001));
        EXPECT_TRUE(choose_command(window, 1059));
        EXPECT_FALSE(command_checked(window, 1059)) << "checked without the program's consent";
        gui_check_command(window, 1059, true);
        EXPECT_TRUE(choose_command(window, 1059));
        EXPECT_TRUE(command_checked(window, 1059));
        gui_raise(window);
        settle();
        press_character(window, 'w', GUI_CONTROL);
        EXPECT_EQ(chosen, (std::vector<int>{1059, 1059, 1008}));
    });
}

TEST_F(Windows, ControlsAreReachedByNumber) {
    run([] {
        Window *window = create("a");
        gui_set_text(window, STATUS, "<b>1 &lt; 2</b>");
        const GuiSize markup = gui_wanted_size(window, STATUS);
        gui_set_text(window, STATUS, "1 < 2");
        EXPECT_GT(markup.width, 2 * gui_wanted_size(window, STATUS).width) << "taken for markup";
        gui_show_control(window, STATUS, true);

        // Over the drawing, and moved in its coordinates; the mouse reaches the drawing through it.
        gui_move_control(window, STATUS, {40, 30, 50, 20});
        const unsigned background = document_background(window);
        const std::vector<unsigned> row = shown_pixels(window, {38, 31, 4, 1});
        EXPECT_EQ(row[1], background);
        EXPECT_NE(row[2], background);

        gui_set_title(window, "A[*].IMG [*][*]");
        EXPECT_EQ(gui_title(window), "A[*].IMG [*][*]");
        EXPECT_EQ(title_on_screen(window), "A[*].IMG [*][*]");
    });
}

TEST_F(Windows, TimersRunUntilStopped) {
    run([] {
        int ticks = 0, clock = 0;
        Window *window = create("a");
        Window *other = create("clock");
        Timer *timer = nullptr;
        const auto wait = [&] { return settle_until([&, now = clock] { return clock > now + 5; }); };
        g_script.actions[EventType::Timer] = [&](Window *receiver, const Event &event) {
            if (receiver == other) {
                ++clock;
                return 0L;
            }
            EXPECT_EQ(event.timer, timer);
            const int tick = ++ticks;
            EXPECT_TRUE(wait());
            EXPECT_EQ(ticks, tick) << "came while its handler still worked";
            if (ticks == 2)
                gui_stop_timer(timer);
            return 0L;
        };
        gui_start_timer(other, 1);
        timer = gui_start_timer(window, 1);
        EXPECT_TRUE(settle_until([&] { return ticks == 2; }));
        EXPECT_TRUE(wait());
        EXPECT_EQ(ticks, 2);
        timer = gui_start_timer(window, 1);
        gui_destroy_window(window);
        EXPECT_TRUE(wait());
        EXPECT_EQ(ticks, 2);
        gui_stop_timer(timer);
    });
}

TEST_F(Windows, DroppedFilesArriveByteForByte) {
    run([] {
        Lines files;
        std::vector<Window *> told;
        g_script.actions[EventType::FileDrop] = [&](Window *window, const Event &event) {
            files = event.files;
            told.push_back(window);
            return 0L;
        };
        const Lines dropped = {"/tmp/a b%20#?.img", "/tmp/\xe9t\xe9.lbl", "/tmp/\xc3\xa9"};
        for (Window *window : {create("a"), gui_task_window()}) {
            drop_files(window, dropped);
            EXPECT_EQ(files, dropped);
        }
        EXPECT_EQ(told, (std::vector<Window *>{gui_task_window(), gui_task_window()}));
    });
}

TEST_F(Windows, ClientAreasGetTheirSizeWhereTheScreenAllows) {
    run([] {
        const auto size_of = [](Window *window) {
            const GuiSize size = gui_client_size(window);
            return std::pair(size.width, size.height);
        };
        g_script.actions[EventType::Create] = [&](Window *window, const Event &) {
            gui_set_content_size(window, {300, 200}, 16);
            gui_set_client_size(window, {300, 200});
            EXPECT_EQ(size_of(window), std::pair(300, 200));
            return 0L;
        };
        Window *window = create("a");
        settle();
        EXPECT_EQ(size_of(window), std::pair(300, 200));
        EXPECT_FALSE(has_scroll_bars(window));
        gui_set_client_size(window, {200, 100});
        settle();
        EXPECT_EQ(size_of(window), std::pair(200, 100));
        EXPECT_TRUE(has_scroll_bars(window));

        const GuiRect screen = gui_screen_place(window);
        gui_set_content_size(window, {40000, 30}, 16);
        gui_set_client_size(window, {40000, 30});
        settle();
        EXPECT_EQ(gui_client_size(window).width, screen.width - 64);
        const GuiRect place = place_on_screen(window);
        EXPECT_GE(place.left, 0);
        EXPECT_LE(place.left + place.width, screen.width);
        EXPECT_LE(place.top + place.height, screen.height);
    });
}

TEST_F(Windows, ThePointerIsBusyExceptWhenTheUserIsAsked) {
    run([] {
        const BusyCursor outer;
        { const BusyCursor inner; }
        EXPECT_TRUE(pointer_is_busy());
        when_idle([] {
            EXPECT_FALSE(pointer_is_busy());
            EXPECT_TRUE(press_box_button("OK"));
        });
        gui_note("Done");
        EXPECT_TRUE(pointer_is_busy());
    });
}

}  // namespace
