#include "base/file.h"
#include "base/memory.h"
#include "base/text.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Blocks of every kind live side by side, keep their bytes and come back in any order.
TEST(Memory, BlocksOfAllSizesKeepTheirBytes) {
    struct Block {
        unsigned char *bytes;
        size_t size;
        unsigned char fill;
    };
    std::vector<Block> blocks;
    const size_t sizes[] = {0, 1, 7, 8, 9, 16, 24, 25, 503, 504, 505, 4096, (1u << 20) - 1, 1u << 20, 5u << 20};
    for (int round = 0; round < 3; ++round) {
        for (const size_t size : sizes) {
            const auto fill = static_cast<unsigned char>(blocks.size() + 1);
            auto *bytes = static_cast<unsigned char *>(memset(OaMalloc(size), fill, size));
            EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % 16, 0u) << size;
            blocks.push_back({bytes, size, fill});
        }
        for (size_t i = 0; i < blocks.size(); i += 2) {
            OaFree(blocks[i].bytes);
            blocks[i] = blocks.back();
            blocks.pop_back();
        }
    }
    for (const Block &block : blocks) {
        for (size_t i = 0; i < block.size; ++i)
            ASSERT_EQ(block.bytes[i], block.fill);
        OaFree(block.bytes);
    }
}

TEST(Memory, ReallocMovesZeroedIsZeroAndTooMuchIsNull) {
    auto *text = static_cast<char *>(OaMalloc(6));
    memcpy(text, "label", 6);
    text = static_cast<char *>(OaRealloc(text, 6, 3000000));
    EXPECT_STREQ(text, "label");
    text = static_cast<char *>(OaRealloc(text, 3000000, 3));
    EXPECT_EQ(memcmp(text, "lab", 3), 0);
    OaFree(text);

    OaFree(memset(OaMalloc(100), 1, 100));
    const OaPtr<char> zeros(static_cast<char *>(OaZeroedMalloc(100)));
    EXPECT_EQ(std::string(zeros.get(), 100), std::string(100, '\0'));
#ifndef __SANITIZE_ADDRESS__
    volatile size_t too_much = SIZE_MAX - 20;
    EXPECT_EQ(OaMalloc(too_much), nullptr);
    EXPECT_EQ(OaZeroedMalloc(too_much / 2), nullptr);
#endif
}

TEST(File, OnlyRegularFilesOpen) {
    const ScratchFolder scratch;
    const std::string plain = scratch.write("plain", "12345");
    const std::string pipe = scratch.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string link = scratch.file("link");
    ASSERT_EQ(symlink(plain.c_str(), link.c_str()), 0);

    const FilePtr file = util_open_regular(link.c_str());
    ASSERT_TRUE(file);
    EXPECT_EQ(util_file_size(file.get()), 5);
    EXPECT_FALSE(util_open_regular(scratch.path().c_str()));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(util_open_regular(pipe.c_str()));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(util_open_regular(scratch.file("absent").c_str()));
    EXPECT_EQ(errno, ENOENT);
}

TEST(File, ReplacingKeepsTheOldFileUntilCommitted) {
    const ScratchFolder scratch;
    const std::string target = scratch.write("target", "old");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    const std::string link = scratch.file("link");
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    {
        ReplacingFile abandoned;
        ASSERT_TRUE(abandoned.open(link));
        fputs("half", abandoned.stream());
    }
    EXPECT_EQ(read_file(target), "old");
    ReplacingFile file;
    ASSERT_TRUE(file.open(link));
    fputs("new", file.stream());
    ASSERT_TRUE(file.commit());
    EXPECT_EQ(read_file(target), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::status(target).permissions(), static_cast<std::filesystem::perms>(0640));

    EXPECT_FALSE(ReplacingFile().open(scratch.path().string()));
    EXPECT_FALSE(ReplacingFile().open(scratch.file("absent/target")));
    const auto entries = std::distance(std::filesystem::directory_iterator(scratch.path()), {});
    EXPECT_EQ(entries, 2) << "something was left beside the target";
}

TEST(Text, TrimmingAndCaseAreOfBytes) {
    EXPECT_EQ(util_trim("\"\"x\"", "\""), "x");
    EXPECT_EQ(util_trim("   "), "");
    EXPECT_EQ(util_upper("aZ\xe9_1"), "AZ\xe9_1");
    for (const auto &[value, text] :
         std::initializer_list<std::pair<double, const char *>>{{2147483647, "2147483647"},
                                                                {123456789012345, "123456789012345"},
                                                                {0.1F, "0.100000001"},
                                                                {0.1 + 0.2, "0.3"},
                                                                {1234567.875, "1234567.875"},
                                                                {2.0 / 3, "0.666666666666667"},
                                                                {1e300, "1e+300"}})
        EXPECT_EQ(util_number_text(value), text);
    EXPECT_EQ(util_format("%s %d", std::string(5000, 'x').c_str(), 7).size(), 5002u);
}

}  // namespace
