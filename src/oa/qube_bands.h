// Neighbouring bands of a qube whose bands lie within each other, line by line or item by item: one pass over the file
// yields many.
#pragma once

#include "oa/strided_reader.h"

#include <cstdint>

// Where band 0 is, its lines and samples in the order of the file, and the bands behind it.
struct QubeBandLayout {
    SampleLayout band_0;
    int64_t band_stride = 0;
    int64_t bands = 0;  // whose part in question the file holds
    bool by_item = false;
};

class QubeBandGroup {
  public:
    // Whether part of a band (from 0) is at hand; it is read with its neighbours where that pays. Bands that lie item
    // by item within each other come through the memory in any case: some are kept at once, and many when a neighbour
    // of the band asked for before is wanted. Of those that lie line by line, neighbours are read only then. False when
    // it is for the caller to read that band, and to report.
    bool prepare(const StridedReader &reader, const QubeBandLayout &layout, const SampleRectangle &part, int64_t band);
    // Native samples of a part that lies within one that is at hand.
    void give(const StridedReader &reader, const SampleRectangle &part, int64_t band, uint8_t *out) const;

  private:
    enum class Step : uint8_t { Forward, Back, Jump };  // from a part of one band to the same of another
    bool holds(const SampleRectangle &part, int64_t band) const {
        return band >= first_ && band < first_ + count_ && part_.contains(part);
    }
    int64_t count_for(const QubeBandLayout &layout, const SampleRectangle &part, int64_t band, Step step) const;
    bool fetch(const StridedReader &reader, const QubeBandLayout &layout);
    bool fetch_lines(const StridedReader &reader, const QubeBandLayout &layout, int64_t first, int64_t last);
    bool fetch_items(const StridedReader &reader, const QubeBandLayout &layout, int64_t first, int64_t last);

    // A tile has a run of samples of each band, `pitch` bytes apart; tiles follow each other as the part's samples do.
    struct Tiles {
        int64_t run = 1;    // samples
        int64_t count = 0;  // tiles
        int64_t pitch = 0;
        int64_t bytes = 0;  // of a tile
    };
    static Tiles tiles_for(const QubeBandLayout &layout, const SampleRectangle &part, int64_t bands);

    int64_t last_band_ = -2;  // asked for
    SampleRectangle last_part_;
    int64_t first_ = 0;  // band
    int64_t count_ = 0;
    SampleRectangle part_;
    int64_t sample_bytes_ = 0;
    Tiles tiles_;
    OaPtr<uint8_t> held_;  // as stored, in one block, which lies in large pages
    int64_t held_bytes_ = 0;
};
