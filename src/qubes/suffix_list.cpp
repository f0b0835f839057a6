// The list of a qube's suffix planes, each of which opens as an image.
#include "base/text.h"
#include "qubes/qube_state.h"

#include <algorithm>

namespace {

constexpr int suffix_list_command = 1052;
constexpr int suffix_list_resource = 241;
constexpr int64_t most_listed = 1'000'000;
constexpr size_t longest_type = 60;

// Controls.
constexpr int plane_list = 1;
constexpr int open_button = 2;
constexpr int close_button = 3;
constexpr int remark_text = 4;

struct SuffixListState : ModuleState {
    Window *image_window = nullptr;  // its owner
};

Window *image_window_of(const Window *window) {
    return static_cast<const SuffixListState &>(*window_state(window)->module).image_window;
}

std::string cell_text(const OaQubeKeywords &qube, int64_t number, int column) {
    const OaQubePlane plane = suffix_plane(qube, number);
    const OaQubeItem &item = OaQubeSuffixItem(qube, plane.axis, plane.number - 1);
    switch (column) {
        case 0:
            return suffix_plane_name(qube, plane);
        case 1:
            return suffix_plane_kind(plane.axis);
        case 2:
            return util_short_line(item.type, longest_type);
        case 3:
            return std::to_string(item.bytes);
        default:
            return item.unit;
    }
}

void create_list(Window *window) {
    const Window *image_window = image_window_of(window);
    const QubeState &qube = *qube_state(image_window);
    const int64_t planes = suffix_plane_count(OaKeywordsOfQube(qube.qube.get()));
    gui_set_title(window, "Lumacart - Qube Side Data - " + name_for_titles(image_window));
    enable_known_commands(window, CommandDispatcher::Label);
    GuiGrid grid;
    grid.rows = std::min(planes, most_listed);
    for (const char *head : {"Name", "Plane", "Type", "Bytes", "Unit"})
        grid.columns.push_back({head, {}, false});
    grid.columns[3].is_number = true;
    grid.text = [shared = qube.qube](int64_t row, int column) {
        return cell_text(OaKeywordsOfQube(shared.get()), row + 1, column);
    };
    gui_set_grid(window, plane_list, std::move(grid));
    gui_set_grid_current(window, plane_list, {0, 0});
    gui_focus_control(window, plane_list);
    gui_show_control(window, remark_text, planes > most_listed);
    gui_set_text(window, remark_text,
                 util_format("The first %lld of %lld planes.", static_cast<long long>(most_listed),
                             static_cast<long long>(planes)));
}

void open_selected(const Window *window) {
    const int64_t row = gui_grid_current(window, plane_list).row;
    if (row < 0)
        return;
    // The image window may go while a message is shown.
    const GenericState &image = *window_state(image_window_of(window));
    const QubeState &qube = *qube_state(image_window_of(window));
    auto plane = qube.of_plane(suffix_plane(OaKeywordsOfQube(qube.qube.get()), row + 1));
    auto state = std::make_unique<GenericState>();
    if (!reopen_label(image, state.get()))
        return;
    restore_profile();
    state->module = std::move(plane);
    if (get_image_characteristics(state.get()))
        open_image_2(std::move(state));
}

long suffix_list_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            create_list(window);
            break;
        case EventType::Control:
            if (event.number == close_button)
                gui_destroy_window(window);
            else if (event.number == open_button || event.use == ControlUse::Activated)
                open_selected(window);
            break;
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}

}  // namespace

void show_suffix_list(Window *image_window) {
    if (raise_child(image_window, suffix_list_command))
        return;
    auto list = std::make_unique<SuffixListState>();
    list->image_window = image_window;
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = window_state(image_window)->directory;
    state->module = std::move(list);
    keep_child(image_window, suffix_list_command,
               open_document_window(suffix_list_resource, suffix_list_eh, std::move(state), image_window));
}
