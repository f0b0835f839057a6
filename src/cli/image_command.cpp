#include "base/text.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/product.h"
#include "cli/true_range.h"
#include "viewer/model/image_part.h"
#include "viewer/model/jpeg2000_source.h"
#include "viewer/model/qube_source.h"
#include "viewer/model/stretch.h"

#include <algorithm>
#include <filesystem>

namespace {

struct Request {
    std::string file;
    std::optional<std::string> object;
    int64_t band = 1;
    std::optional<Interval> lines;
    std::optional<Interval> samples;
    std::string raw;
    std::string png;
};

// Returns an empty text, or what is wrong with the arguments.
std::string take_request(std::span<char *const> words, Request *request) {
    std::optional<std::string> object, band, lines, samples, raw, png;
    const Option options[] = {{"--object", &object},   {"--band", &band}, {"--lines", &lines},
                              {"--samples", &samples}, {"--raw", &raw},   {"--png", &png}};
    std::string mistake = take_arguments(words, options, &request->file);
    if (!mistake.empty())
        return mistake;
    if (band) {
        const auto number = positive_number(*band);
        if (!number)
            return "--band takes a number from 1, not " + *band;
        request->band = *number;
    }
    if (lines && !(request->lines = interval(*lines)))
        return "--lines takes A:B with 1 <= A <= B, not " + *lines;
    if (samples && !(request->samples = interval(*samples)))
        return "--samples takes A:B with 1 <= A <= B, not " + *samples;
    if ((raw && raw->empty()) || (png && png->empty()))
        return "an output file needs a name";
    request->object = object;
    request->raw = raw.value_or("");
    request->png = png.value_or("");
    return "";
}

// The qube or image that the viewer shows.
const ObjDesc *find_image(ObjDesc *root) {
    const ObjDesc *found = nullptr;
    for (const char *pattern : {"QUBE", "*QUBE", "IMAGE", "*IMAGE"})
        if (!found)
            found = OdlFindObjDesc(root, pattern, nullptr, nullptr, 1, SCOPE_TO_END);
    return found;
}

std::unique_ptr<SampleSource> source_of(const ObjDesc *node, int64_t band) {
    if (OaGetObjectClass(node) == OA_QUBE)
        return qube_band_source(node, band);
    // Components as they are coded, some in sizes of their own.
    return OaIsJpeg2000Image(node) ? jpeg2000_source(node, band, OA_OWN_SIZE) : image_band_source(node, band);
}

// The first object whose class or NAME matches.
const ObjDesc *find_object(ObjDesc *root, const std::string &pattern) {
    for (ObjDesc *node = root->first_child; node; node = OdlTraverseTree(node, root->level)) {
        const Kwd *name = OdlFindKwd(node, "NAME", nullptr, 1, SCOPE_THIS_OBJECT);
        const char *value = name ? OdlGetKwdValue(name) : nullptr;
        if ((node->class_name && OdlWildCardCompare(pattern.c_str(), node->class_name)) ||
            (value && OdlWildCardCompare(pattern.c_str(), util_without(value, '"').c_str())))
            return node;
    }
    return nullptr;
}

// The part asked for. Returns an empty text, or why there is no such part.
std::string choose_block(const Request &request, const ImageDescription &description, SampleBlock *block) {
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
std::string check_outputs(const Request &request, const ObjDesc *node) {
    OaFileKeywords file;
    if (OaGetFileKeywords(node, &file) != 0)
        return read_failure;
    const std::set<std::string> files = files_of_product(node, file.file_name);
    for (const std::string &output : {request.raw, request.png}) {
        if (!output.empty() && is_one_of(output, files))
            return output + " belongs to the product";
    }
    if (!request.raw.empty() && !request.png.empty() && place_of(request.raw) == place_of(request.png))
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
std::string write_outputs(const Request &request, ImagePart *part, ImageDescription *description, Summary *summary) {
    Output raw;
    Output png;
    std::string error = raw.open(request.raw);
    if (error.empty())
        error = png.open(request.png);
    if (error.empty())
        error = pass_over_samples(part, raw, description, summary);
    if (error.empty() && png.stream()) {
        error = write_picture(part, *description, png.stream());
        if (!error.empty())
            error = request.png + ": " + error;
    }
    if (error.empty())
        error = raw.commit();
    return error.empty() ? png.commit() : error;
}

std::string export_image(const Request &request, const ObjDesc *node) {
    const auto source = source_of(node, request.band);
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

    ImagePart part(source.get(), block, description.sample_bits / 8);
    Summary summary;
    error = write_outputs(request, &part, &description, &summary);
    if (error.empty())
        printf("%lld %lld %lld %s %s\n", static_cast<long long>(block.lines()), static_cast<long long>(block.samples()),
               static_cast<long long>(description.sample_bits), summary.type.c_str(), summary.range.c_str());
    return error;
}

}  // namespace

int run_image(std::span<char *const> arguments) {
    Request request;
    std::string mistake = take_request(arguments, &request);
    if (!mistake.empty())
        return fail(mistake);
    const std::string label = find_label_file(request.file);
    if (label.empty())
        return exit_failed;
    show_notices();
    const OdlTree root = read_label(label, nullptr);
    if (!root)
        return exit_failed;
    const ObjDesc *node = request.object ? find_object(root.get(), *request.object) : find_image(root.get());
    if (!node)
        return fail(label + ": there is no object " + request.object.value_or("*IMAGE"));
    const std::string error = export_image(request, node);
    if (!error.empty())
        return fail(label + ": " + error);
    return had_notices() ? exit_with_messages : exit_done;
}
