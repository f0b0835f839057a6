#include "oa/qube_bands.h"

#include <algorithm>

namespace {

// Bytes of all bands held. Bands that lie line by line cost little more one by one: a group is for the processor's
// cache. Of those that lie item by item each pass reads all: the fewer passes, the better.
constexpr int64_t largest_group_of_lines = int64_t{32} << 20;
constexpr int64_t largest_group_of_items = int64_t{256} << 20;
constexpr int64_t most_bands_of_lines = 256;  // the system takes 1024 places in one read

}  // namespace

bool QubeBandGroup::fetch(StridedReader *reader, const QubeBandLayout &layout, const SampleRectangle &whole,
                          int64_t band, bool forward) {
    const int64_t band_bytes = whole.area() * layout.band_0.sample_bytes;
    const bool by_line = layout.band_0.sample_stride == layout.band_0.sample_bytes;
    const int64_t count =
        std::min({layout.bands, (by_line ? largest_group_of_lines : largest_group_of_items) / band_bytes,
                  by_line ? most_bands_of_lines : layout.bands});
    if (count < 2)
        return false;
    count_ = 0;
    if (held_bytes_ != count * band_bytes) {
        held_bytes_ = count * band_bytes;
        held_.reset(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(held_bytes_))));
    }
    if (!held_) {
        held_bytes_ = 0;
        return false;
    }
    first_ = std::clamp<int64_t>(forward ? band : band - count + 1, 0, layout.bands - count);
    std::vector<uint8_t *> out;
    for (int64_t i = 0; i < count; ++i)
        out.push_back(held_.get() + i * band_bytes);
    SampleLayout first_band = layout.band_0;
    first_band.first += first_ * layout.band_stride;
    if (!reader->fetch_neighbours(first_band, layout.band_stride, whole, out))
        return false;
    count_ = count;
    return true;
}

bool QubeBandGroup::give(StridedReader *reader, const QubeBandLayout &layout, const SampleRectangle &whole,
                         int64_t band, uint8_t *out) {
    const int64_t step = band - last_asked_;
    last_asked_ = band;
    if (!holds(band) && ((step != 1 && step != -1) || !fetch(reader, layout, whole, band, step > 0)))
        return false;
    const int64_t band_bytes = whole.area() * layout.band_0.sample_bytes;
    reader->convert(held_.get() + (band - first_) * band_bytes, out, whole.area());
    return true;
}
