#include "base/text.h"
#include "support/label.h"
#include "support/notices.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

class Expand : public testing::Test {
  protected:
    // The outline of a label file of that text, expanded.
    std::string expanded(const std::string &text, int expand = ODL_EXPAND_STRUCTURE | ODL_EXPAND_CATALOG) {
        return expanded_file(folder_.write("x.lbl", text), expand);
    }
    std::string expanded_file(const std::string &path, int expand = ODL_EXPAND_STRUCTURE) {
        root_.reset(OdlParseLabelFile(path.c_str(), folder_.file("messages").c_str(), expand, 0));
        return outline(root_.get());
    }
    size_t count(const char *keyword = "*") const {
        uint32_t found = 0;
        while (OdlFindKwd(root_.get(), keyword, nullptr, found + 1, SCOPE_TO_END))
            ++found;
        return found;
    }
    // Begins with A, ends with LAST, and has nothing but zeros in between.
    std::string write_sparse(const char *name, uintmax_t size) const {
        std::string path = folder_.write(name, "A = 1\n");
        std::filesystem::resize_file(path, size);
        std::ofstream(path, std::ios::app | std::ios::binary) << "\nLAST = 1\nEND\n";
        return path;
    }

    Notices notices_;
    ScratchFolder folder_;
    TreePtr root_;
};

TEST_F(Expand, GraftsKeywordsBehindThePointerAndChildrenBehindTheirKin) {
    folder_.write("s.fmt", "A = 1\nB = 2\nOBJECT = NEW\nEND_OBJECT\nOBJECT = NEW2\nC = 3\nEND_OBJECT");
    EXPECT_EQ(expanded("OBJECT = T\n^STRUCTURE = \"s.fmt\"\nZ = 9\nOBJECT = OLD\nEND_OBJECT\nEND_OBJECT\nEND"),
              "ROOT @0\n  T @1\n    ^STRUCTURE = \"s.fmt\" @2\n    A = 1 @1\n    B = 2 @2\n    Z = 9 @3\n"
              "    OLD @4\n    NEW @3\n    NEW2 @5\n      C = 3 @6\n");
    EXPECT_EQ(root_->first_child->child_count, 2u) << "the included count replaces the label's own";
    EXPECT_STREQ(OdlFindKwd(root_.get(), "A", nullptr, 1, SCOPE_SUBTREE)->file_name, folder_.file("s.fmt").c_str());
    EXPECT_FALSE(util_contains(read_file(folder_.file("messages")), " -- ")) << "a structure needs no END";
}

TEST_F(Expand, PastesBeforeTheFirstColumnElseTheFirstContainer) {
    folder_.write("s.fmt", "OBJECT = N1\nEND_OBJECT\nOBJECT = N2\nEND_OBJECT\nEND");
    const auto children = [&](const std::string &own) {
        expanded("OBJECT = T\n^STRUCTURE = \"s.fmt\"\n" + own + "END_OBJECT\nEND");
        std::string classes;
        for (const ObjDesc *child = root_->first_child->first_child; child; child = child->right_sibling)
            classes += std::string(child->class_name) + " ";
        return classes;
    };
    const std::string other = "OBJECT = O\nEND_OBJECT\n";
    const std::string column = "OBJECT = COLUMN\nEND_OBJECT\n";
    const std::string container = "OBJECT = CONTAINER\nEND_OBJECT\n";
    EXPECT_EQ(children(other + column + column), "O N1 N2 COLUMN COLUMN ");
    EXPECT_EQ(children(container + other + column), "CONTAINER O N1 N2 COLUMN ");
    EXPECT_EQ(children(other + container), "O N1 N2 CONTAINER ");
}

TEST_F(Expand, FollowsPointersOfIncludedFilesAndTheChosenKinds) {
    std::filesystem::create_directory(folder_.file("LABEL"));
    folder_.write("LABEL/one.fmt", "OBJECT = U\n^U_STRUCTURE = \"TWO.FMT\"\nEND_OBJECT\n^X_CATALOG = \"c.cat\"\nEND");
    folder_.write("LABEL/two.fmt", "DEEP = 1\nEND");
    folder_.write("LABEL/c.cat", "CAT = 1\nEND");
    const std::string text = "^STRUCTURE = (\"one.fmt\", 1)\n^Y_CATALOG = \"LABEL/c.cat\"\nEND";
    EXPECT_EQ(expanded(text, ODL_EXPAND_CATALOG),
              "ROOT @0\n  ^STRUCTURE = (\"one.fmt\", 1) @1\n  ^Y_CATALOG = \"LABEL/c.cat\" @2\n  CAT = 1 @1\n");
    EXPECT_EQ(expanded(text),
              "ROOT @0\n  ^STRUCTURE = (\"one.fmt\", 1) @1\n  ^X_CATALOG = \"c.cat\" @4\n  CAT = 1 @1\n"
              "  ^Y_CATALOG = \"LABEL/c.cat\" @2\n  CAT = 1 @1\n  U @1\n    ^U_STRUCTURE = \"TWO.FMT\" @2\n    DEEP = "
              "1 @1\n");
    EXPECT_EQ(notices_.texts, Texts());

    const TreePtr plain(OdlParseFile(folder_.file("x.lbl").c_str(), nullptr, nullptr, nullptr, nullptr, 1, 1, 1, 0));
    EXPECT_EQ(OdlExpandLabelFile(plain.get(), nullptr, 3, 1), plain.get());
    EXPECT_EQ(outline(plain.get()), outline(root_.get()));
}

