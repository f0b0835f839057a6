// Whole images.
#include "oa/image_band.h"

OaObject *OaReadImage(const ObjDesc *image_node, int64_t band) {
    OaImageKeywords image;
    if (!read_image_keywords(__func__, image_node, &band, &image))
        return nullptr;
    if (image.encoding == OA_CLEMENTINE_JPEG)
        return read_clementine_image(__func__, image_node, image);
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
