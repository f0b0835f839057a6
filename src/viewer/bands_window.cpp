#include "viewer/bands_window.h"

#include "oa/jpeg2000.h"
#include "oa/oa.h"
#include "viewer/bands_dialog.h"
#include "viewer/commands.h"
#include "viewer/histogram_window.h"
#include "viewer/image_window.h"
#include "viewer/model/rotate.h"
#include "viewer/model/stretch.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"

#include <array>
#include <utility>

namespace {

// What a window is to show: a source, and what it gave of the window's block.
struct Picture {
    std::unique_ptr<SampleSource> source;
    const BandComposite *composite = nullptr;  // the source, where it is one
    ImageDescription description;              // with the display image, turned
    OaObjectPtr samples;                       // of a plain band
};

bool is_plain(const BandState &bands, const BandChoice &choice) {
    return bands.greys_are_plain && choice.is_grey && !choice.bands.front().minimum && !choice.bands.front().maximum;
}

std::unique_ptr<BandComposite> new_composite(const GenericState &state, const BandChoice &choice) {
    return std::make_unique<BandComposite>(choice, state.bands->maker, state.label_state->current_object);
}

Picture new_picture(const GenericState &state, const BandChoice &choice) {
    Picture picture;
    if (is_plain(*state.bands, choice)) {
        picture.source = state.bands->maker(state.label_state->current_object, choice.bands.front().band);
    } else {
        auto composite = new_composite(state, choice);
        picture.composite = composite.get();
        picture.source = std::move(composite);
    }
    return picture;
}

// False after a message, or when the window has gone meanwhile.
bool read_picture(Window *window, Picture *picture) {
    const BusyCursor busy;
    ImageDescription &image = picture->description;
    std::string fault = picture->source->describe(&image);
    if (!fault.empty()) {
        gui_error(fault);
        return false;
    }
    image.block = window_state(window)->image_info->block;
    if (picture->composite) {
        image.display_image = picture->source->read_picture(image.block);
    } else {
        picture->samples = picture->source->read_block(image.block);
        if (picture->samples)
            fault = build_display_image(picture->samples->data, &image, image.block.lines(), image.block.samples());
    }
    if (!gui_window_exists(window))
        return false;
    if (!image.display_image) {
        if (fault.empty())
            fault =
                (picture->composite ? "Image Create - could not find partial image\n" : "The band cannot be read\n") +
                error_string;
        gui_error(fault);
        return false;
    }
    // What is wrong with the directions was told when the window was opened.
    RotatedImage turned =
        rotate_image(*image.display_image, image.line_display_direction, image.sample_display_direction);
    if (turned.out_of_memory) {
        fatal_out_of_memory("Rotate image");
        return false;
    }
    if (turned.image)
        image.display_image = std::move(turned.image);
    return true;
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

void take_source(GenericState *state, std::unique_ptr<SampleSource> source, const BandComposite *composite) {
    state->bands->composite = composite;
    state->display_state->source = std::move(source);
    state->kind = state->bands->choice.is_grey ? DocumentKind::Image : DocumentKind::Bands;
}

enum class Colours { Anew, Kept };

// Shows another choice in the same window; false after a message, when the window stays as it is or is gone.
bool show_choice(Window *window, const BandChoice &choice, Colours colours = Colours::Anew) {
    restore_profile();
    Picture picture = new_picture(*window_state(window), choice);
    if (!read_picture(window, &picture))
        return false;
    GenericState *state = window_state(window);
    const bool keeps_colours = colours == Colours::Kept && has_colour_table(state);
    if (keeps_colours) {
        picture.description.display_image->colours = state->image_info->display_image->colours;
        picture.description.palette_number = state->image_info->palette_number;
    } else {
        state->display_state->control = DisplayControl();
    }
    state->bands->choice = choice;
    state->bands->unstretched.reset();
    if (!choice.is_grey)
        state->bands->colours = choice;
    *state->image_info = std::move(picture.description);
    state->label_state->image_data = std::move(picture.samples);
    state->display_state->stretched.reset();
    take_source(state, std::move(picture.source), picture.composite);
    if (!keeps_colours) {
        enable_commands_anew(window);
        prepare_palettes(window);
    }
    if (!has_colour_table(state))
        gui_destroy_window(histogram_of(*state));
    if (state->module)
        state->module->follow_bands(window);
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
    bands.colours = default_bands(bands.names, bands.count);
    bands.choice = bands.colours;
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
    const BandComposite *made = composite.get();
    take_source(state, std::move(composite), made);
    return true;
}

void choose_bands(Window *window) {
    change_choice(window, ask_bands);
}

void choose_band_limits(Window *window) {
    const GenericState *state = window_state(window);
    if (state && state->bands && state->bands->greys_are_plain && state->bands->choice.is_grey)
        stretch_band(window);
    else
        change_choice(window, ask_band_limits);
}

bool show_band(Window *window, int64_t band) {
    return show_choice(window, {true, {{band, {255, 255, 255}, {}, {}}}}, Colours::Kept);
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
