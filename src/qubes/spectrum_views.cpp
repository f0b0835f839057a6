// Spectra as curves and as rows.
#include "base/text.h"
#include "qubes/model/qube_text.h"
#include "qubes/spectrum_state.h"

#include <algorithm>
#include <cmath>

namespace {

std::string place_text(const QubeSpectrum &spectrum) {
    const std::string place = util_format("line %lld, sample %lld", static_cast<long long>(spectrum.line),
                                          static_cast<long long>(spectrum.sample));
    const auto box = static_cast<long long>(spectrum.box);
    return box > 1 ? place + util_format(", %lld x %lld", box, box) : place;
}

bool has_data(const QubeSpectrum &spectrum) {
    return std::any_of(spectrum.values.begin(), spectrum.values.end(),
                       [](const OaQubeValue &value) { return value.state == OA_QUBE_VALID; });
}

std::string no_data_text(const QubeSpectrum &spectrum) {
    const std::vector<OaQubeValue> &values = spectrum.values;
    const OaQubeState state = values.front().state;
    const bool is_one_state =
        std::all_of(values.begin(), values.end(), [state](const OaQubeValue &value) { return value.state == state; });
    const std::string what = values.size() == 1 ? "the only band is"
                             : is_one_state     ? util_format("all %zu bands are", values.size())
                                                : util_format("none of the %zu bands is", values.size());
    return "No data at " + place_text(spectrum) + ": " + what + " " +
           (is_one_state ? OaQubeStateName(state) : "valid") + ".";
}

std::string remark_of(const SpectrumState &spectra) {
    if (!has_data(*spectra.shown))
        return no_data_text(*spectra.shown);
    if (spectra.shown_is_kept())
        return util_format("%zu %s kept. Click on the image to add another.", spectra.kept.size(),
                           spectra.kept.size() == 1 ? "spectrum is" : "spectra are");
    return spectra.shown->values.size() == 1 ? "The qube has one band: its spectrum is a single point." : "";
}

std::string axis_title(const std::string &name, const std::string &unit) {
    return unit.empty() ? name : name + " [" + unit + "]";
}

// The centres of all bands; empty where one is not known.
std::vector<double> known_centers(const OaQubeKeywords &qube, size_t bands) {
    const std::vector<double> &centers = qube.band_bins.centers;
    if (centers.size() < bands)
        return {};
    const auto end = centers.begin() + static_cast<std::ptrdiff_t>(bands);
    const bool all_known = std::all_of(centers.begin(), end, [](double center) { return std::isfinite(center); });
    return all_known ? std::vector<double>(centers.begin(), end) : std::vector<double>();
}

std::vector<double> band_numbers(size_t bands) {
    std::vector<double> numbers(bands);
    for (size_t i = 0; i < bands; ++i)
        numbers[i] = static_cast<double>(i + 1);
    return numbers;
}

Curve curve_of(const QubeSpectrum &spectrum, const std::vector<double> &x) {
    Curve curve = {place_text(spectrum) + (has_data(spectrum) ? "" : " (no data)"), x, {}};
    curve.y.reserve(spectrum.values.size());
    for (const OaQubeValue &value : spectrum.values)
        curve.y.push_back(value.state == OA_QUBE_VALID ? value.physical : NAN);
    return curve;
}

}  // namespace

CurvePlot spectrum_plot(const OaQubeKeywords &qube, const SpectrumState &spectra) {
    const size_t bands = spectra.shown->values.size();
    std::vector<double> x = known_centers(qube, bands);
    CurvePlot plot;
    plot.x_title = x.empty() ? "Band" : axis_title("Band centre", qube.band_bins.unit);
    if (x.empty())
        x = band_numbers(bands);
    plot.y_title = axis_title(qube.core.name.empty() ? "Value" : qube.core.name, qube.core.unit);
    plot.remark = remark_of(spectra);
    plot.names_one = true;
    for (const SharedSpectrum &kept : spectra.kept)
        plot.curves.push_back(curve_of(*kept, x));
    if (!spectra.shown_is_kept())
        plot.curves.push_back(curve_of(*spectra.shown, x));
    return plot;
}

GuiGrid spectrum_rows(const std::shared_ptr<OaQube> &qube, const SharedSpectrum &spectrum) {
    const OaQubeKeywords &keywords = OaKeywordsOfQube(qube.get());
    GuiGrid grid;
    grid.rows = static_cast<int64_t>(spectrum->values.size());
    grid.columns = {{"BAND", {}, true}, {"CENTER", {}, true}, {"VALUE", {}, true}};
    if (const std::string &unit = keywords.band_bins.unit; !unit.empty())
        grid.columns[1].remarks = {unit};
    if (const std::string &unit = keywords.core.unit; !unit.empty())
        grid.columns[2].remarks = {unit};
    grid.columns[2].remarks.push_back(place_text(*spectrum));
    const size_t lines = grid.columns[2].remarks.size();
    for (GuiGridColumn &column : grid.columns)  // so that the names stand in a row
        column.remarks.resize(lines);
    grid.text = [qube, spectrum](int64_t row, int column) {
        switch (column) {
            case 0:
                return std::to_string(row + 1);
            case 1:
                return band_center_text(OaKeywordsOfQube(qube.get()), row + 1);
            default:
                return spectrum_value_text(spectrum->values[static_cast<size_t>(row)]);
        }
    };
    return grid;
}
