// From a qube in a label to the image window on its first band.
#include "qubes/spectrum_windows.h"
#include "viewer/model/qube_source.h"

QubeState *qube_state(const Window *image_window) {
    const GenericState *state = window_state(image_window);
    return state ? dynamic_cast<QubeState *>(state->module.get()) : nullptr;
}

void open_qube(std::unique_ptr<GenericState> state) {
    OaQubePtr opened(OaOpenQube(state->label_state->current_object));
    if (!opened) {
        tell_error("Open Qube failed\n" + error_string);
        return;
    }
    auto module = std::make_unique<QubeState>();
    QubeState *qube = module.get();
    qube->qube = std::move(opened);
    for (const std::string &remark : OaKeywordsOfQube(qube->qube.get()).remarks)
        tell_note(remark);
    restore_profile();
    state->kind = DocumentKind::Image;
    state->image_info = std::make_unique<ImageDescription>();
    state->display_state = std::make_unique<DisplayState>();
    state->display_state->is_qube_band = true;
    // Nothing clicks while the state ends.
    state->display_state->source = qube_plane_source(qube->qube, qube->plane, [qube](int64_t line, int64_t sample) {
        return qube->image_window && qube->spectrum_on_click && show_spectrum(qube->image_window, line, sample);
    });
    state->module = std::move(module);
    if (const std::string fault = state->display_state->source->describe(state->image_info.get()); !fault.empty()) {
        tell_error(fault);
        return;
    }
    if (Window *window = open_image_2(std::move(state)))
        qube_state(window)->image_window = window;
}
