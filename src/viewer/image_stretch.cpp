// Stretching an image between a minimum and a maximum that the user types: its display image is made anew.
#include "viewer/bands_window.h"
#include "viewer/image_window.h"
#include "viewer/model/rotate.h"
#include "viewer/model/sample_value.h"
#include "viewer/model/stretch.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"

#include <array>

namespace {

constexpr int stretch_dialog_resource = 210;
constexpr int stretch_button = 1;
constexpr int cancel_button = 2;
constexpr int data_range_text = 3;
constexpr int data_range_button = 4;

struct RangeField {
    int control;
    const char *name;
    double RealRange::*value;
};
constexpr std::array range_fields = {
    RangeField{11, "Minimum", &RealRange::minimum},
    RangeField{12, "Maximum", &RealRange::maximum},
};

struct RangeChoice {
    RealRange range;                      // shown at first, then what the user chose
    std::optional<RealRange> data_range;  // none: no sample is a number
};

void show_range(Window *dialog, RealRange range) {
    for (const RangeField &field : range_fields)
        gui_set_text(dialog, field.control, number_text(range.*field.value));
}

void create_stretch_dialog(Window *dialog, const RangeChoice &choice) {
    gui_enable_control(dialog, data_range_button, choice.data_range.has_value());
    gui_set_text(dialog, data_range_text,
                 choice.data_range ? "Samples shown: from " + number_text(choice.data_range->minimum) + " to " +
                                         number_text(choice.data_range->maximum)
                                   : "Samples shown: none is a number");
    show_range(dialog, choice.range);
}

// Reads and checks the fields; the first fault is shown and its field focused.
bool read_range_fields(Window *dialog, RangeChoice *choice) {
    RealRange range = {};
    for (const RangeField &field : range_fields) {
        const std::string fault = convert_to_number(gui_text(dialog, field.control), field.name, &(range.*field.value));
        if (!fault.empty()) {
            gui_error(fault);
            gui_focus_control(dialog, field.control);
            return false;
        }
    }
    const std::string fault = check_stretch_range(range);
    if (!fault.empty()) {
        gui_error(fault);
        return false;
    }
    choice->range = range;
    return true;
}

long stretch_dialog_eh(Window *dialog, const Event &event) {
    auto *choice = static_cast<RangeChoice *>(gui_window_data(dialog));
    if (event.type == EventType::Create)
        create_stretch_dialog(dialog, *choice);
    if (event.type != EventType::Control)
        return 0;
    if (event.number == stretch_button && read_range_fields(dialog, choice))
        gui_end_dialog(dialog, stretch_button);
    if (event.number == cancel_button)
        gui_end_dialog(dialog, cancel_button);
    if (event.number == data_range_button)
        show_range(dialog, *choice->data_range);
    return 0;
}

// Turns the display image as at its opening, which told of directions without orientation.
bool turn_again(ImageDescription *image) {
    const Orientation orientation = image_orientation(image->line_display_direction, image->sample_display_direction);
    if (orientation == Orientation::None || orientation == Orientation::Undetermined)
        return true;
    RotatedImage turned =
        rotate_image(*image->display_image, image->line_display_direction, image->sample_display_direction);
    if (!turned.image)
        return false;
    image->display_image = std::move(turned.image);
    return true;
}

}  // namespace

bool rebuild_display_image(GenericState *state, std::optional<RealRange> range) {
    const void *samples = samples_shown(state);
    if (!samples) {
        gui_error("Image Stretch - invalid state");
        return false;
    }
    ImageDescription &image = *state->image_info;
    std::unique_ptr<PixelImage> before = std::move(image.display_image);
    std::string fault = build_display_image(samples, &image, image.block.lines(), image.block.samples());
    if (image.display_image && range)
        map_clamped(samples, image, *range, image.block.lines() * image.block.samples(),
                    image.display_image->pixels.get());
    if (image.display_image && !turn_again(&image))
        fault = "Image Stretch - out of memory for turning the image";
    if (!fault.empty()) {
        image.display_image = std::move(before);
        gui_error(fault);
        return false;
    }
    state->display_state->stretched = range;
    state->display_state->control = DisplayControl();
    image.palette_number = grey_palette;
    return true;
}

void menu2_stretch_image(Window *window) {
    GenericState *state = window_state(window);
    if (state && state->bands && state->bands->composite) {  // whose limits are part of the choice of bands
        stretch_band(window);
        return;
    }
    const void *samples = samples_shown(state);
    if (!samples) {
        gui_error("Image Stretch - invalid state");
        return;
    }
    const ImageDescription &image = *state->image_info;
    RangeChoice choice;
    choice.data_range = find_sample_range(samples, image.block.lines() * image.block.samples(), image);
    choice.range = state->display_state->stretched.value_or(choice.data_range.value_or(RealRange{0, 255}));
    const int answer = gui_run_dialog(stretch_dialog_resource, window, stretch_dialog_eh, &choice);
    if (answer < 0)
        gui_error("Can't open dialog");
    // The window may have gone while the dialog was open.
    if (answer != stretch_button || !gui_window_exists(window))
        return;
    if (rebuild_display_image(state, choice.range))
        pixels_changed(window);
}
