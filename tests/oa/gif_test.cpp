#include "oa/gif.h"

#include "base/text.h"
#include "support/corpus.h"
#include "support/gif.h"
#include "support/hex.h"
#include "support/label.h"
#include "support/product.h"
#include "support/sha256.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace std::string_literals;

class Gif : public ProductTest {
  protected:
    OdlTree scan(std::string_view bytes) {
        return OdlTree(OaParseLabelFile(folder_.write("X.gif", bytes).c_str(), nullptr, 0, 1));
    }
    static ObjDesc *find(const OdlTree &root, const std::string &class_name, uint32_t instance = 1) {
        return root ? OdlFindObjDesc(root.get(), class_name.c_str(), nullptr, nullptr, instance, SCOPE_TO_END)
                    : nullptr;
    }
    // The indices of the first image; "null" when it is refused.
    std::string read(std::string_view bytes) {
        oa_errno = 0;
        error_string.clear();
        const OdlTree root = scan(bytes);
        const OaObjectPtr image(root ? OaReadImage(find(root, "GIF_IMAGE"), 1) : nullptr);
        return image ? to_hex(bytes_of(image.get())) : "null";
    }
};

// --- The label tree -------------------------------------------------------------------------------------------------

TEST_F(Gif, TheTreeNamesTablesAndImagesInTheirOrder) {
    const std::string local_table(6, '\x10');
    const OdlTree root = scan(gif_header(3, 2, 4, "87a") + gif_descriptor(3, 2, 0x80) + local_table + '\2' +
                              gif_blocks(gif_codes("\1\2", 2)) + gif_descriptor(1, 5, 0xC0) + local_table + '\2' +
                              gif_blocks(gif_codes("\3", 2)) + ";behind");
    ASSERT_TRUE(root);
    std::string names;
    for (const Kwd *keyword = root->first_keyword; keyword; keyword = keyword->right_sibling)
        names += std::string(keyword->name) + " ";
    for (const ObjDesc *object = root->first_child; object; object = object->right_sibling)
        names += std::string(object->class_name) + " ";
    EXPECT_EQ(names,
              "KRV_VERSION_ID RECORD_TYPE ^GLOBAL_COLOR_TABLE ^LOCAL_1_COLOR_TABLE ^GIF_IMAGE ^LOCAL_COLOR_TABLE "
              "^GIF_2_IMAGE GLOBAL_COLOR_TABLE LOCAL_1_COLOR_TABLE GIF_IMAGE LOCAL_COLOR_TABLE GIF_2_IMAGE ");
    EXPECT_EQ(keyword_of(root.get(), "KRV_VERSION_ID") + keyword_of(root.get(), "RECORD_TYPE"), "KRV3UNDEFINED");
    EXPECT_EQ(keyword_of(root.get(), "^GLOBAL*"), "(\"" + folder_.file("X.gif") + "\",14<BYTES>)");
    std::string table =
        "  GLOBAL_COLOR_TABLE @0\n    ROWS = 4 @0\n    COLUMNS = 3 @0\n    ROW_BYTES = 3 @0\n"
        "    INTERCHANGE_FORMAT = BINARY @0\n";
    for (const char *column :
         {"RED @0\n      START_BYTE = 1", "GREEN @0\n      START_BYTE = 2", "BLUE @0\n      START_BYTE = 3"})
        table += "    COLUMN @0\n      NAME = " + std::string(column) +
                 " @0\n      DATA_TYPE = UNSIGNED_INTEGER @0\n      BYTES = 1 @0\n";
    EXPECT_EQ(outline(find(root, "GLOBAL_COLOR_TABLE")), table);
    EXPECT_EQ(outline(find(root, "GIF_2_IMAGE")),
              "  GIF_2_IMAGE @0\n    LINES = 5 @0\n    LINE_SAMPLES = 1 @0\n    SAMPLE_BITS = 8 @0\n"
              "    SAMPLE_TYPE = UNSIGNED_INTEGER @0\n    ENCODING_TYPE = GIF @0\n    INTERLACE = 1 @0\n");
    EXPECT_EQ(keyword_of(find(root, "GIF_IMAGE"), "INTERLACE"), "(none)");
}

