#include "oa/sdt.h"
#include "support/hex.h"
#include "support/product.h"
#include "support/sdt_tree.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

class SdtTable : public testing::Test {
  protected:
    ~SdtTable() override { Oa_profile = {}; }
    SilentReports reports_;
};

const std::string bit = object("BIT_COLUMN", "START_BIT = 1\nBITS = 4");

std::string image(int lines, int samples, int bits, const std::string &type, const std::string &more = "") {
    ImageProduct product = {.lines = lines, .samples = samples, .bits = bits, .type = type};
    product.more = more;
    return product.object();
}

TEST_F(SdtTable, TakesImagesCutAnywhere) {
    for (const std::string &label : {image(5, 6, 16, "MSB_INTEGER", "LINE_PREFIX_BYTES = 3\nLINE_SUFFIX_BYTES = 2\n"),
                                     image(4, 9, 32, "VAX_REAL")}) {
        const OaSdt plan = plan_object(label, OA_BINARY);
        ASSERT_TRUE(plan);
        const int64_t size = OalDestinationSize(plan.get());
        std::string source(static_cast<size_t>(OalSourceSize(plan.get())) + 100, '\0');  // 100 bytes more than wanted
        std::generate(source.begin(), source.end(), std::mt19937(7));
        const std::string whole = process(plan.get(), source, {source.size()}, size);
        EXPECT_GT(std::count_if(whole.begin(), whole.end(), [](char c) { return c != 0; }), size / 2);
        for (size_t cut = 1; cut < 20; ++cut)
            ASSERT_EQ(process(plan.get(), source, {cut, 1, 2 * cut}, size), whole) << "cut " << cut;
    }
}

TEST_F(SdtTable, RewritesColumns) {
    struct Case {
        const char *type;
        int bytes, items;
        const char *native;  // type, bytes, bytes of an item
    };
    for (const Case &c :
         {Case{"MSB_INTEGER", 3, 1, "MSB_BIT_STRING 3 3"}, Case{"VAX_COMPLEX", 32, 2, "PC_COMPLEX 32 16"},
          Case{"IBM_COMPLEX", 8, 1, "IBM_COMPLEX 8 8"}, Case{"IEEE_REAL", 20, 2, "PC_REAL 16 8"}}) {
        const OaSdt plan = plan_object(
            column(c.type, 1, c.bytes, util_format("ITEMS = %d\nITEM_BYTES = %d\n", c.items, c.bytes / c.items)),
            OA_BINARY);
        ASSERT_TRUE(plan) << c.type;
        EXPECT_EQ(OalSourceSize(plan.get()), c.bytes);
        OalSDTtoODLTree(plan.get(), OA_BINARY);
        EXPECT_EQ(keyword_of(plan.get(), "DATA_TYPE") + " " + keyword_of(plan.get(), "BYTES") + " " +
                      keyword_of(plan.get(), "ITEM_BYTES"),
                  c.native);
    }
}

TEST_F(SdtTable, PassesOverWhatTakesNoBytes) {
    const OaSdt rows = plan_object(
        table(3, 3, column("CHARACTER", 1, 1) + column("CHARACTER", 2, 0) + column("CHARACTER", 2, 2)), OA_BINARY);
    ASSERT_TRUE(rows);
    const int64_t size = OalDestinationSize(rows.get());
    // A node that would repeat for ever without taking a byte, and one that repeats never.
    ObjDesc *idle = OdlPasteObjDesc(parse_object(object("CONTAINER", "")), rows.get());
    OalNewSDTNode(idle)->total_repetitions = INT64_MAX;
    OalNewSDTNode(OdlPasteObjDesc(parse_object(object("COLUMN", "")), idle))->dst.size = 8;
    OalNewSDTNode(OdlPasteObjDesc(parse_object(object("COLUMN", "")), rows.get()))->src.size = 5;
    const OaSdt compressed(OalCompressSDT(rows.get()));
    for (ObjDesc *plan : {rows.get(), compressed.get()})
        EXPECT_EQ(process(plan, "abcdefghi", {2}, size), "abcdefghi");
}

