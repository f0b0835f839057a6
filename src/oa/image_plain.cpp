// Images whose samples stand in the file as they are, in any order of bands, lines and samples.
#include "oa/strided_reader.h"

namespace {

SampleLayout layout_of(const OaImageKeywords &image, int64_t start, int64_t band) {
    const int64_t sample_bytes = image.sample_bits / 8;
    const int64_t band_line = image.line_samples * sample_bytes;
    const OaBandStorage storage = image.bands > 1 ? image.band_storage : OA_BAND_SEQUENTIAL;
    switch (storage) {
        case OA_LINE_INTERLEAVED:
            return {start + (band - 1) * band_line, image.bands * band_line, sample_bytes, sample_bytes};
        case OA_SAMPLE_INTERLEAVED:
            return {start + (band - 1) * sample_bytes, image.bands * band_line, image.bands * sample_bytes,
                    sample_bytes};
        default:
            const int64_t line = image.line_prefix_bytes + band_line + image.line_suffix_bytes;
            return {start + (band - 1) * image.lines * line + image.line_prefix_bytes, line, sample_bytes,
                    sample_bytes};
    }
}

class PlainBand : public ImageBand {
  public:
    PlainBand(const char *routine, const OaImageKeywords &image, SamplePlan plan, const SampleLayout &layout,
              OaStreamPtr stream)
        : ImageBand(image, std::move(plan.label), plan.native_size()),
          layout_(layout),
          stream_(std::move(stream)),
          reader_(routine, std::move(plan), stream_.get()) {}

    bool read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) override {
        return reader_.read(layout_, rectangle, out, missing);
    }

  private:
    SampleLayout layout_;
    OaStreamPtr stream_;
    StridedReader reader_;
};

}  // namespace

std::unique_ptr<ImageBand> open_plain_band(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                                           int64_t band) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0 || !check_image_storage(routine, image, file))
        return nullptr;
    SamplePlan plan;
    if (!make_sample_plan(routine, image_node, image, file.interchange_format, &plan))
        return nullptr;
    OaStreamPtr stream = open_samples(routine, file.file_name);
    if (!stream)
        return nullptr;
    return std::make_unique<PlainBand>(routine, image, std::move(plan), layout_of(image, file.start, band),
                                       std::move(stream));
}
