// Clementine JPEG images, which are decoded whole.
#include "decoders/clementine.h"
#include "oa/image_band.h"
#include "oa/sample_plan.h"
#include "oa/stream.h"

OaObject *read_clementine_image(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0 || !check_image_storage(routine, image, file))
        return nullptr;
    if (image.sample_bits != 8) {
        OaReportFailure(520, "%s: Clementine decompression software does not support %lld SAMPLE_BITS", routine,
                        static_cast<long long>(image.sample_bits));
        return nullptr;
    }
    const int64_t bytes = image.lines * image.line_samples;
    OaPtr<uint8_t> samples(static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(bytes))));
    if (!samples)
        OaFatal(720, "%s: OaMalloc failed to allocate %lld bytes for image! Out of memory!", routine,
                static_cast<long long>(bytes));
    const OaStreamPtr stream(OalOpenStream(file.file_name.c_str(), OA_UNDEFINED, 0, 0, "r"));
    if (!stream) {
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
        return nullptr;
    }
    if (OalSeek(stream.get(), file.start) != 0) {
        OaReportFailure(oa_errno, "%s: OalSeek returned error, aborting.", routine);
        return nullptr;
    }
    if (OalDecodeClementine(stream->file.get(), stream->file_name.c_str(), image.lines, image.line_samples,
                            samples.get()) != 0)
        return nullptr;
    OdlTree label(OaCopyTree(image_node, OA_COPY_LABEL));
    delete_keywords(label.get(), {"ENCODING_TYPE"});
    OaStrtoKwdValue("ENCODING_COMPRESSION_RATIO", label.get(), "1.00");
    return OaNewOaObject(label.release(), samples.release(), bytes);
}
