// Timed walks: nothing waits for an answer, what is broken is told and passed over, nothing is kept.
#include "browse/browser.h"

#include <gtest/gtest.h>

namespace {

// Starts a timed walk with an interval that the dialogs do not offer.
void start_timed(ScriptedResponder *responder, const std::string &directory, int milliseconds) {
    Window *path = enter_browse_mode(responder, directory);
    ASSERT_TRUE(path);
    EXPECT_TRUE(use_control(path, 4));
    EXPECT_TRUE(use_control(path, 2));
    browse_settings().browse_interval = milliseconds;
}

bool walk_to_end(int rounds) {
    bool ended = false;
    for (int round = 0; round < rounds && !ended; ++round)
        ended = settle_until([] { return !is_browsing(); });
    return ended;
}

int64_t kilobytes(const char *name) {
    const std::string status = read_file("/proc/self/status");
    const size_t at = status.find(name);
    return at == std::string::npos ? -1 : std::stoll(status.substr(at + strlen(name)));
}

TEST(TimedWalk, PassesOverWhatIsBrokenAndTellsWhy) {
    const ScratchFolder scratch;
    write_image(scratch, "good1");
    write_image(scratch, "good2");
    scratch.write("page.HTM", "<p>");
    scratch.write("notes.txt", "text");
    scratch.write("short.lbl", "RECORD_TYPE = STREAM\n^IMAGE = \"absent.img\"\nOBJECT = IMAGE\nEND\n");
    scratch.write("noobject.lbl", "RECORD_TYPE = STREAM\nEND\n");
    scratch.write("huge.lbl",
                  "RECORD_TYPE = STREAM\n^IMAGE = \"notes.txt\"\nOBJECT = IMAGE\nLINES = 9999999999999\n"
                  "LINE_SAMPLES = 1000000\nSAMPLE_BITS = 64\nSAMPLE_TYPE = IEEE_REAL\nEND_OBJECT\nEND\n");
    scratch.write("bytes\x01.lbl", std::string(100, '\0'));
    run_viewer([&] {
        ScriptedResponder responder;
        Window *own = open_in_viewer(scratch.file("good1.IMG"));
        size_t most = 0;
        testing::internal::CaptureStderr();
        start_timed(&responder, scratch.path().string(), 20);
        EXPECT_TRUE(settle_until([&] {
            most = std::max(most, gui_windows().size());
            return !is_browsing();
        }));
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_LE(most, 2u);  // the one that was there and one of the walk
        EXPECT_TRUE(gui_window_exists(own));
        EXPECT_EQ(responder.shown, std::vector<std::string>{"directory: Select a directory"});
        for (const char *name : {"short.lbl", "noobject.lbl", "huge.lbl"})
            EXPECT_NE(log.find("lumacart: " + scratch.file(name) + ": "), std::string::npos) << name << "\n" << log;
        for (const char *name : {"good1.IMG: ", "good2.IMG: ", "page.HTM", "notes.txt: "})
            EXPECT_EQ(log.find(name), std::string::npos) << name;
        EXPECT_EQ(log.find('\x01'), std::string::npos);
        EXPECT_FALSE(session().unattended || browse_settings().timed_browse_go);
        EXPECT_TRUE(find_windows("Browser").empty());
        gui_note("attended again");
        EXPECT_EQ(responder.shown.back(), "note: attended again");
    });
}

TEST(TimedWalk, GoesOnUnattendedWhilePaused) {
    const ScratchFolder scratch;
    for (int i = 0; i < 40; ++i)
        write_image(scratch, util_format("p%d", i));
    run_viewer([&] {
        ScriptedResponder responder;
        start_timed(&responder, scratch.path().string(), 50);
        EXPECT_TRUE(settle_until([] { return browse_dialog(BrowseDialog::Timed) != nullptr; }));
        Window *timed = browse_dialog(BrowseDialog::Timed);
        ASSERT_TRUE(timed);
        EXPECT_EQ(session().browse_continue_win, timed);
        EXPECT_TRUE(use_control(timed, 5));
        EXPECT_TRUE(settle_until([] { return file_dialog() != nullptr; }));
        const std::string first = offered_name();
        EXPECT_TRUE(settle_until([&] { return offered_name() != first; }));  // the timer goes on
        EXPECT_EQ(find_windows("Browser").size(), 2u);                       // one dialog for a file at a time
        EXPECT_TRUE(session().unattended);
        gui_error("is not shown");
        EXPECT_EQ(gui_question("Sure?", {"Yes", "No"}), 1);
        EXPECT_EQ(gui_question("Which?", {"One", "Two"}), -1);
        EXPECT_EQ(responder.shown.size(), 1u);

        type_text(timed, 1, "1");
        EXPECT_TRUE(use_control(timed, 2));
        EXPECT_EQ(browse_settings().browse_interval, 1000);  // without bounds
        EXPECT_TRUE(use_control(timed, 6));
        EXPECT_TRUE(settle_until([] { return !file_dialog() && !gui_windows().empty(); }));
        EXPECT_TRUE(use_control(timed, 3));
        settle();
        EXPECT_FALSE(is_browsing() || session().unattended);
        EXPECT_TRUE(find_windows("Browser").empty());
    });
}

// Opens images as the viewer does and notes the peak of memory at the first ones.
constexpr int first_images = 40;
int g_images = 0;
int64_t g_peak_at_first = 0;
void open_counted(std::unique_ptr<GenericState> state) {
    if (++g_images == first_images)
        g_peak_at_first = kilobytes("VmHWM:");
    open_image(std::move(state));
}
constexpr ProductOpener counting_openers[] = {{"IMAGE", nullptr, open_counted, nullptr}};

TEST(TimedWalk, KeepsNoMemoryOfWhatItShowed) {
    constexpr int products = 2000;
    constexpr int64_t allowed_growth = 20 * 1024;  // kilobytes
    const ScratchFolder scratch;
    for (int i = 0; i < products; ++i) {
        if (i % 4 == 0)
            scratch.write(util_format("t%d.txt", i), std::string(20000, 'x') + "\n");
        else
            write_image(scratch, util_format("p%d", i));
    }
    run_viewer([&] {
        ScriptedResponder responder;
        set_product_openers(counting_openers);
        start_timed(&responder, scratch.path().string(), 0);
        EXPECT_TRUE(walk_to_end(60));
        EXPECT_EQ(g_images, products * 3 / 4);
        ASSERT_GT(g_peak_at_first, 0);
        const int64_t growth = kilobytes("VmHWM:") - g_peak_at_first;
        RecordProperty("growth_in_kilobytes", std::to_string(growth));
        EXPECT_LE(growth, allowed_growth);
        EXPECT_LE(gui_windows().size(), 1u);
    });
}

}  // namespace
