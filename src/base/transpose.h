// Turning rows into columns.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

// What lies where: element (line, sample) of the source goes to column `line` of row `sample` of the target. Strides
// are bytes, and negative where lines or rows are counted from the end; nothing needs to be aligned.
template <typename Element>
class UtilTransposition {
  public:
    const uint8_t *source;
    int64_t source_stride;
    uint8_t *target;
    int64_t target_stride;

    // Turns a block. The source's and target's rows within it are best no more than the first caches hold.
    void turn(int64_t first_line, int64_t last_line, int64_t first_sample, int64_t last_sample) const {
        constexpr int64_t line_group = 64 / size;  // that fill a cache line of the target
        for (int64_t lines = first_line; lines < last_line; lines += line_group) {
            const int64_t lines_end = std::min(lines + line_group, last_line);
            for (int64_t sample = first_sample; sample < last_sample; sample += side) {
                for (int64_t line = lines; line < lines_end; line += side) {
                    if (line + side <= lines_end && sample + side <= last_sample)
                        turn_square(source_at(line, sample), target_at(line, sample));
                    else
                        turn_edge(line, std::min(line + side, lines_end), sample, std::min(sample + side, last_sample));
                }
            }
        }
    }

  private:
    // Small squares are turned in vector registers.
    static constexpr int vector_bytes = 16;
    static constexpr int64_t size = sizeof(Element);
    static constexpr int side = vector_bytes / int{sizeof(Element)};
    using Vector [[gnu::vector_size(vector_bytes)]] = Element;

    const uint8_t *source_at(int64_t line, int64_t sample) const {
        return source + line * source_stride + sample * size;
    }
    uint8_t *target_at(int64_t line, int64_t sample) const { return target + sample * target_stride + line * size; }

    // From two vectors one of alternating elements, of their first or second halves.
    template <int first, size_t... i>
    [[gnu::always_inline]] static Vector interleave(Vector a, Vector b, std::index_sequence<i...>) {
        return __builtin_shufflevector(a, b, static_cast<int>(first + i / 2 + i % 2 * side)...);
    }

    // Deals the rows of the two halves of a square out alternately.
    template <size_t... row>
    [[gnu::always_inline]] static void deal(const Vector *rows, Vector *dealt, std::index_sequence<row...>) {
        constexpr auto all = std::make_index_sequence<size_t{side}>();
        constexpr int half = side / 2;
        ((dealt[2 * row] = interleave<0>(rows[row], rows[row + half], all),
          dealt[2 * row + 1] = interleave<half>(rows[row], rows[row + half], all)),
         ...);
    }

    // Dealing as many times as the side has binary digits turns rows into columns.
    [[gnu::always_inline]] void turn_square(const uint8_t *from, uint8_t *to) const {
        constexpr auto half = std::make_index_sequence<size_t{side} / 2>();
        constexpr int times = std::countr_zero(unsigned{side});
        Vector rows[side];
        Vector dealt[side];
        for (int i = 0; i < side; ++i)
            memcpy(&rows[i], from + i * source_stride, sizeof(Vector));
        deal(rows, dealt, half);
        if constexpr (times > 1)
            deal(dealt, rows, half);
        if constexpr (times > 2)
            deal(rows, dealt, half);
        if constexpr (times > 3)
            deal(dealt, rows, half);
        const Vector *turned = times % 2 == 0 ? rows : dealt;
        for (int i = 0; i < side; ++i)
            memcpy(to + i * target_stride, &turned[i], sizeof(Vector));
    }

    void turn_edge(int64_t first_line, int64_t last_line, int64_t first_sample, int64_t last_sample) const {
        for (int64_t sample = first_sample; sample < last_sample; ++sample) {
            for (int64_t line = first_line; line < last_line; ++line)
                memcpy(target_at(line, sample), source_at(line, sample), sizeof(Element));
        }
    }
};
