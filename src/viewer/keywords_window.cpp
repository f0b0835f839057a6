#include "viewer/keywords_window.h"

#include "base/text.h"
#include "viewer/commands.h"
#include "viewer/model/hierarchy_list.h"
#include "viewer/open_product.h"

namespace {

constexpr int keywords_command = 1048;
constexpr int keywords_resource = 103;
constexpr GuiRect place_in_image_window = {10, 20, 350, 390};

// Why no list can be made of the image's keywords; null when one can.
const char *fault_of(const GenericState *image) {
    const bool is_table = image && image->kind == DocumentKind::Table;
    const bool has_image = image && image->image_info && image->image_info->display_image;
    if (!image || !image->label_state || (!is_table && !has_image))
        return "Object Keywords - invalid state";
    if (!image->label_state->current_object)
        return "Object Keywords - missing image pointer";
    if (!OdlGetFirstKwd(image->label_state->current_object))
        return "Object Keywords - find first keyword failed";
    return nullptr;
}

long create_keywords(Window *window) {
    const GenericState *state = window_state(window);
    if (!state || !state->label_state) {
        gui_error("Object Keywords - invalid state");
        return 1;
    }
    if (!state->listing) {
        gui_error("Object Keywords - missing slist");
        return 1;
    }
    const char *what = state->listing->of_table ? "Table" : "Image";
    gui_set_title(window, util_format("Lumacart - %s Attributes - ", what) + state->label_state->file_name);
    enable_known_commands(window, CommandDispatcher::Label);
    if (!gui_set_list(window, keyword_list, std::move(state->listing->lines))) {
        gui_error("Object Keywords - missing list box");
        return 1;
    }
    gui_place_window(window, state->listing->place);
    gui_select_line(window, keyword_list, 0);
    gui_focus_control(window, keyword_list);
    return 0;
}

}  // namespace

void show_keywords(Window *image_window) {
    if (raise_child(image_window, keywords_command))
        return;
    const GenericState *image = window_state(image_window);
    if (const char *fault = fault_of(image)) {
        gui_error(fault);
        return;
    }
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = image->directory;
    state->label_state = std::make_unique<LabelState>();
    state->label_state->file_name = image->label_state->file_name;
    state->listing = std::make_unique<ListingState>();
    state->listing->lines = keyword_lines(image->label_state->current_object);
    state->listing->place = place_in_image_window;
    state->listing->of_table = image->kind == DocumentKind::Table;
    const GuiRect frame = gui_window_place(image_window);
    state->listing->place.left += frame.left;
    state->listing->place.top += frame.top;
    Window *window = open_document_window(keywords_resource, WIN_OBJKWD_eh, std::move(state));
    if (gui_window_exists(image_window))
        keep_child(image_window, keywords_command, window);
}

long WIN_OBJKWD_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_keywords(window);
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}
