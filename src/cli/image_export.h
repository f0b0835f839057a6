// An image, or a part of it, as the files that a user asks for.
#pragma once

#include "cli/arguments.h"
#include "viewer/model/sample_source.h"

#include <optional>
#include <string>

struct ImageExport {
    int64_t band = 1;
    std::optional<Interval> lines;  // all, unless given
    std::optional<Interval> samples;
    std::optional<std::string> raw;  // paths of the files, as far as they are asked for
    std::optional<std::string> png;
};

// Each returns an empty text, or what is wrong.
std::string check_names(const ImageExport &request);
// Prints lines, samples, bits, type and range of the part and writes the files, which otherwise are as they were.
// `node` describes the object, whose files are not written over.
std::string export_image(const ImageExport &request, const ObjDesc *node, SampleSource *source);
