// The commands that change an image window's colour table; only undoing touches pixels, where a stretch of the samples
// did.
#include "viewer/image_window.h"
#include "viewer/model/stretch.h"

namespace {

// Applies a change to the window's display image and redraws; `failure` is shown where there is no image.
template <typename Change>
void change_colours(Window *window, const char *failure, Change change) {
    GenericState *state = window_state(window);
    if (!state || !state->image_info || !state->image_info->display_image) {
        gui_error(failure);
        return;
    }
    change(state->image_info->display_image.get(), &state->display_state->inverted);
    gui_invalidate(window);
    refresh_read_out(window);
}

}  // namespace

void menu2_stretch_display(Window *window) {
    change_colours(window, "Image Stretch - invalid state", [](PixelImage *image, bool *inverted) {
        if (stretch_colours(image))
            *inverted = false;
    });
}

void menu2_image_invert(Window *window) {
    change_colours(window, "Image Invert - invalid state", [](PixelImage *image, bool *inverted) {
        if (*inverted)
            reset_colours(image);
        else
            invert_colours(image);
        *inverted = !*inverted;
    });
}

void menu2_undo_display(Window *window) {
    GenericState *state = window_state(window);
    if (display_image(state) && state->display_state->stretched)
        rebuild_display_image(state, std::nullopt);
    change_colours(window, "Image Undo - invalid state", [](PixelImage *image, bool *inverted) {
        reset_colours(image);
        *inverted = false;
    });
}
