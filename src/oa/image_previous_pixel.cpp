// Images of Previous Pixel data: one chain of differences over all lines, whatever the records of the file.
#include "decoders/previous_pixel.h"
#include "oa/image_band.h"
#include "oa/sample_plan.h"
#include "oa/stream.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int64_t block_bytes = int64_t{1} << 15;
constexpr int64_t native_size = sizeof(uint16_t);

// The bytes are decoded block by block; what the decoder knew before each block stays, so that any that was passed can
// be decoded again.
class PreviousPixelBand : public ImageBand {
  public:
    PreviousPixelBand(const char *routine, const OaImageKeywords &image, OdlTree label, int64_t start,
                      OaStreamPtr stream)
        : ImageBand(image, std::move(label), native_size),
          routine_(routine),
          start_(start),
          stream_(std::move(stream)),
          coded_(static_cast<size_t>(block_bytes)),
          samples_(static_cast<size_t>(block_bytes)) {}

    bool read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) override;

  private:
    struct Snapshot {
        int64_t first_sample = 0;  // of the block, counted from the image's first
        PreviousPixelState state;
    };

    bool find_block(int64_t sample);
    bool decode_block(int64_t block);
    bool read_block(int64_t block, int64_t *length);
    bool holds(int64_t sample) const { return sample >= first_held_ && sample < first_held_ + held_; }

    const char *routine_;
    int64_t start_;
    OaStreamPtr stream_;
    std::vector<uint8_t> coded_;
    std::vector<uint16_t> samples_;  // of the block decoded last
    int64_t first_held_ = 0;         // its first sample
    int64_t held_ = 0;
    bool at_end_ = false;                             // the last snapshot stands where the file ends
    std::vector<Snapshot> snapshots_ = {Snapshot{}};  // before each block that was met
};

bool PreviousPixelBand::read_block(int64_t block, int64_t *length) {
    *length = 0;
    while (*length < block_bytes) {
        char *into = reinterpret_cast<char *>(coded_.data()) + *length;
        int64_t got = 0;
        const int status =
            OalReadStream(stream_.get(), block_bytes - *length, &into, start_ + block * block_bytes + *length, &got);
        if (status < 0) {
            OaReportFailure(700, "%s: OalReadStream returned error, aborting.", routine_);
            return false;
        }
        *length += got;
        if (status != 0 || got == 0)
            break;
    }
    return true;
}

bool PreviousPixelBand::decode_block(int64_t block) {
    held_ = 0;
    int64_t length = 0;
    if (!read_block(block, &length))
        return false;
    if (block == 0 && length > 0 && coded_[0] < 255) {
        OaReportFailure(710, "%s: first byte in Previous Pixel compressed data was not a 255.", routine_);
        return false;
    }
    const auto number = static_cast<size_t>(block);
    PreviousPixelState state = snapshots_[number].state;
    first_held_ = snapshots_[number].first_sample;
    held_ = OalDecodePreviousPixel(coded_.data(), length, samples_.data(), &state);
    if (number + 1 == snapshots_.size()) {
        at_end_ = length < block_bytes;
        if (!at_end_)
            snapshots_.push_back({first_held_ + held_, state});
    }
    return true;
}

// Makes the block with that sample the one at hand; behind the file's end it is none. False after reporting.
bool PreviousPixelBand::find_block(int64_t sample) {
    if (holds(sample))
        return true;
    const auto behind = std::upper_bound(snapshots_.begin(), snapshots_.end(), sample,
                                         [](int64_t value, const Snapshot &at) { return value < at.first_sample; });
    // A block may end within a sample that the next one ends: then that one's first sample is counted from there, too.
    for (int64_t block = behind - snapshots_.begin() - 1; block < std::ssize(snapshots_); ++block) {
        if (!decode_block(block))
            return false;
        if (holds(sample))
            return true;
        if (at_end_ && block + 1 == std::ssize(snapshots_))
            break;
    }
    return true;
}

bool PreviousPixelBand::read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) {
    for (int64_t line = 0; line < rectangle.lines; ++line) {
        for (int64_t sample = 0; sample < rectangle.samples;) {
            const int64_t index = (rectangle.line + line) * image_.line_samples + rectangle.sample + sample;
            const int64_t done = line * rectangle.samples + sample;
            if (!find_block(index))
                return false;
            if (!holds(index)) {
                *missing = {done * native_size, rectangle.area() * native_size, rectangle.line + line,
                            rectangle.sample + sample};
                return true;
            }
            const int64_t count = std::min(rectangle.samples - sample, first_held_ + held_ - index);
            memcpy(out + done * native_size, samples_.data() + (index - first_held_),
                   static_cast<size_t>(count * native_size));
            sample += count;
        }
    }
    return true;
}

OdlTree native_label(const ObjDesc *image_node) {
    OdlTree label = copy_image_label(image_node);
    OaStrtoKwdValue("SAMPLE_TYPE", label.get(), "LSB_INTEGER");
    OaLongtoKwdValue("SAMPLE_BITS", label.get(), 8 * native_size);
    delete_storage_keywords(label.get());
    return label;
}

}  // namespace

std::unique_ptr<ImageBand> open_previous_pixel_band(const char *routine, const ObjDesc *image_node,
                                                    const OaImageKeywords &image) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0 || !check_image_storage(routine, image, file))
        return nullptr;
    OaStreamPtr stream(OalOpenStream(file.file_name.c_str(), OA_UNDEFINED, 0, 0, "r"));
    if (!stream) {
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
        return nullptr;
    }
    setvbuf(stream->file.get(), nullptr, _IONBF, 0);
    return std::make_unique<PreviousPixelBand>(routine, image, native_label(image_node), file.start, std::move(stream));
}
