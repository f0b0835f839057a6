// Samples that stand in a file as they are, at regular distances, read by rectangles as native samples.
#pragma once

#include "oa/image_band.h"
#include "oa/sample_plan.h"
#include "oa/stream.h"

#include <cstdint>
#include <vector>

// Where stored samples are: bytes from the start of the file, and between neighbours. Strides are at least
// sample_bytes.
struct SampleLayout {
    int64_t first = 0;
    int64_t line_stride = 0;
    int64_t sample_stride = 0;
    int64_t sample_bytes = 0;

    int64_t position(int64_t line, int64_t sample) const { return first + line * line_stride + sample * sample_stride; }
    // From the first byte of the first of `samples` neighbours to the last byte of the last.
    int64_t span(int64_t samples) const { return (samples - 1) * sample_stride + sample_bytes; }
};

class StridedReader {
  public:
    // `stream` is open for bytes and outlives the reader.
    StridedReader(const char *routine, SamplePlan plan, OaStream *stream)
        : routine_(routine), plan_(std::move(plan)), stream_(stream) {}

    // Fills `out`, zeroed before, with the rectangle's samples, line after line. Samples that the file does not hold
    // stay 0 and are told in `missing`. False after reporting.
    bool read(const SampleLayout &layout, const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing);

    // Reads bytes from a place of the file as they are. Returns their number, fewer at the end of the file, or -1
    // without a report; errno then tells why. Several threads may do so at once.
    int64_t read_stored(int64_t position, int64_t count, uint8_t *into) const;
    // Stored samples, lying one behind the other, into native ones.
    void convert(const uint8_t *stored, uint8_t *out, int64_t samples) const {
        OalConvertRun(&plan_.item, stored, out, samples * plan_.items_per_sample);
    }

    int64_t sample_size() const { return plan_.native_size(); }  // bytes, native
    const SamplePlan &plan() const { return plan_; }

  private:
    // What is read at a time: samples of one line, or of some lines below each other.
    struct Piece {
        int64_t lines = 1;
        int64_t samples = 1;
    };

    bool is_packed() const { return layout_.sample_stride == layout_.sample_bytes; }
    bool goes_straight(const Piece &piece) const { return piece.lines == 1 && is_packed() && plan_.in_place(); }
    int64_t span(const Piece &piece) const {
        return (piece.lines - 1) * layout_.line_stride + layout_.span(piece.samples);
    }
    Piece largest_piece(const Piece &all) const;
    int64_t read_piece(const Piece &piece, int64_t position, uint8_t *out, int64_t *bytes_held);
    int64_t convert_piece(const Piece &piece, const uint8_t *stored, int64_t bytes_held, uint8_t *out);
    void convert_line(const uint8_t *stored, uint8_t *out, int64_t samples);

    const char *routine_;
    SamplePlan plan_;
    OaStream *stream_;
    SampleLayout layout_;            // of the rectangle being read
    std::vector<uint8_t> stored_;    // a piece as it stands in the file
    std::vector<uint8_t> gathered_;  // its samples without what lies between them
};

// The file opened for bytes, whatever its records, and without a buffer, which would fetch a page more at each seek.
// Null after reporting in the name of `routine`.
OaStreamPtr open_samples(const char *routine, const std::string &file_name);
