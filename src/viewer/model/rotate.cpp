#include "viewer/model/rotate.h"

#include "base/text.h"
#include "viewer/model/vectorise.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

struct DirectionPair {
    std::string_view line_direction;
    std::string_view sample_direction;
    Orientation orientation;
};
constexpr DirectionPair direction_pairs[] = {
    {"DOWN", "RIGHT", Orientation::None},
    {"LEFT", "DOWN", Orientation::Rotate90},
    {"LEFT", "UP", Orientation::Rotate90Mirror},
    {"UP", "LEFT", Orientation::Rotate180},
    {"UP", "RIGHT", Orientation::Rotate180Mirror},
    {"RIGHT", "UP", Orientation::Rotate270},
    {"RIGHT", "DOWN", Orientation::Rotate270Mirror},
    {"DOWN", "LEFT", Orientation::MirrorLeftRight},
};

// What line and sample change by from one pixel of the turned image to the next.
struct Steps {
    int line_per_row;
    int line_per_column;
    int sample_per_row;
    int sample_per_column;
};
constexpr Steps steps_of(Orientation orientation) {
    switch (orientation) {
        case Orientation::Rotate90:
            return {0, -1, 1, 0};
        case Orientation::Rotate90Mirror:
            return {0, -1, -1, 0};
        case Orientation::Rotate180:
            return {-1, 0, 0, -1};
        case Orientation::Rotate180Mirror:
            return {-1, 0, 0, 1};
        case Orientation::Rotate270:
            return {0, 1, -1, 0};
        case Orientation::Rotate270Mirror:
            return {0, 1, 1, 0};
        case Orientation::MirrorLeftRight:
            return {1, 0, 0, -1};
        case Orientation::None:
        case Orientation::Undetermined:
            break;
    }
    return {1, 0, 0, 1};
}

constexpr int block_side = 32;  // two blocks of four-byte pixels fit in the first-level cache

// Lines become columns. Block after block, so that neither the rows read nor the rows written leave the cache.
template <typename Pixel>
void transpose(const PixelImage &image, bool from_last_line, bool from_last_sample, PixelImage *turned) {
    const int64_t height = image.height;
    const int64_t width = image.width;
    const auto *source = reinterpret_cast<const Pixel *>(image.pixels.get());
    auto *target = reinterpret_cast<Pixel *>(turned->pixels.get());
    for (int64_t top = 0; top < width; top += block_side) {
        const int64_t bottom = std::min(top + block_side, width);
        for (int64_t left = 0; left < height; left += block_side) {
            const int64_t right = std::min(left + block_side, height);
            for (int64_t row = top; row < bottom; ++row) {
                const Pixel *sample = source + (from_last_sample ? width - 1 - row : row);
                Pixel *pixel = target + row * height;
                for (int64_t column = left; column < right; ++column)
                    pixel[column] = sample[(from_last_line ? height - 1 - column : column) * width];
            }
        }
    }
}

template <typename Pixel>
void reverse(const Pixel *line, int64_t width, Pixel *reversed) {
    run_vectorised([=]() __attribute__((always_inline)) {
        for (int64_t i = 0; i < width; ++i)
            reversed[i] = line[width - 1 - i];
    });
}

// Lines stay rows.
template <typename Pixel>
void mirror(const PixelImage &image, bool from_last_line, bool from_last_sample, PixelImage *turned) {
    const int64_t height = image.height;
    const int64_t width = image.width;
    for (int64_t row = 0; row < height; ++row) {
        const auto *line =
            reinterpret_cast<const Pixel *>(image.pixels.get()) + (from_last_line ? height - 1 - row : row) * width;
        auto *pixels = reinterpret_cast<Pixel *>(turned->pixels.get()) + row * width;
        if (from_last_sample)
            reverse(line, width, pixels);
        else
            memcpy(pixels, line, static_cast<size_t>(width) * sizeof(Pixel));
    }
}

// An image of the same kind in which lines and samples advance by these steps.
std::unique_ptr<PixelImage> turned_image(const PixelImage &image, Steps steps) {
    const bool lines_are_columns = steps.line_per_row == 0;
    auto turned = lines_are_columns ? util_new_pixel_image(image.height, image.width, image.bytes_per_pixel)
                                    : util_new_pixel_image(image.width, image.height, image.bytes_per_pixel);
    if (!turned)
        return nullptr;
    turned->colours = image.colours;
    const bool from_last_line = steps.line_per_row + steps.line_per_column < 0;
    const bool from_last_sample = steps.sample_per_row + steps.sample_per_column < 0;
    const auto turn = image.bytes_per_pixel == 1 ? (lines_are_columns ? transpose<uint8_t> : mirror<uint8_t>)
                                                 : (lines_are_columns ? transpose<uint32_t> : mirror<uint32_t>);
    turn(image, from_last_line, from_last_sample, turned.get());
    return turned;
}

