// Bytes of a file by position, through one buffer that grows while reading goes on from where it was and stays small
// while it jumps.
#pragma once

#include "base/file.h"

#include <cstdint>
#include <span>
#include <vector>

class ByteWindow {
  public:
    explicit ByteWindow(FilePtr file) : file_(std::move(file)), file_size_(util_file_size(file_.get())) {}

    // The bytes from `offset` on: `wanted` of them or more, fewer only where the file ends. Valid until the next call.
    // `begin` is where reading may begin instead: bytes between it and `offset` are likely to be wanted next.
    std::span<const uint8_t> from(int64_t offset, int64_t wanted, int64_t begin);
    int64_t file_size() const { return file_size_; }
    int descriptor() const { return fileno(file_.get()); }

  private:
    void load(int64_t begin, int64_t count);

    FilePtr file_;
    int64_t file_size_;
    std::vector<uint8_t> buffer_;
    int64_t start_ = 0;  // of the buffer in the file
    int64_t held_ = 0;
    int64_t chunk_ = 0;
};
