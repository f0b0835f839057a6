// Opening files that are no ordinary products: text, compressed, hostile, or without memory for them.
#include "support/jpeg2000.h"
#include "support/product.h"
#include "support/silent_reports.h"
#include "support/window_viewer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <sys/resource.h>
#include <unistd.h>

namespace {
std::atomic<int> allocations_left = -1;             // of those that may fail; -1: all
std::atomic<size_t> largest_allocation = SIZE_MAX;  // of the others
}  // namespace

// Here, and not in the program: every allocation that has an answer to failure goes through it.
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    if (allocations_left == 0)
        return nullptr;
    if (allocations_left > 0)
        --allocations_left;
    return malloc(size);
}

void *operator new(size_t size) {
    void *block = size <= largest_allocation ? malloc(size) : nullptr;
    if (!block && std::get_new_handler())
        std::get_new_handler()();
    return block ? block : throw std::bad_alloc();
}

namespace {

using Shown = std::vector<std::string>;

std::string image_label(const std::string &more = "") {
    return "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 4\n" + more +
           "^IMAGE = (\"DATA.IMG\", 1)\nOBJECT = IMAGE\n LINES = 3\n LINE_SAMPLES = 4\n SAMPLE_BITS = 8\n"
           " SAMPLE_TYPE = UNSIGNED_INTEGER\nEND_OBJECT\nEND\n";
}

class OpenFlow : public testing::Test {
  protected:
    OpenFlow() { folder_.write("DATA.IMG", "abcdefghijkl"); }

    // What the user saw, and whether a window came of it.
    Shown open(const std::string &path, std::vector<int> answers = {}, bool expect_window = false) {
        ScriptedResponder responder;
        responder.answers = std::move(answers);
        EXPECT_EQ(open_in_viewer(path) != nullptr, expect_window) << path;
        return responder.shown;
    }

    ScratchFolder folder_;
    SilentReports reports_;
};

TEST_F(OpenFlow, WhatIsNoLabelIsOfferedAsText) {
    run_viewer([this] {
        const std::string name = "no \"label\" 100%s%n.txt";
        const std::string path = folder_.write(name, "A plain text.\n");
        const std::string question =
            "question: Label/Object not found.\nFile " + name + " will be opened as text [OK|Cancel]";
        EXPECT_EQ(open(path, {1}), Shown{question});
        EXPECT_EQ(open(path, {-1}), (Shown{question, "error: Open Text Dialog - invalid command"}));
        EXPECT_EQ(open(path, {0}, true), Shown{question});
        EXPECT_FALSE(window_state(gui_windows().back())->label_state->text_only);
        const std::string text_only = folder_.write("a.lbl.LBL", "OBJECT = TEXT\n");
        EXPECT_EQ(open(text_only, {0}, true).size(), 1u);
        EXPECT_TRUE(window_state(gui_windows().back())->label_state->text_only);

        session().unattended = true;
        EXPECT_EQ(open(path, {}, true), Shown{});
        EXPECT_EQ(open(folder_.file("no/such.lbl")),
                  Shown{"error: old parser: " + folder_.file("no") + "  could not convert string to a directory path"});
        session().unattended = false;

        folder_.write("x.IMG", "data");
        folder_.write("x.lbl", image_label());
        EXPECT_EQ(open(folder_.file("x.IMG"), {1, 1}).size(), 2u) << "no label, then no text";
        EXPECT_EQ(open(folder_.file("x.IMG"), {0}, true).size(), 1u);
        EXPECT_TRUE(window_state(gui_windows().back())->label_state->label_from_another_file);
    });
}

TEST_F(OpenFlow, FilesDroppedOnAnyWindowOpen) {
    run_viewer([this] {
        const std::string image = folder_.write("image.lbl", image_label());
        ASSERT_TRUE(open(folder_.write("text.txt", "text"), {0}, true).size() == 1);
        for (Window *window : {gui_windows()[0], gui_task_window()}) {
            const size_t before = gui_windows().size();
            drop_files(window, {image, image});
            EXPECT_TRUE(settle_until([&] { return gui_windows().size() == before + 2; }));
        }
    });
}

TEST_F(OpenFlow, OlderLabelsAreConvertedOrToldOf) {
    run_viewer([this] {
        const std::string start = "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 4\n^IMAGE = (\"DATA.IMG\", 2)\n";
        const std::string rest = "IMAGE_LINES = 2\nLINE_SAMPLES = 4\nSAMPLE_BITS = 8\nEND\n";
        EXPECT_EQ(open(folder_.write("old.lbl", start + "FILE_TYPE = IMAGE\n" + rest), {}, true), Shown{});
        EXPECT_EQ(shown_pixel(gui_windows().back(), 0, 0), 0x656565u);
        const Shown shown = open(folder_.write("odd.lbl", start + "FILE_TYPE = MUSIC\n" + rest));
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].find("error: open_object -- conversion of label failed\n"), 0u) << shown[0];
        EXPECT_NE(shown[0].find("FILE_TYPE = MUSIC"), std::string::npos) << shown[0];
    });
}

