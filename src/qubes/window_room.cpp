#include "qubes/window_room.h"

#include <algorithm>

namespace {

int64_t common_area(const GuiRect &one, const GuiRect &other) {
    const int width = std::min(one.left + one.width, other.left + other.width) - std::max(one.left, other.left);
    const int height = std::min(one.top + one.height, other.top + other.height) - std::max(one.top, other.top);
    return width > 0 && height > 0 ? int64_t{width} * height : 0;
}

std::vector<GuiRect> taken_places(const Window *image_window) {
    std::vector<GuiRect> places = {gui_window_place(image_window)};
    for (const auto &[command, child] : window_state(image_window)->children)
        places.push_back(gui_window_place(child));
    return places;
}

}  // namespace

GuiRect free_place(const Window *image_window, GuiSize size) {
    const GuiRect screen = gui_screen_place(image_window);
    const GuiRect framed = gui_window_place(image_window);
    const GuiRect unframed = gui_own_place(image_window);
    const int width = std::min(size.width + framed.width - unframed.width, screen.width);
    const int height = std::min(size.height + framed.height - unframed.height, screen.height);
    const std::vector<GuiRect> taken = taken_places(image_window);
    GuiRect best;
    int64_t least = INT64_MAX;
    const auto consider = [&](int left, int top) {
        left = std::clamp(left, screen.left, screen.left + screen.width - width);
        top = std::clamp(top, screen.top, screen.top + screen.height - height);
        int64_t hidden = 0;
        for (const GuiRect &place : taken)
            hidden += common_area(place, {left, top, width, height});
        if (hidden < least) {
            least = hidden;
            best = {left, top, size.width, size.height};
        }
    };
    for (const GuiRect &place : taken) {
        consider(place.left + place.width, place.top);
        consider(place.left, place.top + place.height);
        consider(place.left - width, place.top);
        consider(place.left, place.top - height);
    }
    for (const int left : {screen.left + screen.width, screen.left})  // moved into the corners
        for (const int top : {screen.top, screen.top + screen.height})
            consider(left, top);
    return best;
}

void keep_in_sight(const Window *image_window, Window *window) {
    if (common_area(gui_window_place(image_window), gui_window_place(window)) > 0)
        gui_raise(window);
}

void return_to_image(Window *image_window) {
    const std::vector<GuiRect> places = taken_places(image_window);
    if (std::none_of(places.begin() + 1, places.end(),
                     [&](const GuiRect &place) { return common_area(places[0], place) > 0; }))
        gui_raise(image_window);
}
