#include "cli/image_export.h"

#include "base/text.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/true_range.h"
#include "viewer/model/image_part.h"
#include "viewer/model/stretch.h"

#include <filesystem>

namespace {

// The part asked for. Returns an empty text, or why there is no such part.
std::string choose_block(const ImageExport &request, const ImageDescription &description, SampleBlock *block) {
    if (request.band > description.bands)
        return util_format("there is no band %lld; BANDS is %lld", static_cast<long long>(request.band),
                           static_cast<long long>(description.bands));
    const Interval lines = request.lines.value_or(Interval{1, description.lines});
    const Interval samples = request.samples.value_or(Interval{1, description.line_samples});
    if (lines.last > description.lines)
        return util_format("there is no line %lld; LINES is %lld", static_cast<long long>(lines.last),
                           static_cast<long long>(description.lines));
    if (samples.last > description.line_samples)
        return util_format("there is no sample %lld; LINE_SAMPLES is %lld", static_cast<long long>(samples.last),
                           static_cast<long long>(description.line_samples));
    *block = {lines.first, lines.last, samples.first, samples.last};
    return "";
}

// The path without links and detours, as far as it leads somewhere.
std::filesystem::path place_of(const std::string &path) {
    std::error_code failure;
    const auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path, failure), failure);
    return failure ? std::filesystem::path(path) : place;
}

// A product is never written over, and two outputs are two files. Returns an empty text, or what is wrong.
std::string check_outputs(const ImageExport &request, const ObjDesc *node) {
    OaFileKeywords file;
    if (OaGetFileKeywords(node, &file) != 0)
        return read_failure;
    const std::set<std::string> files = files_of_product(node, file.file_name);
    for (const auto &output : {request.raw, request.png}) {
        if (output && is_one_of(*output, files))
            return *output + " belongs to the product";
    }
    if (request.raw && request.png && place_of(*request.raw) == place_of(*request.png))
        return "--raw and --png need files of their own";
    return "";
}

struct Summary {
    std::string type;
    std::string range;
};

// "minimum maximum" of a qube's data, or "- -".
std::string range_of_data(const ImageDescription &description) {
    if (description.real_minimum > description.real_maximum)
        return "- -";
    const bool is_real = is_real_sample_type(description.sample_type);
    return is_real ? util_format("%.9g %.9g", description.real_minimum, description.real_maximum)
                   : util_format("%.0f %.0f", description.real_minimum, description.real_maximum);
}

// One pass over the samples: their type, their ranges, and the file of them. Returns an empty text, or what failed.
std::string pass_over_samples(ImagePart *part, const Output &raw, ImageDescription *description, Summary *summary) {
    std::optional<TrueRange> range;
    StretchRangeFinder stretch(*description);
    for (int64_t i = 0; i < part->strip_count(); ++i) {
        const OaObject *samples = part->read(i);
        if (!samples)
            return read_failure;
        const SampleBlock strip = part->strip(i);
        if (!range) {
            const char *type = nullptr;
            OaKwdValuetoStr("SAMPLE_TYPE", samples->odl, &type);
            summary->type = util_without(type ? type : "", '"');
            range.emplace(summary->type, description->sample_bits);
        }
        if (!description->qube_item)
            range->add(samples->data, strip.lines() * strip.samples());
        stretch.add(samples->data, strip.lines(), strip.samples());
        const auto size = static_cast<size_t>(strip.lines() * strip.samples() * description->sample_bits / 8);
        if (raw.stream() && fwrite(samples->data, 1, size, raw.stream()) != size)
            return raw.failure();
    }
    stretch.store(description);
    summary->range = description->qube_item ? range_of_data(*description) : range->text();
    return "";
}

// Returns an empty text, or what failed; both outputs are then as they were.
std::string write_outputs(const ImageExport &request, ImagePart *part, ImageDescription *description,
                          Summary *summary) {
    Output raw;
    Output png;
    std::string error = raw.open(request.raw.value_or(""));
    if (error.empty())
        error = png.open(request.png.value_or(""));
    if (error.empty())
        error = pass_over_samples(part, raw, description, summary);
    if (error.empty() && png.stream()) {
        error = write_picture(part, *description, png.stream());
        if (!error.empty())
            error = *request.png + ": " + error;
    }
    if (error.empty())
        error = raw.commit();
    return error.empty() ? png.commit() : error;
}

}  // namespace

std::string check_names(const ImageExport &request) {
    const bool nameless = (request.raw && request.raw->empty()) || (request.png && request.png->empty());
    return nameless ? "an output file needs a name" : "";
}

std::string export_image(const ImageExport &request, const ObjDesc *node, SampleSource *source) {
    ImageDescription description;
    std::string error = source->describe(&description);
    if (!error.empty() && error == error_string)
        return read_failure;  // the libraries have reported the reason
    SampleBlock block;
    if (error.empty())
        error = choose_block(request, description, &block);
    if (error.empty())
        error = check_outputs(request, node);
    if (!error.empty())
        return error;

    ImagePart part(source, block, description.sample_bits / 8);
    Summary summary;
    error = write_outputs(request, &part, &description, &summary);
    if (error.empty())
        printf("%lld %lld %lld %s %s\n", static_cast<long long>(block.lines()), static_cast<long long>(block.samples()),
               static_cast<long long>(description.sample_bits), summary.type.c_str(), summary.range.c_str());
    return error;
}
