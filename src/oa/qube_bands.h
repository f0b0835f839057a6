// Neighbouring bands of a qube whose bands lie item by item within each other: one pass over the file yields many.
#pragma once

#include "oa/strided_reader.h"

#include <cstdint>

class QubeBandGroup {
  public:
    // Says which whole band (from 0, of `bands`) is asked for; `band_bytes`: of one. True when it is now held. A
    // group is read only when a neighbour of the band asked for before is: whoever looks at one band waits for one.
    // False, too, when reading fails, which is for the caller to find and report.
    bool step_to(StridedReader *reader, const SampleLayout &band_0, const SampleRectangle &whole, int64_t band,
                 int64_t bands);
    // The native samples of the band that step_to said is held.
    const uint8_t *samples(int64_t band) const { return held_.get() + (band - first_) * band_bytes_; }

  private:
    bool holds(int64_t band) const { return band >= first_ && band < first_ + count_; }

    int64_t last_asked_ = -2;
    int64_t first_ = 0;
    int64_t count_ = 0;
    int64_t band_bytes_ = 0;
    OaPtr<uint8_t> held_;  // in one block, which lies in large pages
};