struct Case {
    std::string label;
    const char *layout;     // of the slots below the root
    const char *rewritten;  // label
};

TEST_F(SdtTable, PlansEveryClassAndDescribesWhatItBecame) {
    Oa_profile.dst_alignment_type = 2;
    const std::string element = object("ELEMENT", "DATA_TYPE = MSB_INTEGER\nBYTES = 2");
    const std::string bits =
        object("BIT_ELEMENT", "START_BIT = 1\nBITS = 3") + object("BIT_ELEMENT", "START_BIT = 4\nBITS = 13");
    for (const Case &c : {
             // A row with bytes around it, a gap, a column with bit columns, which stays as stored, and bytes behind
             // the last column.
             Case{table(2, 12,
                        column("MSB_INTEGER", 1, 2) + column("MSB_UNSIGNED_INTEGER", 5, 4, "NAME = X\n") +
                            object("COLUMN", "DATA_TYPE = MSB_UNSIGNED_INTEGER\nSTART_BYTE = 9\nBYTES = 2", bit),
                        "ROW_PREFIX_BYTES = 3\nROW_SUFFIX_BYTES = 2\n"),
                  "*0+1x3>0:0 3+1x2>0:2 *5+1x2>0:0 7+1x4>4:4 11+1x2>8:2 { } *13+1x2>0:0 *15+1x2>0:0 ",
                  "TABLE INTERCHANGE_FORMAT=BINARY ROWS=2 ROW_BYTES=10 COLUMNS=3"
                  " { COLUMN DATA_TYPE=LSB_INTEGER START_BYTE=1 BYTES=2 }"
                  " { COLUMN DATA_TYPE=LSB_UNSIGNED_INTEGER START_BYTE=5 BYTES=4 NAME=X }"
                  " { COLUMN DATA_TYPE=MSB_UNSIGNED_INTEGER START_BYTE=9 BYTES=2 { BIT_COLUMN START_BIT=1 BITS=4 } }"},
             // A container behind a gap stands behind the column, and its padding is only announced.
             Case{table(1, 20,
                        column("CHARACTER", 1, 3) + object("CONTAINER", "START_BYTE = 9\nBYTES = 6\nREPETITIONS = 2",
                                                           column("IEEE_REAL", 1, 4) + column("CHARACTER", 5, 1))),
                  "0+1x3>0:3 *0+1x0>0:1 *3+1x5>0:0 8+2x6>3:5 { 0+1x4>0:4 4+1x1>4:1 *5+1x1>0:0 } ",
                  "TABLE INTERCHANGE_FORMAT=BINARY ROWS=1 ROW_BYTES=13 COLUMNS=2"
                  " { COLUMN DATA_TYPE=CHARACTER START_BYTE=1 BYTES=3 }"
                  " { CONTAINER START_BYTE=4 BYTES=5 REPETITIONS=2"
                  " { COLUMN DATA_TYPE=PC_REAL START_BYTE=1 BYTES=4 } { COLUMN DATA_TYPE=CHARACTER START_BYTE=5 "
                  "BYTES=1 }"
                  " }"},
             // Items apart from each other; one item needs no parts; items without space between them need no SPARE.
             Case{table(1, 30,
                        column("IEEE_COMPLEX", 1, 20, "ITEMS = 2\nITEM_BYTES = 8\nITEM_OFFSET = 12\n") +
                            column("CHARACTER", 21, 4, "ITEMS = 1\nITEM_BYTES = 4\nITEM_OFFSET = 9\n") +
                            column("CHARACTER", 25, 6, "ITEMS = 3\nITEM_BYTES = 2\nITEM_OFFSET = 2\n")),
                  "0+1x20>0:16 { *0+1x12>0:8 { *0+2x4>0:4 *8+1x4>0:0 } *12+2x4>8:4 } 20+1x4>16:4 "
                  "24+1x6>20:6 { *0+2x2>0:2 { *0+1x2>0:2 } *4+1x2>4:2 } ",
                  "TABLE INTERCHANGE_FORMAT=BINARY ROWS=1 ROW_BYTES=26 COLUMNS=3"
                  " { COLUMN DATA_TYPE=PC_COMPLEX START_BYTE=1 BYTES=16 ITEMS=2 ITEM_BYTES=8 ITEM_OFFSET=8 }"
                  " { COLUMN DATA_TYPE=CHARACTER START_BYTE=17 BYTES=4 ITEMS=1 ITEM_BYTES=4 ITEM_OFFSET=4 }"
                  " { COLUMN DATA_TYPE=CHARACTER START_BYTE=21 BYTES=6 ITEMS=3 ITEM_BYTES=2 ITEM_OFFSET=2 }"},
             // The offset of a single item has no meaning.
             Case{table(3, 5,
                        column("CHARACTER", 1, 1) + column("MSB_INTEGER", 2, 2) +
                            column("MSB_INTEGER", 4, 2, "ITEM_OFFSET = 7\n"),
                        "TABLE_STORAGE_TYPE = \"COLUMN_MAJOR\"\n"),
                  "0+3x1>0:1 3+3x2>3:2 *0+1x0>0:1 9+1x6>9:6 { *0+2x2>0:2 { *0+1x2>0:2 } *4+1x2>4:2 } ",
                  "TABLE INTERCHANGE_FORMAT=BINARY ROWS=3 ROW_BYTES=5 TABLE_STORAGE_TYPE=\"COLUMN_MAJOR\" COLUMNS=3"
                  " { COLUMN DATA_TYPE=CHARACTER START_BYTE=1 BYTES=1 ITEM_BYTES=1 ITEMS=1 }"
                  " { COLUMN DATA_TYPE=LSB_INTEGER START_BYTE=2 BYTES=2 ITEM_BYTES=2 ITEMS=1 }"
                  " { COLUMN DATA_TYPE=LSB_INTEGER START_BYTE=4 BYTES=2 ITEM_OFFSET=2 ITEM_BYTES=2 ITEMS=1 }"},
             Case{object("ARRAY", "AXES = 2\nAXIS_ITEMS = (3, 4)",
                         object("COLLECTION", "BYTES = 6",
                                element + object("ELEMENT", "DATA_TYPE = IEEE_REAL\nSTART_BYTE = 3\nBYTES = 4"))),
                  "0+1x6>0:8 { 0+1x2>0:2 2+1x4>4:4 } ",
                  "ARRAY INTERCHANGE_FORMAT=BINARY AXES=2 AXIS_ITEMS=(3, 4) START_BYTE=1"
                  " { COLLECTION BYTES=8 START_BYTE=1 INTERCHANGE_FORMAT=BINARY"
                  " { ELEMENT DATA_TYPE=LSB_INTEGER BYTES=2 START_BYTE=1 }"
                  " { ELEMENT DATA_TYPE=PC_REAL START_BYTE=5 BYTES=4 } }"},
             Case{object("COLLECTION", "BYTES = 4", bits + object("ALIAS", "") + element), nullptr, nullptr},
             Case{object("COLLECTION", "BYTES = 2", bits), "0+1x2>0:2 ",
                  "COLLECTION INTERCHANGE_FORMAT=BINARY BYTES=2 START_BYTE=1 { BIT_ELEMENT START_BIT=1 BITS=3 }"
                  " { BIT_ELEMENT START_BIT=4 BITS=13 }"},
         }) {
        SCOPED_TRACE(c.label);
        const OaSdt plan = plan_object(c.label, OA_BINARY);
        ASSERT_EQ(!plan, !c.layout) << error_string;
        if (!plan)
            continue;
        EXPECT_EQ(layout_text(plan.get()), c.layout);
        OalSDTtoODLTree(plan.get(), OA_BINARY);
        EXPECT_EQ(label_text(plan.get()), c.rewritten);
    }
}

