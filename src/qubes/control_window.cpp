#include "qubes/control_window.h"

#include "base/text.h"
#include "qubes/spectrum_windows.h"
#include "qubes/window_room.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr int control_command = 1054;
constexpr int close_command = 1008;
constexpr int control_resource = 240;

// Controls.
constexpr int band_field = 1;
constexpr int bands_text = 2;
constexpr int previous_button = 3;
constexpr int next_button = 4;
constexpr int shown_text = 5;
constexpr int band_list = 6;
constexpr int click_box = 7;
constexpr int plot_box = 8;
constexpr int table_box = 9;
constexpr int description_text = 20;

struct BoxButton {
    int control;
    int64_t box;
};
constexpr std::array box_buttons = {BoxButton{11, 1}, BoxButton{12, 3}, BoxButton{13, 5}};

// A list of more is shown in parts.
constexpr int64_t most_listed = 1'000'000;

struct ControlState : ModuleState {
    Window *image_window = nullptr;  // its owner
    int64_t first_listed = 0;        // band in the first row of the list; 0: there is none yet
    Timer *timer = nullptr;          // until the band that was selected is shown
};

ControlState &control_state(const Window *window) {
    return static_cast<ControlState &>(*window_state(window)->module);
}

// --- What it shows ------------------------------------------------------------------------------------------------

std::string plural_bands(int64_t bands) {
    return util_format("of %lld band%s", static_cast<long long>(bands), bands == 1 ? "" : "s");
}

std::string text_of_shown(const Window *image_window) {
    const QubeState &qube = *qube_state(image_window);
    if (shows_plane(image_window))
        return "Shown: band " + qube_band_text(OaKeywordsOfQube(qube.qube.get()), qube.plane.number);
    std::string text;
    for (const ShownBand &band : window_state(image_window)->bands->choice.bands)
        text += (text.empty() ? "" : ", ") +
                util_format("%lld in %s", static_cast<long long>(band.band), colour_name(band.colour).c_str());
    return "Shown: band " + text;
}

// Lists the bands around one, where they are not listed yet.
void list_bands(Window *window, const QubeState &qube, int64_t around) {
    ControlState &control = control_state(window);
    const int64_t first = (around - 1) / most_listed * most_listed + 1;
    if (control.first_listed == first)
        return;
    control.first_listed = first;
    const int64_t bands = band_count(qube);
    GuiGrid grid;
    grid.rows = std::min(most_listed, bands - first + 1);
    grid.first_row = first;
    const std::string part =
        util_format("%lld to %lld", static_cast<long long>(first), static_cast<long long>(first + grid.rows - 1));
    grid.columns.push_back({bands > most_listed ? "Bands " + part : "Bands", {}, false});
    grid.text = [shared = qube.qube, first](int64_t row, int) {
        return qube_band_text(OaKeywordsOfQube(shared.get()), first + row);
    };
    gui_set_grid(window, band_list, std::move(grid));
}

void show_bands(Window *window) {
    const ControlState &control = control_state(window);
    const QubeState &qube = *qube_state(control.image_window);
    const int64_t band = qube.plane.number;
    list_bands(window, qube, band);
    // While several bands are shown none is the current one, so that each can be selected.
    gui_set_grid_current(window, band_list,
                         shows_plane(control.image_window) ? GuiCell{band - control.first_listed, 0} : GuiCell());
    gui_set_text(window, band_field, std::to_string(band));
    gui_set_text(window, shown_text, text_of_shown(control.image_window));
    gui_enable_control(window, previous_button, band > 1);
    gui_enable_control(window, next_button, band < band_count(qube));
    for (const int command : gui_commands(window))
        gui_enable_command(window, command,
                           command == close_command || find_command(command, CommandDispatcher::Application, window) ||
                               find_command(command, CommandDispatcher::Application, control.image_window));
}

void show_spectrum_settings(Window *window, const QubeState &qube) {
    gui_check_control(window, click_box, qube.spectrum_on_click);
    gui_check_control(window, plot_box, qube.spectra.as_plot);
    gui_check_control(window, table_box, qube.spectra.as_table);
    for (const int control : {plot_box, table_box})
        gui_enable_control(window, control, qube.spectrum_on_click);
    for (const BoxButton &button : box_buttons) {
        gui_check_control(window, button.control, button.box == qube.box);
        gui_enable_control(window, button.control, qube.spectrum_on_click);
    }
}

