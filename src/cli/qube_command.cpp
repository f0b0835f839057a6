#include "base/notice.h"
#include "base/text.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/image_export.h"
#include "cli/output.h"
#include "cli/product.h"
#include "oa/qube_layout.h"
#include "qubes/model/qube_text.h"
#include "qubes/model/spectrum.h"
#include "viewer/model/qube_source.h"

#include <algorithm>

namespace {

constexpr const char *qube_failure = "the qube cannot be read";

struct Place {
    int64_t sample = 1;
    int64_t line = 1;
    int64_t box = 1;
};

struct Request {
    std::string file;
    std::optional<std::string> object;
    std::optional<int64_t> band;
    std::optional<std::string> suffix;
    std::optional<Place> spectrum;
    std::optional<std::string> csv;  // "-": standard output
    ImageExport image;
};

// "SAMPLE,LINE" or "SAMPLE,LINE,BOX"
std::optional<Place> place(std::string_view text) {
    constexpr size_t most_numbers = 3;
    constexpr int64_t largest_box = 5;
    std::array<int64_t, most_numbers> numbers = {1, 1, 1};
    size_t count = 0;
    for (size_t end = 0; end != std::string_view::npos; ++count) {
        end = text.find(',');
        const auto number = positive_number(text.substr(0, end));
        if (!number || count == numbers.size())
            return std::nullopt;
        numbers[count] = *number;
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    const auto [sample, line, box] = numbers;
    if (count < 2 || box > largest_box || box % 2 == 0)
        return std::nullopt;
    return Place{sample, line, box};
}

// Returns an empty text, or what is wrong with the arguments.
std::string take_request(std::span<char *const> words, Request *request) {
    std::optional<std::string> band, spectrum;
    const Option options[] = {{"--object", &request->object}, {"--band", &band},        {"--suffix", &request->suffix},
                              {"--spectrum", &spectrum},      {"--csv", &request->csv}, {"--raw", &request->image.raw},
                              {"--png", &request->image.png}};
    std::string mistake = take_arguments(words, options, &request->file);
    if (!mistake.empty())
        return mistake;
    if (band && !(request->band = positive_number(*band)))
        return "--band takes a number from 1, not " + *band;
    if (spectrum && !(request->spectrum = place(*spectrum)))
        return "--spectrum takes SAMPLE,LINE or SAMPLE,LINE,BOX, a BOX of 1, 3 or 5, not " + *spectrum;
    if (int{band.has_value()} + int{request->suffix.has_value()} + int{spectrum.has_value()} > 1)
        return "--band, --suffix and --spectrum are asked for one at a time";
    if (spectrum.has_value() != request->csv.has_value())
        return "--spectrum and --csv go together";
    if ((request->image.raw || request->image.png) && !band && !request->suffix)
        return "--raw and --png go with --band or --suffix";
    if (request->csv && request->csv->empty())
        return "an output file needs a name";
    request->image.band = request->band.value_or(1);
    return check_names(request->image);
}

// --- The description ------------------------------------------------------------------------------------------------

// Bands as far as the label's list of centres reaches, which it may not, and the rest as one line.
void print_bands(const OaQubeKeywords &qube) {
    const int64_t bands = qube.core_items[OA_BAND_AXIS];
    const int64_t listed = std::min(bands, static_cast<int64_t>(qube.band_bins.centers.size()));
    puts("Bands:");
    for (int64_t band = 1; band <= listed; ++band)
        printf("  %s\n", qube_band_text(qube, band).c_str());
    const long long first = listed + 1;
    const long long last = bands;
    if (first < last)
        printf("  %lld to %lld\n", first, last);
    else if (first == last)
        printf("  %lld\n", last);
}

// Where the data are, and what of them there is.
void print_data(const ObjDesc *node, const OaQubeKeywords &qube) {
    OaFileKeywords file;
    if (OaGetFileKeywords(node, &file) != 0)
        return;
    const FilePtr data = util_open_regular(file.file_name.c_str());
    const int64_t held = data ? std::max<int64_t>(0, util_file_size(data.get()) - file.start) : 0;
    const QubeLayout layout = choose_qube_layout(qube, held);
    const auto total = static_cast<long long>(layout.total);
    printf("Data: %s, %lld bytes from byte %lld%s\n", util_clean_up_string(file.file_name).c_str(), total,
           static_cast<long long>(file.start) + 1, layout.has_corners ? "" : ", without corners");
    if (held < layout.total)
        util_notice(NoticeKind::Warning, util_format("%s holds %lld of the %lld bytes of the qube",
                                                     file.file_name.c_str(), static_cast<long long>(held), total));
}

// What the label says is told even where the data are missing.
std::string describe(const ObjDesc *node) {
    OaQubeKeywords qube;
    if (OaGetQubeKeywords(node, &qube) != 0)
        return qube_failure;
    for (const std::string &remark : qube.remarks)
        util_notice(NoticeKind::Warning, remark);
    if (const OaQubePtr open(OaOpenQube(node)); open)
        print_data(node, qube);
    else
        util_notice(NoticeKind::Warning, "the data of the qube cannot be read");
    for (const std::string &line : describe_qube(qube))
        puts(line.c_str());
    print_bands(qube);
    return "";
}

// --- Planes and spectra ---------------------------------------------------------------------------------------------

std::string unknown_suffix(const OaQubeKeywords &qube, const std::string &name) {
    constexpr int64_t most_named = 20;
    const int64_t count = suffix_plane_count(qube);
    if (count == 0)
        return "there is no suffix plane " + name + "; the qube has none";
    std::string text = "there is no suffix plane " + name + "; there are ";
    for (int64_t number = 1; number <= std::min(count, most_named); ++number)
        text += (number > 1 ? ", " : "") + suffix_plane_name(qube, suffix_plane(qube, number));
    return count > most_named ? text + util_format(" and %lld more", static_cast<long long>(count - most_named)) : text;
}

// Returns an empty text, or what failed; the file is then as it was.
std::string export_spectrum(const Request &request, const ObjDesc *node, OaQube *qube) {
    const bool to_file = *request.csv != "-";
    OaFileKeywords file;
    if (to_file && OaGetFileKeywords(node, &file) == 0 &&
        is_one_of(*request.csv, files_of_product(node, file.file_name)))
        return *request.csv + " belongs to the product";
    QubeSpectrum spectrum;
    const Place &middle = *request.spectrum;
    if (!read_spectrum(qube, middle.line, middle.sample, middle.box, &spectrum))
        return "the spectrum cannot be read";
    const OaQubeKeywords &keywords = OaKeywordsOfQube(qube);
    if (!to_file)
        return write_spectrum_csv(keywords, spectrum, stdout) ? "" : "the spectrum cannot be written";
    Output output;
    std::string error = output.open(*request.csv);
    if (error.empty())
        error = write_spectrum_csv(keywords, spectrum, output.stream()) ? output.commit() : output.failure();
    return error;
}

std::string export_part(const Request &request, const ObjDesc *node) {
    const std::shared_ptr<OaQube> qube = OaQubePtr(OaOpenQube(node));
    if (!qube)
        return qube_failure;
    const OaQubeKeywords &keywords = OaKeywordsOfQube(qube.get());
    for (const std::string &remark : keywords.remarks)
        util_notice(NoticeKind::Warning, remark);
    if (request.spectrum)
        return export_spectrum(request, node, qube.get());
    OaQubePlane plane = {OA_BAND_AXIS, request.image.band, false};
    std::string suffix_name;
    if (request.suffix) {
        const auto found = find_suffix_plane(keywords, *request.suffix);
        if (!found)
            return unknown_suffix(keywords, *request.suffix);
        plane = *found;
        suffix_name = suffix_plane_name(keywords, plane);
    }
    return export_image(request.image, node, qube_plane_source(qube, plane, suffix_name).get());
}

}  // namespace

int run_qube(std::span<char *const> arguments) {
    Request request;
    const std::string mistake = take_request(arguments, &request);
    if (!mistake.empty())
        return fail(mistake);
    std::string label;
    const OdlTree root = open_product(request.file, &label);
    if (!root)
        return exit_failed;
    const ObjDesc *node =
        request.object ? find_object(root.get(), *request.object) : find_object_of(root.get(), {"QUBE", "*QUBE"});
    if (!node)
        return fail(label + ": there is no qube" + (request.object ? " " + *request.object : ""));
    const bool is_description = !request.band && !request.suffix && !request.spectrum;
    const std::string error = is_description ? describe(node) : export_part(request, node);
    if (!error.empty())
        return fail(label + ": " + error);
    return had_notices() ? exit_with_messages : exit_done;
}
