// The commands that change an image window's colour table; only undoing touches pixels, where a stretch of the samples
// did.
#include "viewer/bands_window.h"
#include "viewer/histogram_window.h"
#include "viewer/image_window.h"
#include "viewer/model/stretch.h"
#include "viewer/palette_commands.h"

namespace {

// Applies a change to the window's state and redraws; `failure` is shown where there is no image. Pictures of full
// colour have no table to change.
template <typename Change>
void change_colours(Window *window, const char *failure, Change change) {
    GenericState *state = window_state(window);
    if (!has_colour_table(state)) {
        gui_error(failure);
        return;
    }
    change(state, state->image_info->display_image.get());
    colours_changed(window);
}

}  // namespace

// The ramp is the one of the histogram's bars at these levels, which therefore move there.
void menu2_stretch_display(Window *window) {
    bool changed = false;
    change_colours(window, "Image Stretch - invalid state", [&](const GenericState *state, PixelImage *image) {
        int low = 0;
        int high = 0;
        changed = percentile_levels(*image, &low, &high);
        if (!changed)
            return;
        DisplayControl &control = state->display_state->control;
        control = DisplayControl();
        control.lbarh = static_cast<int16_t>(low);
        control.rbarh = static_cast<int16_t>(high);
        image->colours = control_colours(control, current_palette(*state));
    });
    if (!changed && has_colour_table(window_state(window)))
        show_remark(window, "Nothing to stretch: the picture is all background, or of a single level.");
}

// While the histogram window is open its bars hold on, and the flag turns what they make of the palette.
void menu2_image_invert(Window *window) {
    change_colours(window, "Image Invert - invalid state", [](const GenericState *state, PixelImage *image) {
        DisplayControl &control = state->display_state->control;
        const bool inverted = !control.inverted;
        if (!histogram_is_open(*state))
            control = DisplayControl();
        control.inverted = inverted;
        const ColourTable palette = current_palette(*state);
        image->colours =
            bars_at_rest(control) && inverted ? inverted_colours(palette) : control_colours(control, palette);
    });
}

void menu2_undo_display(Window *window) {
    if (undo_band_stretch(window))
        return;
    GenericState *shown = window_state(window);
    const bool stretched = has_colour_table(shown) && shown->display_state->stretched;
    if (stretched)
        rebuild_display_image(shown, std::nullopt);
    change_colours(window, "Image Undo - invalid state", [](const GenericState *state, PixelImage *image) {
        reset_colours(image);
        state->image_info->palette_number = grey_palette;
        state->display_state->control = DisplayControl();
    });
    if (stretched)
        pixels_changed(window);
}
