// From native samples to the 8-bit display image, and the stretches that work on its colour table.
#pragma once

#include "viewer/model/image_description.h"
#include "viewer/model/sample_range.h"

#include <array>
#include <cstdint>
#include <string>

// Gathers the range of native samples, strip after strip, by the finder for their size, sign and type.
class StretchRangeFinder {
  public:
    explicit StretchRangeFinder(const ImageDescription &description);

    void add(const void *samples, int64_t lines, int64_t line_samples);
    // Stores the range, of reals and qubes as the real pair, when the label left its minimum or maximum open (-1).
    // Nothing for 8-bit samples of images, which are shown as they are. The pair of a qube without data is 0 and -1.
    void store(ImageDescription *description) const;

  private:
    struct Ranges {
        IntegerRange integers;
        RealRange reals;
    };
    Ranges find(const void *samples, int64_t lines, int64_t line_samples) const;

    std::shared_ptr<const OaQubeItem> qube_item_;  // null for images
    int64_t sample_bits_;
    bool is_signed_;
    bool keeps_reals_;
    Ranges ranges_;
    RealRange valid_;  // of qubes: physical values that are data
};

// Maps native samples of 16, 32 or 64 bits linearly onto the bytes of `display`, between the description's minimum and
// maximum as they stand (the real pair for reals without a range in the label). Values outside wrap around. False for
// any other sample size; the display then stays as it is. Samples of qubes: as map_clamped says, between the real pair;
// unsigned bytes that are data as they are.
bool map_samples(const void *samples, const ImageDescription &description, int64_t count, uint8_t *display);

// Both in turn, for lines x line_samples samples lying row after row; finds nothing when the label gives the range.
bool scale_image(const void *samples, ImageDescription *description, int64_t lines, int64_t line_samples,
                 uint8_t *display);

// Builds description->display_image from native samples: 8-bit ones as they are, others through scale_image, with the
// grey colour table. Returns an empty text or the note or error to show; without an image only when there are no
// samples or memory is out.
std::string build_display_image(const void *samples, ImageDescription *description, int64_t lines,
                                int64_t line_samples);

// Pixels of each level of an 8-bit image.
std::array<int64_t, 256> count_levels(const PixelImage &image);

// The levels that the percentile stretch of the colour table shows black and white: half a per cent of the pixels,
// level 0 left out, go beyond each. False when there are none: all pixels are of level 0 or both coincide.
bool percentile_levels(const PixelImage &image, int *low, int *high);
void reset_colours(PixelImage *image);  // entry i becomes grey i

// A display byte as the number that read-outs show.
double getDNValue(uint8_t display_byte);
