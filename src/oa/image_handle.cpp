// Open images, which serve any rectangle of one band.
#include "oa/image_band.h"

#include <cstring>

namespace {

struct ImageHandle {
    std::unique_ptr<ImageBand> band;
    OaPtr<uint8_t> line_buffer;  // native samples of line_held, once a line was asked for
    int64_t line_held = 0;       // from 1
};

ImageHandle *handle_of(const OaObject *object) {
    return static_cast<ImageHandle *>(object->appl1);
}

bool fetch_line(const char *routine, ImageHandle *handle, int64_t line) {
    if (handle->line_held == line)
        return true;
    ImageBand &band = *handle->band;
    const auto bytes = static_cast<size_t>(band.line_samples() * band.sample_size());
    if (handle->line_buffer)
        memset(handle->line_buffer.get(), 0, bytes);
    else
        handle->line_buffer.reset(static_cast<uint8_t *>(OaZeroedMalloc(bytes)));
    if (!handle->line_buffer)
        OaFatal(720, "%s: OaMalloc failed to allocate space for image_handle->buf. Out of memory!", routine);
    handle->line_held = 0;
    ShortRead missing;
    if (!band.read({line - 1, 1, 0, band.line_samples()}, handle->line_buffer.get(), &missing))
        return false;
    band.tell_short_read(missing);
    handle->line_held = line;
    return true;
}

void describe_part(ObjDesc *label, const SampleRectangle &part) {
    OaLongtoKwdValue("LINES", label, part.lines);
    OaLongtoKwdValue("LINE_SAMPLES", label, part.samples);
    OaLongtoKwdValue("FIRST_LINE", label, part.line + 1);
    OaLongtoKwdValue("FIRST_SAMPLE", label, part.sample + 1);
}

}  // namespace

OaObject *OaOpenImage(const ObjDesc *image_node, int64_t band) {
    OaImageKeywords image;
    if (!read_image_keywords(__func__, image_node, &band, &image))
        return nullptr;
    auto handle = std::make_unique<ImageHandle>();
    handle->band = open_image_band(__func__, image_node, image, band);
    if (!handle->band)
        return nullptr;
    OdlTree label(OaCopyTree(handle->band->label(), OA_COPY_LABEL));
    describe_part(label.get(), {0, 1, 0, 0});
    OaLongtoKwdValue("SOURCE_LINES", label.get(), handle->band->lines());
    OaLongtoKwdValue("SOURCE_LINE_SAMPLES", label.get(), handle->band->line_samples());
    OaObject *object = OaNewOaObject(label.release(), nullptr, 0);
    object->owns_data = false;  // the handle's line buffer
    object->appl1 = handle.release();
    return object;
}

int64_t OaReadImagePixels(OaObject *handle_object, int64_t line, int64_t sample) {
    if (!handle_object) {
        OaReportFailure(501, "%s: input image_handle_object is NULL.", __func__);
        return 0;
    }
    ImageHandle *handle = handle_of(handle_object);
    if (!handle) {
        OaReportFailure(501, "%s: input image_handle_object must have an image_handle structure attached via appl1.",
                        __func__);
        return 0;
    }
    const ImageBand &band = *handle->band;
    if (line < 1 || line > band.lines() || sample < 1 || sample > band.line_samples()) {
        OaReportFailure(502, "%s: invalid start_line or start_sample.", __func__);
        return 0;
    }
    if (!fetch_line(__func__, handle, line))
        return 0;
    const int64_t samples = band.line_samples() - sample + 1;
    handle_object->data = handle->line_buffer.get() + (sample - 1) * band.sample_size();
    handle_object->size = samples * band.sample_size();
    describe_part(handle_object->odl, {line - 1, 1, sample - 1, samples});
    return samples;
}

OaObject *OaReadPartialImage(OaObject *handle_object, int64_t start_line, int64_t stop_line, int64_t start_sample,
                             int64_t stop_sample) {
    if (!handle_object) {
        OaReportFailure(501, "%s: input image_handle_object is NULL.", __func__);
        return nullptr;
    }
    ImageHandle *handle = handle_of(handle_object);
    if (!handle) {
        OaReportFailure(501,
                        "%s: input image_handle_object must have image_handle attached to appl1, as\nreturned by "
                        "OaOpenImage.",
                        __func__);
        return nullptr;
    }
    ImageBand &band = *handle->band;
    if (start_line < 1 || stop_line < start_line || stop_line > band.lines() || start_sample < 1 ||
        stop_sample < start_sample || stop_sample > band.line_samples()) {
        OaReportFailure(502,
                        "%s: invalid inputs.start_line = %lld, stop_line = %lld\nstart_sample = %lld, stop_sample = "
                        "%lld",
                        __func__, static_cast<long long>(start_line), static_cast<long long>(stop_line),
                        static_cast<long long>(start_sample), static_cast<long long>(stop_sample));
        return nullptr;
    }
    const SampleRectangle part = {start_line - 1, stop_line - start_line + 1, start_sample - 1,
                                  stop_sample - start_sample + 1};
    const int64_t bytes = part.area() * band.sample_size();
    OaPtr<uint8_t> buffer(static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(bytes))));
    if (!buffer) {
        OaReportFailure(720, "%s: OaMalloc failed to allocate %lld bytes for output image.", __func__,
                        static_cast<long long>(bytes));
        return nullptr;
    }
    OdlTree label(OaCopyTree(handle_object->odl, OA_COPY_LABEL));
    describe_part(label.get(), part);
    return read_image_object(__func__, &band, part, std::move(buffer), std::move(label));
}

OaObject *OaCloseImage(OaObject *handle_object) {
    if (handle_object)
        delete handle_of(handle_object);
    return OaDeleteObject(handle_object);
}
