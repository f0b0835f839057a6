#include "oa/stream.h"

#include "support/product.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace std::string_literals;

class Stream : public ProductTest {
  protected:
    OaStreamPtr open(std::string_view bytes, int record_type, int64_t record_bytes = 0) {
        return OaStreamPtr(OalOpenStream(folder_.write("FILE.DAT", bytes).c_str(), record_type, record_bytes, 0, "r"));
    }
    // One read into the stream's own buffer; the result's text stays in `unit_`.
    int read(OaStream *stream, int64_t count = 0, int64_t start = -1) {
        char *buffer = nullptr;
        int64_t length = 0;
        const int result = OalReadStream(stream, count, &buffer, start, &length);
        unit_.assign(buffer ? buffer : "", static_cast<size_t>(length));
        return result;
    }
    std::vector<std::string> read_all(OaStream *stream) {
        std::vector<std::string> units;
        while (read(stream) == 0)
            units.push_back(unit_);
        return units;
    }

    std::string unit_;
};

std::string variable_records(const std::vector<std::string> &records) {
    std::string bytes;
    for (const std::string &text : records)
        bytes += record(text);
    return bytes;
}

TEST_F(Stream, OpeningRefusesWithTheCodeOfTheReason) {
    const std::string path = folder_.write("FILE.DAT", "12345");
    const std::string pipe = folder_.file("PIPE");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const struct {
        const char *name;
        int record_type;
        const char *mode;
        int code;
        std::string text;
    } cases[] = {
        {nullptr, 1, "r", 501, "filename is NULL"},
        {path.c_str(), 5, "r", 502, "invalid record_type: 5."},
        {path.c_str(), 1, "a", 502, "read_write_mode must be \"r\" or \"w\"."},
        {path.c_str(), 0, "w", 520, "can't create a file for write when record_type\nis OA_UNKNOWN_RECORD_TYPE "},
        {"/no/such/file", 0, "r", 700, "couldn't open /no/such/file "},
        {folder_.path().c_str(), 0, "r", 700, "couldn't open " + folder_.path().string() + " "},
        {pipe.c_str(), 4, "r", 700, "couldn't open " + pipe + " "},
        {path.c_str(), 0, "r", 700, "FREAD() failed to read 6 bytes to determine actual record type."},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(OalOpenStream(c.name, c.record_type, 10, 0, c.mode), nullptr);
        EXPECT_EQ(oa_errno, c.code) << c.text;
        EXPECT_EQ(error_string, "OalOpenStream: " + c.text);
    }
}

TEST_F(Stream, OtherNamesOfTheFileAreTriedAndNotedSilently) {
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    const std::string there = folder_.path().string() + "/";
    for (const auto &[on_disk, asked] : {std::pair{there + "A.IMG;1", there + "A.IMG"},
                                         {there + "b.img", there + "B.IMG"},
                                         {"Only.Here"s, "missing/Only.Here"s}}) {
        std::ofstream(on_disk) << "content";
        const OaStreamPtr stream(OalOpenStream(asked.c_str(), OA_UNDEFINED, 0, 0, "r"));
        ASSERT_TRUE(stream) << asked;
        EXPECT_EQ(oa_errno, 950);
        EXPECT_EQ(error_string, "OalOpenStream: couldn't open " + asked + ", but opened " + stream->file_name);
    }
    std::filesystem::current_path(before);
    EXPECT_TRUE(reports_.nothing_written());
}

TEST_F(Stream, LinesKeepTheirEnds) {
    const std::string longest(1023, 'x');
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"A\r\n\r\nB\n\r", {"A\r\n", "\r\n", "B\n\r"}},
        {"A\rB\r\rC", {"A\r", "B\r", "\r", "C"}},
        {"A\0B\nC"s, {"A\0B\n"s, "C"}},
        {longest + "yz\n", {longest, "yz\n"}},
    };
    for (const auto &[bytes, lines] : cases) {
        const OaStreamPtr stream = open(bytes, OA_STREAM);
        ASSERT_TRUE(stream);
        EXPECT_EQ(read_all(stream.get()), lines);
        EXPECT_EQ(stream->current_position, static_cast<int64_t>(bytes.size()));
    }
    const OaStreamPtr stream = open("first\nsecond\nthird\n", OA_STREAM);
    EXPECT_EQ(read(stream.get(), 0, 6), 0);
    EXPECT_EQ(unit_, "second\n");
}

