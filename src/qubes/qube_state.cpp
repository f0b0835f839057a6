#include "qubes/qube_state.h"

#include "qubes/control_window.h"
#include "qubes/spectrum_windows.h"
#include "viewer/model/qube_source.h"

#include <algorithm>

namespace {

constexpr int suffix_list_command = 1052;
constexpr int control_command = 1054;
constexpr int next_band_command = 2070;
constexpr int previous_band_command = 2071;

// Centres and units; none where there are too many to be looked through.
std::vector<std::string> names_of_bands(const OaQubeKeywords &qube) {
    constexpr int64_t most_named = 4096;
    const int64_t bands = qube.core_items[OA_BAND_AXIS];
    std::vector<std::string> names;
    if (bands > most_named || qube.band_bins.centers.empty())
        return names;
    const std::string unit = qube.band_bins.unit.empty() ? "" : " " + qube.band_bins.unit;
    for (int64_t band = 1; band <= bands; ++band) {
        names.push_back(band_center_text(qube, band));
        if (!names.back().empty())
            names.back() += unit;
    }
    return names;
}

// Neighbouring bands are much alike: three from all over the range, that of the greater centre in red.
BandChoice spread_bands(const OaQubeKeywords &qube) {
    const int64_t bands = qube.core_items[OA_BAND_AXIS];
    BandChoice choice = default_bands({}, bands);
    if (choice.bands.size() != 3)
        return choice;
    const bool ascends = band_center(qube, 1) < band_center(qube, bands);
    for (int64_t i = 0; i < 3; ++i) {
        const int64_t sixths = 2 * i + 1;
        const int64_t place = bands / 6 * sixths + bands % 6 * sixths / 6;  // from 0
        choice.bands[static_cast<size_t>(ascends ? 2 - i : i)].band = 1 + place;
    }
    return choice;
}

// The window that the state belongs to; null while it is being made.
Window *window_of(const QubeState *state) {
    const std::vector<Window *> windows = gui_windows();
    const auto found =
        std::find_if(windows.begin(), windows.end(), [&](const Window *window) { return qube_state(window) == state; });
    return found == windows.end() ? nullptr : *found;
}

void step(Window *image_window, int64_t bands) {
    if (const QubeState *state = qube_state(image_window))
        show_band(image_window, state->plane.number + bands);
}

}  // namespace

bool QubeState::offers(int command) const {
    switch (command) {
        case suffix_list_command:
            return !plane.is_suffix && suffix_plane_count(OaKeywordsOfQube(qube.get())) > 0;
        case control_command:
            return !plane.is_suffix;
        case next_band_command:
            return !plane.is_suffix && plane.number < band_count(*this);
        case previous_band_command:
            return !plane.is_suffix && plane.number > 1;
        case keep_spectrum_command:
            return has_spectra() && !spectra.shown_is_kept();
        case remove_kept_command:
            return !spectra.kept.empty();
        default:
            return false;
    }
}

std::unique_ptr<QubeState> QubeState::of_plane(const OaQubePlane &shown) const {
    auto state = std::make_unique<QubeState>(qube, shown);
    state->spectrum_on_click = spectrum_on_click;
    state->box = box;
    state->spectra.as_plot = spectra.as_plot;
    state->spectra.as_table = spectra.as_table;
    return state;
}

std::unique_ptr<ModuleState> QubeState::twin() const {
    return of_plane(plane);
}

std::unique_ptr<SampleSource> QubeState::prepare_image(GenericState *state) {
    const OaQubeKeywords &keywords = OaKeywordsOfQube(qube.get());
    state->display_state->is_of_qube = true;
    if (plane.is_suffix) {
        state->display_state->part_name = suffix_plane_name(keywords, plane);
    } else if (band_count(*this) > 1) {
        if (!state->bands) {
            state->bands = std::make_unique<BandState>();
            state->bands->count = band_count(*this);
            state->bands->names = names_of_bands(keywords);
            state->bands->greys_are_plain = true;
            state->bands->choice = {true, {{plane.number, {255, 255, 255}, {}, {}}}};
            state->bands->colours = spread_bands(keywords);
        }
        state->bands->maker = [this](const ObjDesc *, int64_t band) { return source_of({OA_BAND_AXIS, band, false}); };
    }
    return source_of(plane);
}

std::unique_ptr<SampleSource> QubeState::source_of(const OaQubePlane &shown) {
    QubeClick click;
    if (has_spectra())
        click = [this](int64_t line, int64_t sample) {
            Window *window = window_of(this);
            return window && spectrum_on_click && show_spectrum(window, line, sample);
        };
    const std::string name = shown.is_suffix ? suffix_plane_name(OaKeywordsOfQube(qube.get()), shown) : "";
    return qube_plane_source(qube, shown, name, std::move(click));
}

void QubeState::follow_bands(Window *window) {
    const BandChoice &choice = window_state(window)->bands->choice;
    if (choice.is_grey)
        plane.number = choice.bands.front().band;
    for (const int command : {next_band_command, previous_band_command})
        gui_enable_command(window, command, offers(command));
    follow_qube(window);
}

QubeState *qube_state(const Window *image_window) {
    const GenericState *state = window_state(image_window);
    return state ? dynamic_cast<QubeState *>(state->module.get()) : nullptr;
}

int64_t band_count(const QubeState &state) {
    return OaKeywordsOfQube(state.qube.get()).core_items[OA_BAND_AXIS];
}

std::string name_for_titles(const Window *image_window) {
    constexpr size_t longest = 60;
    const std::string &path = window_state(image_window)->label_state->file_name;
    return shown_name(path.substr(path.rfind('/') + 1), longest);
}

bool shows_plane(const Window *image_window) {
    const GenericState *state = window_state(image_window);
    return state && (!state->bands || state->bands->choice.is_grey);
}

void show_next_band(Window *image_window) {
    step(image_window, 1);
}

void show_previous_band(Window *image_window) {
    step(image_window, -1);
}
