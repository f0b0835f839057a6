// Only the bytes of a rectangle are read, straight into the output where an item keeps its size, and converted there
// while they are still in the cache.
#include "oa/strided_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr int64_t piece_bytes = int64_t{1} << 18;  // read and converted at a time: stays in a core's cache
constexpr int64_t neighbour_piece_bytes = int64_t{1} << 16;
constexpr int64_t direct_bytes = int64_t{1} << 30;      // read at a time where there is nothing to convert
constexpr int64_t least_seek_bytes = int64_t{1} << 12;  // up to here reading on costs less than seeking

template <typename T>
void gather_as(const uint8_t *src, int64_t stride, uint8_t *dst, int64_t count) {
    for (int64_t i = 0; i < count; ++i)
        memcpy(dst + i * static_cast<int64_t>(sizeof(T)), src + i * stride, sizeof(T));
}

// Takes every `stride`-th sample.
void gather(const uint8_t *src, int64_t stride, int64_t sample_bytes, uint8_t *dst, int64_t count) {
    switch (sample_bytes) {
        case 1:
            return gather_as<uint8_t>(src, stride, dst, count);
        case 2:
            return gather_as<uint16_t>(src, stride, dst, count);
        case 4:
            return gather_as<uint32_t>(src, stride, dst, count);
        case 8:
            return gather_as<uint64_t>(src, stride, dst, count);
        default:
            for (int64_t i = 0; i < count; ++i)
                memcpy(dst + i * sample_bytes, src + i * stride, static_cast<size_t>(sample_bytes));
    }
}

// Takes four neighbours at once out of `count` samples.
template <typename T>
void part_four_as(const uint8_t *src, int64_t stride, uint8_t *const *out, int64_t first, int64_t count) {
    T *a = reinterpret_cast<T *>(out[0]) + first;
    T *b = reinterpret_cast<T *>(out[1]) + first;
    T *c = reinterpret_cast<T *>(out[2]) + first;
    T *d = reinterpret_cast<T *>(out[3]) + first;
    for (int64_t i = 0; i < count; ++i) {
        std::array<T, 4> four;
        memcpy(four.data(), src + i * stride, sizeof four);
        a[i] = four[0];
        b[i] = four[1];
        c[i] = four[2];
        d[i] = four[3];
    }
}

// Lays each neighbour's samples behind the `first` ones that it has.
void part_neighbours(const uint8_t *src, int64_t stride, int64_t sample_bytes, const std::vector<uint8_t *> &out,
                     int64_t first, int64_t count) {
    size_t i = 0;
    for (; i + 4 <= out.size() && sample_bytes <= 4; i += 4) {
        const uint8_t *from = src + static_cast<int64_t>(i) * sample_bytes;
        if (sample_bytes == 1)
            part_four_as<uint8_t>(from, stride, &out[i], first, count);
        else if (sample_bytes == 2)
            part_four_as<uint16_t>(from, stride, &out[i], first, count);
        else
            part_four_as<uint32_t>(from, stride, &out[i], first, count);
    }
    for (; i < out.size(); ++i)
        gather(src + static_cast<int64_t>(i) * sample_bytes, stride, sample_bytes, out[i] + first * sample_bytes,
               count);
}

}  // namespace

StridedReader::Piece StridedReader::largest_piece(const Piece &all) const {
    const int64_t gap = layout_.line_stride - layout_.span(all.samples);
    if (all.lines > 1 && gap <= least_seek_bytes && layout_.line_stride <= piece_bytes)
        return {std::min(all.lines, piece_bytes / layout_.line_stride), all.samples};
    if (layout_.sample_stride - layout_.sample_bytes > least_seek_bytes)
        return {1, 1};
    const int64_t limit = plan_.as_stored() && is_packed() ? direct_bytes : piece_bytes;
    return {1, std::min(all.samples, std::max<int64_t>(1, limit / layout_.sample_stride))};
}

// One call of the system for each read: a band of a line-interleaved image takes one for each line.
bool StridedReader::read_bytes(int64_t position, int64_t count, uint8_t *into, int64_t *bytes_read) {
    *bytes_read = 0;
    while (*bytes_read < count) {
        const ssize_t got = pread(fileno(stream_->file.get()), into + *bytes_read,
                                  static_cast<size_t>(count - *bytes_read), position + *bytes_read);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            OaReportFailure(700, "%s: reading %s failed: %s.", routine_, stream_->file_name.c_str(), strerror(errno));
            return false;
        }
        if (got == 0)
            break;
        *bytes_read += got;
    }
    return true;
}

void StridedReader::convert_line(const uint8_t *stored, uint8_t *out, int64_t samples) {
    if (!is_packed()) {
        uint8_t *packed = out;
        if (!plan_.in_place()) {
            gathered_.resize(static_cast<size_t>(samples * layout_.sample_bytes));
            packed = gathered_.data();
        }
        gather(stored, layout_.sample_stride, layout_.sample_bytes, packed, samples);
        stored = packed;
    }
    OalConvertRun(&plan_.item, stored, out, samples * plan_.items_per_sample);
}

// Converts as many samples as `bytes_held` bytes hold whole, and returns their number.
int64_t StridedReader::convert_piece(const Piece &piece, const uint8_t *stored, int64_t bytes_held, uint8_t *out) {
    int64_t converted = 0;
    for (int64_t line = 0; line < piece.lines; ++line) {
        const int64_t held = bytes_held - line * layout_.line_stride;
        if (held < layout_.sample_bytes)
            break;
        const int64_t samples = std::min(piece.samples, (held - layout_.sample_bytes) / layout_.sample_stride + 1);
        convert_line(stored + line * layout_.line_stride, out + converted * sample_size(), samples);
        converted += samples;
    }
    return converted;
}

