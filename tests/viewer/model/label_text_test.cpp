#include "viewer/model/label_text.h"

#include "support/scratch.h"
#include "viewer/model/line_end_marks.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

TEST(LineEndMarks, AreRemovedToTheTextBefore) {
    EXPECT_EQ(add_line_end_marks("a\r\n"), "a<CR><LF>");
    EXPECT_EQ(remove_line_end_marks("<LF><CR><?x><?>><m><CR <LF"), "\n\rx><m><CR <LF");
    for (const std::string &text : {"\n\r\r\n"s, "WIDTH = 3 <m>"s, "<CR><LF><?a><?<>\r"s, "<<CR>"s, "<?\n>"s, "<?<\r>"s,
                                    ""s, "<\0CR>\r"s, "<?"s, std::string(100, '\r')})
        EXPECT_EQ(remove_line_end_marks(add_line_end_marks(text)), text);
}

class FileTexts : public testing::Test {
  protected:
    FileText read(const std::string &bytes, bool label_only) {
        return read_file_text(folder_.write("file", bytes), label_only);
    }
    bool holds_data(const std::string &bytes) { return holds_data_behind_label(folder_.write("file", bytes)); }

  private:
    ScratchFolder folder_;
};

TEST_F(FileTexts, AreReadLineByLine) {
    EXPECT_FALSE(read_file_text("/absent", false).opened);
    EXPECT_TRUE(read("", false).opened);
    EXPECT_EQ(read("a\r\n\nb\rc\n\rd", false).lines, (Lines{"a\r\n", "\n", "b\r", "c\n\r", "d"}));
    EXPECT_EQ(read("a\0b\n\xff"s, false).lines, (Lines{"a\0b\n"s, "\xff"}));
    // Lines about as long as what is read at once, and much longer.
    for (const size_t length : {1019u, 1020u, 1021u, 1022u, 1023u, 1024u, 2044u, 2045u, 2046u, 2047u, 3000000u}) {
        for (const std::string end : {"\r\n", "\n", "\r", ""}) {
            const Lines lines = {std::string(length, 'x') + end, end.empty() ? "" : "next" + end, end};
            std::string bytes;
            Lines expected;
            for (const std::string &line : lines) {
                bytes += line;
                if (!line.empty())
                    expected.push_back(line);
            }
            EXPECT_EQ(read(bytes, false).lines, expected) << length;
        }
    }
}

TEST_F(FileTexts, StopAtTheirLimits) {
    EXPECT_FALSE(read(std::string(most_text_lines, '\n'), false).is_cut);
    const FileText many = read(std::string(most_text_lines + 5, '\n'), false);
    EXPECT_TRUE(many.is_cut);
    EXPECT_EQ(many.lines.size(), most_text_lines);
    const FileText long_one = read(std::string(most_text_bytes + 5000, 'x'), false);
    EXPECT_TRUE(long_one.is_cut);
    EXPECT_EQ(long_one.lines.size(), 1u);
    EXPECT_LE(long_one.lines[0].size(), most_text_bytes + 1024u);
}

TEST_F(FileTexts, OfProductsEndBehindTheLabel) {
    const std::string label = "A = \"\nEND\n\" /* \"END */\r\n  END_OBJECT\nENDING = 1\n";
    const Lines head = {"A = \"\n", "END\n", "\" /* \"END */\r\n", "  END_OBJECT\n", "ENDING = 1\n"};
    const auto with = [&](const std::string &last) {
        Lines lines = head;
        lines.push_back(last);
        return lines;
    };
    const std::tuple<std::string, Lines, bool> cases[] = {
        {label + "END\r\n  \r\n \n", with("END\r\n"), false},
        {label + "END  \n\n\0"s, with("END  \n"), true},
        {label + " END /* end */  \nx", with(" END /* end */  \n"), true},
        {label + "END    \x01\x02\nEND\n", with("END"), true},
        {label + "END", with("END"), false},
        {label + "B = 2\n", with("B = 2\n"), false},
        {"\x06\0A=\"1\" \x03\0END\0\x02\0xx"s, {"A=\"1\" \n", "END\n"}, true}};
    for (const auto &[bytes, lines, has_more] : cases) {
        const FileText text = read(bytes, true);
        EXPECT_EQ(text.lines, lines);
        EXPECT_EQ(text.has_more, has_more) << bytes;
        EXPECT_EQ(holds_data(bytes), has_more) << bytes;
    }
    EXPECT_TRUE(holds_data("GIF89a"));
    EXPECT_TRUE(holds_data("END\n" + std::string(100000, ' ')));
    EXPECT_FALSE(holds_data_behind_label("/absent"));
}

}  // namespace
