#include "oa/qube_layout.h"

namespace {

// Sums and products that remember whether one was too large.
class Bytes {
  public:
    int64_t product(int64_t a, int64_t b) {
        int64_t result = 0;
        overflow_ |= __builtin_mul_overflow(a, b, &result);
        return result;
    }
    int64_t sum(int64_t a, int64_t b) {
        int64_t result = 0;
        overflow_ |= __builtin_add_overflow(a, b, &result);
        return result;
    }
    bool overflow() const { return overflow_; }

  private:
    bool overflow_ = false;
};

}  // namespace

int64_t QubeLayout::offset(int64_t i, int64_t j, int64_t k) const {
    if (k >= core[2])
        return core[2] * core_plane + (k - core[2]) * suffix_plane + j * suffix_line + i * suffix_bytes;
    const int64_t plane = k * core_plane;
    if (j >= core[1])
        return plane + core[1] * core_line + (j - core[1]) * suffix_line + i * suffix_bytes;
    const int64_t line = plane + j * core_line;
    return line + (i < core[0] ? i * core_bytes : core[0] * core_bytes + (i - core[0]) * suffix_bytes);
}

std::optional<QubeLayout> plan_qube_layout(const OaQubeKeywords &qube, bool with_corners) {
    QubeLayout layout;
    for (size_t place = 0; place < oa_qube_axes; ++place) {
        layout.core[place] = qube.core_items[qube.order[place]];
        layout.suffix[place] = qube.suffixes[qube.order[place]].items;
    }
    layout.core_bytes = qube.core.bytes;
    layout.suffix_bytes = qube.suffix_bytes;
    layout.has_corners = with_corners;
    const auto &[c1, c2, c3] = layout.core;
    const auto &[s1, s2, s3] = layout.suffix;
    Bytes bytes;
    layout.core_line = bytes.sum(bytes.product(c1, layout.core_bytes), bytes.product(s1, layout.suffix_bytes));
    layout.suffix_line = bytes.product(with_corners ? bytes.sum(c1, s1) : c1, layout.suffix_bytes);
    layout.core_plane = bytes.sum(bytes.product(c2, layout.core_line), bytes.product(s2, layout.suffix_line));
    layout.suffix_plane = bytes.product(with_corners ? bytes.sum(c2, s2) : c2, layout.suffix_line);
    layout.total = bytes.sum(bytes.product(c3, layout.core_plane), bytes.product(s3, layout.suffix_plane));
    if (bytes.overflow())
        return std::nullopt;
    return layout;
}

QubeLayout choose_qube_layout(const OaQubeKeywords &qube, int64_t bytes_held) {
    const QubeLayout stored = plan_qube_layout(qube, true).value_or(QubeLayout{});
    const QubeLayout bare = plan_qube_layout(qube, false).value_or(stored);
    return bytes_held < stored.total && bytes_held >= bare.total ? bare : stored;
}

QubePlaneLayout core_plane_layout(const QubeLayout &layout, int place, int64_t item) {
    const std::array<int64_t, oa_qube_axes> stride = {layout.core_bytes, layout.core_line, layout.core_plane};
    return {item * stride[static_cast<size_t>(place)], stride};
}

QubePlaneLayout suffix_plane_layout(const QubeLayout &layout, int place, int64_t item) {
    switch (place) {
        case 0:
            return {layout.core[0] * layout.core_bytes + item * layout.suffix_bytes,
                    {layout.suffix_bytes, layout.core_line, layout.core_plane}};
        case 1:
            return {layout.core[1] * layout.core_line + item * layout.suffix_line,
                    {layout.suffix_bytes, layout.suffix_line, layout.core_plane}};
        default:
            return {layout.core[2] * layout.core_plane + item * layout.suffix_plane,
                    {layout.suffix_bytes, layout.suffix_line, layout.suffix_plane}};
    }
}
