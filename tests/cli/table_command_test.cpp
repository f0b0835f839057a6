#include "support/cli.h"
#include "support/corpus.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

using Rows = std::vector<std::vector<std::string>>;

Rows parse_csv(const std::string &text) {
    Rows rows(1);
    std::string cell;
    bool is_quoted = false;
    for (const char c : text) {
        if (c == '"')
            is_quoted = !is_quoted;  // a doubled one ends and begins
        else if (is_quoted || (c != ',' && c != '\n'))
            cell += c;
        if (is_quoted || (c != ',' && c != '\n'))
            continue;
        rows.back().emplace_back(util_trim(cell, " \r"));
        cell.clear();
        if (c == '\n')
            rows.emplace_back();
    }
    rows.pop_back();
    return rows;
}

enum class Precision { Double, Single };

bool is_same_cell(const std::string &a, const std::string &b, Precision precision) {
    char *end_a = nullptr;
    char *end_b = nullptr;
    const double x = strtod(a.c_str(), &end_a);
    const double y = strtod(b.c_str(), &end_b);
    if (a.empty() || b.empty() || *end_a || *end_b)
        return a == b;
    return precision == Precision::Single ? static_cast<float>(x) == static_cast<float>(y) : x == y;
}

TEST(TableCommand, RealTablesGiveEveryCell) {
    REQUIRE_CORPUS();
    for (const auto &listed : read_corpus_list("real/table_files.tsv")) {
        const std::string name = fs::path(listed.at("file")).stem().string();
        const Outcome outcome =
            run_cli({"table", corpus_path("real/" + name + ".LBL").string(), "--csv", "-", "--scaled"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const Rows ours = parse_csv(outcome.out);
        const Rows wanted = parse_csv(read_file(corpus_path("real/" + name + ".EXPECTED.CSV")));
        ASSERT_EQ(ours.size(), wanted.size()) << name;
        EXPECT_EQ(ours[0], wanted[0]) << name;
        for (size_t row = 1; row < ours.size(); ++row) {
            ASSERT_EQ(ours[row].size(), wanted[row].size()) << name << row;
            for (size_t i = 0; i < ours[row].size(); ++i) {
                const bool is_single = name == "CATALOG_R" &&
                                       (wanted[0][i].starts_with("REFLECTANCE_") || wanted[0][i].starts_with("ERROR_"));
                EXPECT_TRUE(
                    is_same_cell(ours[row][i], wanted[row][i], is_single ? Precision::Single : Precision::Double))
                    << name << " row " << row << " " << wanted[0][i] << ": " << ours[row][i] << " " << wanted[row][i];
            }
        }
    }
}

std::string column(const std::string &name, const char *type, int start, int bytes, const std::string &more = "") {
    return util_format("OBJECT = COLUMN\nNAME = %s\nDATA_TYPE = %s\nSTART_BYTE = %d\nBYTES = %d\n", name.c_str(), type,
                       start, bytes) +
           more + "END_OBJECT\n";
}

std::string write_table(const ScratchFolder &folder, const std::string &data, const std::string &rows, int row_bytes,
                        const std::string &columns) {
    folder.write("t.dat", data);
    return folder.write("t.lbl",
                        util_format("RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = %d\n^TABLE = \"t.dat\"\n"
                                    "^B_TABLE = \"t.dat\"\n"
                                    "OBJECT = TABLE\nNAME = \"FIRST\"\nINTERCHANGE_FORMAT = BINARY\nROWS = %s\n"
                                    "ROW_BYTES = %d\n",
                                    row_bytes, rows.c_str(), row_bytes) +
                            columns + "END_OBJECT\nOBJECT = B_TABLE\nROWS = 1\nROW_BYTES = 2\n" +
                            column("ONLY", "CHARACTER", 1, 2, "UNIT = \"km\"\n") + "END_OBJECT\nEND\n");
}

// Three rows of: four characters, a scaled byte, two items of a byte.
std::string write_small_table(const ScratchFolder &folder) {
    return write_table(folder,
                       "a,%s\x0a\x01\x02"
                       " b\"c\x14\x03\x04"
                       "d   \xff\x05\x06",
                       "3", 7,
                       column("\"A, %s B\"", "CHARACTER", 1, 4) +
                           column("S", "MSB_INTEGER", 5, 1, "SCALING_FACTOR = 0.5\nOFFSET = 1\n") +
                           column("I", "MSB_UNSIGNED_INTEGER", 6, 2, "ITEMS = 2\nITEM_BYTES = 1\n"));
}

TEST(TableCommand, WritesChosenRowsAndColumns) {
    const ScratchFolder folder;
    const std::string label = write_small_table(folder);
    const std::string first = "\"A, %s B\"";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, first + ",S,I_1,I_2\r\n\"a,%s\",10,1,2\r\n\"b\"\"c\",20,3,4\r\nd,-1,5,6\r\n"},
        {{"--rows", "2:3", "--columns", "2:3"}, "S,I_1\r\n20,3\r\n-1,5\r\n"},
        {{"--columns", "I_2,S,I", "--rows=1:1"}, "I_2,S,I_1,I_2\r\n2,10,1,2\r\n"},
        {{"--columns", "A, %s B", "--rows=1:1"}, first + "\r\n\"a,%s\"\r\n"},
        {{"--columns", "A*", "--rows=3:3"}, first + "\r\nd\r\n"},
        {{"--columns", "S", "--scaled"}, "S\r\n6\r\n11\r\n0.5\r\n"},
        {{"--object", "B*"}, "ONLY\r\n\"a,\"\r\n"},
        {{"--object", "FIRST", "--columns=S", "--rows=3:3"}, "S\r\n-1\r\n"},
    };
    for (const auto &[options, csv] : cases) {
        std::vector<std::string> words = {"table", label, "--csv", "-"};
        words.insert(words.end(), options.begin(), options.end());
        expect_run(words, 0, csv, "");
        words[3] = folder.file("out.csv");
        expect_run(words, 0, "", "");
        EXPECT_EQ(read_file(words[3]), csv);
    }
}

