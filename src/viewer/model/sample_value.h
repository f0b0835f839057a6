// Native samples as the numbers that they are stored as, before any display scaling.
#pragma once

#include "viewer/model/image_description.h"
#include "viewer/model/sample_range.h"

#include <cstdint>
#include <optional>
#include <string>

// Sample `index` (from 0, row after row) of those that the description tells of: integers in full, reals in the
// shortest form that stands for no other. With `hexadecimal`, integers have their bits behind them: "-2 (0xFFFE)".
std::string sample_text(const void *samples, int64_t index, const ImageDescription &description, bool hexadecimal);

// A number in the shortest form that reads back as the same.
std::string number_text(double value);

// The lowest and the highest of `count` samples, of qubes as physical values. What is no data, not a number or infinite
// does not count; none when nothing does.
std::optional<RealRange> find_sample_range(const void *samples, int64_t count, const ImageDescription &description);

// Maps native samples of any size linearly onto display bytes, minimum to 0 and maximum to 255. What lies outside is
// clamped; no data and NaN become 0.
void map_clamped(const void *samples, const ImageDescription &description, RealRange range, int64_t count,
                 uint8_t *display);

// One field of the stretch dialog as a finite number. An empty text, or the error to show.
std::string convert_to_number(const std::string &text, const std::string &field_name, double *out);
// An empty text, or the error to show.
std::string check_stretch_range(RealRange range);
