#include "viewer/model/stretch.h"

#include "base/text.h"
#include "viewer/model/sample_value.h"
#include "viewer/model/vectorise.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>

namespace {

constexpr float level_share = 0.00390625F;  // 1 / 256
constexpr double range_excess = 0.000001;   // keeps the step of a flat image above 0

// Low eight bits of the value without its fraction; 0 for a NaN and for what 64 bits do not hold.
[[gnu::always_inline]] inline uint8_t low_byte(double value) {
    const bool fits = value >= -9223372036854775808.0 && value < 9223372036854775808.0;
    return static_cast<uint8_t>(static_cast<int64_t>(fits ? value : 0.0));
}

// Sample and minimum count as signed whatever the type says: unsigned values above 32767 come to lie below the minimum.
// With differences below 2^16 and steps of at least 1/256 no quotient leaves the int range.
void map_halfwords(const int16_t *samples, const ImageDescription &description, int64_t count, uint8_t *display) {
    const double span = static_cast<double>(description.maximum) + 1 - static_cast<double>(description.minimum);
    const float step = span == 0 ? 1.0F : static_cast<float>(span) * level_share;
    const auto minimum = static_cast<int16_t>(description.minimum);
    run_vectorised([=]() __attribute__((always_inline)) {
        for (int64_t i = 0; i < count; ++i)
            display[i] = static_cast<uint8_t>(static_cast<int32_t>(static_cast<float>(samples[i] - minimum) / step));
    });
}

// Samples and limits count as `Value` holds them. The quotient is taken in double: in single precision the excess of
// the range would be lost, and with it the largest sample would wrap around to black.
template <typename Value, typename T>
void map_linearly(const T *samples, RealRange range, int64_t count, uint8_t *display) {
    const double minimum = static_cast<Value>(range.minimum);
    const double maximum = static_cast<Value>(range.maximum);
    const double step = (maximum - minimum + range_excess) * level_share;
    run_vectorised([=]() __attribute__((always_inline)) {
        for (int64_t i = 0; i < count; ++i)
            display[i] = low_byte((static_cast<double>(static_cast<Value>(samples[i])) - minimum) / step);
    });
}

bool label_gives_range(const ImageDescription &description) {
    return description.minimum != -1 && description.maximum != -1;
}

// The range as reals: what was computed for real samples, else the integers.
RealRange real_range_of(const ImageDescription &description, bool samples_are_real) {
    if (samples_are_real && !label_gives_range(description))
        return {description.real_minimum, description.real_maximum};
    return {static_cast<double>(description.minimum), static_cast<double>(description.maximum)};
}

}  // namespace

StretchRangeFinder::StretchRangeFinder(const ImageDescription &description)
    : qube_item_(description.qube_item),
      sample_bits_(description.sample_bits),
      is_signed_(description.is_signed),
      keeps_reals_(sample_bits_ == 64 || is_real_sample_type(description.sample_type)),
      ranges_(find(nullptr, 0, 0)),
      valid_{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()} {}

StretchRangeFinder::Ranges StretchRangeFinder::find(const void *samples, int64_t lines, int64_t line_samples) const {
    switch (sample_bits_) {
        case 16:
            return {is_signed_ ? cstretch16s(samples, lines, line_samples) : cstretch16us(samples, lines, line_samples),
                    {}};
        case 32: {
            const WordRange range =
                is_signed_ ? cstretch32s(samples, lines, line_samples) : cstretch32us(samples, lines, line_samples);
            return {range.integers, range.reals};
        }
        case 64:
            return {
                {},
                is_signed_ ? cstretch64s(samples, lines, line_samples) : cstretch64us(samples, lines, line_samples)};
        default:
            return {};
    }
}

void StretchRangeFinder::add(const void *samples, int64_t lines, int64_t line_samples) {
    if (qube_item_) {
        OaQubeWidenRange(*qube_item_, samples, lines * line_samples, &valid_.minimum, &valid_.maximum);
        return;
    }
    const Ranges found = find(samples, lines, line_samples);
    ranges_.integers = {std::min(ranges_.integers.minimum, found.integers.minimum),
                        std::max(ranges_.integers.maximum, found.integers.maximum)};
    ranges_.reals = {std::min(ranges_.reals.minimum, found.reals.minimum),
                     std::max(ranges_.reals.maximum, found.reals.maximum)};
}

void StretchRangeFinder::store(ImageDescription *description) const {
    if (qube_item_) {
        const RealRange found = valid_.minimum <= valid_.maximum ? valid_ : RealRange{0, -1};
        description->real_minimum = found.minimum;
        description->real_maximum = found.maximum;
        return;
    }
    if (label_gives_range(*description) || (sample_bits_ != 16 && sample_bits_ != 32 && sample_bits_ != 64))
        return;
    if (keeps_reals_) {
        description->real_minimum = ranges_.reals.minimum;
        description->real_maximum = ranges_.reals.maximum;
    } else {
        description->minimum = ranges_.integers.minimum;
        description->maximum = ranges_.integers.maximum;
    }
}

bool map_samples(const void *samples, const ImageDescription &description, int64_t count, uint8_t *display) {
    if (description.qube_item) {
        constexpr RealRange levels = {0, 256};
        const bool as_they_are = description.sample_bits == 8 && !description.is_signed;
        map_clamped(samples, description,
                    as_they_are ? levels : RealRange{description.real_minimum, description.real_maximum}, count,
                    display);
        return true;
    }
    switch (description.sample_bits) {
        case 16:
            map_halfwords(static_cast<const int16_t *>(samples), description, count, display);
            return true;
        case 32:
            if (is_real_sample_type(description.sample_type))
                map_linearly<float>(static_cast<const float *>(samples), real_range_of(description, true), count,
                                    display);
            else
                map_linearly<float>(static_cast<const int32_t *>(samples), real_range_of(description, false), count,
                                    display);
            return true;
        case 64:
            map_linearly<double>(static_cast<const double *>(samples), real_range_of(description, true), count,
                                 display);
            return true;
        default:
            return false;
    }
}

bool scale_image(const void *samples, ImageDescription *description, int64_t lines, int64_t line_samples,
                 uint8_t *display) {
    if (!label_gives_range(*description)) {
        StretchRangeFinder finder(*description);
        finder.add(samples, lines, line_samples);
        finder.store(description);
    }
    return map_samples(samples, *description, lines * line_samples, display);
}

std::string build_display_image(const void *samples, ImageDescription *description, int64_t lines,
                                int64_t line_samples) {
    description->display_image.reset();
    if (!samples)
        return "Create image -- No pointer to image data was found";
    std::unique_ptr<PixelImage> image;
    if (lines <= INT_MAX && line_samples <= INT_MAX)
        image = util_new_pixel_image(static_cast<int>(line_samples), static_cast<int>(lines), 1);
    if (!image)
        return util_format("Create image -- out of memory for a display image of %lld lines and %lld samples",
                           static_cast<long long>(lines), static_cast<long long>(line_samples));
    image->colours = util_grey_colours();
    description->palette_number = 0;

    uint8_t *pixels = image->pixels.get();
    description->display_image = std::move(image);
    if (description->sample_bits == 8 && !description->qube_item) {
        memcpy(pixels, samples, static_cast<size_t>(lines * line_samples));
        return "";
    }
    if (scale_image(samples, description, lines, line_samples, pixels))
        return "";
    return util_format(
        "Lumacart does not currently process your sample type. Please report it to the maintainers of Lumacart, with "
        "the label if you can: SAMPLE_BITS = %lld, SAMPLE_TYPE = %s.",
        static_cast<long long>(description->sample_bits), description->sample_type.c_str());
}
