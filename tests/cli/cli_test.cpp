// Runs the real program.
#include "support/cli.h"

#include "support/gif.h"
#include "support/jpeg2000.h"
#include "support/product.h"

#include <gtest/gtest.h>
#include <png.h>

#include <limits>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<uint8_t> levels;

    bool operator==(const Picture &) const = default;
};

Picture read_png(const std::string &path) {
    Picture picture;
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return picture;
    EXPECT_EQ(image.format & PNG_FORMAT_FLAG_COLOR, 0u);
    image.format = PNG_FORMAT_GRAY;
    std::vector<uint8_t> levels(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, levels.data(), 0, nullptr))
        picture = {image.width, image.height, {levels.begin(), levels.end()}};
    return picture;
}

// 3 lines of 4 samples: 0, 100, .. 1100.
ImageProduct ramp_product() {
    ImageProduct product{.lines = 3, .samples = 4, .bits = 16, .type = "MSB_INTEGER"};
    product.more = "NAME = \"MAIN VIEW\"\n";
    const std::vector<int16_t> ramp = {0, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100};
    product.data = stored(ramp, std::endian::big);
    return product;
}

std::string write_ramp(const ScratchFolder &scratch) {
    return write_detached(scratch, "scene", ramp_product());
}

TEST(Cli, TellsAboutItself) {
    EXPECT_EQ(run_cli({"--version"}).out, "lumacart-cli " LUMACART_VERSION "\n");
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"--help"}, {"label", "--help"}, {"image", "x", "--help"}}) {
        const Outcome help = run_cli(words);
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.out.find("usage: lumacart-cli"), 0u);
        EXPECT_EQ(help.err, "");
    }
    EXPECT_EQ(run_command(cli_command({"--help"}) + " >/dev/full").status, 2);
}

TEST(Cli, WritesOverNothingThatItReadsOrCannotReplace) {
    const ScratchFolder scratch;
    scratch.write("s.fmt", "NOTE = 1\n");
    ImageProduct product = ramp_product();
    product.more = "^A_STRUCTURE = \"s.fmt\"\n";
    const std::string label = write_detached(scratch, "scene", product);
    const std::string old = scratch.write("old", "before");
    fs::create_symlink("nowhere", scratch.file("dangling"));
    fs::create_symlink("circle", scratch.file("circle"));
    fs::create_symlink("old", scratch.file("link"));
    fs::create_directory_symlink(".", scratch.file("here"));
    fs::create_hard_link(scratch.file("scene.IMG"), scratch.file("twin"));
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{"--raw", scratch.file("s.fmt")}, "belongs to the product"},
        {{"--png", label}, "belongs to the product"},
        {{"--raw", scratch.file("twin")}, "belongs to the product"},
        {{"--raw", scratch.file("link"), "--png", old}, "files of their own"},
        {{"--raw", scratch.file("new"), "--png", scratch.file("here/new")}, "files of their own"},
        {{"--raw", scratch.file("dangling")}, "No such file or directory"},
        {{"--png", scratch.file("circle")}, "Too many levels of symbolic links"},
        {{"--png", "/dev/null"}, "Not a regular file"},
    };
    for (const auto &[outputs, reason] : cases) {
        std::vector<std::string> arguments = {"image", label};
        arguments.insert(arguments.end(), outputs.begin(), outputs.end());
        expect_run(arguments, 2, "", reason);
    }
    EXPECT_EQ(read_file(scratch.file("s.fmt")), "NOTE = 1\n");
    EXPECT_EQ(read_file(old), "before");
    for (const char *link : {"dangling", "circle", "link"})
        EXPECT_TRUE(fs::is_symlink(scratch.file(link))) << link;
}

