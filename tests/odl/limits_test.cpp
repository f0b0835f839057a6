// Labels that would take more time, memory or paper than they are worth.
#include "base/notice.h"
#include "base/text.h"
#include "odl/odl.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

namespace fs = std::filesystem;

struct TreeFreer {
    void operator()(ObjDesc *root) const { OdlFreeTree(root); }
};
using Tree = std::unique_ptr<ObjDesc, TreeFreer>;

std::string notices;

class Limits : public testing::Test {
  protected:
    void SetUp() override {
        notices.clear();
        util_set_notice_hook([](NoticeKind, const std::string &text) { notices += text + "\n"; });
    }
    void TearDown() override { util_set_notice_hook(nullptr); }

    Tree parse(const std::string &text) const { return parse_file(folder_.write("x.lbl", text)); }
    Tree parse_file(const std::string &path) const {
        return Tree(OdlParseLabelFile(path.c_str(), folder_.file("messages").c_str(), ODL_EXPAND_STRUCTURE, 0));
    }
    // Begins with the text, ends with a keyword LAST, and has nothing but zeros in between.
    std::string write_sparse(const char *name, const std::string &text, uintmax_t size) const {
        const std::string path = folder_.write(name, text);
        fs::resize_file(path, size);
        std::ofstream(path, std::ios::app | std::ios::binary) << "\nLAST = 1\nEND\n";
        return path;
    }
    std::string messages() const { return read_file(folder_.file("messages")); }

    ScratchFolder folder_;
};

bool has_keyword(const Tree &root, const char *name) {
    return OdlFindKwd(root.get(), name, nullptr, 1, SCOPE_TO_END) != nullptr;
}

TEST_F(Limits, ALabelIsNotReadWithoutEnd) {
    const Tree whole = parse_file(write_sparse("short.img", "A = 1\n", 1 << 20));
    EXPECT_TRUE(has_keyword(whole, "LAST"));
    EXPECT_EQ(notices, "");

    const Tree cut = parse_file(write_sparse("long.img", "A = 1\n", (uintmax_t{1} << 26) + 1));
    EXPECT_TRUE(has_keyword(cut, "A"));
    EXPECT_FALSE(has_keyword(cut, "LAST"));
    EXPECT_TRUE(util_contains(notices, "long.img: No END in 67108864 bytes")) << notices;
}

TEST_F(Limits, WhatIsIncludedIsBoundedInAll) {
    write_sparse("s.fmt", "A = 1\n", 6 << 20);
    const Tree root = parse(
        "^STRUCTURE = \"s.fmt\"\n^STRUCTURE = \"s.fmt\"\n^STRUCTURE = \"s.fmt\"\n"
        "^STRUCTURE = \"s.fmt\"\n^STRUCTURE = \"s.fmt\"\nEND\n");
    EXPECT_TRUE(OdlFindKwd(root.get(), "A", nullptr, 3, SCOPE_TO_END));
    EXPECT_FALSE(OdlFindKwd(root.get(), "A", nullptr, 4, SCOPE_TO_END));
    EXPECT_TRUE(OdlFindKwd(root.get(), "LAST", nullptr, 2, SCOPE_TO_END));
    EXPECT_FALSE(OdlFindKwd(root.get(), "LAST", nullptr, 3, SCOPE_TO_END)) << "the third file is cut";
    const std::string excess = "Line 4: ^STRUCTURE names one file too many:  3 files and 16777";
    EXPECT_TRUE(util_contains(notices, excess)) << notices;
    EXPECT_EQ(notices.find("too many"), notices.rfind("too many")) << "told once";
}

TEST_F(Limits, AMessageQuotesSoMuchOnly) {
    const Tree root = parse("A = " + std::string(100000, '=') + "\nB = (1, 2__3)\nEND\n");
    EXPECT_LT(messages().size(), 50000u);
    EXPECT_TRUE(util_contains(messages(), "==="));
    EXPECT_TRUE(util_contains(messages(), "...\n"));
}

// The way to look for line ends changes with the first lone return.
TEST_F(Limits, LineEndsMayChangeWithinALabel) {
    const Tree root = parse("A = 1\r\nB = 2\n\rC = 3\r\r\nD = 4\r\nE = \"x\ry\"\nF = 6\r\n\nEND\r\n");
    std::string found;
    for (const Kwd *keyword = root->first_keyword; keyword; keyword = keyword->right_sibling)
        found += util_format("%s=%s@%d ", keyword->name, keyword->value, keyword->line_number);
    EXPECT_EQ(found, "A=1@1 B=2@2 C=3@4 D=4@6 E=\"x y\"@7 F=6@9 ");
}

TEST_F(Limits, AStartBehindTheFileIsToldAtOnce) {
    const std::string path = folder_.write("lines", "1\n2\n3\n");
    FILE *file = OdlLocateStart(path.c_str(), 3, ODL_RECORD_LOCATION);
    ASSERT_TRUE(file);
    EXPECT_EQ(fgetc(file), '3');
    fclose(file);
    for (const int64_t line : {int64_t{5}, INT64_MAX})
        EXPECT_FALSE(OdlLocateStart(path.c_str(), line, ODL_RECORD_LOCATION)) << line;
}

}  // namespace
