#include "qubes/model/qube_text.h"

#include "base/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr size_t longest_type = 60;
constexpr std::array axes = {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS};

long long shown(int64_t number) {
    return number;
}

std::string unit_behind(const std::string &unit) {
    return unit.empty() ? "" : " " + unit;
}

std::string bytes_text(int64_t bytes) {
    return util_format("%lld byte%s", shown(bytes), bytes == 1 ? "" : "s");
}

// "4 x 3 x 2", in the file's order; as far as the label has axes.
template <typename Sizes>
std::string sizes_text(const OaQubeKeywords &qube, Sizes size_of) {
    std::string text;
    for (int place = 0; place < qube.axes; ++place)
        text += (place > 0 ? " x " : "") + std::to_string(size_of(qube.order[static_cast<size_t>(place)]));
    return text;
}

// "MSB_INTEGER, 2 bytes, physical = 0.5 + 2 x stored, unit K"
std::string item_text(const OaQubeItem &item) {
    std::string text = util_short_line(item.type, longest_type) + ", " + bytes_text(item.bytes);
    if (item.is_scaled())
        text += ", physical = " + util_number_text(item.base) + " + " + util_number_text(item.multiplier) + " x stored";
    const std::string unit = unit_behind(item.unit);
    return unit.empty() ? text : text + ", unit" + unit;
}

// A value of the item as it is stored: "-32768"; of reals with their bits in memory, which are those of the label but
// for VAX forms: "-3.40282266e+38 (native 16#FF7FFFFB#)".
std::string stored_text(const OaQubeItem &item, uint64_t bits) {
    OaQubeItem plain;
    plain.type = item.type;
    plain.bytes = item.bytes;
    if (OaQubeNumberKind(item) == OaNumberKind::Real) {
        const OaQubeValue value = OaQubeValueOf(plain, &bits);
        const std::string number = value.state == OA_QUBE_VALID ? util_number_text(value.physical) : "not a number";
        return number + util_format(" (native 16#%0*llX#)", static_cast<int>(2 * item.bytes),
                                    static_cast<unsigned long long>(bits));
    }
    if (OaQubeNumberKind(item) == OaNumberKind::Unsigned)
        return std::to_string(bits);
    const int unused = static_cast<int>(64 - 8 * item.bytes);
    return std::to_string(static_cast<int64_t>(bits << unused) >> unused);
}

void describe_specials(const OaQubeItem &core, std::vector<std::string> *lines) {
    for (size_t i = 0; i < core.specials.size(); ++i)
        if (core.specials[i])
            lines->push_back(std::string("  ") + OaQubeStateName(static_cast<OaQubeState>(i)) + ": " +
                             stored_text(core, *core.specials[i]));
    if (core.valid_minimum)
        lines->push_back("  valid from " + stored_text(core, *core.valid_minimum));
}

void describe_suffixes(const OaQubeKeywords &qube, std::vector<std::string> *lines) {
    constexpr int64_t most_listed = 100;
    const int64_t count = suffix_plane_count(qube);
    if (count == 0) {
        lines->push_back("Suffix: none");
        return;
    }
    lines->push_back("Suffix: " + sizes_text(qube, [&](OaQubeAxis axis) { return qube.suffixes[axis].items; }) +
                     " items of " + bytes_text(qube.suffix_bytes));
    for (int64_t number = 1; number <= std::min(count, most_listed); ++number) {
        const OaQubePlane plane = suffix_plane(qube, number);
        lines->push_back("  " + suffix_plane_name(qube, plane) + ": " + suffix_plane_kind(plane.axis) + ", " +
                         item_text(OaQubeSuffixItem(qube, plane.axis, plane.number - 1)));
    }
    if (count > most_listed)
        lines->push_back(util_format("  and %lld more", shown(count - most_listed)));
}

void describe_centers(const OaQubeKeywords &qube, std::vector<std::string> *lines) {
    const int64_t bands = qube.core_items[OA_BAND_AXIS];
    const std::string first = band_center_text(qube, 1);
    const std::string last = band_center_text(qube, bands);
    if (!first.empty() && !last.empty())
        lines->push_back("Band centres: " + (bands == 1 ? first : first + " to " + last) +
                         unit_behind(qube.band_bins.unit));
}

// What every suffix plane is called where it has no name: "SAMPLE suffix 2".
std::string place_name(OaQubeAxis axis, int64_t number) {
    return util_format("%s suffix %lld", OaQubeAxisName(axis), shown(number));
}

