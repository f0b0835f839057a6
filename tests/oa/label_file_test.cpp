#include "oa/oa.h"
#include "support/product.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

class LabelFile : public ProductTest {
  protected:
    OdlTree parse(std::string_view bytes) {
        return OdlTree(OaParseLabelFile(folder_.write("X.LBL", bytes).c_str(), nullptr, 0, 1));
    }
    // The n-th object of the class.
    static ObjDesc *find(const OdlTree &root, const char *class_name, uint32_t instance = 1) {
        return OdlFindObjDesc(root.get(), class_name, nullptr, nullptr, instance, SCOPE_TO_END);
    }
};

std::string as_variable_length(std::string_view lines) {
    std::string bytes;
    while (!lines.empty()) {
        const size_t length = lines.find('\n');
        bytes += record(std::string(lines.substr(0, length)));
        lines.remove_prefix(length + 1);
    }
    return bytes;
}

TEST_F(LabelFile, LabelsInVariableLengthRecordsAreJoinedToTheirEnd) {
    const std::string label = as_variable_length(
        "RECORD_TYPE = VARIABLE_LENGTH\n^IMAGE = 7\nNAME = \"A\0B\"\nOBJECT = IMAGE\n"
        "END_OBJECT\nEND  \r\n"s);
    const OdlTree root = parse(label + as_variable_length("OBJECT = TABLE\n") + "\xff\xff");
    ASSERT_TRUE(root);
    EXPECT_NE(find(root, "IMAGE"), nullptr);
    EXPECT_EQ(find(root, "TABLE"), nullptr) << "behind the END";
    const Kwd *name = OdlFindKwd(root.get(), "NAME", nullptr, 1, SCOPE_THIS_OBJECT);
    ASSERT_TRUE(name);
    EXPECT_STREQ(name->value, "\"A B\"") << "a NUL does not end the label";
    OaFileKeywords file;
    ASSERT_EQ(OaGetFileKeywords(find(root, "IMAGE"), &file), 0);
    EXPECT_EQ(file.file_name, folder_.file("X.LBL")) << "keywords know the label's file";

    // A record that cannot be read ends the label, what came before counts.
    const OdlTree cut = parse(as_variable_length("KRV_VERSION_ID = X\nA = 1\n") + "\xff\xff....");
    ASSERT_TRUE(cut);
    EXPECT_NE(OdlFindKwd(cut.get(), "A", nullptr, 1, SCOPE_THIS_OBJECT), nullptr);
}

TEST_F(LabelFile, OtherFilesAreRefused) {
    EXPECT_EQ(OaParseLabelFile(folder_.file("MISSING.LBL").c_str(), nullptr, 0, 1), nullptr);
    EXPECT_EQ(oa_errno, 700);
    EXPECT_EQ(error_string, "OaParseLabelFile: OalOpenStream returned error.");
}

class FileKeywords : public LabelFile {
  protected:
    // The keywords of the first IMAGE of a label with these statements before it; the message when there are none.
    std::string start_of(const std::string &statements) {
        const OdlTree root = parse(statements + "\nOBJECT = IMAGE\nEND_OBJECT\nEND\n");
        OaFileKeywords file;
        if (OaGetFileKeywords(find(root, "IMAGE"), &file) != 0)
            return "error " + std::to_string(oa_errno);
        return std::to_string(file.record_type) + " " + std::to_string(file.start);
    }
};

TEST_F(FileKeywords, StartsByRecordTypeAndLocation) {
    folder_.write("A.IMG", "line 1\nline 2\r\n\nline 4\rline 5");
    const std::pair<std::string, std::string> cases[] = {
        {"RECORD_TYPE = \"fixed\"\nRECORD_BYTES = 100\n^IMAGE = (\"A.IMG\", 101 <BYTES>)", "1 100"},
        {"^IMAGE = \"A.IMG\"", "4 0"},
        {"RECORD_TYPE = UNDEFINED\nRECORD_BYTES = 10\n^IMAGE = (\"A.IMG\", 3)", "4 20"},
        {"RECORD_TYPE = VARIABLE_LENGTH\nRECORD_BYTES = 10\n^IMAGE = (\"A.IMG\", 3)", "3 2"},
        {"RECORD_TYPE = VARIABLE_LENGTH\n^IMAGE = (\"A.IMG\", 3 <BYTES>)", "error 502"},
        {"RECORD_TYPE = STREAM\n^IMAGE = (\"A.IMG\", 2)", "2 7"},
        {"RECORD_TYPE = STREAM\n^IMAGE = (\"A.IMG\", 5)", "2 23"},
        {"RECORD_TYPE = STREAM\n^IMAGE = (\"A.IMG\", 6)", "error 502"},
        {"RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 100\n^IMAGE = (\"A.IMG\", 0)", "error 502"},
        {"RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 9000000000000000000\n^IMAGE = (\"A.IMG\", 9)", "error 502"},
        {"RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = -4\n^IMAGE = (\"A.IMG\", 9)", "error 502"},
        {"^IMAGE = \"MISSING.IMG\"", "error 700"},
        {"^TABLE = \"A.IMG\"", "error 531"},
    };
    for (const auto &[statements, result] : cases)
        EXPECT_EQ(start_of(statements), result) << statements;
}

TEST_F(FileKeywords, PointersAreThoseOfTheNearestAncestorAndInOrder) {
    for (const char *name : {"1.IMG", "2.IMG", "FILE.IMG", "NAMED.IMG"})
        folder_.write(name, "data");
    const OdlTree root = parse(
        "RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 4\nFILE_RECORDS = UNK\n^IMAGE = \"1.IMG\"\n^IMAGE = "
        "\"2.IMG\"\n^MAP = \"NAMED.IMG\"\n"
        "OBJECT = IMAGE\nEND_OBJECT\n"
        "OBJECT = IMAGE\nEND_OBJECT\n"
        "OBJECT = IMAGE\nEND_OBJECT\n"
        "OBJECT = FILE\n RECORD_TYPE = STREAM\n FILE_RECORDS = 9\n ^IMAGE = \"FILE.IMG\"\n"
        " OBJECT = IMAGE\n  INTERCHANGE_FORMAT = ASCII\n END_OBJECT\nEND_OBJECT\n"
        "OBJECT = PICTURE\n NAME = \"MAP\"\nEND_OBJECT\n"
        "END\n");
    const char *expected[] = {"1.IMG", "2.IMG", "2.IMG", "FILE.IMG"};
    OaFileKeywords file;
    for (uint32_t i = 0; i < 4; ++i) {
        ASSERT_EQ(OaGetFileKeywords(find(root, "IMAGE", i + 1), &file), 0) << i;
        EXPECT_EQ(file.file_name, folder_.file(expected[i]));
    }
    EXPECT_TRUE(reports_.nothing_written());
    EXPECT_EQ(file.record_type, OA_STREAM);
    EXPECT_EQ(file.file_records, 9);
    EXPECT_EQ(file.record_bytes, 4) << "from further up";
    EXPECT_EQ(file.interchange_format, OA_ASCII);
    ASSERT_EQ(OaGetFileKeywords(find(root, "PICTURE"), &file), 0);
    EXPECT_EQ(file.file_name, folder_.file("NAMED.IMG"));
    EXPECT_EQ(OaGetFileKeywords(root.get(), &file), 1) << "a root has no pointer above it";
}

}  // namespace
