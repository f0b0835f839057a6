#include "viewer/bands_window.h"

#include "oa/jpeg2000.h"
#include "oa/oa.h"
#include "viewer/bands_dialog.h"
#include "viewer/commands.h"
#include "viewer/histogram_window.h"
#include "viewer/image_window.h"
#include "viewer/model/rotate.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"

#include <array>
#include <utility>

namespace {

// The picture of a choice in the window's block, turned; null after a message, or when the window has gone meanwhile.
std::unique_ptr<PixelImage> make_picture(Window *window, BandComposite *composite) {
    const BusyCursor busy;
    const ImageDescription &shown = *window_state(window)->image_info;
    ImageDescription described;
    const std::string fault = composite->describe(&described);
    if (!fault.empty()) {
        gui_error(fault);
        return nullptr;
    }
    std::unique_ptr<PixelImage> image = composite->read_picture(shown.block);
    if (!gui_window_exists(window))
        return nullptr;
    if (!image) {
        gui_error("Image Create - could not find partial image\n" + error_string);
        return nullptr;
    }
    // What is wrong with the directions was told when the window was opened.
    RotatedImage turned = rotate_image(*image, shown.line_display_direction, shown.sample_display_direction);
    if (turned.out_of_memory) {
        fatal_out_of_memory("Rotate image");
        return nullptr;
    }
    return turned.image ? std::move(turned.image) : std::move(image);
}

// Which commands a window has depends on whether it shows a colour table. Its place in a large image stays.
void enable_commands_anew(Window *window) {
    constexpr std::array block_commands = {1055, 1064, 1071, 1072, 1073, 1074};
    std::array<bool, block_commands.size()> enabled;
    for (size_t i = 0; i < enabled.size(); ++i)
        enabled[i] = gui_command_enabled(window, block_commands[i]);
    enable_known_commands(window, CommandDispatcher::Application);
    for (size_t i = 0; i < enabled.size(); ++i)
        gui_enable_command(window, block_commands[i], enabled[i]);
}

void take_composite(GenericState *state, std::unique_ptr<BandComposite> composite) {
    state->bands->composite = composite.get();
    state->display_state->source = std::move(composite);
    state->kind = state->bands->choice.is_grey ? DocumentKind::Image : DocumentKind::Bands;
}

std::unique_ptr<BandComposite> new_composite(const GenericState &state, const BandChoice &choice) {
    return std::make_unique<BandComposite>(choice, state.bands->maker, state.label_state->current_object);
}

// Shows another choice in the same window; false after a message, when the window stays as it is or is gone.
bool show_choice(Window *window, const BandChoice &choice) {
    restore_profile();
    auto composite = new_composite(*window_state(window), choice);
    auto image = make_picture(window, composite.get());
    if (!image)
        return false;
    GenericState *state = window_state(window);
    state->bands->choice = choice;
    state->bands->unstretched.reset();
    take_composite(state, std::move(composite));
    state->image_info->display_image = std::move(image);
    state->image_info->palette_number = grey_palette;
    state->display_state->control = DisplayControl();
    enable_commands_anew(window);
    prepare_palettes(window);
    if (!has_colour_table(state))
        gui_destroy_window(histogram_of(*state));
    pixels_changed(window);
    return gui_window_exists(window);
}

bool change_choice(Window *window, bool (*ask)(Window *, const BandState &, BandChoice *)) {
    const GenericState *state = window_state(window);
    if (!state || !state->bands || !state->image_info)
        return false;
    BandChoice choice;
    // The window may have gone while the dialog was open.
    return ask(window, *state->bands, &choice) && gui_window_exists(window) && show_choice(window, choice);
}

}  // namespace

bool has_several_bands(const ObjDesc *object) {
    if (const int64_t coded = OaJpeg2000Bands(object))  // the label may say otherwise, or nothing
        return coded >= 2;
    const char *text = nullptr;
    int64_t bands = 0;
    return OaKwdValuetoStr("BANDS", object, &text) == 0 && OdlDataType(text) == VALUE_INTEGER &&
           OaKwdValuetoLong("BANDS", object, &bands) == 0 && bands >= 2;
}

void open_bands(std::unique_ptr<GenericState> state) {
    restore_profile();
    if (!get_image_characteristics(state.get()))
        return;
    const ObjDesc *image = state->label_state->current_object;
    state->bands = std::make_unique<BandState>();
    state->bands->maker = image_band_source;
    state->bands->count = state->image_info->bands;
    state->bands->names = band_names(image, state->bands->count);
    open_band_choice(std::move(state));
}

void open_band_choice(std::unique_ptr<GenericState> state) {
    BandState &bands = *state->bands;
    bands.choice = default_bands(bands.names, bands.count);
    if (!session().unattended && !ask_bands(gui_task_window(), bands, &bands.choice))
        return;
    if (make_composite(state.get()))
        open_image_2(std::move(state));
}

bool make_composite(GenericState *state) {
    auto composite = new_composite(*state, state->bands->choice);
    const std::string fault = composite->describe(state->image_info.get());
    if (!fault.empty()) {
        if (!session().unattended)
            gui_error(fault);
        return false;
    }
    take_composite(state, std::move(composite));
    return true;
}

void choose_bands(Window *window) {
    change_choice(window, ask_bands);
}

void choose_band_limits(Window *window) {
    change_choice(window, ask_band_limits);
}

void stretch_band(Window *window) {
    const BandState &bands = *window_state(window)->bands;
    const BandChoice before = bands.unstretched.value_or(bands.choice);
    if (change_choice(window, ask_band_limits))
        window_state(window)->bands->unstretched = before;
}

bool undo_band_stretch(Window *window) {
    const GenericState *state = window_state(window);
    if (!state || !state->bands || !state->bands->unstretched)
        return false;
    show_choice(window, BandChoice(*state->bands->unstretched));
    return true;
}
