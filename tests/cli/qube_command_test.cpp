#include "support/cli.h"
#include "support/qube_product.h"

namespace {

namespace fs = std::filesystem;

constexpr OaQubeAxis S = OA_SAMPLE_AXIS, L = OA_LINE_AXIS, B = OA_BAND_AXIS;

const QubeProduct product = {.order = {S, B, L},
                             .suffix = {2, 0, 1},
                             .more =
                                 "CORE_NULL = 51\nCORE_MULTIPLIER = 0.5\nSAMPLE_SUFFIX_NAME = (ANGLE, \"Path 1\")\n"
                                 "BAND_BIN_CENTER = (0.5, 1.25)\nBAND_BIN_UNIT = UM\n"};

void expect_qube(std::vector<std::string> words, int status, const std::string &out, const std::string &err) {
    words.insert(words.begin(), "qube");
    expect_run(words, status, out, err);
}

TEST(QubeCommand, DescribesTheQube) {
    const ScratchFolder folder;
    const std::string label = write_qube(folder, "Q", product, 5);
    const std::string description = "Data: " + folder.file("Q.QUB") +
                                    ", 168 bytes from byte 6\n"
                                    "Axes: SAMPLE, BAND, LINE (the first varies fastest)\n"
                                    "Core: 4 x 2 x 3 items, MSB_INTEGER, 2 bytes, physical = 0 + 0.5 x stored\n"
                                    "  NULL: 51\n"
                                    "Suffix: 2 x 1 x 0 items of 4 bytes\n"
                                    "  ANGLE: side plane (lines x bands), IEEE_REAL, 4 bytes\n"
                                    "  Path 1: side plane (lines x bands), IEEE_REAL, 4 bytes\n"
                                    "  BAND suffix 1: back plane (samples x lines), IEEE_REAL, 4 bytes\n"
                                    "Band centres: 0.5 to 1.25 UM\n"
                                    "Bands:\n"
                                    "  1: 0.5 UM\n"
                                    "  2: 1.25 UM\n";
    expect_qube({label}, 0, description, "");
    expect_qube({label, "--object", "Q*"}, 0, description, "");
    fs::resize_file(folder.file("Q.QUB"), 100);
    expect_qube({label}, 1, description, "Q.QUB holds 95 of the 168 bytes of the qube");
    fs::remove(folder.file("Q.QUB"));
    expect_qube({label}, 1, description.substr(description.find('\n') + 1), "the data of the qube cannot be read");

    // Bands without centres are as many as the label likes.
    QubeProduct other = {.more = "BAND_BIN_CENTER = (1)\nCORE_NULL = X\n"};
    write_qube(folder, "Q", other);
    other.core[B] = int64_t{1} << 40;
    const std::string head = "RECORD_TYPE = UNDEFINED\n^QUBE = \"Q.QUB\"\n";
    const std::string large = folder.write("Q.LBL", head + other.object() + "END\n");
    const Outcome outcome = run_cli({"qube", large});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.out.ends_with("Bands:\n  1: 1\n  2 to 1099511627776\n")) << outcome.out;
    EXPECT_TRUE(util_contains(outcome.err, "CORE_NULL = X is no value")) << outcome.err;
    expect_qube({large, "--spectrum", "1,1", "--csv", "-"}, 2, "", "spectra have at most");
}

