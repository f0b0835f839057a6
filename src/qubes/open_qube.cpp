// From a qube in a label to the image window on its first band.
#include "qubes/qube_state.h"
#include "qubes/window_room.h"

namespace {

// What the label says wrongly, in one note.
void tell_remarks(const std::vector<std::string> &remarks) {
    constexpr size_t most_told = 12;
    std::string text;
    for (size_t i = 0; i < std::min(remarks.size(), most_told); ++i)
        text += (i > 0 ? "\n" : "") + remarks[i];
    if (remarks.size() > most_told)
        text += "\nand " + std::to_string(remarks.size() - most_told) + " more";
    if (!text.empty())
        tell_note(text);
}

}  // namespace

void open_qube(std::unique_ptr<GenericState> state) {
    OaQubePtr opened(OaOpenQube(state->label_state->current_object));
    if (!opened) {
        tell_error("Open Qube failed\n" + error_string);
        return;
    }
    auto qube = std::make_unique<QubeState>(std::move(opened), OaQubePlane());
    tell_remarks(OaKeywordsOfQube(qube->qube.get()).remarks);
    restore_profile();
    state->module = std::move(qube);
    if (!get_image_characteristics(state.get()))
        return;
    Window *window = open_image_2(std::move(state));
    if (!window || session().unattended)
        return;
    show_qube_control(window);
    if (gui_window_exists(window))
        return_to_image(window);
}
