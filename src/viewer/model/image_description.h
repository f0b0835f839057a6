// What an image window knows of its image, and which block of it is shown.
#pragma once

#include "base/pixel_image.h"
#include "oa/oa.h"
#include "oa/qube.h"

#include <cstdint>
#include <memory>
#include <string>

// Lines and samples shown: 1-based, inclusive; 0 while no block was chosen.
struct SampleBlock {
    int64_t first_line = 0;
    int64_t last_line = 0;
    int64_t first_sample = 0;
    int64_t last_sample = 0;

    int64_t lines() const { return last_line - first_line + 1; }
    int64_t samples() const { return last_sample - first_sample + 1; }
    bool operator==(const SampleBlock &) const = default;
};

struct ImageDescription {
    int64_t line_samples = 0;
    int64_t lines = 0;
    int64_t sample_bits = 0;  // 8, 16, 32 or 64
    int64_t minimum = -1;     // the label's MINIMUM and MAXIMUM; -1: to be computed from the samples shown
    int64_t maximum = -1;
    int64_t bands = 1;
    double real_minimum = 0;  // of reals without a range in the label, computed from the samples shown
    double real_maximum = 0;
    bool is_signed = true;     // unless SAMPLE_TYPE says UNSIGNED
    bool lines_large = false;  // more than one block of lines, of samples
    bool samples_large = false;
    SampleBlock block;
    std::string line_display_direction = "DOWN";  // without quotes, as are the next two
    std::string sample_display_direction = "RIGHT";
    std::string sample_type;
    // Of a band of a qube: how its samples are stored and which are no data. Null for images, whose samples all are.
    std::shared_ptr<const OaQubeItem> qube_item;
    std::unique_ptr<PixelImage> display_image;
    int16_t palette_number = 0;
};

// True when samples of that SAMPLE_TYPE are floats once they are native.
bool is_real_sample_type(const std::string &sample_type);

inline constexpr int64_t block_span = 2000;         // lines and samples of a block at most
inline constexpr int64_t chosen_span_limit = 4000;  // of a block chosen by hand

// Fills the description from the keywords of an IMAGE node. Returns an empty text, or the error to show ("Open Image -
// get LINES failed").
std::string describe_image(const ObjDesc *image, ImageDescription *description);

// Marks what is shown in more than one block.
void divide_if_large(ImageDescription *description);

// First line and sample 1; the last 2000 where large, else all.
void initialize_display_image_ranges(ImageDescription *description, bool lines_large, bool samples_large);

enum class BlockStep { Up, Down, Left, Right };
// The neighbouring block; false, changing nothing, when the step leaves the image.
bool auto_get_image_ranges(const ImageDescription &description, BlockStep step, SampleBlock *block);

// One field of the block dialog as a number. An empty text, or the error to show.
std::string convert_to_long(const std::string &text, const std::string &field_name, int64_t *out);
// An empty text, or the error to show.
std::string check_for_valid_ranges(const SampleBlock &block, int64_t lines, int64_t line_samples, int64_t span_limit);