TEST_F(SdtTable, PrintsAndReadsNumbers) {
    struct Print {
        const char *type;
        std::string value;  // as stored
        const char *format, *printed, *format_after;
    };
    using namespace std::string_literals;
    Oa_profile.dst_format_for_binary = OA_ASCII;
    for (const Print &c : {
             Print{"MSB_INTEGER", "\xFF\xFE"s, "\" 'i4' \"", "   -2", "\" 'i4' \""},
             Print{"MSB_INTEGER", "\x80\0"s, nullptr, " -32768", "(none)"},
             Print{"LSB_UNSIGNED_INTEGER", "\xFF\xFF\xFF\xFF"s, "I3", " 429", "I3"},  // too narrow: the first digits
             Print{"MSB_INTEGER", "\0\1"s, "I501", "      1", "I501"},
             Print{"IEEE_REAL", "\x3F\xC0\0\0"s, "F8.3", "    1.500", "F8.3"},
             Print{"IEEE_REAL", "\x3F\xC0\0\0"s, "E10.2", "   1.50e+00", "E10.2"},
             Print{"IEEE_REAL", "\x3F\xC0\0\0"s, "F4.5", "            1.5", "F4.5"},
             Print{"IEEE_REAL", "\xBF\xF5\x55\x55\x55\x55\x55\x55"s, nullptr, "     -1.333333333333333", "(none)"},
             Print{"IEEE_REAL", "\x80\x10\0\0\0\0\0\0"s, nullptr, "  -2.2250738585072e-308", "(none)"},
             Print{"MSB_INTEGER", "\1\xAB\x7F"s, "I4", " 01AB7F", "\"X6\""},
             Print{"MSB_BIT_STRING", "\1\xAB"s, "O6", " 001253", "O6"},
             Print{"CHARACTER", "abc", nullptr, "abc", "(none)"},
             Print{"N/A", "abc", nullptr, "", "(none)"},
         }) {
        SCOPED_TRACE(c.type + c.value);
        const std::string more =
            std::string("NAME = SPARE\n") + (c.format ? std::string("FORMAT = ") + c.format + "\n" : "");
        const OaSdt plan = plan_object(column(c.type, 1, static_cast<int64_t>(c.value.size()), more), OA_BINARY);
        ASSERT_TRUE(plan) << error_string;
        EXPECT_EQ(process(plan.get(), c.value, {1}, OalDestinationSize(plan.get())), c.printed);
        const char *format = "(none)";
        OaKwdValuetoStr("FORMAT", plan.get(), &format);
        EXPECT_STREQ(format, c.format_after);
    }
    const OaSdt text = plan_object(table(2, 9, column("ASCII_INTEGER", 1, 3) + column("ASCII_REAL", 5, 4)), OA_ASCII);
    ASSERT_TRUE(text);
    EXPECT_EQ(process(text.get(), " -2, 1D2\n 70, -.5\n", {17}, OalDestinationSize(text.get())),
              "\xFE\xFF\xFF\xFF\0\0\0\0\0\0\x59\x40"s + "\x46\0\0\0\0\0\0\0\0\0\xE0\xBF"s);
    EXPECT_EQ(oa_errno, 900);
}

