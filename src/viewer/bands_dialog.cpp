#include "viewer/bands_dialog.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr int bands_resource = 132;
constexpr int limits_resource = 232;

// Controls; the dialog of limits alone lacks those that choose bands and colours.
constexpr int ok_button = 1;
constexpr int cancel_button = 2;
constexpr int all_bands = 11;
constexpr int shown_bands = 12;
constexpr int grey_choice = 21;
constexpr int colour_choice = 22;
constexpr int use_button = 31;
constexpr int leave_button = 32;
constexpr int other_colour = 44;
constexpr int minimum_field = 51;
constexpr int maximum_field = 52;
constexpr int computed_button = 53;

constexpr int64_t most_listed_bands = 65536;

struct ColourButton {
    int number;
    Colour colour;
};
constexpr std::array colour_buttons = {
    ColourButton{41, {255, 0, 0}},
    ColourButton{42, {0, 255, 0}},
    ColourButton{43, {0, 0, 255}},
};
// Of the bands that are added one after the other.
constexpr std::array colours_in_turn = {
    Colour{255, 0, 0},   Colour{0, 255, 0},   Colour{0, 0, 255},     Colour{0, 255, 255},
    Colour{255, 0, 255}, Colour{255, 255, 0}, Colour{255, 255, 255},
};

// One line of the list of bands that are shown.
struct Row {
    int64_t band = 1;
    Colour colour = {255, 255, 255};
    std::string minimum;  // as typed
    std::string maximum;
    std::string found_minimum;  // of the samples shown, where it is known
    std::string found_maximum;
};

struct BandDialog {
    const std::vector<std::string> names;
    const int64_t count;
    bool is_grey = false;
    std::vector<Row> colours;
    std::vector<Row> grey;  // one row
    BandChoice choice;      // the answer

    std::vector<Row> &rows() { return is_grey ? grey : colours; }
};

