// GIF images, which are decoded whole.
#include "oa/gif.h"
#include "oa/image_band.h"

OaObject *read_gif_image(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0 || !check_image_storage(routine, image, file))
        return nullptr;
    if (image.sample_bits != 8) {
        OaReportFailure(520, "%s: GIF images do not have %lld SAMPLE_BITS.", routine,
                        static_cast<long long>(image.sample_bits));
        return nullptr;
    }
    return OalReadImageFromGif(file.file_name.c_str(), file.start, image.lines, image.line_samples, image_node);
}
