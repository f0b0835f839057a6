// What an image window keeps of its spectra, and what their windows show of it.
#pragma once

#include "qubes/model/spectrum.h"
#include "tables/tables.h"

#include <memory>
#include <vector>

using SharedSpectrum = std::shared_ptr<const QubeSpectrum>;

struct SpectrumState {
    bool as_plot = true;  // what a click opens; see choose_spectrum_view
    bool as_table = true;
    SharedSpectrum shown;              // the one asked for last; null: none yet
    std::vector<SharedSpectrum> kept;  // in the plot besides, the shown one among them once it is kept
    std::shared_ptr<GuiRect> plot_place = std::make_shared<GuiRect>();
    std::shared_ptr<GuiRect> table_place = std::make_shared<GuiRect>();

    bool shown_is_kept() const { return !kept.empty() && kept.back() == shown; }
};

// The kept spectra and the shown one, over the centres of the bands or, where these are not all known, their numbers.
// Gaps where there is no data. Without title and file names.
CurvePlot spectrum_plot(const OaQubeKeywords &qube, const SpectrumState &spectra);

// Columns BAND, CENTER and VALUE, a row for each band; special values by their names.
GuiGrid spectrum_rows(const std::shared_ptr<OaQube> &qube, const SharedSpectrum &spectrum);
