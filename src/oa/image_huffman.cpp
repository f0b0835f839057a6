// Images of Huffman first-difference lines: each line is a record of variable length.
#include "decoders/huffman.h"
#include "oa/image_band.h"
#include "oa/sample_plan.h"
#include "oa/stream.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

// Of the longest record that its two bytes of length can say: the first sample, then one for each bit.
constexpr int64_t most_decoded_bytes = 1 + 32766 * 8;

// The records of a file in any order. Those that were passed once are found again from the nearest position that the
// stream remembers; the end is met only once.
class Records {
  public:
    Records(const char *routine, OaStreamPtr stream)
        : routine_(routine), stream_(std::move(stream)), passed_(stream_->current_position) {}

    // The bytes of a record, valid until the next call; none behind the file's end. False after reporting.
    bool fetch(int64_t record, const uint8_t **bytes, int64_t *length);

  private:
    bool read_next(const uint8_t **bytes, int64_t *length);

    const char *routine_;
    OaStreamPtr stream_;
    int64_t passed_;                                     // records
    int64_t end_ = std::numeric_limits<int64_t>::max();  // the first record that the file does not hold whole
    std::vector<uint8_t> cut_;                           // what it holds of that
};

bool Records::read_next(const uint8_t **bytes, int64_t *length) {
    char *text = nullptr;
    const int64_t record = stream_->current_position;
    const int status = OalReadStream(stream_.get(), 0, &text, -1, length);
    if (status < 0) {
        OaReportFailure(700, "%s: OalReadStream returned error, aborting.", routine_);
        return false;
    }
    *bytes = reinterpret_cast<const uint8_t *>(text);
    if (status != 0) {
        end_ = record;
        cut_.assign(*bytes, *bytes + *length);
    }
    passed_ = std::max(passed_, stream_->current_position);
    return true;
}

bool Records::fetch(int64_t record, const uint8_t **bytes, int64_t *length) {
    if (record < end_ && OalSeek(stream_.get(), std::min(record, passed_)) != 0) {
        OaReportFailure(oa_errno, "%s: OalSeek returned error, aborting.", routine_);
        return false;
    }
    while (record < end_) {
        const bool is_it = stream_->current_position == record;
        if (!read_next(bytes, length))
            return false;
        if (is_it)
            return true;
    }
    *bytes = cut_.data();
    *length = record == end_ ? static_cast<int64_t>(cut_.size()) : 0;
    return true;
}

class HuffmanBand : public ImageBand {
  public:
    HuffmanBand(const OaImageKeywords &image, SamplePlan plan, HFDTreePtr tree, int64_t first_record, Records records)
        : ImageBand(image, std::move(plan.label), plan.native_size()),
          plan_(std::move(plan)),
          tree_(std::move(tree)),
          first_record_(first_record),
          records_(std::move(records)),
          line_(static_cast<size_t>(image.line_prefix_bytes + image.line_samples * stored_size() +
                                    image.line_suffix_bytes)) {}

    bool read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) override;

  private:
    int64_t stored_size() const { return image_.sample_bits / 8; }
    bool fetch_line(int64_t line);
    int64_t samples_held() const;

    SamplePlan plan_;
    HFDTreePtr tree_;
    int64_t first_record_;
    Records records_;
    std::vector<uint8_t> line_;  // decoded, with what stands around its samples
    int64_t line_number_ = -1;   // from 0
    int64_t bytes_held_ = 0;     // of it
};

bool HuffmanBand::fetch_line(int64_t line) {
    if (line_number_ == line)
        return true;
    line_number_ = -1;
    const uint8_t *codes = nullptr;
    int64_t length = 0;
    if (!records_.fetch(first_record_ + line, &codes, &length))
        return false;
    // An empty record is a line that is not there.
    bytes_held_ = length == 0 ? 0 : OalHFDDecodeLine(codes, line_.data(), length, std::ssize(line_), tree_.get());
    line_number_ = line;
    return true;
}

int64_t HuffmanBand::samples_held() const {
    const int64_t bytes = std::max<int64_t>(bytes_held_ - image_.line_prefix_bytes, 0);
    return std::min(bytes / stored_size(), image_.line_samples);
}

bool HuffmanBand::read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) {
    for (int64_t line = 0; line < rectangle.lines; ++line) {
        if (!fetch_line(rectangle.line + line))
            return false;
        const int64_t held = std::clamp<int64_t>(samples_held() - rectangle.sample, 0, rectangle.samples);
        const uint8_t *stored = line_.data() + image_.line_prefix_bytes + rectangle.sample * stored_size();
        OalConvertRun(&plan_.item, stored, out + line * rectangle.samples * sample_size(),
                      held * plan_.items_per_sample);
        if (held < rectangle.samples && missing->bytes_wanted == 0)
            *missing = {(line * rectangle.samples + held) * stored_size(), rectangle.area() * stored_size(),
                        rectangle.line + line, rectangle.sample + held};
    }
    return true;
}

// The extent was checked before: no number is too large.
bool fits_record(const OaImageKeywords &image) {
    return image.line_prefix_bytes + image.line_samples * (image.sample_bits / 8) + image.line_suffix_bytes <=
           most_decoded_bytes;
}

HFDTreePtr read_tree(const char *routine, const ObjDesc *image_node) {
    const ObjDesc *node = OaFindEncodingHistogram(image_node);
    if (!node) {
        OaReportFailure(530, "%s: couldn't find encoding histogram for HFD compressed image.", routine);
        return nullptr;
    }
    const OaObjectPtr histogram(OaReadHistogram(node));
    uint32_t frequencies[hfd_frequencies];
    if (!histogram || histogram->size < static_cast<int64_t>(sizeof frequencies)) {
        OaReportFailure(oa_errno ? oa_errno : 700, "%s: couldn't read encoding histogram for HFD compressed image.",
                        routine);
        return nullptr;
    }
    memcpy(frequencies, histogram->data, sizeof frequencies);
    HFDTreePtr tree(OalCreateHFDTree(frequencies));
    if (!tree)
        OaReportFailure(530, "%s: OalCreateHFDTree returned NULL.", routine);
    return tree;
}

}  // namespace

std::unique_ptr<ImageBand> open_huffman_band(const char *routine, const ObjDesc *image_node,
                                             const OaImageKeywords &image) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0 || !check_image_storage(routine, image, file))
        return nullptr;
    HFDTreePtr tree = read_tree(routine, image_node);
    SamplePlan plan;
    if (!tree || !make_sample_plan(routine, image_node, image, file.interchange_format, &plan))
        return nullptr;
    if (plan.items_per_sample * plan.item.src.size != image.sample_bits / 8 || !fits_record(image)) {
        OaReportFailure(710, "%s: SDT source size is not equal to size of HFD decompressed line buffer.", routine);
        return nullptr;
    }
    OaStreamPtr stream(OalOpenStream(file.file_name.c_str(), OA_VARIABLE_LENGTH, file.record_bytes, 0, "r"));
    if (!stream) {
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
        return nullptr;
    }
    if (OalSeek(stream.get(), file.start) != 0) {
        OaReportFailure(oa_errno, "%s: OalSeek returned error, aborting.", routine);
        return nullptr;
    }
    return std::make_unique<HuffmanBand>(image, std::move(plan), std::move(tree), file.start,
                                         Records(routine, std::move(stream)));
}
