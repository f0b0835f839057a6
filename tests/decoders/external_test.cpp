#include "decoders/external.h"

#include "decoders/clementine.h"
#include "decoders/moc.h"
#include "support/notices.h"
#include "support/scratch.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <jpeglib.h>
#include <vector>

namespace {

class External : public testing::Test {
  protected:
    ~External() override { unsetenv("LUMACART_MOC_DECODER"); }

    std::string program(const std::string &commands) const {
        const std::string path = folder_.write("program", "#!/bin/sh\n" + commands + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    // 0 and the samples, or 1.
    int decode(const std::string &bytes, int64_t lines, int64_t samples, std::vector<uint8_t> *out) const {
        const std::string path = folder_.write("x.img", bytes);
        FILE *file = fopen(path.c_str(), "rb");
        fseek(file, 5, SEEK_SET);
        out->assign(static_cast<size_t>(lines * samples), 0);
        const int status = OalDecodeClementine(file, path.c_str(), lines, samples, out->data());
        fclose(file);
        return status;
    }

    Notices notices_;
    ScratchFolder folder_;
    SilentReports reports_;
};

// A picture of steps of 16 samples, five bytes behind the start.
std::string jpeg_of(unsigned lines, unsigned samples, bool colour = false) {
    jpeg_compress_struct jpeg = {};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    jpeg.image_height = lines;
    jpeg.image_width = samples;
    jpeg.input_components = colour ? 3 : 1;
    jpeg.in_color_space = colour ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<uint8_t> line(samples * 3);
    for (size_t i = 0; i < line.size(); ++i)
        line[i] = static_cast<uint8_t>(i / 16 * 20);
    for (unsigned i = 0; i < lines; ++i) {
        JSAMPROW row = line.data();
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    const std::string text = "#####" + std::string(reinterpret_cast<char *>(bytes), size);
    free(bytes);
    return text;
}

TEST_F(External, DecodesOrdinaryGreyJpegStreams) {
    std::vector<uint8_t> out;
    const std::string sound = jpeg_of(40, 160);
    ASSERT_EQ(decode(sound, 40, 160, &out), 0) << error_string;
    for (size_t i = 0; i < out.size(); ++i)
        ASSERT_NEAR(out[i], static_cast<double>(i % 160 / 16 * 20), 1);
    EXPECT_EQ(std::ssize(notices_.texts), 0);
    EXPECT_EQ(decode(sound.substr(0, sound.size() * 3 / 4), 40, 160, &out), 0);
    EXPECT_EQ(std::ssize(notices_.texts), 1);  // what is there is shown
    EXPECT_EQ(out[0], 0);

    const std::pair<std::string, const char *> cases[] = {
        {jpeg_of(160, 40), "its size is not that of the label"},
        {jpeg_of(40, 160, true), "it is not grey"},
        {sound.substr(0, 9), "can't be decoded"},
    };
    for (const auto &[bytes, fault] : cases) {
        EXPECT_EQ(decode(bytes, 40, 160, &out), 1);
        EXPECT_NE(error_string.find(fault), std::string::npos) << error_string;
    }
}

TEST_F(External, RunsProgramsWithinTheirLimits) {
    EXPECT_EQ(run_external_decoder(program("test \"$1 $#\" = 'a b;c 1' && ! read line"), {"a b;c"}), "");
    EXPECT_NE(run_external_decoder(program("exit 3"), {}).find("ended with status 3"), std::string::npos);
    EXPECT_NE(run_external_decoder("/nowhere/program", {}).find("No such file"), std::string::npos);
    EXPECT_NE(run_external_decoder("program", {}).find("is not named by its full path"), std::string::npos);
    signal(SIGCHLD, SIG_IGN);
    EXPECT_NE(run_external_decoder(program("exit 3"), {}, 1).find("ended with status 3"), std::string::npos);
    EXPECT_EQ(signal(SIGCHLD, SIG_DFL), SIG_IGN);
    // What the program started ends with it.
    const std::string pid = folder_.file("pid");
    const std::string slow = program("sleep 300 & echo $! >\"$1\"; wait");
    EXPECT_NE(run_external_decoder(slow, {pid}, 1).find("within 1 seconds"), std::string::npos);
    const std::string stat = "/proc/" + std::to_string(std::stoi(read_file(pid))) + "/stat";
    const auto lives = [&] {
        const std::string state = read_file(stat);
        return !state.empty() && state.find(") Z") == std::string::npos && state.find(") X") == std::string::npos;
    };
    for (int looks = 0; looks < 500 && lives(); ++looks)
        usleep(10000);
    EXPECT_FALSE(lives());
}

TEST_F(External, LeavesNothingBehindWhenInterrupted) {
    static std::string output;
    static bool was_gone = false;
    const auto before =
        signal(SIGTERM, [](int) { was_gone = !std::filesystem::exists(std::filesystem::path(output).parent_path()); });
    {
        const DecoderFolder folder;
        output = folder.file();
        ASSERT_TRUE(folder.is_there());
        raise(SIGTERM);
        EXPECT_NE(run_external_decoder(program("sleep 60"), {}, 30).find("was interrupted"), std::string::npos);
        EXPECT_FALSE(was_gone);
    }
    EXPECT_TRUE(was_gone);
    signal(SIGTERM, before);
}

TEST_F(External, DecompressesMocProductsIntoNewFilesOnly) {
    const std::string input = folder_.write("a.imq", "moc");
    const std::string output = folder_.file("a.tmp");
    const auto decompress = [&] { return OalDecompressMoc(input.c_str(), output.c_str()); };
    EXPECT_EQ(decompress(), 1);
    expect_report(520, "Set LUMACART_MOC_DECODER to the full path");

    setenv("LUMACART_MOC_DECODER", program("(echo LABEL; cat \"$1\") >\"$2\"").c_str(), 1);
    EXPECT_EQ(decompress(), 0) << error_string;
    EXPECT_EQ(read_file(output), "LABEL\nmoc");
    EXPECT_EQ(decompress(), 1);  // it is there
    EXPECT_EQ(read_file(output), "LABEL\nmoc");
    std::filesystem::remove(output);
    std::filesystem::create_symlink(folder_.file("elsewhere"), output);
    EXPECT_EQ(decompress(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder_.file("elsewhere")));
    std::filesystem::remove(output);

    setenv("TMPDIR", folder_.file("").c_str(), 1);
    for (const char *commands : {"echo half >\"$2\"; exit 1", "mkdir -p \"$2/a\"", ": >\"$2.part\"; exit 1", "exit 0",
                                 ": >\"$2\"", "ln -s /etc/hostname/x \"$2\""}) {
        program(commands);
        EXPECT_EQ(decompress(), 1) << commands;
        EXPECT_FALSE(std::filesystem::exists(output)) << commands;
    }
    unsetenv("TMPDIR");
    for (const auto &left : std::filesystem::directory_iterator(folder_.file("")))
        EXPECT_FALSE(left.is_directory()) << left.path();
}

}  // namespace