// The number that the text ends with, behind a blank; 0 when there is none.
int64_t number_at_end(const std::string &text) {
    const size_t blank = text.rfind(' ');
    int64_t number = 0;
    const char *end = text.data() + text.size();
    const bool is_number = blank != std::string::npos &&
                           std::from_chars(text.data() + blank + 1, end, number) == std::from_chars_result{end, {}};
    return is_number ? number : 0;
}

}  // namespace

double band_center(const OaQubeKeywords &qube, int64_t band) {
    const auto &centers = qube.band_bins.centers;
    return band >= 1 && band <= static_cast<int64_t>(centers.size()) ? centers[static_cast<size_t>(band - 1)]
                                                                     : std::numeric_limits<double>::quiet_NaN();
}

std::string band_center_text(const OaQubeKeywords &qube, int64_t band) {
    const double center = band_center(qube, band);
    return std::isfinite(center) ? util_number_text(center) : "";
}

std::string qube_band_text(const OaQubeKeywords &qube, int64_t band) {
    const std::string center = band_center_text(qube, band);
    return std::to_string(band) + (center.empty() ? "" : ": " + center + unit_behind(qube.band_bins.unit));
}

// The items of all axes together are fewer than the bytes of the qube, which are counted in 63 bits.
int64_t suffix_plane_count(const OaQubeKeywords &qube) {
    int64_t count = 0;
    for (const OaQubeAxis axis : axes)
        count += qube.suffixes[axis].items;
    return count;
}

OaQubePlane suffix_plane(const OaQubeKeywords &qube, int64_t number) {
    for (const OaQubeAxis axis : axes) {
        if (number <= qube.suffixes[axis].items)
            return {axis, number, true};
        number -= qube.suffixes[axis].items;
    }
    return {OA_BAND_AXIS, 0, true};
}

std::string suffix_plane_name(const OaQubeKeywords &qube, const OaQubePlane &plane) {
    const OaQubeSuffix &suffix = qube.suffixes[plane.axis];
    const std::string &name = OaQubeSuffixItem(qube, plane.axis, plane.number - 1).name;
    if (name.empty())
        return place_name(plane.axis, plane.number);
    const bool is_of_all = suffix.items > 1 && name == suffix.others.name;
    return is_of_all ? util_format("%s %lld", name.c_str(), shown(plane.number)) : name;
}

const char *suffix_plane_kind(OaQubeAxis axis) {
    constexpr std::array<const char *, oa_qube_axes> kinds = {
        "side plane (lines x bands)", "bottom plane (samples x bands)", "back plane (samples x lines)"};
    return kinds[axis];
}

std::optional<OaQubePlane> find_suffix_plane(const OaQubeKeywords &qube, const std::string &name) {
    const std::string wanted = util_upper(util_trim(name));
    const auto is_wanted = [&](OaQubeAxis axis, int64_t number) {
        return number >= 1 && number <= qube.suffixes[axis].items &&
               util_upper(suffix_plane_name(qube, {axis, number, true})) == wanted;
    };
    for (const OaQubeAxis axis : axes)
        for (size_t i = 0; i < qube.suffixes[axis].described.size(); ++i)
            if (const auto number = static_cast<int64_t>(i) + 1; is_wanted(axis, number))
                return OaQubePlane{axis, number, true};
    // The others may be too many to try each: their names end in their number, unless there is only one.
    const int64_t ending = number_at_end(wanted);
    for (const int64_t number : {ending, int64_t{1}})
        for (const OaQubeAxis axis : axes)
            if (is_wanted(axis, number))
                return OaQubePlane{axis, number, true};
    for (const OaQubeAxis axis : axes)
        if (ending >= 1 && ending <= qube.suffixes[axis].items && util_upper(place_name(axis, ending)) == wanted)
            return OaQubePlane{axis, ending, true};
    return std::nullopt;
}

std::vector<std::string> describe_qube(const OaQubeKeywords &qube) {
    std::vector<std::string> lines;
    std::string order;
    for (int place = 0; place < qube.axes; ++place)
        order += (place > 0 ? ", " : "") + std::string(OaQubeAxisName(qube.order[static_cast<size_t>(place)]));
    lines.push_back("Axes: " + order + " (the first varies fastest)");
    lines.push_back("Core: " + sizes_text(qube, [&](OaQubeAxis axis) { return qube.core_items[axis]; }) + " items, " +
                    item_text(qube.core));
    if (const std::string &name = qube.core.name; !name.empty())
        lines.push_back("  " + name);
    describe_specials(qube.core, &lines);
    describe_suffixes(qube, &lines);
    describe_centers(qube, &lines);
    return lines;
}
