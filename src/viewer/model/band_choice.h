// Which bands of a product are shown, each in which colour and between which limits.
#pragma once

#include "base/pixel_image.h"
#include "odl/odl.h"
#include "viewer/model/sample_range.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

inline constexpr size_t most_shown_bands = 8;

struct ShownBand {
    int64_t band = 1;  // of the product, from 1
    Colour colour = {255, 255, 255};
    std::optional<double> minimum;  // unset: the lowest sample of the block shown
    std::optional<double> maximum;  // unset: the highest

    bool operator==(const ShownBand &) const = default;
};

struct BandChoice {
    bool is_grey = false;  // the first band alone, as an 8-bit image; else all of them, as colours that add up
    std::vector<ShownBand> bands;

    bool operator==(const BandChoice &) const = default;
};

// Names of the first of an object's bands, as lists in its label give them (BAND_NAME, FILTER_NAME,
// CENTER_FILTER_WAVELENGTH) in the object or what holds it; lists of another length do not count. One line each; empty
// where there is no name.
std::vector<std::string> band_names(const ObjDesc *object, int64_t bands);

// The bands whose names are RED, GREEN and BLUE, else the first three in these colours; of two bands the first red and
// the second cyan; one band alone grey.
BandChoice default_bands(const std::vector<std::string> &names, int64_t bands);

// "2: GREEN", or "2" without a name.
std::string band_title(const std::vector<std::string> &names, int64_t band);
// "red", or "#ff8000" for a colour without a name.
std::string colour_name(Colour colour);

// A limit as typed: blank leaves it to the samples. An empty text, or the error to show; `name` is the field's.
std::string read_limit(const std::string &text, const std::string &name, std::optional<double> *limit);
// An empty text, or the error to show.
std::string check_bands(const BandChoice &choice, int64_t bands);