TEST(Cli, RefusesWhatItCannotDo) {
    const ScratchFolder scratch;
    const std::string label = write_ramp(scratch);
    const std::string plain = scratch.write("plain.dat", std::string(1000, '\0'));
    const std::string text =
        scratch.write("text.lbl", "RECORD_TYPE = STREAM\r\nOBJECT = NOTE\r\nEND_OBJECT\r\nEND\r\n");
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "usage"},
        {{"image"}, "which file?"},
        {{"image", label, label}, "one file at a time"},
        {{"image", label, "--bands", "1"}, "unknown option --bands"},
        {{"image", label, "--band"}, "--band needs a value"},
        {{"image", label, "--band", "0"}, "--band takes"},
        {{"image", label, "--band", "2"}, "there is no band 2; BANDS is 1"},
        {{"image", label, "--lines", "3:2"}, "--lines takes A:B"},
        {{"image", label, "--lines", "1:99999999999999999999"}, "--lines takes A:B"},
        {{"image", label, "--lines", "1:4"}, "there is no line 4; LINES is 3"},
        {{"image", label, "--samples", "5:5"}, "there is no sample 5; LINE_SAMPLES is 4"},
        {{"image", label, "--object", "QUBE"}, "there is no object QUBE"},
        {{"image", label, "--raw", scratch.file("no/where")}, "No such file or directory"},
        {{"image", scratch.file("absent")}, "No such file or directory"},
        {{"image", text}, "there is no object *IMAGE"},
        {{"label", plain}, "no label in the file nor beside it"},
    };
    for (const auto &[arguments, reason] : cases)
        expect_run(arguments, 2, "", reason);
}

TEST(CliLabel, MessagesAndObjects) {
    const ScratchFolder scratch;
    const std::string label = write_ramp(scratch);
    const Outcome good = run_cli({"label", label});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.err, "");
    EXPECT_NE(good.out.find("MAIN VIEW"), std::string::npos);
    EXPECT_NE(good.out.find("--  IMAGE"), std::string::npos);
    expect_run({"label", scratch.file("scene.IMG")}, 0, good.out, "using " + label);

    const std::string odd = scratch.write("odd\nname\n%s.lbl", read_file(label));
    EXPECT_EQ(run_cli({"label", odd}).err, "");
    // A reader that goes away ends the program, which leaves nothing behind.
    std::string objects = "RECORD_TYPE = 1__2\n";
    for (int i = 0; i < 10000; ++i)
        objects += "OBJECT = A\nEND_OBJECT\n";
    const std::string many = scratch.write("many.lbl", objects + "END\n");
    const ScratchFolder temporary;
    run_command("export TMPDIR=" + quoted(temporary.path().string()) + "; " + cli_command({"label", many}) +
                " | head -n 1");
    EXPECT_TRUE(fs::is_empty(temporary.path()));

    const std::string bad =
        scratch.write("bad.lbl", "RECORD_TYPE = STREAM\r\nOBJECT = IMAGE\r\nLINES = 1__2\r\nEND\r\n");
    const Outcome faulty = run_cli({"label", bad});
    EXPECT_EQ(faulty.status, 1);
    EXPECT_NE(faulty.err.find("Multiple underscores"), std::string::npos) << faulty.err;
    EXPECT_NE(faulty.out.find("--  IMAGE"), std::string::npos);
    EXPECT_EQ(faulty.out.find("Multiple underscores"), std::string::npos);
}

