#include "oa/qube_bands.h"

#include <algorithm>

namespace {

constexpr int64_t largest_group = int64_t{256} << 20;  // bytes of all bands held

}  // namespace

bool QubeBandGroup::step_to(StridedReader *reader, const SampleLayout &band_0, const SampleRectangle &whole,
                            int64_t band, int64_t bands) {
    const int64_t step = band - last_asked_;
    last_asked_ = band;
    if (holds(band))
        return true;
    band_bytes_ = whole.area() * band_0.sample_bytes;
    const int64_t count = std::min(bands, largest_group / band_bytes_);
    if ((step != 1 && step != -1) || count < 2 || reader->sample_size() != band_0.sample_bytes)
        return false;
    if (count != count_)
        held_.reset(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(count * band_bytes_))));
    count_ = 0;
    if (!held_)
        return false;
    first_ = std::clamp<int64_t>(step > 0 ? band : band - count + 1, 0, bands - count);
    std::vector<uint8_t *> out;
    for (int64_t i = 0; i < count; ++i)
        out.push_back(held_.get() + i * band_bytes_);
    SampleLayout first_band = band_0;
    first_band.first += first_ * band_0.sample_bytes;
    if (!reader->read_neighbours(first_band, whole, out)) {
        held_.reset();
        return false;
    }
    count_ = count;
    return true;
}