TEST_F(Expand, BeginsAtTheNamedRecordOrByte) {
    folder_.write("s.fmt", "skipped = 1\nA = 1\nEND");
    EXPECT_EQ(expanded("^STRUCTURE = (\"s.fmt\", 2)\nEND"), "ROOT @0\n  ^STRUCTURE = (\"s.fmt\", 2) @1\n  A = 1 @1\n");
    EXPECT_EQ(expanded("^STRUCTURE = (\"s.fmt\", 12 <BYTES>)\nEND"),
              "ROOT @0\n  ^STRUCTURE = (\"s.fmt\", 12 <BYTES>) @1\n  A = 1 @1\n");
}

TEST_F(Expand, AMissingFileIsNotedAndLeavesThePointer) {
    EXPECT_EQ(expanded("A = 1\n^STRUCTURE = \"gone.fmt\"\nEND"),
              "ROOT @0\n  A = 1 @1\n  ^STRUCTURE = \"gone.fmt\" @2\n");
    EXPECT_EQ(odl_errno, 200);
    EXPECT_EQ(notices_.texts, Texts{"Line 2: Unable to locate required format file: gone.fmt"});
    EXPECT_TRUE(
        read_file(folder_.file("messages")).ends_with("\n Line 2 -- Unable to locate ^*STRUCTURE file:  gone.fmt\n"));
}

TEST_F(Expand, EndsWhereFilesIncludeThemselvesOrEachOther) {
    folder_.write("self.fmt", "^STRUCTURE = \"self.fmt\"\nA = 1\n");
    expanded("^STRUCTURE = \"self.fmt\"\n^STRUCTURE = \"./self.fmt\"\nEND");
    EXPECT_EQ(count(), 6u) << "once for each pointer of the label";

    folder_.write("ping.fmt", "^STRUCTURE = \"pong.fmt\"\n");
    folder_.write("pong.fmt", "^STRUCTURE = \"ping.fmt\"\n^A_STRUCTURE = \"x.lbl\"\n");
    expanded("^STRUCTURE = \"ping.fmt\"\nEND");
    EXPECT_EQ(count(), 4u);
    EXPECT_EQ(expanded("^STRUCTURE = 1\nEND"), "ROOT @0\n  ^STRUCTURE = 1 @1\n") << "a label that includes itself";
    EXPECT_EQ(notices_.texts, Texts());
}

TEST_F(Expand, BoundsDepthAndNumberOfInclusions) {
    // Forty files in a chain, of which the label draws in 32; with two pointers each they would be 2^32.
    const auto chain = [&](int pointers) {
        for (int i = 0; i < 40; ++i) {
            std::string text;
            for (int pointer = 0; pointer < pointers; ++pointer)
                text += util_format("^S%d_STRUCTURE = \"f%d.fmt\"\n", pointer, i + 1);
            folder_.write(util_format("f%d.fmt", i), text + "A = 1\n");
        }
        expanded("^STRUCTURE = \"f0.fmt\"\nEND");
    };
    chain(1);
    EXPECT_EQ(count(), 1u + 2 * 32);
    chain(2);
    EXPECT_LE(count(), 1u + 3 * 1000);
    EXPECT_GT(count(), 1000u);

    std::string many;
    for (int i = 0; i < 50'000; ++i)
        many += "^STRUCTURE = \"gone.fmt\"\n";
    expanded(many + "END");
    EXPECT_TRUE(OdlFindKwd(root_.get(), "*", nullptr, 50'000, SCOPE_TO_END));
}

TEST_F(Expand, BoundsWhatIsReadOfALabelAndIncludedInAll) {
    expanded_file(write_sparse("short.img", 1 << 20));
    EXPECT_EQ(count("LAST"), 1u);
    EXPECT_EQ(notices_.texts, Texts());
    expanded_file(write_sparse("long.img", (uintmax_t{1} << 26) + 1));
    EXPECT_EQ(count("A"), 1u);
    EXPECT_EQ(count("LAST"), 0u);
    ASSERT_EQ(notices_.texts.size(), 1u);
    EXPECT_TRUE(util_contains(notices_.texts[0], "long.img: No END in 67108864 bytes")) << notices_.texts[0];

    write_sparse("s.fmt", 6 << 20);
    const std::string pointer = "^STRUCTURE = \"s.fmt\"\n";
    expanded(pointer + pointer + pointer + pointer + pointer + "END\n");
    EXPECT_EQ(count("A"), 3u);
    EXPECT_EQ(count("LAST"), 2u) << "the third file is cut";
    ASSERT_EQ(notices_.texts.size(), 3u) << "told once each";
    const std::string excess = "Line 4: ^STRUCTURE names one file too many:  3 files and 16777";
    EXPECT_TRUE(util_contains(notices_.texts[2], excess)) << notices_.texts[2];
}

}  // namespace