TEST(CliImage, APartIsReadWrittenAndShown) {
    const ScratchFolder scratch;
    const std::string raw = scratch.file("part.raw");
    const std::string png = scratch.file("part.png");
    expect_run(
        {"image", write_ramp(scratch), "--object", "MAIN*", "--lines=2:3", "--samples=2:4", "--raw", raw, "--png", png},
        0, "2 3 16 LSB_INTEGER 500 1100\n", "");
    const int16_t samples[] = {500, 600, 700, 900, 1000, 1100};
    EXPECT_EQ(read_file(raw), std::string(reinterpret_cast<const char *>(samples), sizeof samples));
    EXPECT_EQ(read_png(png), (Picture{3, 2, {0, 42, 85, 170, 212, 255}}));  // 601 values on 256 levels

    // The label's own range is used, values outside wrap; directions turn the picture.
    ImageProduct turned = ramp_product();
    turned.more = "MINIMUM = 100\nMAXIMUM = 355\nLINE_DISPLAY_DIRECTION = LEFT\nSAMPLE_DISPLAY_DIRECTION = DOWN\n";
    expect_run({"image", write_detached(scratch, "turned", turned), "--lines", "1:2", "--png", png}, 0,
               "2 4 16 LSB_INTEGER 0 700\n", "");
    EXPECT_EQ(read_png(png), (Picture{2, 4, {300 - 256, 156, 400 - 256, 0, 500 - 256, 100, 600 - 512, 200}}));

    turned.more = "LINE_DISPLAY_DIRECTION = DOWN\nSAMPLE_DISPLAY_DIRECTION = UP\n";
    expect_run({"image", write_detached(scratch, "odd", turned), "--png", png}, 1, "3 4 16 LSB_INTEGER 0 1100\n",
               "Image orientation will not be changed");
    EXPECT_EQ(read_png(png).width, 4u);
}

// What the viewer would show: neither what is named like an image nor a lesser image before the chief one.
TEST(CliImage, TakesTheImageThatTheViewerShows) {
    const ScratchFolder scratch;
    const std::string label = read_file(write_ramp(scratch));
    const std::string others =
        "OBJECT = HISTOGRAM\nNAME = \"OF THE IMAGE\"\nEND_OBJECT\nOBJECT = BROWSE_IMAGE\nLINES = 1\nEND_OBJECT\n";
    const std::string path = scratch.write("scene.LBL", others + label);
    EXPECT_EQ(run_cli({"image", path}).out, "3 4 16 LSB_INTEGER 0 1100\n");
}

TEST(CliImage, OlderLabelsAreConverted) {
    const ScratchFolder folder;
    folder.write("D.IMG", "ABCDEF");
    const std::string label =
        "RECORD_TYPE = STREAM\n^IMAGE = (\"D.IMG\", 3 <BYTES>)\nIMAGE_LINES = 2\n"
        "LINE_SAMPLES = 2\nSAMPLE_BITS = 8\nFILE_TYPE = ";
    const std::string old = folder.write("OLD.LBL", label + "IMAGE\nEND\n");
    EXPECT_EQ(run_cli({"image", old}).out, "2 2 8 LSB_UNSIGNED_INTEGER 67 70\n");
    EXPECT_NE(run_cli({"label", old}).out.find("IMAGE"), std::string::npos);
    expect_run({"label", folder.write("ODD.LBL", label + "MUSIC\nEND\n")}, 2, "", "conversion of label failed");
}

TEST(CliImage, EachImageOfAGifFileIsRead) {
    const ScratchFolder scratch;
    const std::string path = scratch.write(
        "film.gif", gif_header(3, 2, 2) + gif_image(3, 2, "\1\2\3\1\2\3", 2) + gif_image(2, 1, "\3\1", 2, 0x40) + ";");
    const std::string raw = scratch.file("out.raw");
    EXPECT_EQ(run_cli({"image", path, "--raw", raw}).out, "2 3 8 UNSIGNED_INTEGER 1 3\n");
    EXPECT_EQ(read_file(raw), "\1\2\3\1\2\3");
    EXPECT_EQ(run_cli({"image", path, "--object", "GIF_2_IMAGE", "--raw", raw}).status, 0);
    EXPECT_EQ(read_file(raw), "\3\1");
    EXPECT_EQ(run_cli({"image", path, "--lines", "2:2", "--samples", "2:3", "--raw", raw}).status, 0);
    EXPECT_EQ(read_file(raw), "\2\3");
    const Outcome label = run_cli({"label", path});
    EXPECT_EQ(label.status, 0);
    for (const char *name : {"--  GLOBAL_COLOR_TABLE\n", "--  GIF_IMAGE\n", "--  GIF_2_IMAGE\n"})
        EXPECT_NE(label.out.find(name), std::string::npos) << label.out;
    expect_run({"label", scratch.write("cut.gif", gif_header(3, 2, 2))}, 2, "", "EOF or read error on image data");
}

