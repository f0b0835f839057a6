#include "viewer/histogram_window.h"

#include "base/text.h"
#include "viewer/commands.h"
#include "viewer/histogram_drawing.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int histogram_resource = 201;
constexpr int histogram_command = 1050;
constexpr int bars_text = 2;
constexpr int level_text = 3;
constexpr int reset_button = 4;
constexpr int invert_command = 1027;
constexpr int logarithmic_command = 2020;
constexpr int reset_command = 2021;
constexpr int close_command = 1008;
constexpr int far_step = 10;
constexpr size_t longest_title_name = 60;

struct BarRow {
    DisplayBar bar;
    int command;  // that selects it
};
constexpr BarRow bars[] = {{DisplayBar::Black, 2022}, {DisplayBar::White, 2023}, {DisplayBar::Shift, 2024}};
constexpr int last_bar = 2;

const GenericState &image_of(const HistogramState &histogram) {
    return *window_state(histogram.image_window);
}

DisplayControl &control_of(const HistogramState &histogram) {
    return image_of(histogram).display_state->control;
}

HistogramLayout layout_of(const Window *window, const HistogramState &histogram) {
    return lay_out_histogram(histogram, control_of(histogram), gui_client_size(window));
}

// --- High counts --------------------------------------------------------------------------------------------------

// Asks about each high level once. False when the image window has gone meanwhile.
bool ask_about_high_levels(const Window *image_window, LevelHistogram *histogram) {
    constexpr int yes = 0;
    constexpr int no = 1;
    for (const int level : unanswered_high_levels(*histogram)) {
        const auto index = static_cast<size_t>(level);
        histogram->answered[index] = true;
        if (session().unattended)
            continue;
        const int answer = gui_question(
            util_format("Bin %d contains more than 1/4 of the pixels.\nDo you want to ignore these values?", level),
            {"Yes", "No"});
        if (answer != yes && answer != no)
            gui_error("High pixel count - invalid command");
        if (!gui_window_exists(image_window))
            return false;
        histogram->ignored[index] = answer == yes;
    }
    return true;
}

// --- Texts and marks ----------------------------------------------------------------------------------------------

std::string pixels_text(int64_t count) {
    return util_format("%lld pixel%s", static_cast<long long>(count), count == 1 ? "" : "s");
}

void show_bars(Window *window, const HistogramState &histogram) {
    const DisplayControl &control = control_of(histogram);
    gui_set_text(window, bars_text,
                 util_format("Black point %d   White point %d   Shift %+d   %s", control.lbarh, control.rbarh,
                             control.mbarh - control.maxpix, pixels_text(histogram.histogram.pixels).c_str()));
    for (const BarRow &row : bars)
        gui_check_command(window, row.command, row.bar == histogram.bar);
    gui_check_command(window, invert_command, control.inverted);
    gui_check_command(window, logarithmic_command, histogram.histogram.logarithmic);
}

void show_level(Window *window, const HistogramState &histogram) {
    const int level = histogram.pointed_level;
    if (level < 0) {
        gui_set_text(window, level_text, "");
        return;
    }
    gui_set_text(window, level_text,
                 util_format("Level %d: %s (%.3g %%), shown as %d", level,
                             pixels_text(histogram.histogram.counts[static_cast<size_t>(level)]).c_str(),
                             histogram_share(histogram.histogram, level),
                             control_levels(control_of(histogram))[static_cast<size_t>(level)]));
}

void show_all(Window *window, const HistogramState &histogram) {
    show_bars(window, histogram);
    show_level(window, histogram);
    gui_invalidate(window);
}

// --- Bars ---------------------------------------------------------------------------------------------------------

void set_bar(HistogramState *histogram, int position) {
    if (move_bar(&control_of(*histogram), histogram->bar, position))
        UpdateDisplay(histogram->image_window);
}

void select_bar(Window *window, HistogramState *histogram, DisplayBar bar) {
    histogram->bar = bar;
    show_all(window, *histogram);
}

void reset_bars(HistogramState *histogram) {
    DisplayControl &control = control_of(*histogram);
    const bool inverted = control.inverted;
    control = DisplayControl();
    control.inverted = inverted;
    UpdateDisplay(histogram->image_window);
}