TEST_F(OpenFlow, Jpeg2000ImagesOpenByThemselvesAndThroughLabels) {
    run_viewer([this] {
        const std::string path = write_jpeg2000(folder_.file("x.jp2"), {.width = 40, .height = 30, .bits = 12});
        EXPECT_EQ(open(path, {}, true), Shown{});
        const ImageDescription &image = *window_state(gui_windows().back())->image_info;
        EXPECT_EQ(image.lines, 30);
        EXPECT_EQ(image.sample_bits, 16);
        std::string label = image_label(
            "OBJECT = COMPRESSED_FILE\nFILE_NAME = \"x.jp2\"\nENCODING_TYPE = \"JP2\"\n"
            "END_OBJECT\n");
        label.replace(label.find("DATA.IMG"), 8, "x.img").replace(label.find("LINES = 3"), 9, "LINES = 30");
        label.replace(label.find("SAMPLES = 4"), 11, "SAMPLES = 40").replace(label.find("BITS = 8"), 8, "BITS = 16");
        EXPECT_EQ(open(folder_.write("x.lbl", label), {}, true), Shown{});
        // As many bands as there are, also where the label tells of none.
        write_jpeg2000(path, {.width = 40, .height = 30, .components = 3});
        label.replace(label.find("BITS = 16"), 9, "BITS = 8");
        session().unattended = true;
        EXPECT_EQ(open(folder_.write("x.lbl", label), {}, true), Shown{});
        session().unattended = false;
        EXPECT_EQ(window_state(gui_windows().back())->kind, DocumentKind::Bands);
        folder_.write("x.jp2", read_file(path).substr(0, 100));
        EXPECT_NE(open(folder_.file("x.lbl")).at(0).find("JPEG 2000 data of"), std::string::npos);
    });
}

TEST_F(OpenFlow, HostileLabelsAreToldOfAndTheProgramLives) {
    run_viewer([this] {
        std::string objects;
        for (int i = 0; i < 10000; ++i)
            objects += "OBJECT = NOTE\nEND_OBJECT\n";
        EXPECT_EQ(open(folder_.write("many.lbl", image_label(objects)), {}, true), Shown{});
        const std::string nothing = open(folder_.write("none.lbl", "RECORD_TYPE = STREAM\n" + objects)).at(0);
        EXPECT_EQ(nothing.find("error: Open Object - no valid object\n\nOnly FILE"), 0u);
        const std::string line(2 << 20, 'X');
        EXPECT_EQ(open(folder_.write("long.lbl", image_label("NOTE = \"" + line + "\"\n")), {}, true), Shown{});
        std::string label = image_label();
        label.insert(label.find(" SAMPLE_TYPE"), " ENCODING_TYPE = \"" + line + "\"\n");
        EXPECT_EQ(open(folder_.write("wide.lbl", label)).size(), 1u);
        EXPECT_EQ(open(folder_.write("shut.jp2", std::string("\xFF\x4F\xFF\x51", 4)))
                      .at(0)
                      .find("error: open_object - unable to parse label file: "),
                  0u);
        EXPECT_EQ(open(folder_.write("x.lbl", image_label()), {}, true), Shown{});
    });
}