// What cannot be laid out as columns is told, and the others are given.
TEST(TableCommand, GivesArraysAsColumns) {
    const ScratchFolder folder;
    const auto run = [&](const char *offset) {
        const std::string columns = column("A", "CHARACTER", 1, 2) +
                                    "OBJECT = ARRAY\nNAME = G\nAXES = 2\nAXIS_ITEMS = (2, 1)\n" + offset +
                                    "OBJECT = ELEMENT\nDATA_TYPE = MSB_INTEGER\nBYTES = 1\nEND_OBJECT\nEND_OBJECT\n" +
                                    column("Z", "CHARACTER", 5, 1);
        return run_cli({"table", write_table(folder, "ab\x01\xffz", "1", 5, columns), "--csv", "-"});
    };
    EXPECT_EQ(run("OFFSET = 2\n").out, "A,G_1,G_2,Z\r\nab,1,-1,z\r\n");
    const Outcome without = run("");
    EXPECT_EQ(without.out, "A,Z\r\nab,z\r\n");
    EXPECT_NE(without.err.find("Array handling:  OFFSET read failed"), std::string::npos) << without.err;
    EXPECT_NE(without.status, 0);
}

TEST(TableCommand, DescribesTablesAndSumsUpColumns) {
    const ScratchFolder folder;
    const std::string label = write_small_table(folder);
    const std::string second = util_format(
        "table 2: B_TABLE, class B_TABLE\n  data file  %s, from byte 1\n  format     Unknown\n"
        "  rows       1 of 2 bytes\n  columns    1\n"
        "     name  type       start  bytes  unit\n  1  ONLY  CHARACTER  1      2      km\n",
        folder.file("t.dat").c_str());
    expect_run({"table", label, "--object", "B_TABLE"}, 0, second, "");
    const Outcome all = run_cli({"table", label});
    EXPECT_TRUE(all.out.starts_with("table 1: FIRST, class TABLE\n")) << all.out;
    EXPECT_TRUE(all.out.ends_with("\n\n" + second)) << all.out;
    EXPECT_TRUE(util_contains(all.out, "  1  A, %s B  CHARACTER")) << all.out;
    EXPECT_TRUE(util_contains(all.out, "  4  I_2      MSB UNSIGNED INTEGER  7      1\n")) << all.out;

    expect_run({"table", label, "--summary", "I_2"}, 0,
               "     Minimum:             2\n     Maximum:             6\n     Approximate Average: 4.000000\n", "");
    expect_run({"table", label, "--summary", "A*"}, 0,
               "     Column contains: \n     a,%s -- 1 occurrence\n     b\"c -- 1 occurrence\n"
               "     d -- 1 occurrence\n",
               "");
}