TEST_F(Stream, FixedRecords) {
    const OaStreamPtr stream = open("AAAABBBBCCCCDD", OA_FIXED_LENGTH, 4);
    EXPECT_EQ(read(stream.get()), 0);
    EXPECT_EQ(unit_, "AAAA");
    EXPECT_EQ(read(stream.get(), 2), 0);
    EXPECT_EQ(unit_, "BB");
    EXPECT_EQ(read(stream.get()), 0) << "the rest of the record";
    EXPECT_EQ(unit_, "BB");
    EXPECT_EQ(read(stream.get(), 100), 0) << "no more than the stream's own buffer holds";
    EXPECT_EQ(unit_, "CCCC");
    EXPECT_EQ(read(stream.get()), 1);
    EXPECT_EQ(unit_, "DD") << "what a file that ends early still had";
    EXPECT_EQ(read(stream.get(), 0, 1), 0);
    EXPECT_EQ(unit_, "AAA");

    char own[14] = {};
    char *buffer = own;
    int64_t length = 0;
    EXPECT_EQ(OalReadStream(stream.get(), 14, &buffer, 0, &length), 0);
    EXPECT_EQ(std::string(own, 14), "AAAABBBBCCCCDD");

    EXPECT_EQ(open("content", OA_FIXED_LENGTH, -5)->record_type, OA_UNDEFINED);
    const OaStreamPtr absurd = open("content", OA_FIXED_LENGTH, INT64_MAX);
    ASSERT_TRUE(absurd);
    EXPECT_EQ(read(absurd.get()), 1);
    EXPECT_EQ(unit_, "content");

    const OaStreamPtr lines = open("one  two  ", OA_FIXED_LENGTH, 5);
    lines->flags |= OA_LINE_FEED_AT_END;
    EXPECT_EQ(read(lines.get(), -1), 0);
    EXPECT_EQ(unit_, "one \n");
    EXPECT_EQ(read(lines.get(), 0, 0), 0);
    EXPECT_EQ(unit_, "one  ");
}

TEST_F(Stream, VariableLengthRecords) {
    const OaStreamPtr stream = open(variable_records({"odd", "even", "", "last!"}), OA_VARIABLE_LENGTH, 10);
    EXPECT_EQ(read_all(stream.get()), (std::vector<std::string>{"odd", "even", "", "last!"}));
    EXPECT_EQ(stream->current_position, 4);

    const OaStreamPtr too_long = open(variable_records({"four", "eleven chars"}), OA_VARIABLE_LENGTH, 10);
    EXPECT_EQ(read(too_long.get()), 0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(read(too_long.get()), -1) << "also when asked again";
        EXPECT_EQ(oa_errno, 700);
        EXPECT_EQ(error_string,
                  "OalReadStream: invalid current variable-length record size: 12\n stream_id->record_bytes = 10, "
                  " stream_id->current_position = 1.");
    }
    EXPECT_EQ(read(too_long.get(), 0, 5), -1);
    EXPECT_EQ(error_string, "OalReadStream: OalSeek returned error: 700.");

    EXPECT_EQ(read(open("\xff\xff....", OA_VARIABLE_LENGTH, 0).get()), -1) << "a negative length";
    EXPECT_EQ(read(open("\x09\x00cut"s, OA_VARIABLE_LENGTH, 0).get()), 1);
}

TEST_F(Stream, VariableLengthRecordsAreReachedInAnyOrder) {
    std::vector<std::string> records;
    for (int i = 0; i < 1000; ++i)
        records.push_back(std::to_string(i) + std::string(static_cast<size_t>(i % 7), '.'));
    const OaStreamPtr stream = open(variable_records(records), OA_VARIABLE_LENGTH, 100);
    for (const int64_t record : {999, 0, 128, 127, 64, 63, 500, 501, 65, 998, 320}) {
        ASSERT_EQ(read(stream.get(), 0, record), 0) << record;
        EXPECT_EQ(unit_, records[static_cast<size_t>(record)]);
    }
    EXPECT_EQ(OalSeek(stream.get(), 1001), 700);
    EXPECT_EQ(error_string, "OalSeek: FREAD error; didn't read 2 bytes.");
}

TEST_F(Stream, WithoutSeekingOnlyForward) {
    const OaStreamPtr stream = open("0123456789", OA_UNDEFINED);
    stream->flags = 0;
    EXPECT_EQ(read(stream.get(), 2, 5), 0);
    EXPECT_EQ(unit_, "56");
    EXPECT_EQ(OalSeek(stream.get(), 3), 520);
    EXPECT_EQ(error_string, "OalSeek: can't seek backwards because OA_IS_SEEKABLE bit in stream_id->flags isn't set");
}

}  // namespace