// --- Compressed products ------------------------------------------------------------------------------------------

class OpenMoc : public OpenFlow {
  protected:
    OpenMoc() {
        product_ = folder_.write("scene.v2.imq", "KESTREL_ORBITER\n" + image_label());
        const std::string program = folder_.write("decoder", "#!/bin/sh\ntail -n +2 \"$1\" >\"$2\"\n");
        EXPECT_EQ(chmod(program.c_str(), 0700), 0);
        setenv("LUMACART_MOC_DECODER", program.c_str(), 1);
    }
    ~OpenMoc() override { unsetenv("LUMACART_MOC_DECODER"); }

    void run(std::function<void()> body) {
        run_viewer([&] {
            session().working_directory = folder_.path().string() + "/";
            body();
        });
    }

    std::string product_;
};

TEST_F(OpenMoc, ShowsTheDecompressedImage) {
    run([this] {
        const std::string made = folder_.write("scene.tmp", "an old file");
        ScriptedResponder responder;
        responder.files = {{folder_.path().string(), "scene.v2.imq"}};
        ASSERT_TRUE(choose_command(gui_task_window(), 1060));
        EXPECT_EQ(responder.shown, Shown{"open: Open"});
        ASSERT_EQ(gui_windows().size(), 1u);
        const LabelState &label = *window_state(gui_windows()[0])->label_state;
        EXPECT_EQ(label.file_name, made);
        EXPECT_TRUE(label.label_from_another_file);
        EXPECT_EQ(gui_title(gui_windows()[0]), "Lumacart - Image - scene.tmp");
        EXPECT_EQ(shown_pixel(gui_windows()[0], 0, 0), 0x616161u);
        // By File > Open too, which knows it by its name and first bytes.
        EXPECT_EQ(open(product_, {}, true), Shown{});
    });
}

TEST_F(OpenMoc, ReplacesNothingButAnOlderFileOfItsOwnName) {
    run([this] {
        const std::string treasure = folder_.write("treasure", "kept");
        ASSERT_EQ(symlink(treasure.c_str(), folder_.file("scene.tmp").c_str()), 0);
        EXPECT_EQ(open(product_, {}, true), Shown{});
        EXPECT_EQ(read_file(treasure), "kept");

        const std::string own = folder_.write("own.tmp", read_file(product_));
        for (const bool is_link : {false, true}) {
            EXPECT_EQ(is_link ? link(own.c_str(), folder_.file("own.imq").c_str()) : 0, 0);
            ScriptedResponder responder;
            responder.files = {{folder_.path().string(), is_link ? "own.imq" : "own.tmp"}};
            open_moc_object();
            EXPECT_EQ(responder.shown.size(), 2u) << responder.shown.back();
            EXPECT_EQ(read_file(own), read_file(product_));
        }
        unsetenv("LUMACART_MOC_DECODER");
        const std::string told = open(product_).at(0);
        EXPECT_EQ(told.find("error: KRV label or ASCII file required.\n"), 0u) << told;
        EXPECT_NE(told.find("LUMACART_MOC_DECODER"), std::string::npos) << told;
    });
}

// --- Memory -------------------------------------------------------------------------------------------------------

TEST_F(OpenFlow, WithoutMemoryForItsRecordsTheProgramEnds) {
    const char *tasks[] = {"allocating generic state", "unable to allocate label state"};
    for (int failing = 0; failing < 2; ++failing) {
        run_viewer([&] {
            ScriptedResponder responder;
            session().cmdline_fname = folder_.write("x.lbl", image_label());
            allocations_left = failing;
            open_object(0);
            allocations_left = -1;
            EXPECT_EQ(responder.shown, Shown{"error: Open Object - " + std::string(tasks[failing]) +
                                             "\nOut of Memory\nprogram aborting\nincrease available memory"});
            session().cmdline_fname.clear();
        });
    }
}

