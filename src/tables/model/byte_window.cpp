#include "tables/model/byte_window.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {

constexpr int64_t smallest_chunk = int64_t{1} << 13;
constexpr int64_t largest_chunk = int64_t{1} << 20;

}  // namespace

void ByteWindow::load(int64_t begin, int64_t count) {
    if (static_cast<int64_t>(buffer_.size()) < count)
        buffer_.resize(static_cast<size_t>(count));
    start_ = begin;
    held_ = 0;
    while (held_ < count) {
        const ssize_t got =
            pread(descriptor(), buffer_.data() + held_, static_cast<size_t>(count - held_), begin + held_);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        held_ += got;
    }
}

std::span<const uint8_t> ByteWindow::from(int64_t offset, int64_t wanted, int64_t begin) {
    if (offset < 0 || offset >= file_size_)
        return {};
    wanted = std::min(wanted, file_size_ - offset);
    if (offset < start_ || offset + wanted > start_ + held_) {
        begin = begin < 0 || begin > offset || offset - begin > smallest_chunk ? offset : begin;
        const bool goes_on = offset >= start_ && offset <= start_ + held_ + held_ / 2;
        chunk_ = goes_on ? std::min(2 * chunk_, largest_chunk) : smallest_chunk;
        chunk_ = std::max(chunk_, smallest_chunk);
        load(begin, std::min(std::max(chunk_, offset - begin + wanted), file_size_ - begin));
    }
    const int64_t behind = std::max<int64_t>(start_ + held_ - offset, 0);
    return {buffer_.data() + (offset - start_), static_cast<size_t>(behind)};
}