// --- What the user does -------------------------------------------------------------------------------------------

// Where it fails the window is left as it was, but for what was selected or typed.
void go_to_band(Window *window, int64_t band) {
    Window *image_window = control_state(window).image_window;
    if (band == qube_state(image_window)->plane.number && shows_plane(image_window))
        return;
    if (!show_band(image_window, band) && gui_window_exists(window))
        show_bands(window);
}

void go_to_typed_band(Window *window) {
    const int64_t bands = band_count(*qube_state(control_state(window).image_window));
    const std::string typed = gui_text(window, band_field);
    const std::string_view text = util_trim(typed);
    int64_t band = 0;
    const char *end = text.data() + text.size();
    if (std::from_chars(text.data(), end, band) != std::from_chars_result{end, std::errc()} || band < 1 ||
        band > bands) {
        gui_error(util_format("The band is a whole number from 1 to %lld.", static_cast<long long>(bands)));
        if (gui_window_exists(window))
            gui_focus_control(window, band_field);
        return;
    }
    go_to_band(window, band);
}

// A selection is followed once the list has come to rest: only then it can be taken back, and rows that were passed
// over meanwhile are not read.
void follow_list_later(Window *window) {
    ControlState &control = control_state(window);
    if (!control.timer)
        control.timer = gui_start_timer(window, 0);
}

void follow_list(Window *window) {
    ControlState &control = control_state(window);
    gui_stop_timer(control.timer);
    control.timer = nullptr;
    const int64_t row = gui_grid_current(window, band_list).row;
    if (row >= 0)
        go_to_band(window, control.first_listed + row);
}

void use_control(Window *window, const Event &event) {
    QubeState &qube = *qube_state(control_state(window).image_window);
    switch (event.number) {
        case band_field:
            if (event.use == ControlUse::Activated)
                go_to_typed_band(window);
            break;
        case band_list:
            follow_list_later(window);
            break;
        case previous_button:
            show_previous_band(control_state(window).image_window);
            break;
        case next_button:
            show_next_band(control_state(window).image_window);
            break;
        case click_box:
            qube.spectrum_on_click = gui_control_checked(window, click_box);
            show_spectrum_settings(window, qube);
            break;
        case plot_box:
        case table_box:
            choose_spectrum_view(control_state(window).image_window,
                                 event.number == plot_box ? SpectrumView::Plot : SpectrumView::Table,
                                 gui_control_checked(window, event.number));
            break;
        default:
            for (const BoxButton &button : box_buttons)
                if (event.number == button.control)
                    qube.box = button.box;
            break;
    }
}

void run_command(Window *window, int number) {
    if (number == close_command)
        gui_destroy_window(window);
    else if (find_command(number, CommandDispatcher::Application, window))
        do_WIN_MENUBAR(window, number);
    else
        do_WIN_MENUBAR(control_state(window).image_window, number);
}

// --- The window ---------------------------------------------------------------------------------------------------

void create_control(Window *window) {
    Window *image_window = control_state(window).image_window;
    const QubeState &qube = *qube_state(image_window);
    gui_set_title(window, "Lumacart - Qube Control - " + name_for_titles(image_window));
    gui_set_text(window, bands_text, plural_bands(band_count(qube)));
    gui_set_paragraphs(window, description_text, describe_qube(OaKeywordsOfQube(qube.qube.get())));
    gui_show_paragraph(window, description_text, 0);
    show_spectrum_settings(window, qube);
    show_bands(window);
    gui_focus_control(window, band_list);
    const GuiRect own = gui_own_place(window);
    gui_place_window(window, free_place(image_window, {own.width, own.height}));
}

long control_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create_control(window);
            break;
        case EventType::Control:
            use_control(window, event);
            break;
        case EventType::Timer:
            follow_list(window);
            break;
        case EventType::Command:
            run_command(window, event.number);
            break;
        default:
            handle_common_event(window, event, CommandDispatcher::Application);
            break;
    }
    return 0;
}

}  // namespace

void show_qube_control(Window *image_window) {
    if (raise_child(image_window, control_command))
        return;
    auto control = std::make_unique<ControlState>();
    control->image_window = image_window;
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = window_state(image_window)->directory;
    state->module = std::move(control);
    keep_child(image_window, control_command,
               open_document_window(control_resource, control_eh, std::move(state), image_window));
}

void follow_qube(Window *image_window) {
    if (Window *window = child_of(window_state(image_window), control_command))
        show_bands(window);
}
