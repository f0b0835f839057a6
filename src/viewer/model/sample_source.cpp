#include "viewer/model/sample_source.h"

#include "viewer/model/jpeg2000_source.h"

#include <cstring>

namespace {

struct ImageCloser {
    void operator()(OaObject *handle) const { OaCloseImage(handle); }
};
using ImageHandle = std::unique_ptr<OaObject, ImageCloser>;

// These encodings are decoded whole or not at all.
bool is_decoded_whole(OaImageEncoding encoding) {
    return encoding == OA_CLEMENTINE_JPEG || encoding == OA_GIF_ENCODING;
}

class PlainImageSource : public SampleSource {
  public:
    PlainImageSource(const ObjDesc *image, int64_t band) : image_(image), band_(band) {}

    std::string describe(ImageDescription *description) override;
    OaObjectPtr read_block(const SampleBlock &block) override;
    std::string value_text(int64_t, int64_t, bool) override { return ""; }
    bool click(int64_t, int64_t) override { return false; }

  private:
    bool check_image();
    OaObjectPtr read_rectangle(const SampleBlock &block);
    OaObjectPtr read_part_of_whole(const SampleBlock &block);
    bool holds(const OaObject &object, int64_t lines, int64_t line_samples) const;

    const ObjDesc *image_;
    int64_t band_;
    OaImageKeywords keywords_;
    bool checked_ = false;
    ImageHandle handle_;  // opened with the first part that is read, so that blocks in order are decoded once
    OaObjectPtr whole_;   // of an image that is decoded whole, once a second part was read
    bool part_was_read_ = false;
};

// The rectangle of an image that lies in memory.
OaObjectPtr cut_out(const OaObject &whole, int64_t line_samples, const SampleBlock &block, int64_t sample_bytes) {
    const int64_t row_bytes = block.samples() * sample_bytes;
    const int64_t size = block.lines() * row_bytes;
    OaPtr<char> data(static_cast<char *>(OaMalloc(static_cast<size_t>(size))));
    if (!data) {
        OaReportFailure(720, "%s: no memory for %lld bytes of samples.", __func__, static_cast<long long>(size));
        return nullptr;
    }
    const auto *first = static_cast<const char *>(whole.data) +
                        ((block.first_line - 1) * line_samples + block.first_sample - 1) * sample_bytes;
    for (int64_t row = 0; row < block.lines(); ++row)
        memcpy(data.get() + row * row_bytes, first + row * line_samples * sample_bytes, static_cast<size_t>(row_bytes));

    OdlTree label(OaCopyTree(whole.odl, OA_COPY_LABEL));
    if (!label)
        return nullptr;
    OaLongtoKwdValue("LINES", label.get(), block.lines());
    OaLongtoKwdValue("LINE_SAMPLES", label.get(), block.samples());
    OaLongtoKwdValue("FIRST_LINE", label.get(), block.first_line);
    OaLongtoKwdValue("FIRST_SAMPLE", label.get(), block.first_sample);
    return OaObjectPtr(OaNewOaObject(label.release(), data.release(), size));
}

std::string PlainImageSource::describe(ImageDescription *description) {
    std::string error = describe_image(image_, description);
    if (!error.empty())
        return error;
    if (!check_image())
        return error_string;
    description->sample_bits = keywords_.sample_bits;
    return "";
}

// What the label claims, checked against the file before anything is allocated for it.
bool PlainImageSource::check_image() {
    if (checked_)
        return true;
    OaFileKeywords file;
    if (OaGetImageKeywords(image_, &keywords_) != 0 || OaGetFileKeywords(image_, &file) != 0 ||
        OaCheckImageExtent(keywords_, file) != 0)
        return false;
    if (keywords_.encoding == OA_PREVIOUS_PIXEL)
        keywords_.sample_bits = 16;  // the encoding knows no other size
    checked_ = true;
    return true;
}

OaObjectPtr PlainImageSource::read_block(const SampleBlock &block) {
    if (!check_image())
        return nullptr;
    if (block.first_line < 1 || block.last_line < block.first_line || block.last_line > keywords_.lines ||
        block.first_sample < 1 || block.last_sample < block.first_sample ||
        block.last_sample > keywords_.line_samples) {
        OaReportFailure(502, "%s: lines %lld to %lld, samples %lld to %lld are not in the image.", __func__,
                        static_cast<long long>(block.first_line), static_cast<long long>(block.last_line),
                        static_cast<long long>(block.first_sample), static_cast<long long>(block.last_sample));
        return nullptr;
    }
    OaObjectPtr samples = read_rectangle(block);
    if (samples && !holds(*samples, block.lines(), block.samples()))
        return nullptr;
    return samples;
}

OaObjectPtr PlainImageSource::read_rectangle(const SampleBlock &block) {
    if (block == SampleBlock{1, keywords_.lines, 1, keywords_.line_samples})
        return OaObjectPtr(OaReadImage(image_, band_));
    if (is_decoded_whole(keywords_.encoding))
        return read_part_of_whole(block);
    if (!handle_)
        handle_.reset(OaOpenImage(image_, band_));
    if (!handle_)
        return nullptr;
    return OaObjectPtr(
        OaReadPartialImage(handle_.get(), block.first_line, block.last_line, block.first_sample, block.last_sample));
}

// Who reads one part need not hold the whole; who reads a second will read more.
OaObjectPtr PlainImageSource::read_part_of_whole(const SampleBlock &block) {
    OaObjectPtr decoded(whole_ ? nullptr : OaReadImage(image_, band_));
    const OaObject *image = whole_ ? whole_.get() : decoded.get();
    if (!image || !holds(*image, keywords_.lines, keywords_.line_samples))
        return nullptr;
    OaObjectPtr part = cut_out(*image, keywords_.line_samples, block, keywords_.sample_bits / 8);
    if (part_was_read_ && !whole_)
        whole_ = std::move(decoded);
    part_was_read_ = true;
    return part;
}

// Samples whose native form has another size than the label says (ASCII numbers) cannot be shown; what a decoder left
// short must not be read past its end.
bool PlainImageSource::holds(const OaObject &object, int64_t lines, int64_t line_samples) const {
    const int64_t needed = lines * line_samples * (keywords_.sample_bits / 8);
    int64_t bits = keywords_.sample_bits;
    OaKwdValuetoLong("SAMPLE_BITS", object.odl, &bits);
    if (object.data && bits == keywords_.sample_bits && object.size >= needed)
        return true;
    OaReportFailure(502, "%s: %lld bytes of %lld-bit samples came where %lld bytes of %lld-bit samples were expected.",
                    __func__, static_cast<long long>(object.size), static_cast<long long>(bits),
                    static_cast<long long>(needed), static_cast<long long>(keywords_.sample_bits));
    return false;
}

}  // namespace

std::unique_ptr<SampleSource> image_band_source(const ObjDesc *image, int64_t band) {
    if (OaIsJpeg2000Image(image))
        return jpeg2000_source(image, band, OA_IMAGE_SIZE);
    return std::make_unique<PlainImageSource>(image, band);
}
