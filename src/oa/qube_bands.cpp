#include "oa/qube_bands.h"

#include "base/share.h"
#include "base/transpose.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

// Parts of bands with fewer bytes are read one by one in no time, and no step.
constexpr int64_t least_part = int64_t{1} << 16;
// Bytes of all bands held. Few items until a step shows that more are wanted: a pass over them yields any number.
constexpr int64_t bytes_of_lines = int64_t{1} << 26;
constexpr int64_t few_items = int64_t{1} << 26;
constexpr int64_t most_bytes = int64_t{1} << 28;
constexpr int64_t least_bands_of_lines = 4;
constexpr int64_t largest_gap = 4096;  // between what is wanted; larger ones are sought over

constexpr int64_t run_bytes = 16384;
constexpr int64_t piece_bytes = int64_t{1} << 17;  // read at a time; stays in a core's cache while it is turned
constexpr int64_t largest_piece = int64_t{1} << 20;
constexpr int64_t pad_bytes = 64;      // keeps the same places of runs from displacing each other in caches
constexpr int64_t least_samples = 16;  // of a piece: squares to turn have up to that side

// Samples of the pieces in which items are read that lie `stride` bytes apart.
int64_t samples_at_a_time(int64_t stride, int64_t wanted) {
    if (stride - wanted > largest_gap)
        return 1;
    const int64_t samples = piece_bytes / stride;
    return samples >= least_samples ? samples / least_samples * least_samples
                                    : std::clamp<int64_t>(largest_piece / stride, 1, least_samples);
}

// The first `items` of each sample become runs.
template <typename Item>
void turn_items(const uint8_t *piece, int64_t sample_stride, int64_t samples, int64_t items, uint8_t *runs,
                int64_t pitch) {
    UtilTransposition<Item>{piece, sample_stride, runs, pitch}.turn(0, samples, 0, items);
}

// The next run lies in another page, which the processor would not fetch by itself in time.
void prefetch(const uint8_t *run) {
    constexpr int64_t cache_line = 64;
    constexpr int64_t most = 2048;
    for (int64_t i = 0; i < most; i += cache_line)
        __builtin_prefetch(run + i);
}

}  // namespace

QubeBandGroup::Tiles QubeBandGroup::tiles_for(const QubeBandLayout &layout, const SampleRectangle &part,
                                              int64_t bands) {
    const int64_t size = layout.band_0.sample_bytes;
    if (!layout.by_item)
        return {part.samples, part.lines, layout.band_stride, (bands - 1) * layout.band_stride + part.samples * size};
    const int64_t run = std::min(part.area(), run_bytes / size);
    const int64_t pitch = run * size + pad_bytes;
    return {run, (part.area() - 1) / run + 1, pitch, bands * pitch};
}

// The bands to read, which lie from `band` on in the direction of the step: those that are left in equal groups.
int64_t QubeBandGroup::count_for(const QubeBandLayout &layout, const SampleRectangle &part, int64_t band,
                                 Step step) const {
    const int64_t size = layout.band_0.sample_bytes;
    int64_t band_bytes = 0;
    int64_t limit = 0;
    if (layout.by_item) {
        const Tiles one = tiles_for(layout, part, 1);
        band_bytes = one.count * one.bytes;
        limit = step == Step::Jump ? few_items : most_bytes;
    } else if (step != Step::Jump && layout.band_stride - part.samples * size <= largest_gap &&
               part.lines <= most_bytes / layout.band_stride) {
        band_bytes = part.lines * layout.band_stride;
        limit = std::clamp(least_bands_of_lines * band_bytes, bytes_of_lines, most_bytes);
    } else {
        return 0;
    }
    const int64_t left = step == Step::Back ? band + 1 : layout.bands - band;
    const int64_t most = std::min(left, limit / band_bytes);
    if (most < 2)
        return 0;
    const int64_t groups = (left - 1) / most + 1;
    return (left - 1) / groups + 1;
}

bool QubeBandGroup::fetch_lines(const StridedReader &reader, const QubeBandLayout &layout, int64_t first,
                                int64_t last) {
    for (int64_t line = first; line < last; ++line) {
        const int64_t position = layout.band_0.position(part_.line + line, part_.sample) + first_ * layout.band_stride;
        if (reader.read_stored(position, tiles_.bytes, held_.get() + line * tiles_.bytes) < tiles_.bytes)
            return false;
    }
    return true;
}

