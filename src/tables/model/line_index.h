// Where the lines of a text file begin, found in one pass and kept in little memory. Lines end with a line feed, a
// carriage return, or a carriage return and a line feed; what follows the last end is a line when it has a byte.
#pragma once

#include <cstdint>
#include <vector>

// Goes through a file line by line. Reads by position: the file's own place does not matter.
class LineScanner {
  public:
    LineScanner(int file, int64_t start) : file_(file), end_offset_(start) {}

    // Moves from the start of a line to that of the next. False at the end of the file.
    bool next();
    int64_t position() const { return end_offset_ - (end() - at_); }

  private:
    const char *end() const { return buffer_.data() + held_; }
    bool refill();

    int file_;
    int64_t end_offset_;  // of the buffer's end in the file
    std::vector<char> buffer_;
    int64_t held_ = 0;
    const char *at_ = nullptr;
    const char *line_feed_ = nullptr;  // the next one of each in the buffer, or its end
    const char *carriage_return_ = nullptr;
};

class LineIndex {
  public:
    // `file` is a descriptor that stays open; line 0 begins at byte `start`.
    LineIndex(int file, int64_t start);

    // Offset of a line, from 0; -1 when the file has fewer.
    int64_t offset_of(int64_t line);
    // Lines of the file, but no more than `most`.
    int64_t count(int64_t most);

  private:
    void extend_to(int64_t line);

    int file_;
    LineScanner scanner_;
    int64_t lines_ = 0;  // known to begin, the scanner stands at the last of them
    int64_t stride_ = 64;
    bool complete_ = false;
    std::vector<int64_t> marks_;  // of every stride-th line
};
