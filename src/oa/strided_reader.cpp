// Only the bytes of a rectangle are read, straight into the output where an item keeps its size, and converted there
// while they are still in the cache.
#include "oa/strided_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int64_t piece_bytes = int64_t{1} << 18;       // read and converted at a time: stays in a core's cache
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
int64_t StridedReader::read_stored(int64_t position, int64_t count, uint8_t *into) const {
    int64_t bytes_read = 0;
    while (bytes_read < count) {
        const ssize_t got = pread(fileno(stream_->file.get()), into + bytes_read,
                                  static_cast<size_t>(count - bytes_read), position + bytes_read);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        bytes_read += got;
    }
    return bytes_read;
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
    convert(stored, out, samples);
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
    *bytes_held = read_stored(position, bytes, stored);
    if (*bytes_held < 0) {
        OaReportFailure(700, "%s: reading %s failed: %s.", routine_, stream_->file_name.c_str(), strerror(errno));
        return -1;
    }
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

OaStreamPtr open_samples(const char *routine, const std::string &file_name) {
    OaStreamPtr stream(OalOpenStream(file_name.c_str(), OA_UNDEFINED, 0, 0, "r"));
    if (stream)
        setvbuf(stream->file.get(), nullptr, _IONBF, 0);
    else
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
    return stream;
}
