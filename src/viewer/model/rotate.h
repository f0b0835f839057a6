// Turning and mirroring a display image as its label directs, and finding lines and samples in the turned image.
#pragma once

#include "viewer/model/image_description.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// How the display image lies to the storage order. "Mirror" follows the turn: top to bottom for 90 and 270, left to
// right for 180.
enum class Orientation {
    None,
    Rotate90,
    Rotate90Mirror,
    Rotate180,
    Rotate180Mirror,
    Rotate270,
    Rotate270Mirror,
    MirrorLeftRight,
    Undetermined,  // the directions make no orientation: shown as None
};
Orientation image_orientation(const std::string &line_direction, const std::string &sample_direction);

// The predicates of the single orientations.
bool is_90_deg(const std::string &line_direction, const std::string &sample_direction);
bool is_90_deg_invert(const std::string &line_direction, const std::string &sample_direction);
bool is_180_deg(const std::string &line_direction, const std::string &sample_direction);
bool is_180_deg_invert(const std::string &line_direction, const std::string &sample_direction);
bool is_270_deg(const std::string &line_direction, const std::string &sample_direction);
bool is_270_deg_invert(const std::string &line_direction, const std::string &sample_direction);
bool is_invert(const std::string &line_direction, const std::string &sample_direction);

// Each returns a new image of the same pixel format (1 or 4 bytes) and colours, or null when memory is out.
std::unique_ptr<PixelImage> rotate_image_90(const PixelImage &image);
std::unique_ptr<PixelImage> rotate_image_180(const PixelImage &image);
std::unique_ptr<PixelImage> rotate_image_270(const PixelImage &image);
std::unique_ptr<PixelImage> rotate_invert_image_90(const PixelImage &image);
std::unique_ptr<PixelImage> rotate_invert_image_180(const PixelImage &image);
std::unique_ptr<PixelImage> rotate_invert_image_270(const PixelImage &image);
std::unique_ptr<PixelImage> invert_image_horizontal(const PixelImage &image);  // left to right
std::unique_ptr<PixelImage> invert_image_vertical(const PixelImage &image);    // top to bottom

struct RotatedImage {
    std::unique_ptr<PixelImage> image;  // null when nothing was changed
    std::vector<std::string> errors;    // to show, in order
    bool out_of_memory = false;
};
// What is to be told of directions that make no orientation, in order; empty when they do.
std::vector<std::string> orientation_errors(const std::string &line_direction, const std::string &sample_direction);

RotatedImage rotate_image(const PixelImage &image, const std::string &line_direction,
                          const std::string &sample_direction);

struct ImagePosition {
    int64_t line = 0;
    int64_t sample = 0;

    bool operator==(const ImagePosition &) const = default;
};
// Line and sample that the top-left pixel of the turned display image shows.
ImagePosition get_image_origin(const ImageDescription &description);
// Line and sample at a pixel of the turned display image (0-based column and row).
ImagePosition image_position_at(const ImageDescription &description, int64_t column, int64_t row);
