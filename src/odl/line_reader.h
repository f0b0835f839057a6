// A label's physical lines, from a file or from a text in memory.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

namespace odl {

struct Line {
    std::string_view text;  // without its line end, as it stands in the label; good until the next line is read
    unsigned marks = 0;     // CharacterMark bits of its bytes
};

// A line ends at a line feed, at a carriage return, or at both in that order. One longer than 255 bytes is handed out
// in pieces of 255; a NUL ends a piece but not the reading. From a text in memory, lines without any character are
// passed over. Never reads further ahead than one buffer.
class LineReader {
  public:
    // Begins at the file's current position.
    explicit LineReader(FILE *file);
    explicit LineReader(std::string_view text);

    bool next(Line &line);
    // Number of the physical line that was read last, counted from 1; 0 before the first.
    long line_number() const { return line_number_; }
    // Bytes of the lines so far, with their line ends.
    int64_t bytes_taken() const { return bytes_read_ - bytes_ahead(); }
    // Bytes that were read ahead of the last line.
    int64_t bytes_ahead() const { return end_ - position_; }

  private:
    void fill();
    void skip_line_ends();
    bool take_line_end();

    FILE *file_ = nullptr;
    std::vector<char> buffer_;
    const char *position_ = nullptr;
    const char *end_ = nullptr;
    long line_number_ = 0;
    int64_t bytes_read_ = 0;
    bool within_line_ = false;  // the last piece was not the end of its line
    bool at_end_of_file_ = false;
    bool has_lone_returns_ = false;  // at line ends so far
};

}  // namespace odl