// Tab goes from bar to bar, then on to the next control.
bool select_next_bar(Window *window, HistogramState *histogram, int step) {
    int index = 0;
    while (bars[index].bar != histogram->bar)
        ++index;
    index += step;
    const bool stays = index >= 0 && index <= last_bar;
    select_bar(window, histogram, bars[stays ? index : step > 0 ? 0 : last_bar].bar);
    return stays;
}

// --- Events -------------------------------------------------------------------------------------------------------

// What stands in the menu and is done by the image window.
bool is_of_image(int command, const Window *image_window) {
    return find_command(command, CommandDispatcher::Application, image_window) &&
           gui_command_enabled(image_window, command);
}

bool is_own(int command) {
    return command == close_command || command == logarithmic_command || command == reset_command ||
           std::any_of(std::begin(bars), std::end(bars), [&](const BarRow &row) { return row.command == command; });
}

long win_histogram_e_create(Window *window) {
    const GenericState *state = window_state(window);
    if (!state || !state->histogram || !has_colour_table(window_state(state->histogram->image_window))) {
        gui_error("Histogram - invalid state");
        return 1;
    }
    const std::string &path = state->label_state->file_name;
    gui_set_title(window, "Lumacart - Histogram - " + shown_name(path.substr(path.rfind('/') + 1), longest_title_name));
    const HistogramState &histogram = *state->histogram;
    for (const int command : gui_commands(window))
        gui_enable_command(window, command,
                           is_own(command) || is_of_image(command, histogram.image_window) ||
                               find_command(command, CommandDispatcher::Application, window));
    show_palettes(window, image_of(histogram));
    show_all(window, histogram);
    return 0;
}

void win_histogram_e_mouse_down(Window *window, HistogramState *histogram, const Event &event) {
    if (event.button != 1)
        return;
    const HistogramLayout layout = layout_of(window, *histogram);
    const auto bar = bar_at(layout, *histogram, control_of(*histogram), event.position);
    if (!bar)
        return;
    histogram->dragging = true;
    histogram->grip = event.position.x - level_place(layout, bar_position(control_of(*histogram), *bar));
    select_bar(window, histogram, *bar);
}

void win_histogram_e_mouse_move(Window *window, HistogramState *histogram, const Event &event) {
    const HistogramLayout layout = layout_of(window, *histogram);
    if (histogram->dragging) {
        set_bar(histogram, level_at(layout, event.position.x - histogram->grip));
        return;
    }
    const bool over_bar = bar_at(layout, *histogram, control_of(*histogram), event.position).has_value();
    gui_set_pointer(window, over_bar ? PointerShape::LeftRight : PointerShape::Arrow);
    const int level = level_at(layout, event.position.x);
    histogram->pointed_level = level >= 0 && level <= 255 ? level : -1;
    show_level(window, *histogram);
}

void win_histogram_e_mouse_leave(Window *window, HistogramState *histogram) {
    histogram->pointed_level = -1;
    show_level(window, *histogram);
}

// 1 when the key was used.
long win_histogram_e_key(Window *window, HistogramState *histogram, const Event &event) {
    const int position = bar_position(control_of(*histogram), histogram->bar);
    const int step = event.modifiers & GUI_SHIFT ? far_step : 1;
    switch (event.key) {
        case GuiKey::Left:
        case GuiKey::Down:
            set_bar(histogram, position - step);
            return 1;
        case GuiKey::Right:
        case GuiKey::Up:
            set_bar(histogram, position + step);
            return 1;
        case GuiKey::PageDown:
            set_bar(histogram, position - far_step);
            return 1;
        case GuiKey::PageUp:
            set_bar(histogram, position + far_step);
            return 1;
        case GuiKey::Home:
            set_bar(histogram, 0);
            return 1;
        case GuiKey::End:
            set_bar(histogram, 255);
            return 1;
        case GuiKey::Tab:
            return select_next_bar(window, histogram, event.modifiers & GUI_SHIFT ? -1 : 1) ? 1 : 0;
        default:
            return 0;
    }
}

