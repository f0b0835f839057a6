#include "qubes/spectrum_windows.h"

#include "base/text.h"
#include "tables/tables.h"

#include <cmath>

bool show_spectrum(Window *image_window, int64_t line, int64_t sample) {
    const QubeState *state = qube_state(image_window);
    QubeSpectrum spectrum;
    if (!state || !read_spectrum(state->qube.get(), line, sample, state->box, &spectrum)) {
        gui_error(error_string);
        return false;
    }
    const OaQubeKeywords &qube = OaKeywordsOfQube(state->qube.get());
    Curve curve;
    curve.name = util_format("line %lld, sample %lld", static_cast<long long>(line), static_cast<long long>(sample));
    for (size_t i = 0; i < spectrum.values.size(); ++i) {
        const double center = band_center(qube, static_cast<int64_t>(i) + 1);
        curve.x.push_back(std::isfinite(center) ? center : static_cast<double>(i + 1));
        curve.y.push_back(spectrum.values[i].state == OA_QUBE_VALID ? spectrum.values[i].physical : NAN);
    }
    CurvePlot plot;
    plot.title = "Lumacart - Spectrum from QUBE - " + window_state(image_window)->label_state->file_name;
    plot.x_title = "Band";
    plot.y_title = qube.core.name;
    plot.curves.push_back(std::move(curve));
    plot.directory = window_state(image_window)->directory;
    return open_curve_plot(std::move(plot)) != nullptr;
}
