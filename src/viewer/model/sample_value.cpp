#include "viewer/model/sample_value.h"

#include "base/text.h"
#include "viewer/model/extremes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>

namespace {

OaNumberKind number_kind(const ImageDescription &description) {
    if (description.qube_item)
        return OaQubeNumberKind(*description.qube_item);
    if (is_real_sample_type(description.sample_type))
        return OaNumberKind::Real;
    return description.is_signed ? OaNumberKind::Signed : OaNumberKind::Unsigned;
}

// Calls `use` with the samples as what they are.
template <typename Use>
auto with_type(const void *samples, const ImageDescription &description, Use use) {
    const OaNumberKind kind = number_kind(description);
    const bool is_unsigned = kind == OaNumberKind::Unsigned;
    switch (description.sample_bits) {
        case 16:
            return is_unsigned ? use(static_cast<const uint16_t *>(samples))
                               : use(static_cast<const int16_t *>(samples));
        case 32:
            if (kind == OaNumberKind::Real)
                return use(static_cast<const float *>(samples));
            return is_unsigned ? use(static_cast<const uint32_t *>(samples))
                               : use(static_cast<const int32_t *>(samples));
        case 64:
            if (kind == OaNumberKind::Real)
                return use(static_cast<const double *>(samples));
            return is_unsigned ? use(static_cast<const uint64_t *>(samples))
                               : use(static_cast<const int64_t *>(samples));
        default:
            return is_unsigned ? use(static_cast<const uint8_t *>(samples)) : use(static_cast<const int8_t *>(samples));
    }
}

template <typename T>
std::string shortest(T value) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(value))
            return "NaN";
    }
    std::array<char, 32> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), written.ptr};
}

template <typename T>
std::string with_bits(T value) {
    return shortest(value) + util_format(" (0x%0*llX)", static_cast<int>(2 * sizeof(T)),
                                         static_cast<unsigned long long>(static_cast<std::make_unsigned_t<T>>(value)));
}

template <typename T>
std::optional<RealRange> range_of(const T *values, int64_t count) {
    constexpr Extremes<T> none = {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
    constexpr auto infinities = std::is_floating_point_v<T> ? Infinities::PassedOver : Infinities::Count;
    const Extremes<T> found = widened<infinities>(values, count, none);
    if (found.minimum > found.maximum)
        return std::nullopt;
    return RealRange{static_cast<double>(found.minimum), static_cast<double>(found.maximum)};
}

// In halves, so that the span of no two numbers is infinite.
template <typename T>
void map_values(const T *values, RealRange range, int64_t count, uint8_t *display) {
    constexpr double levels = 256;
    const double minimum = range.minimum / 2;
    const double span = range.maximum / 2 - minimum;
    run_vectorised([=]() __attribute__((always_inline)) {
        for (int64_t i = 0; i < count; ++i) {
            const double level = (static_cast<double>(values[i]) / 2 - minimum) / span * levels;
            // A comparison with NaN is false.
            const double inside = level > 0 ? level : 0;
            display[i] = static_cast<uint8_t>(static_cast<int32_t>(inside < levels ? inside : levels - 1));
        }
    });
}

void map_physical_values(const void *samples, const OaQubeItem &item, RealRange range, int64_t count,
                         uint8_t *display) {
    constexpr int64_t piece = 4096;
    std::array<double, piece> values;
    const auto *bytes = static_cast<const uint8_t *>(samples);
    for (int64_t done = 0; done < count; done += piece) {
        const int64_t some = std::min(piece, count - done);
        OaQubePhysicalValues(item, bytes + done * item.bytes, some, values.data());
        map_values(values.data(), range, some, display + done);
    }
}

}  // namespace

std::string sample_text(const void *samples, int64_t index, const ImageDescription &description, bool hexadecimal) {
    return with_type(samples, description, [=](const auto *values) {
        using T = std::remove_cvref_t<decltype(*values)>;
        if constexpr (std::is_integral_v<T>)
            return hexadecimal ? with_bits(values[index]) : shortest(values[index]);
        else
            return shortest(values[index]);
    });
}

std::string number_text(double value) {
    return shortest(value);
}

std::optional<RealRange> find_sample_range(const void *samples, int64_t count, const ImageDescription &description) {
    if (!description.qube_item)
        return with_type(samples, description, [=](const auto *values) { return range_of(values, count); });
    RealRange range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    OaQubeWidenRange(*description.qube_item, samples, count, &range.minimum, &range.maximum);
    return range.minimum <= range.maximum ? std::optional(range) : std::nullopt;
}

void map_clamped(const void *samples, const ImageDescription &description, RealRange range, int64_t count,
                 uint8_t *display) {
    if (description.qube_item)
        map_physical_values(samples, *description.qube_item, range, count, display);
    else
        with_type(samples, description, [=](const auto *values) { map_values(values, range, count, display); });
}

std::string convert_to_number(const std::string &text, const std::string &field_name, double *out) {
    std::string_view digits = util_trim(text);
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-')
        digits.remove_prefix(1);
    double value = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool whole = end == digits.data() + digits.size();
    if (whole && fault == std::errc::result_out_of_range)
        return util_format("Overflow has occurred while converting the value in the %s field", field_name.c_str());
    if (!whole || fault != std::errc() || !std::isfinite(value))
        return util_format("Invalid value entered in the %s field. Value must be a number", field_name.c_str());
    *out = value;
    return "";
}

std::string check_stretch_range(RealRange range) {
    if (range.minimum == range.maximum)
        return "Minimum and Maximum values cannot be equal";
    if (range.maximum < range.minimum)
        return "Maximum value cannot be less than the Minimum value";
    return "";
}
