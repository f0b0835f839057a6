#include "viewer/model/band_choice.h"

#include "base/text.h"
#include "oa/oa.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>

namespace {

constexpr size_t longest_name = 60;          // bytes of a name that are shown
constexpr int64_t most_named_bands = 65536;  // more are not named

// Lists of a value for each band, best first.
constexpr std::array name_lists = {"BAND_NAME",      "BAND_NAMES",    "BANDS_NAME",
                                   "FILTER_NAME",    "FILTER_NUMBER", "CENTER_FILTER_WAVELENGTH",
                                   "BAND_BIN_CENTER"};

struct NamedColour {
    const char *name;
    Colour colour;
};
constexpr std::array named_colours = {
    NamedColour{"red", {255, 0, 0}},       NamedColour{"green", {0, 255, 0}},     NamedColour{"blue", {0, 0, 255}},
    NamedColour{"cyan", {0, 255, 255}},    NamedColour{"magenta", {255, 0, 255}}, NamedColour{"yellow", {255, 255, 0}},
    NamedColour{"white", {255, 255, 255}},
};

// One line without what is no text, cut at a whole character.
std::string one_line(std::string name) {
    for (char &c : name) {
        if (static_cast<unsigned char>(c) < ' ' || c == 127)
            c = ' ';
    }
    if (name.size() > longest_name) {
        size_t end = longest_name;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
            --end;
        name.resize(end);
    }
    return std::string(util_trim(name));
}

bool is_letter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Whether the name holds the word by itself: INFRARED is not RED.
bool names_colour(const std::string &name, std::string_view word) {
    const std::string upper = util_upper(name);
    for (size_t at = upper.find(word); at != std::string::npos; at = upper.find(word, at + 1)) {
        const size_t end = at + word.size();
        if ((at == 0 || !is_letter(upper[at - 1])) && (end == upper.size() || !is_letter(upper[end])))
            return true;
    }
    return false;
}

// From 1; 0 when there is none.
int64_t band_of_colour(const std::vector<std::string> &names, std::string_view word) {
    const auto found =
        std::find_if(names.begin(), names.end(), [word](const std::string &name) { return names_colour(name, word); });
    return found == names.end() ? 0 : found - names.begin() + 1;
}

}  // namespace

std::vector<std::string> band_names(const ObjDesc *object, int64_t bands) {
    if (bands > most_named_bands)
        return {};
    for (const ObjDesc *node = object; node; node = node->parent) {
        for (const char *list : name_lists) {
            const char *value = nullptr;
            std::vector<std::string> names;
            if (OaKwdValuetoStr(list, node, &value) != 0 || OaSequencetoStrArray(value, &names) != 0 ||
                std::ssize(names) != bands)
                continue;
            std::transform(names.begin(), names.end(), names.begin(), one_line);
            return names;
        }
    }
    return {};
}

BandChoice default_bands(const std::vector<std::string> &names, int64_t bands) {
    constexpr Colour red = {255, 0, 0}, green = {0, 255, 0}, blue = {0, 0, 255}, cyan = {0, 255, 255};
    if (bands < 2)
        return {true, {ShownBand()}};
    if (bands == 2)
        return {false, {{1, red, {}, {}}, {2, cyan, {}, {}}}};
    const int64_t r = band_of_colour(names, "RED");
    const int64_t g = band_of_colour(names, "GREEN");
    const int64_t b = band_of_colour(names, "BLUE");
    if (r && g && b)
        return {false, {{r, red, {}, {}}, {g, green, {}, {}}, {b, blue, {}, {}}}};
    return {false, {{1, red, {}, {}}, {2, green, {}, {}}, {3, blue, {}, {}}}};
}

std::string band_title(const std::vector<std::string> &names, int64_t band) {
    const std::string number = std::to_string(band);
    const bool has_name = band >= 1 && band <= std::ssize(names) && !names[static_cast<size_t>(band - 1)].empty();
    return has_name ? number + ": " + names[static_cast<size_t>(band - 1)] : number;
}

std::string colour_name(Colour colour) {
    for (const NamedColour &named : named_colours) {
        if (named.colour == colour)
            return named.name;
    }
    return util_format("#%02x%02x%02x", colour.red, colour.green, colour.blue);
}

std::string read_limit(const std::string &text, const std::string &name, std::optional<double> *limit) {
    std::string_view digits = util_trim(text, " \t");
    limit->reset();
    if (digits.empty())
        return "";
    if (digits.front() == '+' && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value))
        return util_format("The %s field takes a number; leave it blank to take that of the samples shown.",
                           name.c_str());
    *limit = value;
    return "";
}

std::string check_bands(const BandChoice &choice, int64_t bands) {
    if (choice.bands.empty())
        return "Choose at least one band.";
    if (choice.bands.size() > most_shown_bands)
        return util_format("At most %zu bands can be shown together.", most_shown_bands);
    for (const ShownBand &shown : choice.bands) {
        if (shown.band < 1 || shown.band > bands)
            return util_format("There is no band %lld.", static_cast<long long>(shown.band));
        if (shown.minimum && shown.maximum && *shown.minimum >= *shown.maximum)
            return util_format("The minimum of band %lld must be less than its maximum.",
                               static_cast<long long>(shown.band));
    }
    return "";
}
