// Neighbouring bands of a qube whose bands lie within each other, line by line or item by item: one pass over the file
// yields many.
#pragma once

#include "oa/strided_reader.h"

#include <cstdint>

// Where band 0 is, and the bands behind it.
struct QubeBandLayout {
    SampleLayout band_0;
    int64_t band_stride = 0;
    int64_t bands = 0;
};

class QubeBandGroup {
  public:
    // Gives a whole band (from 0) as native samples. A group is read only when a neighbour of the band asked for before
    // is: whoever looks at one band waits for one. False when the band is not held then, or reading failed: it is for
    // the caller to read it, and to report.
    bool give(StridedReader *reader, const QubeBandLayout &layout, const SampleRectangle &whole, int64_t band,
              uint8_t *out);

  private:
    bool holds(int64_t band) const { return band >= first_ && band < first_ + count_; }
    bool fetch(StridedReader *reader, const QubeBandLayout &layout, const SampleRectangle &whole, int64_t band,
               bool forward);

    int64_t last_asked_ = -2;
    int64_t first_ = 0;
    int64_t count_ = 0;
    OaPtr<uint8_t> held_;  // as stored, in one block, which lies in large pages
    int64_t held_bytes_ = 0;
};
