#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/image_export.h"
#include "cli/product.h"
#include "viewer/model/jpeg2000_source.h"
#include "viewer/model/qube_source.h"

namespace {

struct Request {
    std::string file;
    std::optional<std::string> object;
    ImageExport image;
};

// Returns an empty text, or what is wrong with the arguments.
std::string take_request(std::span<char *const> words, Request *request) {
    std::optional<std::string> band, lines, samples;
    const Option options[] = {{"--object", &request->object},
                              {"--band", &band},
                              {"--lines", &lines},
                              {"--samples", &samples},
                              {"--raw", &request->image.raw},
                              {"--png", &request->image.png}};
    std::string mistake = take_arguments(words, options, &request->file);
    if (!mistake.empty())
        return mistake;
    if (band) {
        const auto number = positive_number(*band);
        if (!number)
            return "--band takes a number from 1, not " + *band;
        request->image.band = *number;
    }
    if (lines && !(request->image.lines = interval(*lines)))
        return "--lines takes A:B with 1 <= A <= B, not " + *lines;
    if (samples && !(request->image.samples = interval(*samples)))
        return "--samples takes A:B with 1 <= A <= B, not " + *samples;
    return check_names(request->image);
}

std::unique_ptr<SampleSource> source_of(const ObjDesc *node, int64_t band) {
    if (OaGetObjectClass(node) == OA_QUBE)
        return qube_band_source(node, band);
    // Components as they are coded, some in sizes of their own.
    return OaIsJpeg2000Image(node) ? jpeg2000_source(node, band, OA_OWN_SIZE) : image_band_source(node, band);
}

}  // namespace

int run_image(std::span<char *const> arguments) {
    Request request;
    std::string mistake = take_request(arguments, &request);
    if (!mistake.empty())
        return fail(mistake);
    std::string label;
    const OdlTree root = open_product(request.file, &label);
    if (!root)
        return exit_failed;
    // Unless told otherwise, what the viewer shows.
    const ObjDesc *node = request.object ? find_object(root.get(), *request.object)
                                         : find_object_of(root.get(), {"QUBE", "*QUBE", "IMAGE", "*IMAGE"});
    if (!node)
        return fail(label + ": there is no object " + request.object.value_or("*IMAGE"));
    const auto source = source_of(node, request.image.band);
    const std::string error = export_image(request.image, node, source.get());
    if (!error.empty())
        return fail(label + ": " + error);
    return had_notices() ? exit_with_messages : exit_done;
}
