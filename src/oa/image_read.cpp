// Whole images.
#include "oa/gif.h"
#include "oa/image_band.h"

namespace {

OaObject *read_gif_image(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image) {
    if (image.bands > 1) {
        OaReportFailure(520, "%s Compressed multi-band images not supported!", routine);
        return nullptr;
    }
    if (image.sample_bits != 8) {
        OaReportFailure(520, "%s: GIF images do not have %lld SAMPLE_BITS.", routine,
                        static_cast<long long>(image.sample_bits));
        return nullptr;
    }
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0)
        return nullptr;
    if (file.record_type == OA_VARIABLE_LENGTH) {
        OaReportFailure(520, "%s does not support variable-length record files  except for HFD compressed images.",
                        routine);
        return nullptr;
    }
    return OalReadImageFromGif(file.file_name.c_str(), file.start, image.lines, image.line_samples, image_node);
}

}  // namespace

OaObject *OaReadImage(const ObjDesc *image_node, int64_t band) {
    OaImageKeywords image;
    if (!read_image_keywords(__func__, image_node, &band, &image))
        return nullptr;
    if (image.encoding == OA_GIF_ENCODING)
        return read_gif_image(__func__, image_node, image);
    const std::unique_ptr<ImageBand> source = open_image_band(__func__, image_node, image, band);
    if (!source)
        return nullptr;
    const SampleRectangle whole = {0, source->lines(), 0, source->line_samples()};
    const int64_t bytes = whole.area() * source->sample_size();
    OaPtr<uint8_t> buffer(static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(bytes))));
    if (!buffer)
        OaFatal(720, "%s: OaMalloc failed to allocate %lld bytes for image! Out of memory!", __func__,
                static_cast<long long>(bytes));
    OdlTree label(OaCopyTree(source->label(), OA_COPY_LABEL));
    return read_image_object(__func__, source.get(), whole, std::move(buffer), std::move(label));
}
