#include "viewer/palette_commands.h"

#include "viewer/histogram_window.h"
#include "viewer/image_window.h"
#include "viewer/model/file_colours.h"

namespace {

constexpr int first_palette_command = 2010;
constexpr int histogram_command = 1050;

bool can_choose(const GenericState &image, int palette_number) {
    return has_colour_table(&image) && (palette_number != file_palette || image.display_state->file_colours);
}

void mark_palette(Window *window, const GenericState &image) {
    for (int number = grey_palette; number <= file_palette; ++number) {
        if (can_choose(image, number))
            gui_check_command(window, first_palette_command + number, number == image.image_info->palette_number);
    }
}

ColourTable palette_of(const GenericState &image, int palette_number) {
    const std::optional<ColourTable> &own = image.display_state->file_colours;
    return palette_number == file_palette && own ? *own : palette_colours(palette_number);
}

}  // namespace

bool has_colour_table(const GenericState *image) {
    return image && image->image_info && image->display_state && image->image_info->display_image &&
           image->image_info->display_image->bytes_per_pixel == 1;
}

ColourTable current_palette(const GenericState &image) {
    return palette_of(image, image.image_info->palette_number);
}

void UpdateDisplay(Window *image_window) {
    const GenericState *state = window_state(image_window);
    if (!has_colour_table(state))
        return;
    state->image_info->display_image->colours = control_colours(state->display_state->control, current_palette(*state));
    colours_changed(image_window);
}

void ChangePalette(Window *image_window, int palette_number) {
    GenericState *state = window_state(image_window);
    if (!has_colour_table(state)) {
        gui_error("Image - Initialization failed");
        return;
    }
    if (palette_number < grey_palette || palette_number > file_palette || !can_choose(*state, palette_number)) {
        gui_error(invalid_palette);
        return;
    }
    state->image_info->palette_number = static_cast<int16_t>(palette_number);
    if (histogram_is_open(*state)) {
        UpdateDisplay(image_window);
        return;
    }
    state->image_info->display_image->colours = palette_of(*state, palette_number);
    state->display_state->control = DisplayControl();
    colours_changed(image_window);
}

void prepare_palettes(Window *image_window) {
    GenericState *state = window_state(image_window);
    if (has_colour_table(state) && state->label_state)
        state->display_state->file_colours = read_file_colours(state->label_state->current_object);
    show_palettes(image_window, *state);
    if (!has_colour_table(state))
        gui_enable_command(image_window, histogram_command, false);
}

void show_palettes(Window *window, const GenericState &image) {
    for (int number = grey_palette; number <= file_palette; ++number) {
        const bool offered = can_choose(image, number);
        gui_enable_command(window, first_palette_command + number, offered);
        if (offered)
            gui_set_command_strip(window, first_palette_command + number, palette_of(image, number));
    }
    mark_palette(window, image);
}

void colours_changed(Window *image_window) {
    const GenericState *state = window_state(image_window);
    gui_invalidate(image_window);
    refresh_read_out(image_window);
    mark_palette(image_window, *state);
    if (Window *histogram = histogram_of(*state)) {
        mark_palette(histogram, *state);
        follow_colours(histogram);
    }
}

void pixels_changed(Window *image_window) {
    colours_changed(image_window);
    if (Window *histogram = histogram_of(*window_state(image_window)))
        follow_pixels(histogram);
}
