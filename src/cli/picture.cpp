#include "cli/picture.h"

#include "base/notice.h"
#include "base/text.h"
#include "cli/png_writer.h"
#include "viewer/model/rotate.h"
#include "viewer/model/stretch.h"

#include <cstring>
#include <vector>

namespace {

constexpr int64_t largest_side = INT32_MAX;           // of a PNG file
constexpr int64_t largest_turned = int64_t{1} << 30;  // pixels of a picture that is turned, which is done in memory

// The display bytes of one strip; null when it cannot be read.
const uint8_t *display_of_strip(ImagePart *part, int64_t index, const ImageDescription &description,
                                std::vector<uint8_t> *display) {
    const OaObject *samples = part->read(index);
    if (!samples)
        return nullptr;
    if (description.sample_bits == 8 && !description.qube_item)
        return static_cast<const uint8_t *>(samples->data);
    const SampleBlock strip = part->strip(index);
    const int64_t count = strip.lines() * strip.samples();
    display->resize(static_cast<size_t>(count));
    map_samples(samples->data, description, count, display->data());
    return display->data();
}

bool write_rows(PngWriter *png, const uint8_t *pixels, int64_t rows, int64_t width) {
    for (int64_t row = 0; row < rows; ++row) {
        if (!png->write_row(pixels + row * width))
            return false;
    }
    return true;
}

std::string write_rows_as_read(ImagePart *part, const ImageDescription &description, FILE *file) {
    const SampleBlock &block = part->block();
    if (block.lines() > largest_side || block.samples() > largest_side)
        return util_format("a PNG file has at most %lld rows and columns", static_cast<long long>(largest_side));
    PngWriter png;
    if (!png.start(file, static_cast<uint32_t>(block.samples()), static_cast<uint32_t>(block.lines())))
        return png.error();
    std::vector<uint8_t> display;
    for (int64_t i = 0; i < part->strip_count(); ++i) {
        const uint8_t *pixels = display_of_strip(part, i, description, &display);
        if (!pixels)
            return read_failure;
        if (!write_rows(&png, pixels, part->strip(i).lines(), block.samples()))
            return png.error();
    }
    return png.finish() ? "" : png.error();
}

std::string write_turned(ImagePart *part, const ImageDescription &description, FILE *file) {
    const SampleBlock &block = part->block();
    if (block.lines() > largest_turned / block.samples())
        return util_format(
            "the label directs the picture to be turned, which is done for at most %lld pixels; choose "
            "fewer lines or samples",
            static_cast<long long>(largest_turned));
    auto image = util_new_pixel_image(static_cast<int>(block.samples()), static_cast<int>(block.lines()), 1);
    std::vector<uint8_t> display;
    for (int64_t i = 0; image && i < part->strip_count(); ++i) {
        const uint8_t *pixels = display_of_strip(part, i, description, &display);
        if (!pixels)
            return read_failure;
        const SampleBlock strip = part->strip(i);
        memcpy(image->pixels.get() + (strip.first_line - block.first_line) * block.samples(), pixels,
               static_cast<size_t>(strip.lines() * block.samples()));
    }
    RotatedImage turned;
    if (image)
        turned = rotate_image(*image, description.line_display_direction, description.sample_display_direction);
    if (!turned.image)
        return "no memory to turn the picture";
    PngWriter png;
    if (!png.start(file, static_cast<uint32_t>(turned.image->width), static_cast<uint32_t>(turned.image->height)) ||
        !write_rows(&png, turned.image->pixels.get(), turned.image->height, turned.image->width) || !png.finish())
        return png.error();
    return "";
}

}  // namespace

std::string write_picture(ImagePart *part, const ImageDescription &description, FILE *file) {
    for (const std::string &error :
         orientation_errors(description.line_display_direction, description.sample_display_direction))
        util_notice(NoticeKind::Error, error);
    const Orientation orientation =
        image_orientation(description.line_display_direction, description.sample_display_direction);
    if (orientation == Orientation::None || orientation == Orientation::Undetermined)
        return write_rows_as_read(part, description, file);
    return write_turned(part, description, file);
}
