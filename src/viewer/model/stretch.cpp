#include "viewer/model/stretch.h"

#include "base/text.h"
#include "viewer/model/vectorise.h"

#include <climits>
#include <cmath>
#include <cstring>

namespace {

constexpr float level_share = 0.00390625F;  // 1 / 256
constexpr double range_excess = 0.000001;   // keeps the step of a flat image above 0

// Low eight bits of the value without its fraction; 0 for a NaN and for what 64 bits do not hold.
//
// A float of 2^31 and more is a multiple of 256, so that 32 bits hold all that counts.
[[gnu::always_inline]] inline uint8_t low_byte(float value) {
    const bool fits = value > -2147483648.0F && value < 2147483648.0F;
    return static_cast<uint8_t>(static_cast<int32_t>(fits ? value : 0.0F));
}
[[gnu::always_inline]] inline uint8_t low_byte(double value) {
    const bool fits = value >= -9223372036854775808.0 && value < 9223372036854775808.0;
    const double whole = std::trunc(fits ? value : 0.0);
    return static_cast<uint8_t>(static_cast<int32_t>(whole - 256.0 * std::floor(whole / 256.0)));
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

template <typename Real, typename T>
void map_linearly(const T *samples, RealRange range, int64_t count, uint8_t *display) {
    const Real minimum = static_cast<Real>(range.minimum);
    const Real step = (static_cast<Real>(range.maximum) - minimum + static_cast<Real>(range_excess)) * level_share;
    run_vectorised([=]() __attribute__((always_inline)) {
        for (int64_t i = 0; i < count; ++i)
            display[i] = low_byte((static_cast<Real>(samples[i]) - minimum) / step);
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

void store(ImageDescription *description, IntegerRange range) {
    description->minimum = range.minimum;
    description->maximum = range.maximum;
}

void store(ImageDescription *description, RealRange range) {
    description->real_minimum = range.minimum;
    description->real_maximum = range.maximum;
}

}  // namespace

void find_stretch_range(const void *samples, ImageDescription *description, int64_t lines, int64_t line_samples) {
    if (label_gives_range(*description))
        return;
    const bool is_signed = description->is_signed;
    if (description->sample_bits == 16) {
        store(description,
              is_signed ? cstretch16s(samples, lines, line_samples) : cstretch16us(samples, lines, line_samples));
    } else if (description->sample_bits == 32) {
        const WordRange range =
            is_signed ? cstretch32s(samples, lines, line_samples) : cstretch32us(samples, lines, line_samples);
        if (is_real_sample_type(description->sample_type))
            store(description, range.reals);
        else
            store(description, range.integers);
    } else if (description->sample_bits == 64) {
        store(description,
              is_signed ? cstretch64s(samples, lines, line_samples) : cstretch64us(samples, lines, line_samples));
    }
}

bool map_samples(const void *samples, const ImageDescription &description, int64_t count, uint8_t *display) {
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
    find_stretch_range(samples, description, lines, line_samples);
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
    if (description->sample_bits == 8) {
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
