// Items at equal distances, as the columns of a table are.
#pragma once

#include <cstdint>
#include <cstring>

struct OaStrided {
    const uint8_t *src = nullptr;
    int64_t src_stride = 0;  // bytes from item to item
    uint8_t *dst = nullptr;
    int64_t dst_stride = 0;
    int64_t count = 0;
};

template <int64_t size>
inline void OalCopyStrided(const OaStrided &items) {
    for (int64_t i = 0; i < items.count; ++i)
        memcpy(items.dst + i * items.dst_stride, items.src + i * items.src_stride, size);
}

inline void OalCopyStrided(const OaStrided &items, int64_t size) {
    switch (size) {
        case 1:
            return OalCopyStrided<1>(items);
        case 2:
            return OalCopyStrided<2>(items);
        case 4:
            return OalCopyStrided<4>(items);
        case 8:
            return OalCopyStrided<8>(items);
        default:
            for (int64_t i = 0; i < items.count; ++i)
                memcpy(items.dst + i * items.dst_stride, items.src + i * items.src_stride, static_cast<size_t>(size));
    }
}

// Spreads items of `size` bytes that lie one behind the other.
inline void OalScatter(const uint8_t *src, int64_t size, uint8_t *dst, int64_t dst_stride, int64_t count) {
    if (size == dst_stride)
        memcpy(dst, src, static_cast<size_t>(size * count));
    else
        OalCopyStrided({src, size, dst, dst_stride, count}, size);
}
