#include "viewer/hierarchy_window.h"

#include "base/text.h"
#include "viewer/allocate.h"
#include "viewer/commands.h"
#include "viewer/model/hierarchy_list.h"
#include "viewer/open_product.h"
#include "viewer/session.h"
#include "viewer/unattended.h"

namespace {

constexpr int hierarchy_command = 1047;
constexpr int hierarchy_resource = 102;
constexpr size_t longest_title_name = 60;
constexpr GuiRect place_in_image_window = {10, 60, 640, 350};

constexpr int table_or_plot_resource = 145;
constexpr int open_button = 1;
constexpr int plot_button = 2;
constexpr int cancel_button = 3;
constexpr int browse_button = 4;

using OpenFunction = void (*)(std::unique_ptr<GenericState>);

bool shows_data(const GenericState *state) {
    if (!state || !state->label_state || !state->label_state->root)
        return false;
    return state->kind == DocumentKind::Table || (state->image_info && state->image_info->display_image);
}

// Opens the selected object from a label of its own. The place in the label decides, not the class: of several objects
// of one class the one that was chosen is opened.
void open_listed(const GenericState &hierarchy, OpenFunction open) {
    restore_profile();
    const std::string class_name = hierarchy.label_state->current_object->class_name;
    auto state = std::make_unique<GenericState>();
    if (!reopen_label(hierarchy, state.get()))
        return;
    const ObjDesc *twin = state->label_state->current_object;
    state->label_state->object_chosen = true;
    if (twin->class_name && class_name == twin->class_name)
        open(std::move(state));
    else
        gui_error("Open Object - no valid object");  // the file has changed
}

void tell_not_shown(const std::string &class_name) {
    tell_note(util_format("Lumacart has no window for %s objects yet.", class_name.c_str()));
}

long table_or_plot_eh(Window *dialog, const Event &event) {
    const auto *opener = static_cast<const ProductOpener *>(gui_window_data(dialog));
    if (event.type == EventType::Create) {
        gui_enable_control(dialog, open_button, opener->open != nullptr);
        gui_enable_control(dialog, plot_button, opener->plot != nullptr);
        gui_enable_control(dialog, browse_button, opener->browse != nullptr);
    }
    if (event.type == EventType::Control)
        gui_end_dialog(dialog, event.number);
    return 0;
}

// The function that the user chooses; null when it is none.
OpenFunction ask_table_or_plot(Window *window, ProductOpener opener) {
    switch (gui_run_dialog(table_or_plot_resource, window, table_or_plot_eh, &opener)) {
        case open_button:
            return opener.open;
        case plot_button:
            return opener.plot;
        case browse_button:
            return opener.browse;
        case cancel_button:
        case 0:  // closed
            return nullptr;
        default:
            gui_error("Could not open plot/open dialog");
            return nullptr;
    }
}

}  // namespace

void show_hierarchy(Window *image_window) {
    if (raise_child(image_window, hierarchy_command))
        return;
    const GenericState *image = window_state(image_window);
    if (!shows_data(image)) {
        gui_error("Object Hierarchy - invalid state");
        return;
    }
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->listing = std::make_unique<ListingState>();
    state->listing->place = place_in_image_window;
    const GuiRect frame = gui_window_place(image_window);
    state->listing->place.left += frame.left;
    state->listing->place.top += frame.top;
    if (!reopen_label(*image, state.get()))
        return;
    Window *window = open_document_window(hierarchy_resource, WIN_OBJHIER_eh, std::move(state));
    if (gui_window_exists(image_window))
        keep_child(image_window, hierarchy_command, window);
}

long hier_create(Window *window) {
    const GenericState *state = window_state(window);
    if (!state || !state->label_state || !state->listing) {
        gui_error("Object Hierarchy - invalid state");
        return 1;
    }
    LabelState &label = *state->label_state;
    if (!label.root) {
        gui_error("Object Hierarchy - missing label pointer");
        return 1;
    }
    gui_set_title(window, "Lumacart - Object Hierarchy - " + shown_name(label.file_name, longest_title_name));
    enable_known_commands(window, CommandDispatcher::Label);
    for (const int standard_item : {32040, 32065, 32365})
        gui_enable_command(window, standard_item, false);
    std::vector<std::string> lines;
    if (!with_memory([&] { lines = hierarchy_lines(label.root.get()); })) {
        gui_warning("Memory allocation in WIN_OBJHIER_eh");
        return 1;
    }
    if (!gui_set_list(window, object_list, std::move(lines))) {
        gui_error("Object Hierarchy - missing list box");
        return 1;
    }
    gui_place_window(window, state->listing->place);
    gui_select_line(window, object_list, static_cast<int>(line_of_object(label.root.get(), label.current_object)));
    gui_focus_control(window, object_list);
    return 0;
}

void hier_close(Window *window) {
    gui_destroy_window(window);
}

void hier_destroy(Window *window) {
    free_window_state(window);
}

void hier_lbx3_dbl_click(Window *window) {
    const GenericState *state = window_state(window);
    const int line = gui_selected_line(window, object_list);
    ObjDesc *object = line < 0 ? nullptr : object_of_line(state->label_state->root.get(), line);
    if (!object || !object->class_name)
        return;
    state->label_state->current_object = object;

    const std::string class_name = class_of_line(gui_list_line(window, object_list, line));
    const char *note = nullptr;
    const ListedObject choice = listed_object(class_name, session().unattended, &note);
    if (choice == ListedObject::Refused)
        return gui_note(note);
    if (choice == ListedObject::Ignored)
        return;
    const ProductOpener *opener = find_opener(*state->label_state);
    if (!opener || (!opener->open && !opener->plot))
        return tell_not_shown(class_name);
    OpenFunction open = opener->open;
    if (choice == ListedObject::TableOrPlot) {
        open = ask_table_or_plot(window, *opener);
        // The window may have gone while the dialog was open.
        if (!open || !gui_window_exists(window))
            return;
    }
    if (!open)
        return tell_not_shown(class_name);
    open_listed(*state, open);
}

long WIN_OBJHIER_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return hier_create(window);
        case EventType::Destroy:
            hier_destroy(window);
            break;
        case EventType::Close:
            hier_close(window);
            break;
        case EventType::Control:
            if (event.number == object_list && event.use == ControlUse::Activated)
                hier_lbx3_dbl_click(window);
            break;
        case EventType::Command:
            do_LUMCA_MENUBAR(window, event.number);
            break;
        default:
            break;
    }
    return 0;
}
