#include "odl/line_reader.h"

#include "odl/characters.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr size_t buffer_size = size_t{1} << 16;
constexpr ptrdiff_t longest_piece = 255;
// With this much in the buffer a piece and its line end can be taken without another look at the file.
constexpr ptrdiff_t look_ahead = longest_piece + 2;

// Up to the line feed, less a carriage return before it; other carriage returns are left inside.
std::string_view up_to_line_feed(std::string_view text) {
    const size_t feed = text.find('\n');
    if (feed == std::string_view::npos)
        return text;
    return text.substr(0, feed > 0 && text[feed - 1] == '\r' ? feed - 1 : feed);
}

}  // namespace

odl::LineReader::LineReader(FILE *file)
    : file_(file), buffer_(buffer_size), position_(buffer_.data()), end_(buffer_.data()) {}

odl::LineReader::LineReader(std::string_view text)
    : position_(text.data()),
      end_(text.data() + text.size()),
      bytes_read_(static_cast<int64_t>(text.size())),
      at_end_of_file_(true) {}

// Moves what is left to the front of the buffer and reads until it is full or the file ends.
void odl::LineReader::fill() {
    const auto left = static_cast<size_t>(end_ - position_);
    memmove(buffer_.data(), position_, left);
    const size_t got = fread(buffer_.data() + left, 1, buffer_size - left, file_);
    at_end_of_file_ = got < buffer_size - left;
    position_ = buffer_.data();
    end_ = position_ + left + got;
    bytes_read_ += static_cast<int64_t>(got);
}

// Passes over one line end, if there is one.
bool odl::LineReader::take_line_end() {
    if (position_ == end_ || !(marks_of(*position_) & MARK_LINE_END))
        return false;
    const bool is_return = *position_++ == '\r';
    if (is_return && position_ != end_ && *position_ == '\n')
        ++position_;
    return true;
}

void odl::LineReader::skip_line_ends() {
    while (take_line_end())
        ++line_number_;
}

bool odl::LineReader::next(Line &line) {
    if (end_ - position_ < look_ahead && !at_end_of_file_)
        fill();
    if (!file_ && !within_line_)
        skip_line_ends();
    if (position_ == end_)
        return false;
    if (!within_line_)
        ++line_number_;

    const std::string_view piece(position_, static_cast<size_t>(std::min(end_ - position_, longest_piece)));
    line.text = up_to_line_feed(piece);
    // Where lone returns end lines, looking at the marks first would look at each byte once for every line before it.
    if (has_lone_returns_)
        line.text = line.text.substr(0, line.text.find('\r'));
    line.marks = marks_within(line.text);
    if (line.marks & MARK_LINE_END) {
        line.text = line.text.substr(0, line.text.find('\r'));
        has_lone_returns_ = true;
    }
    position_ += line.text.size();
    if (line.marks & MARK_NUL)
        line.text = line.text.substr(0, line.text.find('\0'));
    // Taken at once, so that a line of exactly 255 bytes has no second, empty piece.
    within_line_ = !take_line_end();
    return true;
}
