#include "oa/sdt.h"

#include "support/product.h"
#include "support/sdt_tree.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

class Sdt : public testing::Test {
  protected:
    ~Sdt() override { Oa_profile = {}; }
    SilentReports reports_;
};

using Keywords = std::vector<std::pair<const char *, std::string>>;

ObjDesc *new_object(const char *class_name, const Keywords &keywords = {}) {
    ObjDesc *object = OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
    for (const auto &[name, value] : keywords)
        OaStrtoKwdValue(name, object, value.c_str());
    return object;
}

ObjDesc *new_column(const char *type, int start_byte, int bytes, int items = 1) {
    return new_object("COLUMN", {{"DATA_TYPE", type},
                                 {"START_BYTE", std::to_string(start_byte)},
                                 {"BYTES", std::to_string(bytes)},
                                 {"ITEMS", std::to_string(items)},
                                 {"ITEM_BYTES", std::to_string(bytes / items)}});
}

ObjDesc *new_image(int lines, int samples, int bits, const char *type) {
    return new_object("IMAGE", {{"LINES", std::to_string(lines)},
                                {"LINE_SAMPLES", std::to_string(samples)},
                                {"SAMPLE_BITS", std::to_string(bits)},
                                {"SAMPLE_TYPE", type}});
}

// A plan for rows of columns: a root that repeats `rows` times and holds `row_bytes` each time.
OaSdt plan_rows(int64_t rows, int64_t row_bytes, const std::vector<ObjDesc *> &columns) {
    OaSdt root(new_object("ROWS"));
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

OaSdt plan_lines() {
    OaSdt image(new_image(5, 6, 16, "MSB_INTEGER"));
    OaLongtoKwdValue("LINE_PREFIX_BYTES", image.get(), 3);
    OaLongtoKwdValue("LINE_SUFFIX_BYTES", image.get(), 2);
    return OalCreateSDT(image.get(), OA_BINARY) ? std::move(image) : nullptr;
}

TEST_F(Sdt, TakesImagesCutAnywhere) {
    std::vector<OaSdt> plans;
    plans.push_back(plan_lines());
    plans.emplace_back(OalCreateSDT(new_image(4, 9, 32, "VAX_REAL"), OA_BINARY));
    for (const OaSdt &plan : plans) {
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

TEST_F(Sdt, ConvertsEachItemToItsPlace) {
    Oa_profile.dst_alignment_type = 0;
    ObjDesc *spare = new_column("N/A", 1, 1);
    OaStrtoKwdValue("NAME", spare, "SPARE");
    const OaSdt rows = plan_rows(2, 11,
                                 {spare, new_column("MSB_INTEGER", 2, 2), new_object("ALIAS"),
                                  new_column("CHARACTER", 6, 2), new_column("MSB_UNSIGNED_INTEGER", 8, 4, 2)});
    ASSERT_TRUE(rows);
    EXPECT_EQ(process(rows.get(), "0123456789A0123456789A", {22}, OalDestinationSize(rows.get())),
              "0215687A90215687A9");
}

TEST_F(Sdt, FillsGapsAndAligns) {
    const char *const layouts[] = {"0+1x1>0:1 *1+1x3>0:0 4+1x4>1:4 8+2x4>5:4 ",
                                   "0+1x1>0:1 *1+1x3>0:0 4+1x4>2:4 8+2x4>6:4 ",
                                   "0+1x1>0:1 *1+1x3>0:0 4+1x4>4:4 8+2x4>8:4 "};
    for (uint8_t type = 0; type < 3; ++type) {
        Oa_profile.dst_alignment_type = type;
        const OaSdt rows = plan_rows(
            1, 16, {new_column("CHARACTER", 1, 1), new_column("MSB_INTEGER", 5, 4), new_column("IEEE_COMPLEX", 9, 8)});
        ASSERT_TRUE(rows);
        EXPECT_EQ(layout_text(rows.get()), layouts[type]);
    }
}

TEST_F(Sdt, RewritesColumns) {
    struct Case {
        const char *type;
        int bytes, items;
        const char *native_type, *native_bytes, *native_item_bytes;
    };
    for (const Case &c :
         {Case{"MSB_INTEGER", 3, 1, "MSB_BIT_STRING", "3", "3"}, Case{"VAX_COMPLEX", 32, 2, "PC_COMPLEX", "32", "16"},
          Case{"IBM_COMPLEX", 8, 1, "IBM_COMPLEX", "8", "8"}, Case{"IEEE_REAL", 20, 2, "PC_REAL", "16", "8"}}) {
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

TEST_F(Sdt, ConvertsHistograms) {
    const OaSdt histogram(
        new_object("IMAGE_HISTOGRAM", {{"ITEMS", "3"}, {"ITEM_BYTES", "4"}, {"DATA_TYPE", "MSB_INTEGER"}}));
    ASSERT_TRUE(OalCreateSDT(histogram.get(), OA_BINARY));
    EXPECT_EQ(process(histogram.get(), "0123456789AB", {5}, OalDestinationSize(histogram.get())), "32107654BA98");
    OalSDTtoODLTree(histogram.get(), OA_BINARY);
    EXPECT_EQ(keyword_of(histogram.get(), "DATA_TYPE"), "LSB_INTEGER");
    EXPECT_EQ(keyword_of(histogram.get(), "ITEM_BYTES"), "4");
}

TEST_F(Sdt, PassesOverWhatTakesNoBytes) {
    const OaSdt rows =
        plan_rows(3, 3, {new_column("CHARACTER", 1, 1), new_column("CHARACTER", 2, 0), new_column("CHARACTER", 2, 2)});
    ASSERT_TRUE(rows);
    // A node that would repeat for ever without taking a byte, and one that repeats never.
    ObjDesc *idle = OdlPasteObjDesc(new_object("CONTAINER"), rows.get());
    OalNewSDTNode(idle)->total_repetitions = INT64_MAX;
    OalNewSDTNode(OdlPasteObjDesc(new_object("COLUMN"), idle))->dst.size = 8;
    OalNewSDTNode(OdlPasteObjDesc(new_object("COLUMN"), rows.get()))->src.size = 5;
    const OaSdt compressed(OalCompressSDT(rows.get()));
    for (ObjDesc *plan : {rows.get(), compressed.get()})
        EXPECT_EQ(process(plan, "abcdefghi", {2}, OalDestinationSize(rows.get())), "abcdefghi");
}

TEST_F(Sdt, RefusesWhatItCannotPlan) {
    const auto plain_image = [] { return new_image(2, 2, 16, "MSB_INTEGER"); };
    const auto with = [](ObjDesc *object, const char *keyword, const char *value) {
        OaStrtoKwdValue(keyword, object, value);
        return object;
    };
    ObjDesc *const image_around_column = plain_image();
    OdlPasteObjDesc(new_column("CHARACTER", 1, 1), image_around_column);
    struct Case {
        ObjDesc *object;
        int code;
        const char *message;
    };
    for (const Case &c :
         {Case{with(plain_image(), "LINES", "0"), 531, "LINES keyword value not found for IMAGE object."},
          Case{new_object("TABLE"), 530, "error: TABLE object has no sub-object."},
          Case{with(plain_image(), "SAMPLE_TYPE", "msb_integer"), 531,
               "DATA_TYPE keyword value: msb_integer in\nIMAGE node"},
          Case{new_object("COLUMN", {{"NAME", "X"}}), 531, "for COLUMN object\nwith NAME = X."},
          Case{with(new_column("CHARACTER", 1, 1), "ITEMS", "0"), 531, "ITEMS keyword value not found"},
          Case{with(new_column("CHARACTER", 1, 4), "ROW_PREFIX_BYTES", "4"), 530, "not allowed for COLUMN object."},
          Case{with(new_column("CHARACTER", 1, 8, 2), "ITEM_OFFSET", "3"), 534, "overlapping source data"},
          Case{image_around_column, 530, "a IMAGE object cannot contain sub-objects."}}) {
        SCOPED_TRACE(c.message);
        const OaSdt object(c.object);
        EXPECT_EQ(OalCreateSDT(object.get(), OA_BINARY), nullptr);
        EXPECT_EQ(oa_errno, c.code);
        EXPECT_NE(error_string.find(c.message), std::string::npos) << error_string;
    }
    EXPECT_FALSE(plan_rows(1, 9, {new_column("CHARACTER", 1, 4), new_column("CHARACTER", 4, 4)}));
    EXPECT_EQ(oa_errno, 534);
}

}  // namespace
