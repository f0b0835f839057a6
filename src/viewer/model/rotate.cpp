#include "viewer/model/rotate.h"

#include "base/share.h"
#include "base/text.h"
#include "base/transpose.h"
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

// Lines become columns, in blocks whose rows, read and written, stay in the second-level cache and in the reach of the
// address translation buffers.
constexpr int64_t block_row_bytes = 512;

int64_t bytes_of(const PixelImage &image) {
    return int64_t{image.height} * image.width * image.bytes_per_pixel;
}

template <typename Pixel>
void transpose(const PixelImage &image, bool from_last_line, bool from_last_sample, PixelImage *turned) {
    constexpr int64_t block_side = block_row_bytes / int64_t{sizeof(Pixel)};
    const int64_t height = image.height;
    const int64_t width = image.width;
    if (height == 0 || width == 0)
        return;
    const int64_t line_bytes = width * int64_t{sizeof(Pixel)};
    const int64_t row_bytes = height * int64_t{sizeof(Pixel)};
    UtilTransposition<Pixel> turn = {image.pixels.get(), line_bytes, turned->pixels.get(), row_bytes};
    if (from_last_line) {
        turn.source += (height - 1) * line_bytes;
        turn.source_stride = -line_bytes;
    }
    if (from_last_sample) {
        turn.target += (width - 1) * row_bytes;
        turn.target_stride = -row_bytes;
    }
    util_share(width, bytes_of(image), [=](int64_t first_sample, int64_t last_sample) {
        for (int64_t sample = first_sample; sample < last_sample; sample += block_side) {
            for (int64_t line = 0; line < height; line += block_side)
                turn.turn(line, std::min(line + block_side, height), sample,
                          std::min(sample + block_side, last_sample));
        }
    });
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
    const auto *source = reinterpret_cast<const Pixel *>(image.pixels.get());
    auto *target = reinterpret_cast<Pixel *>(turned->pixels.get());
    util_share(height, bytes_of(image), [=](int64_t first_row, int64_t last_row) {
        for (int64_t row = first_row; row < last_row; ++row) {
            const Pixel *line = source + (from_last_line ? height - 1 - row : row) * width;
            if (from_last_sample)
                reverse(line, width, target + row * width);
            else
                memcpy(target + row * width, line, static_cast<size_t>(width) * sizeof(Pixel));
        }
    });
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