// The shortest text that reads as the same number.
std::string number_text(double number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

Row row_of(const ShownBand &shown, const RealRange *limits) {
    Row row{shown.band, shown.colour, {}, {}, {}, {}};
    if (shown.minimum)
        row.minimum = number_text(*shown.minimum);
    else if (limits)
        row.found_minimum = number_text(limits->minimum);
    if (shown.maximum)
        row.maximum = number_text(*shown.maximum);
    else if (limits)
        row.found_maximum = number_text(limits->maximum);
    return row;
}

// The limits are those found, of the first bands.
std::vector<Row> rows_of(const BandChoice &choice, const std::vector<RealRange> &found) {
    std::vector<Row> rows;
    for (const ShownBand &shown : choice.bands)
        rows.push_back(row_of(shown, rows.size() < found.size() ? &found[rows.size()] : nullptr));
    return rows;
}

BandDialog dialog_of(const BandState &bands) {
    BandDialog dialog{bands.names, bands.count, bands.choice.is_grey, {}, {}, {}};
    dialog.rows() = rows_of(bands.choice, bands.composite ? bands.composite->limits() : std::vector<RealRange>());
    if (dialog.is_grey)
        dialog.colours = rows_of(bands.colours, {});
    else
        dialog.grey.push_back(dialog.colours.empty() ? Row() : dialog.colours.front());
    return dialog;
}

// --- What the dialog shows ----------------------------------------------------------------------------------------

std::string limit_text(const std::string &typed, const std::string &found) {
    if (!util_trim(typed).empty())
        return typed;
    return found.empty() ? "computed" : found + " (computed)";
}

std::string row_text(const BandDialog &dialog, const Row &row) {
    const std::string colour = dialog.is_grey ? "grey" : colour_name(row.colour);
    const std::string start = band_title(dialog.names, row.band) + ", " + colour + ", ";
    if (util_trim(row.minimum + row.maximum + row.found_minimum + row.found_maximum).empty())
        return start + "limits computed";
    return start + limit_text(row.minimum, row.found_minimum) + " to " + limit_text(row.maximum, row.found_maximum);
}

Row *selected_row(Window *window, BandDialog *dialog) {
    const int line = gui_selected_line(window, shown_bands);
    const bool exists = line >= 0 && line < std::ssize(dialog->rows());
    return exists ? &dialog->rows()[static_cast<size_t>(line)] : nullptr;
}

void show_limits(Window *window, BandDialog *dialog) {
    const Row *row = selected_row(window, dialog);
    gui_set_text(window, minimum_field, row ? row->minimum : "");
    gui_set_text(window, maximum_field, row ? row->maximum : "");
}

void enable_controls(Window *window, BandDialog *dialog) {
    const bool has_row = selected_row(window, dialog) != nullptr;
    for (const int control : {minimum_field, maximum_field, computed_button})
        gui_enable_control(window, control, has_row);
    for (const int control : {41, 42, 43, other_colour, leave_button})
        gui_enable_control(window, control, has_row && !dialog->is_grey);
}

// Fills the list of bands that are shown and selects one of its lines, or its last one.
void show_rows(Window *window, BandDialog *dialog, int line) {
    std::vector<std::string> lines;
    for (const Row &row : dialog->rows())
        lines.push_back(row_text(*dialog, row));
    const int last = static_cast<int>(lines.size()) - 1;
    gui_set_list(window, shown_bands, std::move(lines));
    gui_select_line(window, shown_bands, std::min(line, last));
    enable_controls(window, dialog);
}

void show_selected_row(Window *window, BandDialog *dialog) {
    show_rows(window, dialog, gui_selected_line(window, shown_bands));
}

void show_choice(Window *window, BandDialog *dialog, int line) {
    show_rows(window, dialog, line);
    show_limits(window, dialog);
}

void fill_dialog(Window *window, BandDialog *dialog) {
    std::vector<std::string> lines;
    for (int64_t band = 1; band <= std::min(dialog->count, most_listed_bands); ++band)
        lines.push_back(band_title(dialog->names, band));
    gui_set_list(window, all_bands, std::move(lines));
    gui_select_line(window, all_bands, 0);
    gui_check_control(window, dialog->is_grey ? grey_choice : colour_choice, true);
    show_choice(window, dialog, 0);
}

// --- What the user does -------------------------------------------------------------------------------------------

void change_mode(Window *window, BandDialog *dialog, bool is_grey) {
    if (dialog->is_grey == is_grey)
        return;
    dialog->is_grey = is_grey;
    show_choice(window, dialog, 0);
}

Colour next_colour(const std::vector<Row> &rows) {
    for (const Colour colour : colours_in_turn) {
        if (std::none_of(rows.begin(), rows.end(), [colour](const Row &row) { return row.colour == colour; }))
            return colour;
    }
    return colours_in_turn.back();
}

void use_band(Window *window, BandDialog *dialog) {
    const int line = gui_selected_line(window, all_bands);
    if (line < 0)
        return;
    Row row;
    row.band = line + 1;
    if (dialog->is_grey) {
        dialog->grey = {row};
    } else if (dialog->colours.size() >= most_shown_bands) {
        gui_error(util_format("At most %zu bands can be shown together.", most_shown_bands));
        return;
    } else {
        row.colour = next_colour(dialog->colours);
        dialog->colours.push_back(row);
    }
    show_choice(window, dialog, static_cast<int>(dialog->rows().size()) - 1);
}

void leave_band_out(Window *window, BandDialog *dialog) {
    const int line = gui_selected_line(window, shown_bands);
    if (dialog->is_grey || !selected_row(window, dialog))
        return;
    dialog->colours.erase(dialog->colours.begin() + line);
    show_choice(window, dialog, line);
    if (dialog->colours.empty())
        gui_focus_control(window, all_bands);
}

void set_colour(Window *window, BandDialog *dialog, int button) {
    Row *row = selected_row(window, dialog);
    if (!row || dialog->is_grey)
        return;
    Colour colour = row->colour;
    for (const ColourButton &known : colour_buttons) {
        if (known.number == button)
            colour = known.colour;
    }
    const int line = gui_selected_line(window, shown_bands);
    if (button == other_colour &&
        (!gui_choose_colour("Colour of Band " + band_title(dialog->names, row->band), &colour) ||
         !gui_window_exists(window)))
        return;
    row->colour = colour;
    show_rows(window, dialog, line);
}

void take_limits(Window *window, BandDialog *dialog) {
    Row *row = selected_row(window, dialog);
    if (!row)
        return;
    row->minimum = gui_text(window, minimum_field);
    row->maximum = gui_text(window, maximum_field);
    show_selected_row(window, dialog);
}

void leave_limits_to_samples(Window *window, BandDialog *dialog) {
    if (Row *row = selected_row(window, dialog)) {
        row->minimum.clear();
        row->maximum.clear();
    }
    show_choice(window, dialog, gui_selected_line(window, shown_bands));
}

// Shows a fault of a line and brings the user there.
bool refuse(Window *window, BandDialog *dialog, const std::string &fault, int line, int field) {
    gui_error(fault);
    if (!gui_window_exists(window))
        return false;
    gui_select_line(window, shown_bands, line);
    enable_controls(window, dialog);
    show_limits(window, dialog);
    gui_focus_control(window, field);
    return false;
}

// Reads and checks all that is shown; the first fault is shown and its field focused.
bool take_choice(Window *window, BandDialog *dialog) {
    BandChoice choice;
    choice.is_grey = dialog->is_grey;
    int line = 0;
    for (const Row &row : dialog->rows()) {
        ShownBand shown{row.band, row.colour, {}, {}};
        const std::string title = " of band " + std::to_string(row.band);
        std::string fault = read_limit(row.minimum, "minimum" + title, &shown.minimum);
        if (!fault.empty())
            return refuse(window, dialog, fault, line, minimum_field);
        fault = read_limit(row.maximum, "maximum" + title, &shown.maximum);
        if (!fault.empty())
            return refuse(window, dialog, fault, line, maximum_field);
        fault = check_bands({choice.is_grey, {shown}}, dialog->count);
        if (!fault.empty())
            return refuse(window, dialog, fault, line, minimum_field);
        choice.bands.push_back(shown);
        ++line;
    }
    const std::string fault = check_bands(choice, dialog->count);
    if (!fault.empty())
        return refuse(window, dialog, fault, -1, all_bands);
    dialog->choice = choice;
    return true;
}

void use_control(Window *window, BandDialog *dialog, const Event &event) {
    switch (event.number) {
        case ok_button:
            if (take_choice(window, dialog))
                gui_end_dialog(window, ok_button);
            break;
        case cancel_button:
            gui_end_dialog(window, cancel_button);
            break;
        case all_bands:
            if (event.use == ControlUse::Activated)
                use_band(window, dialog);
            break;
        case shown_bands:
            show_limits(window, dialog);
            enable_controls(window, dialog);
            if (event.use == ControlUse::Activated)
                gui_focus_control(window, minimum_field);
            break;
        case grey_choice:
        case colour_choice:
            change_mode(window, dialog, event.number == grey_choice);
            break;
        case use_button:
            use_band(window, dialog);
            break;
        case leave_button:
            leave_band_out(window, dialog);
            break;
        case minimum_field:
        case maximum_field:
            take_limits(window, dialog);
            break;
        case computed_button:
            leave_limits_to_samples(window, dialog);
            break;
        default:
            set_colour(window, dialog, event.number);
            break;
    }
}

long bands_dialog_eh(Window *window, const Event &event) {
    auto *dialog = static_cast<BandDialog *>(gui_window_data(window));
    if (event.type == EventType::Create)
        fill_dialog(window, dialog);
    if (event.type == EventType::Control)
        use_control(window, dialog, event);
    return 0;
}

bool run_dialog(int resource, Window *owner, BandDialog dialog, BandChoice *choice) {
    const int answer = gui_run_dialog(resource, owner, bands_dialog_eh, &dialog);
    if (answer < 0)
        gui_error("Can't open dialog");
    if (answer == ok_button)
        *choice = dialog.choice;
    return answer == ok_button;
}

}  // namespace

bool ask_bands(Window *owner, const BandState &bands, BandChoice *choice) {
    BandDialog dialog = dialog_of(bands);
    if (!bands.composite)  // whoever leaves a plain band, or has none yet, wants colours
        dialog.is_grey = bands.colours.is_grey;
    return run_dialog(bands_resource, owner, std::move(dialog), choice);
}

bool ask_band_limits(Window *owner, const BandState &bands, BandChoice *choice) {
    return run_dialog(limits_resource, owner, dialog_of(bands), choice);
}