TEST_F(OpenFlow, WithoutMemoryATextIsToldOrTheProgramEnds) {
    const std::string ending =
        "error: Open Text - allocating generic state"
        "\nOut of Memory\nprogram aborting\nincrease available memory";
    struct Case {
        void (*open)(Window *);
        int allocations;
        std::string message;
    };
    for (const Case &c : {Case{open_text_file, 0, ending},
                          {open_text_file, 1, "error: Couldn't allocate memory"},
                          {open_text_file_or_end, 0, ending},
                          {open_text_file_or_end, 1, ending},
                          {open_new_label, 0, ending},
                          {open_new_fits_label, 1, "error: Couldn't allocate memory"}}) {
        run_viewer([&] {
            ScriptedResponder responder;
            responder.files = {{folder_.path().string(), "DATA.IMG"}};
            allocations_left = c.allocations;
            c.open(gui_task_window());
            allocations_left = -1;
            ASSERT_FALSE(responder.shown.empty());
            EXPECT_EQ(responder.shown.back(), c.message);
            EXPECT_EQ(gui_task_window() == nullptr, c.message == ending);
        });
    }
}

TEST_F(OpenFlow, WithoutMemoryLineEndsStayAsTheyAre) {
    run_viewer([&] {
        const std::string path = folder_.write("long.lbl", std::string(2 << 20, 'x') + "\r\n");
        ScriptedResponder responder;
        responder.answers = {0};
        Window *window = open_in_viewer(path);
        ASSERT_TRUE(window);
        largest_allocation = 1 << 20;
        toggle_line_end_marks(window);
        largest_allocation = SIZE_MAX;
        EXPECT_EQ(responder.shown.size(), 2u);
        EXPECT_TRUE(responder.shown.back().starts_with("warning: "));
        EXPECT_FALSE(window_state(window)->label_state->line_ends_shown);
        EXPECT_TRUE(gui_paragraphs(window, text_control)[0].ends_with("x\r\n"));
    });
}

TEST_F(OpenFlow, WithoutMemoryForItsLinesThereIsNoHierarchy) {
    run_viewer([&] {
        std::string label = image_label();
        label.insert(label.find(" LINES"), " NAME = \"" + std::string(2 << 20, 'x') + "\"\n");
        Window *image = open_in_viewer(folder_.write("long.lbl", label));
        ASSERT_TRUE(image);
        show_hierarchy(image);
        ScriptedResponder responder;
        largest_allocation = 1 << 20;
        EXPECT_NE(hier_create(gui_windows().back()), 0);
        largest_allocation = SIZE_MAX;
        EXPECT_EQ(responder.shown, Shown{"warning: Memory allocation in WIN_OBJHIER_eh"});
    });
}

// A label that memory cannot hold: the process says so and ends by itself.
TEST_F(OpenFlow, ALabelLargerThanMemoryEndsTheProcessCleanly) {
    std::string label = "RECORD_TYPE = STREAM\n";
    for (int i = 0; i < 500000; ++i)
        label += "A = 1\n";
    const std::string path = folder_.write("large.lbl", label + "END\n");
    const auto open_within = [&](rlim_t room) {
        dup2(STDERR_FILENO, STDOUT_FILENO);  // what is said there is what the test sees
        std::set_new_handler(OaOutOfMemory);
        run_viewer([&] {
            rlim_t pages = 0;
            std::ifstream("/proc/self/statm") >> pages;
            const rlim_t size = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + room;
            const rlimit limit = {size, size};
            setrlimit(RLIMIT_AS, &limit);
            open_file(path);
        });
        _exit(7);
    };
    EXPECT_EXIT(open_within(rlim_t{32} << 20), testing::ExitedWithCode(1), "I'm out of memory and I can't get up!");
}

}  // namespace
