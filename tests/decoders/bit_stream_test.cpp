#include "decoders/bit_stream.h"

#include "support/scratch.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(BitStream, ReadsTheSameBitsFromFilesAndMemory) {
    const SilentReports reports;
    const ScratchFolder folder;
    const uint8_t bytes[] = {0xb5, 0x01, 0xff, 0xff, 0x80};
    const std::string path = folder.write("bits", std::string(bytes, bytes + sizeof bytes));
    cBitStream in_file, in_memory;
    in_file.bytes = cByteStream(path.c_str(), cByteStream::Read);
    in_memory.buffer = bytes;
    in_memory.buffer_length = sizeof bytes;
    for (cBitStream *stream : {&in_file, &in_memory}) {
        constexpr std::pair<int, int> reads[] = {{0, 0}, {1, 1}, {3, 3}, {9, 160}, {3, 1}, {16, -1}, {8, 128}};
        for (const auto &[bits, value] : reads)
            EXPECT_EQ(BitStream_read(stream, bits), value) << bits;
        EXPECT_FALSE(stream->bytes.end_of_data);
        EXPECT_EQ(BitStream_read(stream, 17), 0);
        EXPECT_EQ(oa_errno, 502);
        EXPECT_EQ(BitStream_read(stream, 4), 0);
        EXPECT_TRUE(stream->bytes.end_of_data);
    }
    cByteStream written(folder.file("new").c_str(), cByteStream::Write);
    EXPECT_EQ(ByteStream_read(&written), 0);
    EXPECT_TRUE(written.end_of_data);
}

}  // namespace
