// Plans of images and lone columns, and nodes that take no bytes.
#include "oa/sdt.h"

#include "support/product.h"
#include "support/sdt_tree.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <random>

namespace {

std::string image(int lines, int samples, int bits, const std::string &type, const std::string &more = "") {
    ImageProduct product = {.lines = lines, .samples = samples, .bits = bits, .type = type};
    product.more = more;
    return product.object();
}

TEST(Sdt, TakesImagesCutAnywhere) {
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

TEST(Sdt, RewritesColumns) {
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

TEST(Sdt, PassesOverWhatTakesNoBytes) {
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

TEST(Sdt, RefusesWhatItCannotPlan) {
    const SilentReports reports;
    struct Case {
        std::string label;
        int code;
        const char *message;
    };
    const std::string byte = column("CHARACTER", 1, 1);
    for (const Case &c :
         {Case{image(0, 2, 16, "MSB_INTEGER"), 531, "LINES keyword value not found for IMAGE object."},
          Case{image(2, 2, 16, "msb_integer"), 531, "DATA_TYPE keyword value: msb_integer in\nIMAGE node"},
          Case{image(2, 2, 16, "MSB_INTEGER", byte), 530, "a IMAGE object cannot contain sub-objects."},
          Case{object("TABLE", ""), 530, "error: TABLE object has no sub-object."},
          Case{object("COLUMN", "NAME = X"), 531, "for COLUMN object\nwith NAME = X."},
          Case{column("CHARACTER", 1, 4, "ROW_PREFIX_BYTES = 4\n"), 530, "not allowed for COLUMN object."},
          Case{column("CHARACTER", 1, 8, "ITEMS = 2\nITEM_BYTES = 4\nITEM_OFFSET = 3\n"), 534,
               "overlapping source data"}}) {
        EXPECT_FALSE(plan_object(c.label, OA_BINARY)) << c.label;
        expect_report(c.code, c.message, c.label);
    }
}

}  // namespace
