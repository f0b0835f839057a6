// Spectra of a qube: the values of all its bands at a place of its image.
#pragma once

#include "oa/qube.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

struct QubeSpectrum {
    int64_t line = 0;  // of the middle, from 1
    int64_t sample = 0;
    int64_t box = 1;                  // lines and samples taken together; odd
    std::vector<OaQubeValue> values;  // by band
};

inline constexpr int64_t most_spectrum_bands = int64_t{1} << 24;

// At each band the mean of the valid values in a box of box x box items around the place, cut at the image's edges;
// where none is valid, what the item in the middle says. False after reporting what OaReadQubeSpectrum reports, 502 for
// a box that is not an odd number up to 99, 720 for more bands than most_spectrum_bands.
bool read_spectrum(OaQube *qube, int64_t line, int64_t sample, int64_t box, QubeSpectrum *out);

// "0.25", or the name of what stands in place of data: "NULL".
std::string spectrum_value_text(const OaQubeValue &value);

// A line for each band, CR LF at their ends: BAND,CENTER,VALUE. Centres that are not known are empty. False when
// writing failed.
bool write_spectrum_csv(const OaQubeKeywords &qube, const QubeSpectrum &spectrum, FILE *file);
