// New label windows: the template, and labels of FITS files that the user chooses.
#include "support/scratch.h"
#include "support/window_viewer.h"
#include "viewer/model/label_template.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

constexpr char new_label_title[] = "Lumacart - New Label";

// A primary array of 4 x 3 bytes, behind one block of header.
std::string small_fits(const std::string &bitpix = "8") {
    std::string bytes;
    for (std::string card : {std::string("SIMPLE  = T"), "BITPIX  = " + bitpix, std::string("NAXIS   = 2"),
                             std::string("NAXIS1  = 4"), std::string("NAXIS2  = 3"), std::string("END")}) {
        card.resize(80, ' ');
        bytes += card;
    }
    bytes.resize(2880, ' ');
    return bytes + "abcdefghijkl";
}

// Chooses New Label for a FITS File in the task window, the file by script. Returns the window.
Window *open_for_fits(ScriptedResponder *responder, const FileSpec &file) {
    responder->files = {file};
    EXPECT_TRUE(choose_command(gui_task_window(), 1066));
    settle();
    return gui_windows().empty() ? nullptr : gui_windows().back();
}

TEST(NewLabelWindow, ShowsTheTemplateInReadableWidth) {
    run_viewer([] {
        ScriptedResponder responder;
        ASSERT_TRUE(choose_command(gui_task_window(), 1067));
        settle();
        Window *window = find_window(new_label_title);
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_paragraphs(window, text_control), label_template());
        EXPECT_FALSE(gui_command_enabled(window, 1004));
        EXPECT_TRUE(gui_command_enabled(window, 1005));
        EXPECT_GE(place_on_screen(window).width, std::min(gui_columns_width(window, text_control, 80), 700));

        ASSERT_TRUE(choose_command(window, 1070));  // another, from its own menu bar
        settle();
        EXPECT_EQ(gui_windows().size(), 2u);
        close_window(gui_windows().back());  // nothing was written: no question
        EXPECT_EQ(gui_windows().size(), 1u);
        EXPECT_TRUE(responder.shown.empty());
        ASSERT_TRUE(choose_command(window, 1005));
        settle();
        ASSERT_EQ(responder.requests.size(), 1u);
        EXPECT_EQ(responder.requests[0].proposed.name, "label.lbl");
    });
}

TEST(NewLabelWindow, DescribesTheFitsFileThatTheUserChooses) {
    const ScratchFolder scratch;
    scratch.write("picture.fits", small_fits());
    const std::string folder = std::filesystem::canonical(scratch.path()).string();
    run_viewer([&] {
        ScriptedResponder responder;
        Window *window = open_for_fits(&responder, {scratch.path().string(), "picture.fits"});
        ASSERT_TRUE(window);
        EXPECT_EQ(gui_title(window), "Lumacart - New Label - picture.fits");
        EXPECT_FALSE(gui_command_enabled(window, 1004));
        EXPECT_TRUE(gui_command_enabled(window, 1005));
        EXPECT_EQ(responder.shown, std::vector<std::string>{"open: Open FITS File"});

        gui_set_text_changed(window, text_control, true);
        responder.answers = {0};  // Save, which asks for a name; cancelled
        close_window(window);
        ASSERT_TRUE(gui_window_exists(window));
        EXPECT_EQ(responder.shown[1],
                  "question: The new label was changed. Save it before it closes? [Save|Discard|Cancel]");

        // The label never takes the place of the file that it describes.
        responder.files = {{folder, "picture.fits"}, {folder, "picture.lbl"}};
        responder.answers = {0};
        ASSERT_TRUE(choose_command(window, 1005));
        ASSERT_EQ(responder.requests.size(), 4u);
        EXPECT_EQ(responder.requests[1].proposed.directory, folder);
        EXPECT_EQ(responder.requests[1].proposed.name, "picture.lbl");
        EXPECT_NE(responder.shown[4].find("holds more than this text"), std::string::npos);
        EXPECT_EQ(read_file(scratch.file("picture.fits")), small_fits());
        EXPECT_FALSE(gui_text_changed(window, text_control));
        EXPECT_TRUE(gui_command_enabled(window, 1004));  // now it has a file

        Window *image = open_in_viewer(scratch.file("picture.lbl"));
        ASSERT_TRUE(image);
        EXPECT_EQ(gui_title(image), "Lumacart - Image - picture.lbl");
        ASSERT_EQ(window_state(image)->image_info->line_samples, 4);
        EXPECT_EQ(window_state(image)->image_info->lines, 3);
    });
}

TEST(NewLabelWindow, StaysEmptyAndTellsWhyWhenThereIsNoLabel) {
    const ScratchFolder scratch;
    scratch.write("short.fits", small_fits("16"));
    const std::string folder = scratch.path().string();
    run_viewer([&] {
        struct Case {
            FileSpec file;
            std::vector<std::string> shown;  // behind the file dialog
        };
        for (const Case &c :
             {Case{{folder, "short.fits"}, {"note: short.fits: BITPIX is 16; only 8, -32 and -64 are accepted."}},
              Case{{folder, "absent.fits"},
                   {"note: absent.fits: The file cannot be opened: No such file or directory."}},
              Case{{folder + "/absent", "a.fits"}, {"error: unable to set directory"}},
              Case{{folder, ""}, {"error: bad file name, missing directory, or missing disk."}}}) {
            ScriptedResponder responder;
            Window *window = open_for_fits(&responder, c.file);
            ASSERT_TRUE(window);
            EXPECT_EQ(gui_paragraph_count(window, text_control), 0u);
            EXPECT_EQ(std::vector<std::string>(responder.shown.begin() + 1, responder.shown.end()), c.shown);
            EXPECT_EQ(gui_title(window), new_label_title);
            close_window(window);
        }
        ScriptedResponder cancelling;
        ASSERT_TRUE(choose_command(gui_task_window(), 1066));
        EXPECT_EQ(cancelling.shown.size(), 1u);
    });
}

}  // namespace