// Core values are sample + 8 x line + 32 x band, 4 samples by 3 lines by 2 bands.
TEST(CliImage, EachComponentOfAJpeg2000FileIsReadInItsOwnSize) {
    const ScratchFolder folder;
    const std::string path =
        write_jpeg2000(folder.file("x.jp2"), {.width = 7, .height = 5, .components = 2, .step = 2, .levels = 1});
    expect_run({"label", path}, 0, " Line 0     0 <no name>  --  ROOT\n Line 0      1   <no name>  --  IMAGE\n", "");
    expect_run({"image", path}, 0, "5 7 8 UNSIGNED_INTEGER 0 41\n", "");
    expect_run({"image", path, "--band", "2"}, 0, "3 4 8 UNSIGNED_INTEGER 50 69\n", "");
    expect_run({"image", path, "--band", "3"}, 2, "", "there is no band 3; BANDS is 2");
    expect_run({"image", path, "--raw", path}, 2, "", "belongs to the product");
    std::ofstream(path, std::ios::binary | std::ios::app) << "behind its end";
    fs::resize_file(path, fs::file_size(path) - 30);
    expect_run({"image", path}, 1, "5 7 8 UNSIGNED_INTEGER 0 41\n", "damaged or end early");
}

// More samples than are held at a time: 7000 lines of 6000, all 0 but for two.
TEST(CliImage, StripsJoinToOneImage) {
    constexpr size_t lines = 7000;
    constexpr size_t line_samples = 6000;
    const ScratchFolder scratch;
    const std::string label =
        write_detached(scratch, "large", {.lines = lines, .samples = line_samples, .bits = 16, .type = "MSB_INTEGER"});
    const size_t low = 10;
    const size_t high = lines * line_samples - 20;
    fs::resize_file(scratch.file("large.IMG"), lines * line_samples * 2);
    std::fstream data(scratch.file("large.IMG"), std::ios::in | std::ios::out | std::ios::binary);
    data.seekp(low * 2).write("\xff\x00", 2);
    data.seekp(high * 2).write("\x02\xff", 2);
    data.close();

    const std::string raw = scratch.file("all.raw");
    const std::string png = scratch.file("all.png");
    EXPECT_EQ(run_cli({"image", label, "--raw", raw, "--png", png}).out, "7000 6000 16 LSB_INTEGER -256 767\n");
    const std::string samples = read_file(raw);
    ASSERT_EQ(samples.size(), lines * line_samples * 2);
    EXPECT_EQ(samples.substr(low * 2, 4), std::string("\x00\xff\x00\x00", 4));
    EXPECT_EQ(samples.substr(high * 2, 4), std::string("\xff\x02\x00\x00", 4));
    const Picture picture = read_png(png);
    ASSERT_EQ(picture.levels.size(), lines * line_samples);
    EXPECT_EQ(picture.levels[low], 0);  // four values a level
    EXPECT_EQ(picture.levels[low + 1], 64);
    EXPECT_EQ(picture.levels[high], 255);

    // A file that ends early is told once, though both strips are short, and shown.
    fs::resize_file(scratch.file("large.IMG"), lines * line_samples);
    const Outcome shorter = run_cli({"image", label, "--png", png});
    EXPECT_EQ(shorter.status, 1);
    EXPECT_EQ(shorter.out, "7000 6000 16 LSB_INTEGER -256 0\n");
    EXPECT_NE(shorter.err.find("Bytes read"), std::string::npos);
    EXPECT_EQ(shorter.err.find("Bytes read"), shorter.err.rfind("Bytes read"));
}

