// Opening an image: its characteristics, its window, and windows on other blocks of it.
#include "base/text.h"
#include "viewer/bands_window.h"
#include "viewer/image_window.h"
#include "viewer/open_product.h"
#include "viewer/session.h"
#include "viewer/unattended.h"

#include <array>
#include <utility>

namespace {

constexpr int image_window_resource = 101;
constexpr int block_dialog_resource = 148;
constexpr int ok_button = 1;
constexpr int cancel_button = 2;

struct BlockField {
    int control;
    const char *name;
    int64_t SampleBlock::*value;
};
constexpr std::array block_fields = {
    BlockField{11, "Start Line", &SampleBlock::first_line},
    BlockField{12, "Stop Line", &SampleBlock::last_line},
    BlockField{13, "Start Line Sample", &SampleBlock::first_sample},
    BlockField{14, "Stop Line Sample", &SampleBlock::last_sample},
};

struct BlockChoice {
    SampleBlock block;
    int64_t lines;
    int64_t line_samples;
};

// Reads and checks the fields; the first fault is shown and its field focused.
bool read_block_fields(Window *dialog, BlockChoice *choice) {
    SampleBlock block;
    for (const BlockField &field : block_fields) {
        if (!gui_has_control(dialog, field.control)) {
            gui_error(util_format("Could Not Find Static %s Window", field.name));
            return false;
        }
        const std::string fault = convert_to_long(gui_text(dialog, field.control), field.name, &(block.*field.value));
        if (!fault.empty()) {
            gui_error(fault);
            gui_focus_control(dialog, field.control);
            return false;
        }
    }
    const std::string fault = check_for_valid_ranges(block, choice->lines, choice->line_samples, chosen_span_limit);
    if (!fault.empty()) {
        gui_error(fault);
        return false;
    }
    choice->block = block;
    return true;
}

long block_dialog_eh(Window *dialog, const Event &event) {
    auto *choice = static_cast<BlockChoice *>(gui_window_data(dialog));
    if (event.type == EventType::Create) {
        for (const BlockField &field : block_fields)
            gui_set_text(dialog, field.control, std::to_string(choice->block.*field.value));
    }
    if (event.type == EventType::Control && event.number == ok_button && read_block_fields(dialog, choice))
        gui_end_dialog(dialog, ok_button);
    if (event.type == EventType::Control && event.number == cancel_button)
        gui_end_dialog(dialog, cancel_button);
    return 0;
}

// The block that the user types into the dialog; false when it was cancelled.
bool get_user_image_ranges(Window *window, const ImageDescription &image, SampleBlock *block) {
    BlockChoice choice{image.block, image.lines, image.line_samples};
    const int answer = gui_run_dialog(block_dialog_resource, window, block_dialog_eh, &choice);
    if (answer < 0)
        gui_error("Can't open dialog");
    *block = choice.block;
    return answer == ok_button;
}

// Opens a window of its own on another block of the same image.
void open_block(const GenericState &from, const SampleBlock &block) {
    auto state = std::make_unique<GenericState>();
    // `from` may go while a message is shown.
    if (from.bands)
        state->bands = std::make_unique<BandState>(*from.bands);
    const bool is_composite = state->bands && std::exchange(state->bands->composite, nullptr);
    if (from.module)
        state->module = from.module->twin();
    const bool hexadecimal = from.display_state->integers_as_hexadecimal;
    if (!reopen_label(from, state.get()))
        return;
    state->label_state->requested_block = block;
    restore_profile();
    if (!get_image_characteristics(state.get()) || (is_composite && !make_composite(state.get())))
        return;
    state->display_state->integers_as_hexadecimal = hexadecimal;
    open_image_2(std::move(state));
}

void step(Window *window, BlockStep direction) {
    const GenericState *state = window_state(window);
    SampleBlock block;
    if (state && state->image_info && auto_get_image_ranges(*state->image_info, direction, &block))
        open_block(*state, block);
}

}  // namespace

bool get_image_characteristics(GenericState *state) {
    state->kind = DocumentKind::Image;
    state->image_info = std::make_unique<ImageDescription>();
    state->display_state = std::make_unique<DisplayState>();
    state->display_state->source =
        state->module ? state->module->prepare_image(state) : image_band_source(state->label_state->current_object, 1);
    const std::string fault = state->display_state->source->describe(state->image_info.get());
    if (!fault.empty())
        tell_error(fault);
    return fault.empty();
}

void open_image(std::unique_ptr<GenericState> state) {
    restore_profile();
    if (get_image_characteristics(state.get()))
        open_image_2(std::move(state));
}

Window *open_image_2(std::unique_ptr<GenericState> state) {
    if (!gui_has_definition(image_window_resource)) {
        gui_error("Open Image - unable to find window definition");
        return nullptr;
    }
    ++state->label_state->image_count;
    Window *window = open_document_window(image_window_resource, WIN_IMAGE_eh, std::move(state));
    if (window)
        show_browsed(window);
    return window && gui_window_exists(window) ? window : nullptr;
}

void step_up(Window *window) {
    step(window, BlockStep::Up);
}
void step_down(Window *window) {
    step(window, BlockStep::Down);
}
void step_left(Window *window) {
    step(window, BlockStep::Left);
}
void step_right(Window *window) {
    step(window, BlockStep::Right);
}

void choose_block(Window *window) {
    const GenericState *state = window_state(window);
    SampleBlock block;
    // The window may have gone while the dialog was open.
    if (state && state->image_info && get_user_image_ranges(window, *state->image_info, &block) &&
        gui_window_exists(window))
        open_block(*state, block);
}
