#include "oa/image_band.h"

#include "base/notice.h"
#include "base/text.h"
#include "oa/binrep.h"

bool read_image_keywords(const char *routine, const ObjDesc *image_node, int64_t *band, OaImageKeywords *image) {
    if (OaCheckODLTree(image_node) != 0) {
        OaReportFailure(501, "%s: the image's label tree is missing or broken.", routine);
        return false;
    }
    if (OaGetImageKeywords(image_node, image) != 0)
        return false;
    if (image->bands < 2) {
        *band = 1;
    } else if (*band < 1 || *band > image->bands) {
        OaReportFailure(520, "%s: out of range band value.", routine);
        return false;
    }
    return true;
}

std::unique_ptr<ImageBand> open_image_band(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                                           int64_t band) {
    switch (image.encoding) {
        case OA_NOT_ENCODED:
            return open_plain_band(routine, image_node, image, band);
        case OA_HUFFMAN:
            return open_huffman_band(routine, image_node, image);
        case OA_PREVIOUS_PIXEL:
            return open_previous_pixel_band(routine, image_node, image);
        default:
            OaReportFailure(520, "%s: unsupported compression type: %d.", routine, image.encoding);
            return nullptr;
    }
}

namespace {

// The message of a refusal, which the routine's name begins; null when all is well.
const char *storage_fault(const OaImageKeywords &image, const OaFileKeywords &file) {
    const bool by_records = file.record_type == OA_VARIABLE_LENGTH;
    const bool many_bands = image.bands > 1;
    if (file.stands_for_uncompressed)
        return ": the image is there in its JPEG 2000 form alone.";
    const bool has_surroundings = image.line_prefix_bytes > 0 || image.line_suffix_bytes > 0;
    if (image.encoding != OA_HUFFMAN && by_records)
        return " does not support variable-length record files  except for HFD compressed images.";
    if (image.encoding == OA_HUFFMAN && !by_records)
        return ": HFD compressed images are only supported in variable-length record files.";
    if ((image.encoding == OA_PREVIOUS_PIXEL || many_bands) && has_surroundings)
        return ": LINE_PREFIX_BYTES and LINE_SUFFIX_BYTES are not supported for multiband or Previous Pixel compressed "
               "images.";
    if (image.encoding != OA_NOT_ENCODED && many_bands)
        return " Compressed multi-band images not supported!";
    return nullptr;
}

}  // namespace

bool check_image_storage(const char *routine, const OaImageKeywords &image, const OaFileKeywords &file) {
    if (const char *fault = storage_fault(image, file)) {
        OaReportFailure(520, "%s%s", routine, fault);
        return false;
    }
    return OaCheckImageExtent(image, file) == 0;
}

OaObject *read_image_object(const char *routine, ImageBand *band, const SampleRectangle &rectangle,
                            OaPtr<uint8_t> buffer, OdlTree label) {
    ShortRead missing;
    OalResetBinrepErrors();
    if (!band->read(rectangle, buffer.get(), &missing))
        return nullptr;
    OalReportBinrepErrors(routine);
    band->tell_short_read(missing);
    return OaNewOaObject(label.release(), buffer.release(), rectangle.area() * band->sample_size());
}

void ImageBand::tell_short_read(const ShortRead &missing) {
    if (missing.bytes_read == missing.bytes_wanted || told_short_)
        return;
    told_short_ = true;
    util_notice(NoticeKind::Error,
                util_format("Bytes read: %lld.\nBytes attempted to be read: %lld\nline = %lld, sample = %lld",
                            static_cast<long long>(missing.bytes_read), static_cast<long long>(missing.bytes_wanted),
                            static_cast<long long>(missing.line) + 1, static_cast<long long>(missing.sample) + 1));
}