TEST_F(Gif, EachOfSeveralLocalTablesIsFoundWhereItIs) {
    std::string file = gif_header(1, 1);
    std::vector<int64_t> starts;
    for (int i = 0; i < 4; ++i) {
        starts.push_back(static_cast<int64_t>(file.size()) + 10);
        file += gif_descriptor(1, 1, 0x80) + std::string(6, '\1') + '\2' + gif_blocks(gif_codes("\1", 2));
    }
    // Names that a quoted pointer cannot hold, too.
    for (const char *name : {"X.gif", "two words, (1) <2>.gif", "it's \"quoted\".gif", "blank "}) {
        const std::string path = folder_.write(name, file + ";");
        const OdlTree root(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
        for (uint32_t i = 0; i < 4; ++i) {
            OaFileKeywords found;
            const ObjDesc *table = i == 0 ? find(root, "LOCAL_1_COLOR_TABLE") : find(root, "LOCAL_COLOR_TABLE", i);
            ASSERT_EQ(OaGetFileKeywords(table, &found), 0) << name << i;
            EXPECT_EQ(found.start, starts[i]) << name << i;
            EXPECT_EQ(found.file_name, path);
        }
    }
}

TEST_F(Gif, ScanningTellsWhatIsWrong) {
    const std::string header = gif_header(2, 1);
    const std::string image = gif_image(2, 1, "\1\2", 2);
    struct Case {
        std::string bytes;
        int images;  // -1: no tree
        const char *report;
    };
    std::string squeezed = header;
    squeezed[12] = 50;
    for (const Case &c : {
             Case{header.substr(0, 12), -1, "failed to read screen descriptor"},
             Case{header + image, -1, "EOF or read error on image data"},
             Case{header + "!", -1, "EOF or read error on extension function code"},
             Case{header + ",1234", -1, "couldn't read left/top/width/height"},
             Case{gif_header(2, 1, 4).substr(0, 20), -1, "EOF or read error on image data"},
             Case{header + image + "\xAA" + image + ";", 2, "bogus character 0xaa, ignoring"},
             Case{header + "!\x2A" + gif_blocks("x") + image + ";", 1, "UNKNOWN (0x2a)"},
             Case{header + "!\xFE" + gif_blocks(std::string(700, ';')) + image + ";", 1, ""},
             Case{squeezed + image + ";", 1, "warning - non-square pixels"},
         }) {
        error_string.clear();
        const OdlTree root = scan(c.bytes);
        EXPECT_EQ(root != nullptr, c.images >= 0) << c.report;
        EXPECT_EQ(find(root, "*IMAGE", 1) != nullptr, c.images > 0) << c.report;
        EXPECT_EQ(find(root, "*IMAGE", 2) != nullptr, c.images > 1) << c.report;
        EXPECT_TRUE(util_contains(error_string, c.report)) << c.report << " / " << error_string;
    }
    for (const auto &[magic, report] : {std::pair{"GIF90a", "bad version number, not '87a' or '89a'"},
                                        {"GUF89a", "not a GIF file"},
                                        {"GIF", "error reading magic number"}}) {
        const FilePtr file = util_open_regular(folder_.write("Y", magic).c_str());
        const std::string told = printed([&](FILE *stream) {
            Oa_message_fptr = stream;
            EXPECT_EQ(OalCreateODLTreeFromGif(file.get(), "Y"), nullptr);
        });
        EXPECT_TRUE(util_contains(told, report)) << told;
    }
}

// --- Images ---------------------------------------------------------------------------------------------------------

TEST_F(Gif, InterlacedRowsComeInFourPasses) {
    std::string stored;
    for (const int row : {0, 8, 4, 2, 6, 1, 3, 5, 7, 9})
        stored.append(2, static_cast<char>(row));
    const std::string file = gif_header(2, 10) + gif_image(2, 10, stored, 4, 0x40);
    EXPECT_EQ(read(file + ";"), "0000010102020303040405050606070708080909");
    const OdlTree root = scan(file + ";");
    const OaObjectPtr image(OaReadImage(find(root, "GIF_IMAGE"), 1));
    ASSERT_TRUE(image);
    EXPECT_EQ(keyword_of(image->odl, "INTERLACE") + keyword_of(image->odl, "ENCODING_TYPE"), "(none)(none)");
    // Rows that the data do not reach stay 0.
    EXPECT_EQ(read(gif_header(2, 10) + gif_image(2, 10, stored.substr(0, 7), 4, 0x40) + ";"),
              "0000000002000000040400000000000008080000");
    ASSERT_EQ(notices_.texts.size(), 1u);
    EXPECT_TRUE(util_contains(notices_.texts[0], "Pixels read: 7.\nPixels of the image: 20")) << notices_.texts[0];
}

TEST_F(Gif, DamagedDataAreToldOrRefused) {
    const std::string codes = gif_codes("\1\2\3\1", 2);
    const auto image = [](const std::string &data, int width = 4, int code_size = 2) {
        return gif_header(4, 1) + gif_descriptor(width, 1) + static_cast<char>(code_size) + data + ";";
    };
    const std::tuple<std::string, const char *, const char *> cases[] = {
        {image(gif_blocks(codes)), "01020301", ""},
        {image(gif_blocks(codes, 1)), "01020301", ""},
        {image(gif_blocks(codes), 3), "010203", "too much input data, ignoring extra..."},
        {image(gif_blocks(codes + "xx", codes.size())), "01020301", "missing EOD in data stream"},
        {image(gif_blocks(codes.substr(0, 1))), "01000000", "ran off the end of my bits"},
        {image(gif_blocks("\xCC\x01")), "01000000", "circular table entry BIG ERROR"},
        {image(gif_blocks("")), "null", "error reading image"},
        {image(gif_blocks("\x2C")), "null", "error reading image"},
        {image(gif_blocks(codes), 4, 0), "null", "error reading image"},
        {image(gif_blocks(codes), 4, 12), "null", "error reading image"},
        {image(gif_blocks(codes), 4, 13), "null", "error reading image"},
        {image(gif_blocks(codes), 4, 255), "null", "error reading image"},
        {gif_header(4, 1) + gif_image(65535, 65535, "", 2) + ";", "null", "LINES = 65535, LINE_SAMPLES = 65535"},
        {gif_header(4, 1) + gif_image(0, 5, "", 2) + ";", "null", "LINE_SAMPLES = 0 is not a size"},
    };
    for (const auto &[bytes, result, report] : cases) {
        EXPECT_EQ(read(bytes), result) << report;
        EXPECT_TRUE(util_contains(error_string, report)) << report << " / " << error_string;
    }
}

TEST_F(Gif, LabelsMayPointAtImagesThemselves) {
    folder_.write("X.gif", gif_header(4, 1) + gif_image(4, 1, "\1\2\3\1", 2) + ";");
    ImageProduct product{.lines = 1, .samples = 4, .more = "ENCODING_TYPE = \"gif\"\n"};
    std::string label = read_file(write_detached(folder_, "X", product, 23));
    label.replace(label.find("X.IMG"), 5, "X.gif");
    const OpenProduct open(folder_.write("X.LBL", label));
    EXPECT_EQ(to_hex(bytes_of(OaObjectPtr(OaReadImage(open.image(), 1)).get())), "01020301");
    EXPECT_EQ(OaOpenImage(open.image(), 1), nullptr);
    EXPECT_EQ(error_string, "OaOpenImage: unsupported compression type: 5.");
    const std::tuple<const char *, const char *, int> cases[] = {{"INTERLACE", "maybe", 600},
                                                                 {"SAMPLE_BITS", "16", 520},
                                                                 {"RECORD_TYPE", "VARIABLE_LENGTH", 502},
                                                                 {"ENCODING_TYPE", "GIFT", 531}};
    for (const auto &[keyword, value, code] : cases) {
        const OdlTree root(OaCopyTree(open.root.get(), OA_COPY_LABEL));
        OaStrtoKwdValue(keyword, find(root, "IMAGE"), value);
        EXPECT_EQ(OaReadImage(find(root, "IMAGE"), 1), nullptr) << keyword;
        EXPECT_EQ(oa_errno, code) << error_string;
    }
    OaStrtoKwdValue("ENCODING_TYPE", open.image(), "GIFT");
    EXPECT_EQ(OalReadImageFromGif(folder_.file("X.gif").c_str(), 23, 1, 4, open.image()), nullptr);
    EXPECT_EQ(oa_errno, 520);
}

TEST_F(Gif, EveryShorterFileGivesNoTree) {
    const std::string file = gif_header(3, 2, 2) + "!\xF9" + gif_blocks("\0\0\0\0"s) +
                             gif_image(3, 2, "\1\2\3\1\1\1", 2, 0x40) + gif_image(2, 1, "\3\2", 2) + ";";
    for (size_t size = 0; size < file.size(); ++size)
        EXPECT_EQ(scan(std::string_view(file).substr(0, size)), nullptr) << size;
    const OdlTree root = scan(file);
    ASSERT_TRUE(find(root, "GIF_2_IMAGE"));
    // Cut after it was scanned.
    for (size_t size = 0; size < file.size(); ++size) {
        error_string.clear();
        folder_.write("X.gif", std::string_view(file).substr(0, size));
        EXPECT_TRUE(OaObjectPtr(OaReadImage(find(root, "GIF_2_IMAGE"), 1)) || !error_string.empty()) << size;
    }
}

// --- Real files -----------------------------------------------------------------------------------------------------

int count(const OdlTree &root, const char *pattern) {
    int found = 0;
    while (OdlFindObjDesc(root.get(), pattern, nullptr, nullptr, static_cast<uint32_t>(found) + 1, SCOPE_TO_END))
        ++found;
    return found;
}

std::string byte_of(const ObjDesc *node) {
    OaFileKeywords file;
    return node && OaGetFileKeywords(node, &file) == 0 ? std::to_string(file.start + 1) : "-";
}

TEST_F(Gif, RealFilesGiveTheirImages) {
    REQUIRE_CORPUS();
    std::map<std::string, std::vector<std::map<std::string, std::string>>> blocks;
    for (auto &row : read_corpus_list("gif/blocks.tsv"))
        blocks[row["file"]].push_back(row);
    int planes = 0;
    for (auto &row : read_corpus_list("gif/manifest.tsv")) {
        SCOPED_TRACE(row["file"]);
        const OdlTree root(OaParseLabelFile(corpus_path("gif/" + row["file"]).c_str(), nullptr, 0, 1));
        if (row["scan"] != "unclear") {
            ASSERT_EQ(root != nullptr, row["scan"] == "tree");
        }
        if (!root)
            continue;
        if (row["scan"] == "tree") {
            EXPECT_EQ(std::to_string(count(root, "*IMAGE")), row["scan_pictures"]);
            EXPECT_EQ(std::to_string(count(root, "*COLOR_TABLE")), row["scan_colour_tables"]);
        }
        EXPECT_EQ(byte_of(find(root, "GLOBAL_COLOR_TABLE")), row["global_table_byte"]);
        uint32_t local_tables = 0;
        int ordinal = 0;
        for (auto &block : blocks[row["file"]]) {
            const std::string name = ++ordinal == 1 ? "GIF_IMAGE" : util_format("GIF_%d_IMAGE", ordinal);
            SCOPED_TRACE(name);
            const ObjDesc *image = find(root, name);
            ASSERT_TRUE(image);
            EXPECT_EQ(byte_of(image), block["code_size_byte"]);
            if (block["local_table"] != "0") {
                ++local_tables;
                EXPECT_EQ(byte_of(local_tables == 1 ? find(root, "LOCAL_1_COLOR_TABLE")
                                                    : find(root, "LOCAL_COLOR_TABLE", local_tables - 1)),
                          block["local_table_byte"]);
            }
            error_string.clear();
            notices_.texts.clear();
            const OaObjectPtr read(OaReadImage(image, 1));
            if (block["sha256"] == "-") {
                EXPECT_TRUE(!error_string.empty() && (!read || !notices_.texts.empty()));
                continue;
            }
            ASSERT_TRUE(read) << error_string;
            EXPECT_EQ(sha256_of(folder_.write("plane", bytes_of(read.get()))), block["sha256"]);
            ++planes;
        }
    }
    EXPECT_GT(planes, 600);
}

}  // namespace