TEST(TableCommand, RefusesWhatItCannotDo) {
    const ScratchFolder folder;
    const std::string label = write_small_table(folder);
    fs::create_hard_link(folder.file("t.dat"), folder.file("twin"));
    const std::string bare = folder.write("bare.lbl", "OBJECT = TABLE\nROWS = 1\nEND_OBJECT\nEND\n");
    const std::string none = folder.write("none.lbl", "RECORD_TYPE = STREAM\nEND\n");
    const struct {
        std::vector<std::string> words;
        const char *reason;
    } cases[] = {
        {{label, "--rows", "0:1", "--csv", "-"}, "--rows takes A:B"},
        {{label, "--rows", "1:1"}, "go with --csv"},
        {{label, "--scaled=1", "--csv", "-"}, "--scaled takes no value"},
        {{label, "--csv", "-", "--summary", "S"}, "one at a time"},
        {{label, "--csv", "-", "--rows", "3:4"}, "there is no row 4; ROWS is 3"},
        {{label, "--csv", "-", "--columns", "1:5"}, "there is no column 5; there are 4"},
        {{label, "--csv", "-", "--columns", "S,T"}, "there is no column T"},
        {{label, "--csv", "-", "--columns", "S,"}, "--columns takes"},
        {{label, "--csv", "-", "--object", "X_TABLE"}, "there is no table X_TABLE"},
        {{label, "--csv", ""}, "needs a name"},
        {{label, "--csv", label}, "belongs to the product"},
        {{label, "--csv", folder.file("twin")}, "belongs to the product"},
        {{label, "--csv", folder.file("no/where")}, "No such file or directory"},
        {{label, "--csv", "/dev/full"}, "Not a regular file"},
        {{label, "--summary", "T"}, "there is no column T"},
        {{bare, "--csv", "-"}, "the table has no columns"},
        {{none}, "there is no table"},
    };
    for (const auto &c : cases) {
        std::vector<std::string> words = {"table"};
        words.insert(words.end(), c.words.begin(), c.words.end());
        expect_run(words, 2, "", c.reason);
    }
}

TEST(TableCommand, TellsOnceWhatTheFileHolds) {
    const ScratchFolder folder;
    const std::string label =
        write_table(folder, "\x01\x02\x03", "2147483647", 1, column("N", "MSB_UNSIGNED_INTEGER", 1, 1));
    const std::string told = "lumacart-cli: " + folder.file("t.dat") + " holds 3 of 2147483647 rows\n";
    EXPECT_EQ(run_cli({"table", label, "--csv", "-"}).err, told);
    expect_run({"table", label, "--csv", folder.file("o")}, 1, "", told);
    EXPECT_EQ(read_file(folder.file("o")), "N\r\n1\r\n2\r\n3\r\n");
    expect_run({"table", label, "--csv", "-", "--rows", "5:2147483647"}, 1, "N\r\n", told);
    expect_run({"table", label, "--csv", "-", "--rows", "2:3"}, 0, "N\r\n2\r\n3\r\n", "");
    expect_run({"table", label, "--summary", "N"}, 1,
               "     Minimum:             1\n     Maximum:             3\n     Approximate Average: 2.000000\n", told);
    fs::remove(folder.file("t.dat"));
    expect_run({"table", label, "--csv", "-"}, 2, "", "can't open the data file");
    EXPECT_EQ(run_cli({"table", label}).status, 1);
}

// A reader that goes away ends the work, even where the signal for it is ignored.
TEST(TableCommand, EndsWithItsReader) {
    const ScratchFolder folder;
    const std::string label = write_table(folder, "", "2147483647", 1, column("N", "MSB_UNSIGNED_INTEGER", 1, 1));
    fs::resize_file(folder.file("t.dat"), 2147483647);
    for (const char *signal : {"-", "''"}) {
        const Outcome outcome = run_command(util_format("{ trap %s PIPE; %s; echo $? >&2; } | head -n 2", signal,
                                                        cli_command({"table", label, "--csv", "-"}).c_str()));
        EXPECT_EQ(outcome.out, "N\r\n0\r\n");
        EXPECT_TRUE(outcome.err.ends_with(*signal == '-' ? "141\n" : "cannot be written\n2\n")) << outcome.err;
    }
}

}  // namespace
