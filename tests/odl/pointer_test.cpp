#include "base/file.h"
#include "base/memory.h"
#include "odl/odl.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

TEST(Pointer, NamesAFileAndAPlaceInIt) {
    struct {
        const char *value;
        const char *file_name;
        int64_t start;
        int type;
    } const cases[] = {
        {"12 <BYTES>", "my.lbl", 12, ODL_BYTE_LOCATION},
        {"12<bytes>", "my.lbl", 12, ODL_RECORD_LOCATION},
        {"(7)", "my.lbl", 7, ODL_RECORD_LOCATION},
        {"99999999999999999999", "my.lbl", INT64_MAX, ODL_RECORD_LOCATION},
        {"5000000000 <BYTES>", "my.lbl", 5'000'000'000, ODL_BYTE_LOCATION},
        {"\"A.IMG\"", "A.IMG", 1, ODL_RECORD_LOCATION},
        {"(\"A.IMG\", 3 <BYTES>)", "A.IMG", 3, ODL_BYTE_LOCATION},
        {"{ 'A.IMG' , 3 }", "A.IMG", 3, ODL_RECORD_LOCATION},
        {"(\"A(1),{2}.IMG\", 4)", "A(1),{2}.IMG", 4, ODL_RECORD_LOCATION},
        {"\"a<b>.img\"", "a<b>.img", 1, ODL_RECORD_LOCATION},
        {"\" A'B.IMG  \"", " A B.IMG", 1, ODL_RECORD_LOCATION},
        {"\"A.IMG", "A.IMG", 1, ODL_RECORD_LOCATION},
        {"\"", "", 1, ODL_RECORD_LOCATION},
        {"(\"A.IMG\", \"B.IMG\")", "A.IMG", 1, ODL_RECORD_LOCATION},
        {"(A.IMG, 5)", "A.IMG", 5, ODL_RECORD_LOCATION},
    };
    for (const auto &one : cases) {
        Kwd *keyword = OdlNewKwd("^IMAGE", one.value, nullptr, nullptr, "my.lbl", 1);
        int64_t start = -1;
        int type = -1;
        const OaPtr<char> file_name(OdlGetFileName(keyword, &start, &type));
        EXPECT_STREQ(file_name.get(), one.file_name) << one.value;
        EXPECT_EQ(start, one.start) << one.value;
        EXPECT_EQ(type, one.type) << one.value;
        OdlFreeKwd(keyword);
    }
}

// A volume as it lies on a disk; every file holds nothing but a line end.
class FileLookUp : public testing::Test {
  protected:
    void add(std::initializer_list<const char *> files) {
        for (const char *file : files) {
            fs::create_directories(fs::path(folder_.file(file)).parent_path());
            folder_.write(file, "\n");
        }
    }
    // Where the file is found for a label in data/a/b, relative to the volume.
    std::string found(const char *file_name, const char *keyword_name = nullptr) {
        odl_errno = 0;
        const std::string label = folder_.file("data/a/b/x.lbl");
        const OaPtr<char> path(OdlGetFileSpec(file_name, label.c_str(), keyword_name));
        EXPECT_EQ(odl_errno, path ? 0 : 200) << file_name;
        return path ? fs::path(path.get()).lexically_relative(folder_.path()).string() : "none";
    }

    ScratchFolder folder_;
};

TEST_F(FileLookUp, TriesTheNameAsWrittenInLowerCaseAndWithAVersion) {
    add({"data/a/b/A.IMG", "data/a/b/a.img", "data/a/b/b.img", "data/a/b/C.IMG;1", "data/a/b/d.img;1",
         "data/a/b/sub/f.img"});
    EXPECT_EQ(found("A.IMG"), "data/a/b/A.IMG");
    EXPECT_EQ(found("B.IMG"), "data/a/b/b.img");
    EXPECT_EQ(found("C.IMG"), "data/a/b/C.IMG;1");
    EXPECT_EQ(found("D.IMG"), "data/a/b/d.img;1");
    EXPECT_EQ(found("sub/F.IMG"), "data/a/b/sub/f.img");
    EXPECT_EQ(found("G.IMG"), "none");
    EXPECT_EQ(found(""), "none");
    EXPECT_EQ(found("sub"), "none") << "a folder is no file";
    const std::string absolute = folder_.file("data/a/b/B.IMG");
    EXPECT_EQ(found(absolute.c_str()), "data/a/b/b.img");
}

TEST_F(FileLookUp, ClimbsToTheFoldersOfTheVolume) {
    add({"label/LOW.FMT", "data/LABEL/FAR.FMT", "data/a/LABEL/NEAR.FMT", "data/LABEL/NEAR.FMT", "CATALOG/C.CAT",
         "data/a/b/LABEL/OWN.FMT", "data/a/LABEL/C.CAT"});
    EXPECT_EQ(found("NEAR.FMT", "^STRUCTURE"), "data/a/LABEL/NEAR.FMT");
    EXPECT_EQ(found("FAR.FMT", "^*STRUCTURE"), "data/LABEL/FAR.FMT");
    EXPECT_EQ(found("LOW.FMT", "^STRUCTURE"), "label/LOW.FMT");
    EXPECT_EQ(found("OWN.FMT", "^STRUCTURE"), "data/a/b/LABEL/OWN.FMT");
    EXPECT_EQ(found("C.CAT", "^DATA_SET_CATALOG"), "CATALOG/C.CAT");
    EXPECT_EQ(found("NEAR.FMT"), "none") << "only with a keyword's name";

    const fs::path before = fs::current_path();
    fs::current_path(folder_.file("data/a"));
    const OaPtr<char> relative(OdlGetFileSpec("FAR.FMT", "b/x.lbl", "^STRUCTURE"));
    fs::current_path(before);
    ASSERT_NE(relative, nullptr);
    EXPECT_TRUE(fs::equivalent(relative.get(), folder_.file("data/LABEL/FAR.FMT")));
}

TEST_F(FileLookUp, PassesOverWhatIsNoRegularFile) {
    add({"data/a/b/real.img"});
    ASSERT_EQ(mkfifo(folder_.file("data/a/b/pipe.img").c_str(), 0600), 0);
    EXPECT_EQ(found("pipe.img"), "none");
    EXPECT_EQ(OdlLocateStart(folder_.file("data/a/b/pipe.img").c_str(), 1, ODL_RECORD_LOCATION), nullptr);
    const std::string long_name(5000, 'x');
    EXPECT_EQ(found(long_name.c_str()), "none");
}

TEST(Pointer, OpensAFileAtItsPlace) {
    const ScratchFolder folder;
    const std::string path = folder.write("f", "one\ntwo\n" + std::string(30'000, 'x') + "\nend\n");
    const auto position = [&](int64_t start, int type) {
        odl_errno = 0;
        const FilePtr file(OdlLocateStart(path.c_str(), start, type));
        EXPECT_EQ(odl_errno, file ? 0 : 200);
        return file ? ftell(file.get()) : -1;
    };
    for (const int64_t first : {INT64_MIN, int64_t{0}, int64_t{1}}) {
        EXPECT_EQ(position(first, ODL_RECORD_LOCATION), 0);
        EXPECT_EQ(position(first, ODL_BYTE_LOCATION), 0);
    }
    EXPECT_EQ(position(2, ODL_RECORD_LOCATION), 4);
    EXPECT_EQ(position(3, ODL_RECORD_LOCATION), 8);
    EXPECT_EQ(position(4, ODL_RECORD_LOCATION), 8 + 29'999) << "a longer line counts as two";
    for (const int64_t behind : {int64_t{7}, INT64_MAX})
        EXPECT_EQ(position(behind, ODL_RECORD_LOCATION), -1) << behind;
    EXPECT_EQ(position(2, ODL_BYTE_LOCATION), 2);
    EXPECT_EQ(position(6'000'000'000, ODL_BYTE_LOCATION), 6'000'000'000);
}

}  // namespace
