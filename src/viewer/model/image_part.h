// A rectangle of an image, read in strips of lines so that memory does not grow with the image.
#pragma once

#include "viewer/model/sample_source.h"

#include <cstdint>

// Said when a strip cannot be read; the reader has reported the reason.
inline constexpr const char *read_failure = "the image cannot be read";

class ImagePart {
  public:
    // `source` must outlive the part.
    ImagePart(SampleSource *source, const SampleBlock &block, int64_t sample_bytes);

    const SampleBlock &block() const { return block_; }
    int64_t strip_count() const;
    SampleBlock strip(int64_t index) const;
    // Native samples of a strip, until the next call. Null after reporting. The last strip read is not read again.
    const OaObject *read(int64_t index);

  private:
    SampleSource *source_;
    SampleBlock block_;
    int64_t strip_lines_;
    int64_t held_ = -1;
    OaObjectPtr samples_;
};