TEST(CliImage, RangeIsThatOfFiniteNumbers) {
    struct {
        int bits;
        const char *type;
        std::string samples;  // two
        const char *line;
    } const cases[] = {
        {8, "UNSIGNED_INTEGER", "\xff\x7f", "1 2 8 LSB_UNSIGNED_INTEGER 127 255\n"},
        {32, "LSB_UNSIGNED_INTEGER", std::string("\xff\xff\xff\xff\x01\0\0\0", 8),
         "1 2 32 LSB_UNSIGNED_INTEGER 1 4294967295\n"},
        {64, "LSB_INTEGER", std::string("\1\0\0\0\0\0\0\x80\2\0\0\0\0\0\0\0", 16),
         "1 2 64 LSB_INTEGER -9223372036854775807 2\n"},
    };
    const ScratchFolder scratch;
    for (const auto &c : cases) {
        const ImageProduct pair{.samples = 2, .bits = c.bits, .type = c.type, .data = c.samples};
        EXPECT_EQ(run_cli({"image", write_detached(scratch, "pair", pair)}).out, c.line);
    }

    constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> reals = {nan_value, -2.5F, infinity, 0.1F, -infinity, nan_value};
    const std::string data = stored(reals, std::endian::little);
    const std::string label =
        write_detached(scratch, "reals", {.lines = 2, .samples = 3, .bits = 32, .type = "PC_REAL", .data = data});
    EXPECT_EQ(run_cli({"image", label}).out, "2 3 32 PC_REAL -2.5 0.100000001\n");
    EXPECT_EQ(run_cli({"image", label, "--samples=3:3", "--lines=1:1"}).out, "1 1 32 PC_REAL - -\n");
}

TEST(CliImage, AFailureLeavesTheOutputsAsTheyWere) {
    const ScratchFolder scratch;
    const std::string label = write_ramp(scratch);
    const std::string raw = scratch.write("keep.raw", "before");
    EXPECT_EQ(run_cli({"image", label, "--raw", raw, "--png", scratch.file("no/where.png")}).status, 2);
    // A full disk, in small: files may not grow.
    for (const char *option : {"--raw", "--png"}) {
        const Outcome full =
            run_command("(ulimit -f 0; " + cli_command({"image", label, option, raw}) + " 2>&1; echo $?) | cat");
        EXPECT_EQ(full.out, "lumacart-cli: " + label + ": " + raw + ": File too large\n2\n");
        EXPECT_EQ(read_file(raw), "before");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path()), {}), 3) << "label, samples and the old output";
}

TEST(FitsLabelCommand, PrintsOrWritesTheLabelAndNeverOverTheFile) {
    const ScratchFolder scratch;
    std::string bytes;
    for (std::string card : {"SIMPLE  = T", "BITPIX  = 8", "NAXIS   = 2", "NAXIS1  = 2", "NAXIS2  = 1", "END"}) {
        card.resize(80, ' ');
        bytes += card;
    }
    bytes.resize(2880, ' ');
    bytes += "ab";
    const std::string fits = scratch.write("sky.fits", bytes);
    const std::string label = scratch.file("sky.lbl");
    const Outcome printed = run_cli({"fits-label", fits});
    EXPECT_EQ(printed.status, 0);
    EXPECT_EQ(printed.out.size(), 12u * 80u);
    expect_run({"fits-label", fits, "--out", label}, 0, "", "");
    EXPECT_EQ(read_file(label), printed.out);
    EXPECT_EQ(run_cli({"image", label, "--raw", scratch.file("raw")}).out, "1 2 8 LSB_INTEGER 97 98\n");
    EXPECT_EQ(read_file(scratch.file("raw")), "ab");

    fs::create_directory(scratch.file("elsewhere"));
    expect_run({"fits-label", fits, "--out", scratch.file("elsewhere/sky.lbl")}, 1, "", "keep the two together");

    fs::create_hard_link(fits, scratch.file("link.fits"));
    for (const char *out : {"sky.fits", "link.fits", "missing/sky.lbl"}) {
        EXPECT_EQ(run_cli({"fits-label", fits, "--out", scratch.file(out)}).status, 2) << out;
        EXPECT_EQ(read_file(fits), bytes);
    }
    bytes.replace(90, 2, "16");
    expect_run({"fits-label", scratch.write("deep.fits", bytes), "--out", label}, 2, "", "deep.fits: BITPIX is 16");
    EXPECT_EQ(read_file(label), printed.out);
}

}  // namespace
