#include "oa/sdt.h"

#include "support/product.h"
#include "support/reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

class Sdt : public testing::Test {
  protected:
    ~Sdt() override { Oa_profile = {}; }
    Reports reports_;
};

using Keywords = std::vector<std::pair<const char *, std::string>>;

ObjDesc *new_object(const char *class_name, const Keywords &keywords) {
    ObjDesc *object = OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
    for (const auto &[name, value] : keywords)
        OaStrtoKwdValue(name, object, value.c_str());
    return object;
}

ObjDesc *new_column(const char *type, int start_byte, int bytes, int items = 0) {
    Keywords keywords = {
        {"DATA_TYPE", type}, {"START_BYTE", std::to_string(start_byte)}, {"BYTES", std::to_string(bytes)}};
    if (items) {
        keywords.emplace_back("ITEMS", std::to_string(items));
        keywords.emplace_back("ITEM_BYTES", std::to_string(bytes / items));
    }
    return new_object("COLUMN", keywords);
}

Keywords image_keywords(int lines, int samples, int bits, const char *type) {
    return {{"LINES", std::to_string(lines)},
            {"LINE_SAMPLES", std::to_string(samples)},
            {"SAMPLE_BITS", std::to_string(bits)},
            {"SAMPLE_TYPE", type}};
}

// Rows of columns: a root that repeats `rows` times and holds `row_bytes` each time.
OaSdt new_rows(int64_t rows, int64_t row_bytes, const std::vector<ObjDesc *> &columns) {
    OaSdt root(new_object("ROWS", {}));
    OaSlot *slot = OalNewSDTNode(root.get());
    slot->total_repetitions = rows;
    slot->src.size = row_bytes;
    for (ObjDesc *column : columns)
        OdlPasteObjDesc(column, root.get());
    if (!OalCreateSDT(root.get(), OA_BINARY))
        return nullptr;
    const OaSlot *last = OalSlotOf(root->last_child);
    slot->dst.size = last->dst.start_offset + last->total_repetitions * last->dst.size;
    return root;
}

// "source start+repetitions x size>destination start:size" of every slot below the root.
std::string layout_text(const ObjDesc *root) {
    std::string text;
    for (const ObjDesc *child = root->first_child; child; child = child->right_sibling) {
        if (const OaSlot *slot = OalSlotOf(child))
            text += util_format("%s%s %lld+%lldx%lld>%lld:%lld", text.empty() ? "" : ", ",
                                slot->inserted ? "inserted" : "data", static_cast<long long>(slot->src.start_offset),
                                static_cast<long long>(slot->total_repetitions), static_cast<long long>(slot->src.size),
                                static_cast<long long>(slot->dst.start_offset), static_cast<long long>(slot->dst.size));
    }
    return text;
}

// The output of a tree fed in chunks of the given lengths, repeated as needed. Room behind the buffer must stay as it
// was.
std::string process(ObjDesc *sdt, const std::string &source, const std::vector<size_t> &cuts, int64_t buffer_size) {
    constexpr char untouched = '\x5A';
    std::string buffer(static_cast<size_t>(buffer_size) + 64, untouched);
    std::fill_n(buffer.begin(), buffer_size, '\0');
    ObjDesc *leaf = OalInitializeSDT(sdt, buffer.data(), buffer_size);
    size_t position = 0;
    int ended = 0;
    for (size_t i = 0; position < source.size() && !ended; ++i) {
        // A chunk of its own, so that reading past it is seen by the sanitizer.
        const std::string chunk = source.substr(position, cuts[i % cuts.size()]);
        ended = OalProcessSDT(chunk.data(), static_cast<int64_t>(chunk.size()), &leaf);
        position += chunk.size();
    }
    EXPECT_EQ(ended, 1) << "the end of the data was not told";
    EXPECT_TRUE(std::all_of(buffer.begin() + buffer_size, buffer.end(), [](char c) { return c == untouched; }));
    return buffer.substr(0, static_cast<size_t>(buffer_size));
}

