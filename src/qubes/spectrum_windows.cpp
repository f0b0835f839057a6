#include "qubes/spectrum_windows.h"

#include "base/text.h"
#include "qubes/window_room.h"

#include <algorithm>

namespace {

constexpr int plot_resource = 250;
constexpr int plot_child = 2082;  // among the image window's children
constexpr int table_child = 2083;
constexpr GuiSize plot_size = {640, 440};
constexpr GuiSize table_size = {380, 440};
constexpr GuiSize table_size_with_paging = {480, 540};  // the dialog below it
constexpr int64_t most_bands = 1'000'000;  // that leave memory for the curves and do not keep the user waiting

void enable_commands(Window *image_window) {
    const QubeState &state = *qube_state(image_window);
    for (Window *window : {image_window, child_of(window_state(image_window), plot_child)})
        for (const int command : {keep_spectrum_command, remove_kept_command})
            if (window)
                gui_enable_command(window, command, state.offers(command));
}

// False after a message.
bool make_plot(const Window *image_window, CurvePlot *plot) {
    const QubeState &state = *qube_state(image_window);
    if (!with_memory([&] { *plot = spectrum_plot(OaKeywordsOfQube(state.qube.get()), state.spectra); })) {
        gui_error("There is not enough memory for a plot of these spectra.");
        return false;
    }
    const std::string name = name_for_titles(image_window);
    plot->title = "Lumacart - Spectrum Plot - " + name;
    plot->directory = window_state(image_window)->directory;
    plot->file_stem = name.substr(0, name.rfind('.')) + "_spectrum";
    return true;
}

// False after a message.
bool show_plot(Window *image_window) {
    CurvePlot plot;
    if (!make_plot(image_window, &plot))
        return false;
    const std::shared_ptr<GuiRect> place = qube_state(image_window)->spectra.plot_place;
    Window *window = child_of(window_state(image_window), plot_child);
    if (window) {
        replace_curves(window, std::move(plot));
    } else {
        if (place->width == 0)
            *place = free_place(image_window, plot_size);
        window = open_curve_plot(std::move(plot), {plot_resource, place, image_window});
        if (!window)
            return false;
        keep_child(image_window, plot_child, window);
        enable_commands(image_window);
    }
    return true;
}

// False after a message. The image window may have gone during one.
bool show_table(Window *image_window) {
    const QubeState &state = *qube_state(image_window);
    TableOptions options = {spectrum_rows(state.qube, state.spectra.shown), state.spectra.table_place, image_window};
    Window *window = child_of(window_state(image_window), table_child);
    if (window) {
        replace_spectrum(window, std::move(*options.spectrum));
        return true;
    }
    restore_profile();
    auto product = std::make_unique<GenericState>();
    if (!reopen_label(*window_state(image_window), product.get()) || !gui_window_exists(image_window))
        return false;
    if (options.place->width == 0) {
        const bool is_paged = options.spectrum->rows >= paging_threshold;
        *options.place = free_place(image_window, is_paged ? table_size_with_paging : table_size);
        options.place->width = table_size.width;
        options.place->height = table_size.height;
    }
    window = open_table(std::move(product), options);
    if (!window || !gui_window_exists(image_window))
        return false;
    keep_child(image_window, table_child, window);
    return true;
}

// Reads the spectrum; null after a message, during which the image window may have gone.
SharedSpectrum read_shown_spectrum(const QubeState &state, int64_t line, int64_t sample) {
    const int64_t bands = OaKeywordsOfQube(state.qube.get()).core_items[OA_BAND_AXIS];
    std::string fault = util_format("Spectra of more than %lld bands are not shown. The qube has %lld.",
                                    static_cast<long long>(most_bands), static_cast<long long>(bands));
    const auto spectrum = std::make_shared<QubeSpectrum>();
    if (bands <= most_bands) {
        const BusyCursor busy;
        const bool has_memory = with_memory([&] {
            const bool is_read = read_spectrum(state.qube.get(), line, sample, state.box, spectrum.get());
            fault = is_read ? "" : error_string;
        });
        if (!has_memory)
            fault = "There is not enough memory for this spectrum.";
    }
    if (fault.empty())
        return spectrum;
    gui_error(fault);
    return nullptr;
}

// The image window whose spectra a window shows; null for windows of other kinds.
Window *image_window_of(Window *window) {
    if (qube_state(window))
        return window;
    const GenericState *state = window_state(window);
    return state && qube_state(state->opened_from) ? state->opened_from : nullptr;
}

// After the kept spectra changed.
void show_kept(Window *image_window) {
    CurvePlot plot;
    Window *window = child_of(window_state(image_window), plot_child);
    if (window && make_plot(image_window, &plot))
        replace_curves(window, std::move(plot));
    if (gui_window_exists(image_window))
        enable_commands(image_window);
}

}  // namespace

bool show_spectrum(Window *image_window, int64_t line, int64_t sample) {
    QubeState *state = qube_state(image_window);
    if (!state || (!state->spectra.as_plot && !state->spectra.as_table))
        return false;
    const SharedSpectrum spectrum = read_shown_spectrum(*state, line, sample);
    if (!spectrum || !gui_window_exists(image_window))
        return false;
    state->spectra.shown = spectrum;
    enable_commands(image_window);
    const size_t children = window_state(image_window)->children.size();
    const bool plotted = !state->spectra.as_plot || show_plot(image_window);
    const bool listed =
        gui_window_exists(image_window) && (!qube_state(image_window)->spectra.as_table || show_table(image_window));
    if (!gui_window_exists(image_window))
        return false;
    for (const int child : {table_child, plot_child})  // the plot last: it takes the key that keeps a spectrum
        if (Window *window = child_of(window_state(image_window), child))
            keep_in_sight(image_window, window);
    if (window_state(image_window)->children.size() > children)
        return_to_image(image_window);
    return plotted && listed;
}

void choose_spectrum_view(Window *image_window, SpectrumView view, bool shown) {
    QubeState *state = qube_state(image_window);
    if (!state)
        return;
    const bool is_plot = view == SpectrumView::Plot;
    (is_plot ? state->spectra.as_plot : state->spectra.as_table) = shown;
    Window *window = child_of(window_state(image_window), is_plot ? plot_child : table_child);
    if (!shown)
        gui_destroy_window(window);
    else if (state->spectra.shown && !window)
        is_plot ? show_plot(image_window) : show_table(image_window);
}

void keep_spectrum(Window *window) {
    Window *image_window = image_window_of(window);
    if (!image_window)
        return;
    SpectrumState &spectra = qube_state(image_window)->spectra;
    if (!spectra.shown)
        return gui_note("There is no spectrum yet. Click on the image to see one.");
    if (spectra.shown_is_kept())
        return;
    // Of very many bands fewer, for the sake of memory.
    const size_t most_kept = std::min<size_t>(20, 4 * most_bands / spectra.shown->values.size());
    if (spectra.kept.size() >= most_kept)
        return gui_note(util_format("At most %zu spectra are kept.", most_kept));
    spectra.kept.push_back(spectra.shown);
    show_kept(image_window);
}

void remove_kept_spectra(Window *window) {
    Window *image_window = image_window_of(window);
    if (!image_window || !qube_state(image_window)->spectra.shown)
        return;
    qube_state(image_window)->spectra.kept.clear();
    show_kept(image_window);
}