void win_histogram_e_command(Window *window, HistogramState *histogram, int number) {
    for (const BarRow &row : bars) {
        if (row.command == number)
            select_bar(window, histogram, row.bar);
    }
    if (number == close_command) {
        gui_destroy_window(window);
    } else if (number == reset_command) {
        reset_bars(histogram);
    } else if (number == logarithmic_command) {
        histogram->histogram.logarithmic = !histogram->histogram.logarithmic;
        show_all(window, *histogram);
    } else if (find_command(number, CommandDispatcher::Application, window)) {
        do_WIN_MENUBAR(window, number);
    } else {
        do_WIN_MENUBAR(histogram->image_window, number);
    }
}

}  // namespace

Window *histogram_of(const GenericState &image) {
    return child_of(&image, histogram_command);
}

bool histogram_is_open(const GenericState &image) {
    return histogram_of(image) != nullptr;
}

void show_histogram(Window *image_window) {
    if (raise_child(image_window, histogram_command))
        return;
    const GenericState *image = window_state(image_window);
    if (!has_colour_table(image)) {
        gui_error("Histogram - invalid state");
        return;
    }
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Histogram;
    state->directory = image->directory;
    state->label_state = std::make_unique<LabelState>();
    state->label_state->file_name = image->label_state->file_name;
    state->histogram = std::make_unique<HistogramState>();
    state->histogram->image_window = image_window;
    LevelHistogram &histogram = state->histogram->histogram;
    count_histogram(*image->image_info->display_image, &histogram);
    if (!ask_about_high_levels(image_window, &histogram))
        return;
    // Bars begin on what is shown plainly.
    if (std::exchange(image->display_state->control.inverted, false))
        UpdateDisplay(image_window);
    Window *window = open_document_window(histogram_resource, WIN_HISTOGRAM_eh, std::move(state), image_window);
    if (window && gui_window_exists(image_window))
        keep_child(image_window, histogram_command, window);
}

long WIN_HISTOGRAM_eh(Window *window, const Event &event) {
    if (event.type == EventType::Create)
        return win_histogram_e_create(window);
    if (event.type == EventType::Destroy) {
        free_window_state(window);
        return 0;
    }
    const GenericState *state = window_state(window);
    HistogramState *histogram = state ? state->histogram.get() : nullptr;
    if (!histogram || !gui_window_exists(histogram->image_window))
        return 0;
    switch (event.type) {
        case EventType::Update:
            draw_histogram(event.canvas, event.area, *histogram, control_of(*histogram),
                           image_of(*histogram).image_info->display_image->colours, gui_client_size(window));
            break;
        case EventType::Size:
            gui_invalidate(window);
            break;
        case EventType::Close:
            gui_destroy_window(window);
            break;
        case EventType::MouseDown:
        case EventType::MouseDouble:
            win_histogram_e_mouse_down(window, histogram, event);
            break;
        case EventType::MouseMove:
            win_histogram_e_mouse_move(window, histogram, event);
            break;
        case EventType::MouseUp:
            histogram->dragging = false;
            break;
        case EventType::MouseLeave:
            win_histogram_e_mouse_leave(window, histogram);
            break;
        case EventType::Key:
            return win_histogram_e_key(window, histogram, event);
        case EventType::Control:
            if (event.number == reset_button)
                reset_bars(histogram);
            break;
        case EventType::Command:
            win_histogram_e_command(window, histogram, event.number);
            break;
        default:
            break;
    }
    return 0;
}

void follow_colours(Window *window) {
    if (const GenericState *state = window_state(window))
        show_all(window, *state->histogram);
}

void follow_pixels(Window *window) {
    const GenericState *state = window_state(window);
    if (!state)
        return;
    Window *image_window = state->histogram->image_window;
    // Questions may end the window: they are asked about a copy.
    LevelHistogram histogram = state->histogram->histogram;
    count_histogram(*image_of(*state->histogram).image_info->display_image, &histogram);
    if (!ask_about_high_levels(image_window, &histogram) || !gui_window_exists(window))
        return;
    state->histogram->histogram = histogram;
    show_all(window, *state->histogram);
}
