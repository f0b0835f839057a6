#include "viewer/model/image_part.h"

#include <algorithm>

namespace {

constexpr int64_t strip_bytes = int64_t{64} << 20;  // of one strip at most, unless one line is longer

}  // namespace

ImagePart::ImagePart(SampleSource *source, const SampleBlock &block, int64_t sample_bytes)
    : source_(source),
      block_(block),
      strip_lines_(std::max<int64_t>(1, strip_bytes / sample_bytes / block.samples())) {}

int64_t ImagePart::strip_count() const {
    return (block_.lines() - 1) / strip_lines_ + 1;
}

SampleBlock ImagePart::strip(int64_t index) const {
    SampleBlock strip = block_;
    strip.first_line += index * strip_lines_;
    strip.last_line = std::min(block_.last_line, strip.first_line + strip_lines_ - 1);
    return strip;
}

const OaObject *ImagePart::read(int64_t index) {
    if (held_ != index || !samples_) {
        samples_.reset();  // one strip at a time
        samples_ = source_->read_block(strip(index));
        held_ = index;
    }
    return samples_.get();
}