TEST_F(SdtTable, RefusesWhatItCannotPlan) {
    const std::string byte = column("CHARACTER", 1, 1);
    const std::string element = object("ELEMENT", "DATA_TYPE = CHARACTER\nBYTES = 1");
    const std::string huge = "9223372036854775807";
    const auto container = [&](const std::string &keywords) {
        return table(1, 9, object("CONTAINER", "START_BYTE = 1\nBYTES = 1\n" + keywords, byte));
    };
    const std::tuple<std::string, int, const char *> cases[] = {
        {table(1, 9, byte + object("CONTAINER", "START_BYTE = 2")), 530, "error: CONTAINER object has no sub-object."},
        {table(1, 9, bit), 530, "error: TABLE object has no sub-object."},
        {image(0, 2, 16, "MSB_INTEGER"), 531, "LINES keyword value not found for IMAGE object."},
        {image(2, 2, 16, "msb_integer"), 531, "DATA_TYPE keyword value: msb_integer in\nIMAGE node"},
        {image(2, 2, 16, "MSB_INTEGER", byte), 530, "a IMAGE object cannot contain sub-objects."},
        {object("COLUMN", "NAME = X"), 531, "for COLUMN object\nwith NAME = X."},
        {column("CHARACTER", 1, 4, "ROW_PREFIX_BYTES = 4\n"), 530, "not allowed for COLUMN object."},
        {column("CHARACTER", 1, 8, "ITEMS = 2\nITEM_BYTES = 4\nITEM_OFFSET = 3\n"), 534, "overlapping source data"},
        {table(1, 9, element + bit + object("QUBE", "", byte)), 530, "Unknown object class."},
        {object("TABLE", "ROWS = 1", byte), 531, "OaGetTableKeywords: ROW_BYTES keyword missing."},
        {object("TABLE", "ROW_PREFIX_BYTES = 1", byte), 531, "ROW_BYTES keyword value not found for TABLE object."},
        {table(1, 9, "", "ROW_SUFFIX_BYTES = 1\n"), 530, "TABLE-like object without any COLUMNs!"},
        {table(1, 9, column("CHARACTER", 6, 5)), 534, "overlapping source data"},
        {table(1, 9, column("CHARACTER", 9, 2), "ROW_SUFFIX_BYTES = 4\n"), 534, "overlapping source data"},
        {table(1, 9, column("CHARACTER", 1, 4) + column("CHARACTER", 4, 1)), 534,
         "src.start_offset = 3, previous src.start_offset = 0 previous src.size = 4"},
        {table(1, 9, column("CHARACTER", 0, 1)), 531, "START_BYTE keyword value not found for COLUMN"},
        {table(1, 9, column("CHARACTER", -4, 1), "ROW_PREFIX_BYTES = 9\n"), 531, "START_BYTE"},
        {table(1, 9, column("CHARACTER", 1, 4, "ITEMS = 0\n")), 531, "ITEMS keyword value not found"},
        {table(1, 9, column("CHARACTER", 1, 4, "ITEMS = 2\nITEM_OFFSET = 2\n")), 531,
         "ITEM_BYTES keyword value not found for COLUMN object."},
        {table(1, 9, column("CHARACTER", 1, 4, "ITEMS = " + huge + "\nITEM_BYTES = 2\nITEM_OFFSET = 3\n")), 502,
         "too large"},
        {container("REPETITIONS = -1"), 531, "REPETITIONS keyword value not found for CONTAINER object."},
        {container("REPETITIONS = " + huge), 534, "overlapping source data"},
        {table(1, 9, column("CHARACTER", 5, INT64_MAX)), 534, "overlapping source data"},
        {table(INT64_MAX / 2, 9, byte), 502, "too large"},
        {table(INT64_MAX, INT64_MAX, byte, "ROW_SUFFIX_BYTES = 9\n"), 502, "too large"},
        {table(1, 9, column("CHARACTER", INT64_MAX, 1), "ROW_PREFIX_BYTES = 9\n"), 502, "too large"},
        {table(0, 9, byte, "TABLE_STORAGE_TYPE = COLUMN_MAJOR\n"), 531, "couldn't find ROWS keyword"},
        {table(INT64_MAX / 2, 9, column("CHARACTER", 9, 1), "TABLE_STORAGE_TYPE = COLUMN_MAJOR\n"), 502, "too large"},
        {table(2, 9, element, "TABLE_STORAGE_TYPE = COLUMN_MAJOR\n"), 530,
         "object class: ELEMENT not allowed in a column-major TABLE"},
        {table(2, 9, column("CHARACTER", 1, 5, "ITEMS = 2\n"), "TABLE_STORAGE_TYPE = COLUMN_MAJOR\n"), 520,
         "do not fill its BYTES = 5"},
        {object("ARRAY", "AXIS_ITEMS = 3", element), 531, "AXES keyword value not found for ARRAY object."},
        {object("ARRAY", "AXES = 1", element), 531, "AXIS_ITEMS keyword value not found for ARRAY object."},
        {object("ARRAY", "AXES = 3\nAXIS_ITEMS = (2, 2)", element), 532,
         "number of sequence elements in AXIS_ITEMS: 2 does not agree with AXES keyword value: 3."},
        {object("ARRAY", "AXES = 2\nAXIS_ITEMS = (" + huge + ", 2)", element), 502, "too large"},
        {object("ARRAY", "AXES = 1\nAXIS_ITEMS = -2", element), 531, "AXIS_ITEMS"},
        {object("ARRAY", "AXES = 1\nAXIS_ITEMS = 2",
                element + object("ELEMENT",
                                 "DATA_TYPE = CHARACTER\n"
                                 "START_BYTE = 2\nBYTES = 1")),
         530, "ARRAY cannot contain more than one sub-object."},
        {object("ARRAY", "AXES = 1\nAXIS_ITEMS = 2", object("BIT_ELEMENT", "BITS = 8")), 520,
         "can't handle a BIT_ELEMENT node directly under an ARRAY node."},
        {table(1, 9, object("BIT_ELEMENT", "BITS = 8")), 530, "can't handle a BIT_ELEMENT under a TABLE."},
        {object("COLLECTION", "BYTES = 9", object("BIT_ELEMENT", "START_BIT = 1\nBITS = 12")), 530,
         "Total number of bits in adjacent BIT_ELEMENTS must be a multiple of 8."},
        {object("COLLECTION", "BYTES = 9", object("BIT_ELEMENT", "START_BIT = 1")), 531,
         "couldn't find BITS keyword in BIT_ELEMENT object."},
        {object("COLLECTION", "BYTES = 9", object("BIT_ELEMENT", "START_BYTE = " + huge + "\nBITS = 8")), 502,
         "too large"},
    };
    for (const auto &[label, code, message] : cases) {
        SCOPED_TRACE(label);
        EXPECT_FALSE(plan_object(label, OA_BINARY));
        expect_report(code, message);
    }
}