// Reads the piece that begins at a position and converts the samples that the file holds whole. Returns their number,
// or -1 after reporting; fewer `bytes_held` than the piece spans tell that the file ended.
int64_t StridedReader::read_piece(const Piece &piece, int64_t position, uint8_t *out, int64_t *bytes_held) {
    const int64_t bytes = span(piece);
    const bool straight = goes_straight(piece);
    if (!straight)
        stored_.resize(std::max(stored_.size(), static_cast<size_t>(bytes)));
    uint8_t *stored = straight ? out : stored_.data();
    if (!read_bytes(position, bytes, stored, bytes_held))
        return -1;
    const int64_t samples = convert_piece(piece, stored, *bytes_held, out);
    // The bytes of a sample that is not whole are no value.
    if (straight && *bytes_held < bytes)
        memset(out + samples * sample_size(), 0, static_cast<size_t>(*bytes_held - samples * sample_size()));
    return samples;
}

bool StridedReader::read(const SampleLayout &layout, const SampleRectangle &rectangle, uint8_t *out,
                         ShortRead *missing) {
    layout_ = layout;
    Piece all = {rectangle.lines, rectangle.samples};
    if (is_packed() && layout_.span(all.samples) == layout_.line_stride)
        all = {1, rectangle.area()};  // lines without a gap are one long line
    const int64_t first = layout_.position(rectangle.line, rectangle.sample);
    const Piece largest = largest_piece(all);
    int64_t samples_read = 0;
    for (int64_t line = 0; line < all.lines; line += largest.lines) {
        for (int64_t sample = 0; sample < all.samples; sample += largest.samples) {
            const Piece piece = {std::min(largest.lines, all.lines - line),
                                 std::min(largest.samples, all.samples - sample)};
            const int64_t offset = line * layout_.line_stride + sample * layout_.sample_stride;
            int64_t held = 0;
            const int64_t samples = read_piece(piece, first + offset, out + samples_read * sample_size(), &held);
            if (samples < 0)
                return false;
            samples_read += samples;
            if (held < span(piece)) {
                *missing = {offset + held, span(all), rectangle.line + samples_read / rectangle.samples,
                            rectangle.sample + samples_read % rectangle.samples};
                return true;
            }
        }
    }
    return true;
}

// Pieces are small enough that their bytes stay in the cache while one neighbour after the other is taken out.
bool StridedReader::fetch_items(const SampleRectangle &all, const std::vector<uint8_t *> &out) {
    const int64_t size = layout_.sample_bytes;
    const auto neighbours = static_cast<int64_t>(out.size());
    const int64_t more = (neighbours - 1) * size;
    const int64_t at_a_time = std::clamp<int64_t>(neighbour_piece_bytes / layout_.sample_stride, 1, all.samples);
    stored_.resize(std::max(stored_.size(), static_cast<size_t>(layout_.span(at_a_time) + more)));
    int64_t done = 0;
    for (int64_t line = 0; line < all.lines; ++line) {
        for (int64_t sample = 0; sample < all.samples; sample += at_a_time) {
            const int64_t samples = std::min(at_a_time, all.samples - sample);
            const int64_t bytes = layout_.span(samples) + more;
            int64_t held = 0;
            if (!read_bytes(layout_.position(all.line + line, all.sample + sample), bytes, stored_.data(), &held) ||
                held < bytes)
                return false;
            part_neighbours(stored_.data(), layout_.sample_stride, size, out, done, samples);
            done += samples;
        }
    }
    return true;
}

// The system itself lays the lines where they belong.
bool StridedReader::fetch_lines(int64_t neighbour_stride, const SampleRectangle &rectangle,
                                const std::vector<uint8_t *> &out) {
    const auto line_bytes = static_cast<size_t>(layout_.span(rectangle.samples));
    const auto gap = static_cast<size_t>(neighbour_stride) - line_bytes;
    stored_.resize(std::max(stored_.size(), gap));
    const size_t bytes = (out.size() - 1) * static_cast<size_t>(neighbour_stride) + line_bytes;
    std::vector<iovec> places;
    for (int64_t line = 0; line < rectangle.lines; ++line) {
        places.clear();
        for (uint8_t *neighbour : out) {
            if (gap > 0 && !places.empty())
                places.push_back({stored_.data(), gap});
            places.push_back({neighbour + static_cast<size_t>(line) * line_bytes, line_bytes});
        }
        const int64_t position = layout_.position(rectangle.line + line, rectangle.sample);
        const ssize_t got =
            preadv(fileno(stream_->file.get()), places.data(), static_cast<int>(places.size()), position);
        if (got < 0 || static_cast<size_t>(got) < bytes)
            return false;
    }
    return true;
}

bool StridedReader::fetch_neighbours(const SampleLayout &layout, int64_t neighbour_stride,
                                     const SampleRectangle &rectangle, const std::vector<uint8_t *> &out) {
    layout_ = layout;
    if (is_packed())
        return fetch_lines(neighbour_stride, rectangle, out);
    if (rectangle.sample == 0 && layout.line_stride == rectangle.samples * layout.sample_stride)
        return fetch_items({0, 1, rectangle.line * rectangle.samples, rectangle.area()}, out);  // one long line
    return fetch_items(rectangle, out);
}

OaStreamPtr open_samples(const char *routine, const std::string &file_name) {
    OaStreamPtr stream(OalOpenStream(file_name.c_str(), OA_UNDEFINED, 0, 0, "r"));
    if (stream)
        setvbuf(stream->file.get(), nullptr, _IONBF, 0);
    else
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
    return stream;
}
