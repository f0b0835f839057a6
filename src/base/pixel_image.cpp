#include "base/pixel_image.h"

std::unique_ptr<PixelImage> util_new_pixel_image(int width, int height, int bytes_per_pixel) {
    if (width < 0 || height < 0 || (bytes_per_pixel != 1 && bytes_per_pixel != 4))
        return nullptr;
    size_t size = 0;
    if (__builtin_mul_overflow(static_cast<size_t>(width), static_cast<size_t>(height), &size) ||
        __builtin_mul_overflow(size, static_cast<size_t>(bytes_per_pixel), &size))
        return nullptr;
    auto image = std::make_unique<PixelImage>();
    image->width = width;
    image->height = height;
    image->bytes_per_pixel = bytes_per_pixel;
    image->pixels.reset(static_cast<uint8_t *>(OaZeroedMalloc(size)));
    return image->pixels ? std::move(image) : nullptr;
}

uint8_t util_pixel_level(const PixelImage &image, int64_t column, int64_t row) {
    return image.pixels.get()[(row * image.width + column) * image.bytes_per_pixel];
}

Colour util_pixel_colour(const PixelImage &image, int64_t column, int64_t row) {
    if (image.bytes_per_pixel == 1)
        return image.colours[util_pixel_level(image, column, row)];
    const uint8_t *pixel = image.pixels.get() + (row * image.width + column) * image.bytes_per_pixel;
    return {pixel[2], pixel[1], pixel[0]};
}

ColourTable util_grey_colours() {
    ColourTable colours;
    for (size_t i = 0; i < colours.size(); ++i)
        colours[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(i), static_cast<uint8_t>(i)};
    return colours;
}