TEST(QubeCommand, WritesBandsSuffixPlanesAndSpectra) {
    const ScratchFolder folder;
    const std::string label = write_qube(folder, "Q", product);
    const std::string raw = folder.file("out.raw");
    const std::string png = folder.file("out.png");
    const std::string line = "3 4 32 PC_REAL 20.5 30\n";
    expect_run({"image", label, "--raw", raw, "--png", png}, 0, line, "");
    const std::string band = read_file(raw);
    const std::string picture = read_file(png);
    float values[12] = {};
    ASSERT_EQ(band.copy(reinterpret_cast<char *>(values), 100), sizeof values);
    EXPECT_EQ(values[5], 25);
    EXPECT_NE(values[6], values[6]);  // null
    expect_qube({label, "--band", "1", "--raw", raw, "--png", png}, 0, line, "");
    EXPECT_EQ(read_file(raw), band);
    EXPECT_EQ(read_file(png), picture);

    const float lines_by_bands[] = {11031, 11061, 11091, 11032, 11062, 11092};
    expect_qube({label, "--suffix", "path 1", "--raw", raw, "--png", png}, 0, "2 3 32 PC_REAL 11031 11092\n", "");
    EXPECT_EQ(read_file(raw), std::string(reinterpret_cast<const char *>(lines_by_bands), sizeof lines_by_bands));
    EXPECT_NE(read_file(png), picture);
    expect_qube({label, "--suffix", "Band Suffix 1"}, 0, "3 4 32 PC_REAL 28031 28123\n", "");

    const std::string csv = "BAND,CENTER,VALUE\r\n1,0.5,NULL\r\n2,1.25,41.5\r\n";
    expect_qube({label, "--spectrum", "3,2", "--csv", "-"}, 0, csv, "");
    expect_qube({label, "--spectrum", "3,2,1", "--csv", folder.file("out.csv")}, 0, "", "");
    EXPECT_EQ(read_file(folder.file("out.csv")), csv);
    expect_qube({label, "--spectrum=3,2,5", "--csv=-"}, 0,
                "BAND,CENTER,VALUE\r\n1,0.5,25.2272727272727\r\n2,1.25,41.25\r\n", "");
}

TEST(QubeCommand, RefusesWhatItCannotDo) {
    const ScratchFolder folder;
    const std::string label = write_qube(folder, "Q", product);
    const std::string data = read_file(folder.file("Q.QUB"));
    const std::string plain = write_qube(folder, "PLAIN", {});
    const std::string image = folder.write("I.LBL", "OBJECT = IMAGE\nLINES = 1\nEND_OBJECT\nEND\n");
    const std::string faulty =
        folder.write("F.LBL", "OBJECT = QUBE\nAXES = 7\nCORE_ITEMS = (1, 1, 1)\nEND_OBJECT\nEND\n");
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "which file?"},
        {{label, "--band", "0"}, "--band takes a number"},
        {{label, "--band", "3"}, "there is no band 3; BANDS is 2"},
        {{label, "--band", "1", "--suffix", "ANGLE"}, "one at a time"},
        {{label, "--band", "1", "--csv", "-"}, "--spectrum and --csv go together"},
        {{label, "--spectrum", "1,1"}, "--spectrum and --csv go together"},
        {{label, "--spectrum", "1,1", "--csv", "-", "--png", "x"}, "--raw and --png go with"},
        {{label, "--raw", "x"}, "--raw and --png go with"},
        {{label, "--band", "1", "--raw", ""}, "needs a name"},
        {{label, "--spectrum", "1,1", "--csv", ""}, "needs a name"},
        {{label, "--spectrum", "1", "--csv", "-"}, "--spectrum takes"},
        {{label, "--spectrum", "1,2,", "--csv", "-"}, "--spectrum takes"},
        {{label, "--spectrum", "1,2,2", "--csv", "-"}, "--spectrum takes"},
        {{label, "--spectrum", "1,2,7", "--csv", "-"}, "--spectrum takes"},
        {{label, "--spectrum", "1,2,3,4", "--csv", "-"}, "--spectrum takes"},
        {{label, "--spectrum", "5,1", "--csv", "-"}, "there is no line 1, sample 5"},
        {{label, "--spectrum", "1,1", "--csv", folder.file("Q.QUB")}, "belongs to the product"},
        {{label, "--band", "1", "--png", folder.file("Q.QUB")}, "belongs to the product"},
        {{label, "--suffix", "X"}, "there is no suffix plane X; there are ANGLE, Path 1, BAND suffix 1"},
        {{plain, "--suffix", "X"}, "there is no suffix plane X; the qube has none"},
        {{label, "--object", "X*"}, "there is no qube X*"},
        {{image}, "there is no qube"},
        {{image, "--object", "IMAGE"}, "must have class QUBE"},
        {{faulty}, "AXES = 7"},
        {{faulty, "--band", "1"}, "AXES = 7"},
    };
    for (const auto &[words, reason] : cases)
        expect_qube(words, 2, "", reason);
    EXPECT_EQ(read_file(folder.file("Q.QUB")), data);
    fs::resize_file(folder.file("Q.QUB"), 10);
    expect_qube({label, "--band", "1"}, 2, "", "holds 10 from its byte 1");
    expect_qube({label, "--spectrum", "1,1", "--csv", "-"}, 2, "", "holds 10 from its byte 1");
}

}  // namespace