bool QubeBandGroup::fetch_items(const StridedReader &reader, const QubeBandLayout &layout, int64_t first,
                                int64_t last) {
    const SampleLayout &band_0 = layout.band_0;
    const int64_t stride = band_0.sample_stride;
    const int64_t wanted = count_ * sample_bytes_;
    const int64_t at_a_time = samples_at_a_time(stride, wanted);
    // Lines without a gap are one long line.
    const int64_t line_samples = band_0.line_stride == part_.samples * stride ? part_.area() : part_.samples;
    std::vector<uint8_t> piece(static_cast<size_t>((at_a_time - 1) * stride + wanted));
    const auto turn = sample_bytes_ == 1   ? turn_items<uint8_t>
                      : sample_bytes_ == 2 ? turn_items<uint16_t>
                      : sample_bytes_ == 4 ? turn_items<uint32_t>
                                           : turn_items<uint64_t>;
    const int64_t end = std::min(last * tiles_.run, part_.area());
    for (int64_t sample = first * tiles_.run; sample < end;) {
        const int64_t in_line = sample % line_samples;
        const int64_t in_run = sample % tiles_.run;
        const int64_t samples = std::min({at_a_time, line_samples - in_line, tiles_.run - in_run, end - sample});
        const int64_t bytes = (samples - 1) * stride + wanted;
        const int64_t position =
            band_0.position(part_.line + sample / line_samples, part_.sample + in_line) + first_ * layout.band_stride;
        if (reader.read_stored(position, bytes, piece.data()) < bytes)
            return false;
        uint8_t *run = held_.get() + sample / tiles_.run * tiles_.bytes + in_run * sample_bytes_;
        turn(piece.data(), stride, samples, count_, run, tiles_.pitch);
        sample += samples;
    }
    return true;
}

bool QubeBandGroup::fetch(const StridedReader &reader, const QubeBandLayout &layout) {
    const int64_t bytes = tiles_.count * tiles_.bytes;
    if (held_bytes_ < bytes) {
        held_.reset();
        // As much as all bands may take: what is not touched costs nothing, what was touched is not cleared again.
        held_bytes_ = std::clamp(bytes / count_ * layout.bands, bytes, most_bytes);
        held_.reset(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(held_bytes_))));
        held_bytes_ = held_ ? held_bytes_ : 0;
    }
    if (!held_)
        return false;
    std::atomic<bool> complete = true;
    util_share(tiles_.count, bytes, [&](int64_t first, int64_t last) {
        if (!(layout.by_item ? fetch_items(reader, layout, first, last) : fetch_lines(reader, layout, first, last)))
            complete = false;
    });
    return complete;
}

bool QubeBandGroup::prepare(const StridedReader &reader, const QubeBandLayout &layout, const SampleRectangle &part,
                            int64_t band) {
    const bool is_small = part.area() < least_part / layout.band_0.sample_bytes;
    const bool same_band = band == last_band_;
    const bool is_look = is_small || (same_band && last_part_.contains(part));  // rather than a step
    const int64_t distance = part == last_part_ ? band - last_band_ : 0;
    if (!is_look) {
        last_band_ = band;
        last_part_ = part;
    }
    if (holds(part, band))
        return true;
    const Step step = distance == 1 ? Step::Forward : distance == -1 ? Step::Back : Step::Jump;
    const int64_t count = is_look || same_band ? 0 : count_for(layout, part, band, step);
    if (count < 2)
        return false;
    first_ = step == Step::Back ? band - count + 1 : band;
    count_ = count;
    part_ = part;
    sample_bytes_ = layout.band_0.sample_bytes;
    tiles_ = tiles_for(layout, part, count);
    if (!fetch(reader, layout))
        count_ = 0;
    return count_ > 0;
}

void QubeBandGroup::give(const StridedReader &reader, const SampleRectangle &part, int64_t band, uint8_t *out) const {
    const bool whole_lines = part.samples == part_.samples;
    const int64_t samples = whole_lines ? part.area() : part.samples;
    for (int64_t line = 0; line < (whole_lines ? 1 : part.lines); ++line) {
        int64_t at = (part.line - part_.line + line) * part_.samples + part.sample - part_.sample;
        for (const int64_t end = at + samples; at < end;) {
            const int64_t in_run = at % tiles_.run;
            const int64_t some = std::min(tiles_.run - in_run, end - at);
            const uint8_t *run = held_.get() + at / tiles_.run * tiles_.bytes + (band - first_) * tiles_.pitch;
            if (at + some < end)
                prefetch(run + tiles_.bytes);
            reader.convert(run + in_run * sample_bytes_, out, some);
            out += some * reader.sample_size();
            at += some;
        }
    }
}