std::unique_ptr<PixelImage> turned_image(const PixelImage &image, Orientation orientation) {
    return turned_image(image, steps_of(orientation));
}

Orientation orientation_of(const ImageDescription &description) {
    return image_orientation(description.line_display_direction, description.sample_display_direction);
}

}  // namespace

Orientation image_orientation(const std::string &line_direction, const std::string &sample_direction) {
    for (const DirectionPair &pair : direction_pairs) {
        if (pair.line_direction == line_direction && pair.sample_direction == sample_direction)
            return pair.orientation;
    }
    return Orientation::Undetermined;
}

bool is_90_deg(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate90;
}
bool is_90_deg_invert(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate90Mirror;
}
bool is_180_deg(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate180;
}
bool is_180_deg_invert(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate180Mirror;
}
bool is_270_deg(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate270;
}
bool is_270_deg_invert(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::Rotate270Mirror;
}
bool is_invert(const std::string &line_direction, const std::string &sample_direction) {
    return image_orientation(line_direction, sample_direction) == Orientation::MirrorLeftRight;
}

std::unique_ptr<PixelImage> rotate_image_90(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate90);
}
std::unique_ptr<PixelImage> rotate_image_180(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate180);
}
std::unique_ptr<PixelImage> rotate_image_270(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate270);
}
std::unique_ptr<PixelImage> rotate_invert_image_90(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate90Mirror);
}
std::unique_ptr<PixelImage> rotate_invert_image_180(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate180Mirror);
}
std::unique_ptr<PixelImage> rotate_invert_image_270(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate270Mirror);
}
std::unique_ptr<PixelImage> invert_image_horizontal(const PixelImage &image) {
    return turned_image(image, Orientation::MirrorLeftRight);
}
std::unique_ptr<PixelImage> invert_image_vertical(const PixelImage &image) {
    return turned_image(image, Orientation::Rotate180Mirror);  // a half turn mirrored left to right is just that
}

std::vector<std::string> orientation_errors(const std::string &line_direction, const std::string &sample_direction) {
    std::vector<std::string> errors;
    if (image_orientation(line_direction, sample_direction) != Orientation::Undetermined)
        return errors;
    if (line_direction.empty())
        errors.push_back("LINE_DISPLAY_DIRECTION statement is missing");
    if (sample_direction.empty())
        errors.push_back("SAMPLE_DISPLAY_DIRECTION statement is missing");
    if (errors.empty())
        errors.push_back(
            util_format("Cannot determine orientation from LINE_DISPLAY_DIRECTION = %s and "
                        "SAMPLE_DISPLAY_DIRECTION = %s",
                        line_direction.c_str(), sample_direction.c_str()));
    errors.push_back("Image orientation will not be changed");
    return errors;
}

RotatedImage rotate_image(const PixelImage &image, const std::string &line_direction,
                          const std::string &sample_direction) {
    RotatedImage result;
    const bool lines_down = line_direction.empty() || line_direction == "DOWN";
    const bool samples_right = sample_direction.empty() || sample_direction == "RIGHT";
    if (lines_down && samples_right)
        return result;
    result.errors = orientation_errors(line_direction, sample_direction);
    if (!result.errors.empty())
        return result;
    result.image = turned_image(image, image_orientation(line_direction, sample_direction));
    result.out_of_memory = !result.image;
    return result;
}

ImagePosition get_image_origin(const ImageDescription &description) {
    const Steps steps = steps_of(orientation_of(description));
    const SampleBlock &block = description.block;
    return {steps.line_per_row + steps.line_per_column < 0 ? block.last_line : block.first_line,
            steps.sample_per_row + steps.sample_per_column < 0 ? block.last_sample : block.first_sample};
}

ImagePosition image_position_at(const ImageDescription &description, int64_t column, int64_t row) {
    const Steps steps = steps_of(orientation_of(description));
    const ImagePosition origin = get_image_origin(description);
    return {origin.line + steps.line_per_row * row + steps.line_per_column * column,
            origin.sample + steps.sample_per_row * row + steps.sample_per_column * column};
}