TEST_F(SdtTable, NestsDeeperThanAnyLabel) {
    for (const int depth : {200, 10000}) {
        OaSdt top(parse_object(table(3, 1, "")));
        ObjDesc *inner = top.get();
        for (int i = 0; i < depth; ++i)
            inner =
                OdlPasteObjDesc(parse_object(object("CONTAINER", "START_BYTE = 1\nBYTES = 1\nREPETITIONS = 1")), inner);
        OdlPasteObjDesc(parse_object(column("CHARACTER", 1, 1)), inner);
        ASSERT_EQ(OalCreateSDT(top.get(), OA_BINARY) != nullptr, depth == 200);
        if (depth == 200) {
            EXPECT_EQ(process(top.get(), "abc", {1}, 3), "abc");
        }
        EXPECT_EQ(oa_errno, depth == 200 ? 0 : 530);
    }
}

// The fenced blocks of docs/conversion.md that are no diagrams, in order.
std::vector<std::string> documented_blocks() {
    std::ifstream page(LUMACART_SAMPLES "/../docs/conversion.md");
    std::vector<std::string> blocks;
    bool fenced = false, inside = false;
    for (std::string line; std::getline(page, line);) {
        const bool is_fence = line.starts_with("```");
        if (is_fence && (inside = !fenced && line == "```"))
            blocks.emplace_back();
        if (is_fence)
            fenced = !fenced;
        else if (inside)
            blocks.back() += line + "\n";
    }
    return blocks;
}

TEST_F(SdtTable, DoesWhatTheDocumentedExampleSays) {
    const std::vector<std::string> blocks = documented_blocks();
    ASSERT_EQ(blocks.size(), 5U);
    const OaSdt plan = plan_object(blocks[0], OA_BINARY);
    ASSERT_TRUE(plan);
    std::istringstream lines(blocks[2]);
    std::string slots;
    for (std::string line; std::getline(lines, line);)
        slots += line.substr(0, line.find("  ")) + " ";
    EXPECT_EQ(layout_text(plan.get()), slots);
    EXPECT_EQ(process(plan.get(), from_hex(util_without(blocks[1], '\n')), {5}, OalDestinationSize(plan.get())),
              from_hex(util_without(blocks[3], '\n')));
    OalSDTtoODLTree(plan.get(), OA_BINARY);
    EXPECT_EQ(label_text(plan.get()), label_text(OdlTree(parse_object(blocks[4])).get()));
}

}  // namespace