std::string random_bytes(size_t count) {
    std::mt19937 generator(7);
    std::string bytes(count, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

OaSdt new_sample_tree(int which) {
    switch (which) {
        case 0:
            return new_rows(7, 40,
                            {new_column("MSB_INTEGER", 1, 2), new_column("CHARACTER", 4, 5),
                             new_column("VAX_REAL", 11, 4), new_column("MSB_UNSIGNED_INTEGER", 17, 12, 3),
                             new_column("IEEE_COMPLEX", 29, 8), new_column("LSB_INTEGER", 37, 4)});
        case 1: {
            Keywords keywords = image_keywords(5, 6, 16, "MSB_INTEGER");
            keywords.emplace_back("LINE_PREFIX_BYTES", "3");
            keywords.emplace_back("LINE_SUFFIX_BYTES", "2");
            OaSdt image(new_object("IMAGE", keywords));
            return OalCreateSDT(image.get(), OA_BINARY) ? std::move(image) : nullptr;
        }
        default: {
            OaSdt image(new_object("IMAGE", image_keywords(4, 9, 32, "IEEE_REAL")));
            return OalCreateSDT(image.get(), OA_BINARY) ? std::move(image) : nullptr;
        }
    }
}

TEST_F(Sdt, TakesItsSourceCutAnywhere) {
    for (int which = 0; which < 3; ++which) {
        SCOPED_TRACE(which);
        const OaSdt tree = new_sample_tree(which);
        ASSERT_TRUE(tree);
        const OaSdt compressed(OalCompressSDT(tree.get()));
        const int64_t size = OalDestinationSize(tree.get());
        // More than the object: what follows must not matter.
        const std::string source = random_bytes(static_cast<size_t>(OalSourceSize(tree.get())) + 100);
        const std::string whole = process(tree.get(), source, {source.size()}, size);
        EXPECT_GT(std::count_if(whole.begin(), whole.end(), [](char c) { return c != 0; }), size / 2);
        std::mt19937 generator(1);
        std::vector<std::vector<size_t>> ways = {{1}, {2}, {3}, {5, 1}, {7}, {40}, {41, 39}};
        for (int i = 0; i < 40; ++i) {
            std::vector<size_t> cuts(16);
            for (size_t &cut : cuts)
                cut = generator() % (i < 20 ? 6 : 60) + 1;
            ways.push_back(cuts);
        }
        for (const auto &cuts : ways)
            for (ObjDesc *plan : {tree.get(), compressed.get()})
                ASSERT_EQ(process(plan, source, cuts, size), whole) << "first cut " << cuts[0];
        // A smaller buffer holds what fits.
        for (const int64_t room : {size - 1, size / 2, int64_t{1}, int64_t{0}})
            for (const auto &cuts : {ways[0], ways[4], std::vector<size_t>{source.size()}})
                process(tree.get(), source, cuts, room);
    }
}

TEST_F(Sdt, ConvertsEachItemToItsPlace) {
    const OaSdt rows = new_rows(
        2, 11,
        {new_column("MSB_INTEGER", 2, 2), new_column("CHARACTER", 6, 2), new_column("MSB_UNSIGNED_INTEGER", 8, 4, 2)});
    ASSERT_TRUE(rows);
    const std::string source("?\x01\x02??AB\x03\x04\x05\x06?\x07\x08??CD\x09\x0A\x0B\x0C", 22);
    EXPECT_EQ(process(rows.get(), source, {22}, OalDestinationSize(rows.get())), std::string("\x02\x01"
                                                                                             "AB"
                                                                                             "\x04\x03\x06\x05"
                                                                                             "\x08\x07"
                                                                                             "CD"
                                                                                             "\x0A\x09\x0C\x0B"));
}

TEST_F(Sdt, FillsGapsAndAligns) {
    struct Case {
        uint8_t alignment_type;
        const char *layout;
    };
    for (const Case &c : {Case{0, "data 0+1x1>0:1, inserted 1+1x3>0:0, data 4+1x4>1:4, data 8+2x4>5:4"},
                          Case{1, "data 0+1x1>0:1, inserted 1+1x3>0:0, data 4+1x4>2:4, data 8+2x4>6:4"},
                          Case{2, "data 0+1x1>0:1, inserted 1+1x3>0:0, data 4+1x4>4:4, data 8+2x4>8:4"}}) {
        Oa_profile.dst_alignment_type = c.alignment_type;
        const OaSdt rows = new_rows(
            1, 16, {new_column("CHARACTER", 1, 1), new_column("MSB_INTEGER", 5, 4), new_column("IEEE_COMPLEX", 9, 8)});
        ASSERT_TRUE(rows);
        EXPECT_EQ(layout_text(rows.get()), c.layout);
    }
    Oa_profile.dst_alignment_type = 3;
    const OaSdt image(new_object("IMAGE", image_keywords(1, 1, 8, "MSB_INTEGER")));
    EXPECT_FALSE(OalCreateSDT(image.get(), OA_BINARY));
    EXPECT_EQ(oa_errno, 535);
}

TEST_F(Sdt, PadsBeforeARepeatingNode) {
    // A column of one byte three times, then a node that must stand on a multiple of 4. The sibling counts once.
    const OaSdt root(new_object("IMAGE", {}));
    ObjDesc *before = OdlPasteObjDesc(new_column("CHARACTER", 1, 3, 3), root.get());
    ObjDesc *node = OdlPasteObjDesc(new_object("CONTAINER", {}), root.get());
    ObjDesc *below = OdlPasteObjDesc(new_column("MSB_INTEGER", 1, 4), node);
    OalNewSDTNode(before)->total_repetitions = 3;
    OalSlotOf(before)->dst.size = 1;
    OalNewSDTNode(below)->dst.alignment_req = 4;
    OalNewSDTNode(node);
    OalDetermineRepNodeAlignment(node);
    EXPECT_EQ(OalSlotOf(node)->dst.alignment_req, 4);
    ASSERT_NE(node->left_sibling, before);
    EXPECT_EQ(OalSlotOf(node->left_sibling)->dst.size, 3);
    EXPECT_EQ(oa_errno, 950);
    EXPECT_EQ(reports_.text(), "");
}

TEST_F(Sdt, ModelsTheLinesOfAnImage) {
    const OaSdt image = new_sample_tree(1);
    ASSERT_TRUE(image);
    EXPECT_EQ(layout_text(image.get()), "inserted 0+1x3>0:0, inserted 3+6x2>0:2, inserted 15+1x2>0:0");
    EXPECT_EQ(keyword_of(image->first_child->right_sibling, "NAME"), "IMAGE_LINE");
    EXPECT_EQ(OalSourceSize(image.get()), 5 * 17);
    EXPECT_EQ(OalDestinationSize(image.get()), 5 * 12);
    OalSDTtoODLTree(image.get(), OA_BINARY);
    EXPECT_EQ(image->first_child, nullptr);
    EXPECT_EQ(OalSlotOf(image.get()), nullptr);
    EXPECT_STREQ(image->first_keyword->name, "INTERCHANGE_FORMAT");
    EXPECT_EQ(keyword_of(image.get(), "SAMPLE_TYPE"), "LSB_INTEGER");
    EXPECT_EQ(keyword_of(image.get(), "SAMPLE_BITS"), "16");
}

TEST_F(Sdt, RewritesColumns) {
    struct Case {
        const char *type;
        int bytes, items;
        const char *native_type, *native_bytes, *native_item_bytes;
    };
    for (const Case &c :
         {Case{"MSB_INTEGER", 3, 0, "MSB_BIT_STRING", "3", "(none)"},
          Case{"MSB_INTEGER", 8, 0, "MSB_BIT_STRING", "8", "(none)"},
          Case{"COMPLEX", 8, 0, "PC_COMPLEX", "8", "(none)"}, Case{"VAX_COMPLEX", 32, 2, "PC_COMPLEX", "32", "16"},
          Case{"IBM_COMPLEX", 8, 0, "IBM_COMPLEX", "8", "(none)"}, Case{"IEEE_REAL", 20, 2, "PC_REAL", "16", "8"},
          Case{"\"UNSIGNED_INTEGER\"", 4, 2, "LSB_UNSIGNED_INTEGER", "4", "2"},
          Case{"DATE", 10, 0, "DATE", "10", "(none)"}}) {
        SCOPED_TRACE(c.type);
        const OaSdt column(new_column(c.type, 1, c.bytes, c.items));
        ASSERT_TRUE(OalCreateSDT(column.get(), OA_BINARY));
        EXPECT_EQ(OalSourceSize(column.get()), c.bytes);
        OalSDTtoODLTree(column.get(), OA_BINARY);
        EXPECT_EQ(keyword_of(column.get(), "DATA_TYPE"), c.native_type);
        EXPECT_EQ(keyword_of(column.get(), "BYTES"), c.native_bytes);
        EXPECT_EQ(keyword_of(column.get(), "ITEM_BYTES"), c.native_item_bytes);
    }
}

TEST_F(Sdt, FoldsWhatIsOnlyCopied) {
    const OaSdt image(new_object("IMAGE", image_keywords(100, 50, 16, "LSB_INTEGER")));
    ASSERT_TRUE(OalCreateSDT(image.get(), OA_BINARY));
    const OaSdt compressed(OalCompressSDT(image.get()));
    EXPECT_EQ(OalSlotOf(image.get())->total_repetitions, 5000);
    EXPECT_EQ(OalSlotOf(compressed.get())->total_repetitions, 1);
    EXPECT_EQ(OalSlotOf(compressed.get())->src.size, 10000);
    EXPECT_EQ(OalSlotOf(compressed.get())->conversion_type, OA_COPY);
}

TEST_F(Sdt, PassesOverWhatTakesNoBytes) {
    const OaSdt rows = new_rows(3, 3,
                                {new_column("CHARACTER", 1, 1), new_object("ALIAS", {}), new_column("CHARACTER", 2, 0),
                                 new_column("CHARACTER", 2, 2)});
    ASSERT_TRUE(rows);
    // A node that would repeat for ever without taking a byte.
    ObjDesc *idle = OdlPasteObjDesc(new_object("CONTAINER", {}), rows.get());
    ObjDesc *below = OdlPasteObjDesc(new_column("CHARACTER", 1, 0), idle);
    OalNewSDTNode(idle)->total_repetitions = INT64_MAX;
    OalNewSDTNode(below)->total_repetitions = 1;
    OalSlotOf(below)->dst.size = 8;
    OalNewSDTNode(OdlPasteObjDesc(new_object("COLUMN", {}), rows.get()))->src.size = 5;  // repeats 0 times
    EXPECT_EQ(process(rows.get(), "abcdefghi", {2}, OalDestinationSize(rows.get())), "abcdefghi");
    const OaSdt compressed(OalCompressSDT(rows.get()));
    EXPECT_EQ(process(compressed.get(), "abcdefghi", {2}, OalDestinationSize(rows.get())), "abcdefghi");
    EXPECT_EQ(OalInitializeSDT(rows.get(), nullptr, 0), nullptr);
    OalSlotOf(rows.get())->src.size = 0;
    char buffer[9];
    EXPECT_EQ(OalInitializeSDT(rows.get(), buffer, 9), nullptr);
}

TEST_F(Sdt, RefusesWhatItCannotPlan) {
    const auto image = [](const char *name, const char *value) {
        Keywords keywords = image_keywords(2, 2, 16, "MSB_INTEGER");
        for (auto &[keyword, text] : keywords)
            if (std::string_view(keyword) == name)
                text = value;
        if (std::string_view(name).ends_with("FIX_BYTES"))
            keywords.emplace_back(name, value);
        return new_object("IMAGE", keywords);
    };
    const auto within = [](ObjDesc *child) {
        ObjDesc *parent = new_object("IMAGE", image_keywords(1, 1, 8, "MSB_INTEGER"));
        OdlPasteObjDesc(child, parent);
        return parent;
    };
    ObjDesc *with_prefix = new_column("CHARACTER", 1, 4);
    OaLongtoKwdValue("ROW_PREFIX_BYTES", with_prefix, 4);
    ObjDesc *with_offset = new_column("CHARACTER", 1, 4, 2);
    OaLongtoKwdValue("ITEM_OFFSET", with_offset, 4);
    struct Case {
        ObjDesc *object;
        int code;
        const char *message;
    };
    for (const Case &c : {
             Case{image("LINES", "0"), 531, "LINES keyword value not found for IMAGE object."},
             Case{image("LINE_SAMPLES", "-3"), 531, "LINE_SAMPLES keyword value not found for IMAGE object."},
             Case{image("SAMPLE_BITS", "7"), 531, "SAMPLE_BITS keyword value not found for IMAGE object."},
             Case{image("LINES", "9223372036854775807"), 502, "LINES = 9223372036854775807"},
             Case{image("LINE_SAMPLES", "4611686018427387904"), 502, "too large"},
             Case{image("LINE_PREFIX_BYTES", "9223372036854775807"), 502, "too large"},
             Case{image("SAMPLE_TYPE", "msb_integer"), 531, "DATA_TYPE keyword value: msb_integer in\nIMAGE node"},
             Case{new_object("IMAGE", {}), 531, "SAMPLE_TYPE keyword value not found for IMAGE object."},
             Case{new_object("COLUMN", {{"NAME", "X"}}), 531, "for COLUMN object\nwith NAME = X."},
             Case{new_column("CHARACTER", 0, 1), 531, "START_BYTE keyword value not found for COLUMN object."},
             Case{new_column("CHARACTER", 1, -1), 531, "BYTES keyword value not found for COLUMN object."},
             Case{with_prefix, 530, "prefix and/or suffix bytes are not allowed for COLUMN object."},
             Case{with_offset, 520, "ITEM_OFFSET"},
             Case{within(new_column("CHARACTER", 1, 1)), 530, "a IMAGE object cannot contain sub-objects."},
             Case{within(new_object("WINDOW", {})), 530, "Unknown object class."},
             Case{new_object("TABLE", {}), 530, "Unknown object class."},
         }) {
        SCOPED_TRACE(c.message);
        const OaSdt object(c.object);
        EXPECT_EQ(OalCreateSDT(object.get(), OA_BINARY), nullptr);
        EXPECT_EQ(oa_errno, c.code);
        EXPECT_NE(error_string.find(c.message), std::string::npos) << error_string;
    }
    EXPECT_FALSE(new_rows(1, 9, {new_column("CHARACTER", 1, 4), new_column("CHARACTER", 4, 4)}));
    EXPECT_EQ(oa_errno, 534);
    EXPECT_NE(error_string.find("overlapping source data. src.start_offset = 3, previous src.start_offset = 0 previous "
                                "src.size = 4"),
              std::string::npos);
}

TEST_F(Sdt, KeepsASpareOfUnknownType) {
    ObjDesc *spare = new_column("N/A", 3, 2);
    OaStrtoKwdValue("NAME", spare, "SPARE");
    EXPECT_TRUE(new_rows(1, 6, {new_column("CHARACTER", 1, 2), spare, new_column("CHARACTER", 5, 2)}));
}

TEST_F(Sdt, CutsANodeFromItsParent) {
    const OaSdt parent(new_object("ROOT", {}));
    const OaSdt image(OdlPasteObjDesc(new_object("IMAGE", image_keywords(1, 1, 8, "MSB_INTEGER")), parent.get()));
    EXPECT_TRUE(OalCreateSDT(image.get(), OA_BINARY));
    EXPECT_EQ(parent->first_child, nullptr);
    EXPECT_NE(reports_.text().find("Input node has now been cut off from parent node."), std::string::npos);
}

TEST_F(Sdt, ReportsAConversionThatIsNone) {
    OaSlot slot;
    slot.conversion_type = OA_BINARY_TO_ASCII;
    EXPECT_EQ(OalConvert(&slot), 1);
    EXPECT_EQ(oa_errno, 535);
    EXPECT_EQ(error_string, "OalConvert: invalid conversion type: 4.");
}

}  // namespace
