#include "tables/model/line_index.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace {

constexpr size_t first_chunk = size_t{1} << 12;
constexpr size_t largest_chunk = size_t{1} << 18;
constexpr size_t most_marks = size_t{1} << 16;

const char *find(const char *from, const char *end, char c) {
    const void *found = memchr(from, c, static_cast<size_t>(end - from));
    return found ? static_cast<const char *>(found) : end;
}

}  // namespace

// --- LineScanner --------------------------------------------------------------------------------------------------

bool LineScanner::refill() {
    // Most who look for one line find it near; who goes on is given more.
    if (buffer_.size() < largest_chunk)
        buffer_.resize(std::max(2 * buffer_.size(), first_chunk));
    const ssize_t count = pread(file_, buffer_.data(), buffer_.size(), end_offset_);
    held_ = std::max<ssize_t>(count, 0);
    end_offset_ += held_;
    at_ = buffer_.data();
    line_feed_ = find(at_, end(), '\n');
    carriage_return_ = find(at_, end(), '\r');
    return held_ > 0;
}

bool LineScanner::next() {
    for (;;) {
        if (at_ == end() && !refill())
            return false;
        if (line_feed_ < at_)
            line_feed_ = find(at_, end(), '\n');
        if (carriage_return_ < at_)
            carriage_return_ = find(at_, end(), '\r');
        const char *line_end = std::min(line_feed_, carriage_return_);
        at_ = line_end;
        if (line_end != end())
            break;
    }
    const char ended_by = *at_++;
    if (at_ == end() && !refill())
        return false;
    if (ended_by == '\r' && *at_ == '\n')
        ++at_;
    return at_ != end() || refill();
}

// --- LineIndex ----------------------------------------------------------------------------------------------------

LineIndex::LineIndex(int file, int64_t start) : file_(file), scanner_(file, start) {
    char first = 0;
    if (start >= 0 && pread(file, &first, 1, start) == 1) {
        marks_.push_back(start);
        lines_ = 1;
    } else {
        complete_ = true;
    }
}

void LineIndex::extend_to(int64_t line) {
    while (!complete_ && lines_ <= line) {
        if (!scanner_.next()) {
            complete_ = true;
            return;
        }
        if (lines_++ % stride_ != 0)
            continue;
        if (marks_.size() == most_marks) {
            for (size_t i = 0; i < marks_.size() / 2; ++i)
                marks_[i] = marks_[2 * i];
            marks_.resize(marks_.size() / 2);
            stride_ *= 2;  // the line just met is a multiple of the new stride, too, as the marks were a power of 2
        }
        marks_.push_back(scanner_.position());
    }
}

int64_t LineIndex::offset_of(int64_t line) {
    if (line < 0)
        return -1;
    extend_to(line);
    if (line >= lines_)
        return -1;
    const int64_t mark = line / stride_;
    LineScanner scanner(file_, marks_[static_cast<size_t>(mark)]);
    for (int64_t left = line - mark * stride_; left > 0; --left)
        if (!scanner.next())
            return -1;
    return scanner.position();
}

int64_t LineIndex::count(int64_t most) {
    if (most > 0)
        extend_to(most - 1);
    return std::min(lines_, std::max<int64_t>(most, 0));
}
