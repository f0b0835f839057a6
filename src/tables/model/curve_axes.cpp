// Ranges and ticks of the axes.
#include "base/text.h"
#include "tables/model/curve_plot.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Beyond it the width of a range would be no number.
constexpr double farthest = 8e307;
constexpr double room = 0.02;  // of the range, on both sides

CurveRange range_of(const CurvePlot &plot, std::vector<double> Curve::*values) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const bool of_points : {true, false}) {
        for (const Curve &curve : plot.curves) {
            for (size_t i = 0; i < curve.size(); ++i) {
                const double value = (curve.*values)[i];
                if (!std::isfinite(value) || (of_points && !(std::isfinite(curve.x[i]) && std::isfinite(curve.y[i]))))
                    continue;
                low = std::min(low, value);
                high = std::max(high, value);
            }
        }
        if (low <= high)
            break;
    }
    if (low > high)
        return {};
    low = std::clamp(low, -farthest, farthest);
    high = std::clamp(high, -farthest, farthest);
    // Less than this cannot be told apart in the values.
    const double least = std::max(std::abs(low), std::abs(high)) * 1e-12;
    if (high - low <= least) {
        const double half = low == 0 ? 1 : std::abs(low) * 0.05 + std::numeric_limits<double>::min();
        return {low - half, high + half};
    }
    const double extra = (high - low) * room;
    return {low - extra, high + extra};
}

struct Step {
    double mantissa;  // 1, 2 or 5
    int exponent;

    double times(double count) const {
        // Exact where the number can be: tenths are not written by a product.
        return exponent >= 0      ? count * mantissa * std::pow(10.0, exponent)
               : exponent >= -300 ? count * mantissa / std::pow(10.0, -exponent)
                                  : count * (mantissa * std::pow(10.0, exponent));
    }
};

Step step_of(double wanted) {
    const int exponent = static_cast<int>(std::floor(std::log10(wanted)));
    for (const double mantissa : {1.0, 2.0, 5.0}) {
        const Step step = {mantissa, exponent};
        if (step.times(1) >= wanted)
            return step;
    }
    return {1, exponent + 1};
}

std::string tick_text(double value, int exponent, double largest) {
    constexpr int most_decimals = 6;
    const int decimals = std::max(0, -exponent);
    if (decimals <= most_decimals && largest < 1e7)
        return util_format("%.*f", decimals, value == 0 ? 0.0 : value);
    const int leading = largest > 0 ? static_cast<int>(std::floor(std::log10(largest))) : 0;
    return util_format("%.*g", std::clamp(leading - exponent + 1, 1, 17), value == 0 ? 0.0 : value);
}

}  // namespace

CurveRange curve_x_range(const CurvePlot &plot) {
    return range_of(plot, &Curve::x);
}

CurveRange curve_y_range(const CurvePlot &plot) {
    return range_of(plot, &Curve::y);
}

CurveTicks curve_ticks(CurveRange range, int most) {
    CurveTicks ticks;
    const double wanted = (range.high - range.low) / std::max(1, most - 1);
    if (!std::isfinite(wanted) || wanted <= 0)
        return ticks;
    const Step step = step_of(wanted);
    const double largest = std::max(std::abs(range.low), std::abs(range.high));
    const double first = std::ceil(range.low / step.times(1));
    for (int i = 0; i < most; ++i) {
        const double value = step.times(first + i);
        if (!(value <= range.high))
            break;
        if (!ticks.values.empty() && value == ticks.values.back())
            continue;
        ticks.values.push_back(value);
        ticks.texts.push_back(tick_text(value, step.exponent, largest));
    }
    return ticks;
}
