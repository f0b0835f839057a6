#include "viewer/image_read_out.h"

#include "base/text.h"
#include "viewer/image_window.h"
#include "viewer/model/rotate.h"
#include "viewer/model/sample_value.h"
#include "viewer/model/stretch.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int status_line = 2;
constexpr int value_line = 3;
constexpr GuiSize smallest_status = {450, 16};
constexpr int smallest_marker = 11;  // around the pixel of the keyboard read-out
constexpr int hexadecimal_command = 1057;

int64_t get_curr_sample(const ImageDescription &description, const PixelPosition &pixel) {
    return image_position_at(description, pixel.column, pixel.row).sample;
}

int64_t get_curr_line(const ImageDescription &description, const PixelPosition &pixel) {
    return image_position_at(description, pixel.column, pixel.row).line;
}

std::string status_text(const GenericState &state, const PixelPosition &pixel) {
    const PixelImage &image = *state.image_info->display_image;
    const uint8_t level = util_pixel_level(image, pixel.column, pixel.row);
    const Colour colour = util_pixel_colour(image, pixel.column, pixel.row);
    const std::string bits = state.display_state->integers_as_hexadecimal ? util_format(" (0x%02X)", level) : "";
    return util_format("sample: %lld  line: %lld  DN: %.9g%s  DIS: (%d, %d, %d)",
                       static_cast<long long>(get_curr_sample(*state.image_info, pixel)),
                       static_cast<long long>(get_curr_line(*state.image_info, pixel)), getDNValue(level), bits.c_str(),
                       colour.red, colour.green, colour.blue);
}

// What the source says of the sample, else the sample as it is stored; empty when there is neither.
std::string value_text(const GenericState &state, const PixelPosition &pixel) {
    const ImageDescription &description = *state.image_info;
    const ImagePosition at = image_position_at(description, pixel.column, pixel.row);
    const bool hexadecimal = state.display_state->integers_as_hexadecimal;
    std::string text = state.display_state->source->value_text(at.line, at.sample, hexadecimal);
    const void *samples = samples_shown(&state);
    if (text.empty() && samples) {
        const int64_t index = (at.line - description.block.first_line) * description.block.samples() + at.sample -
                              description.block.first_sample;
        text = sample_text(samples, index, description, hexadecimal);
    }
    return text.empty() ? "" : "value: " + text;
}

void set_pixel_window(Window *window, const GenericState &state, const PixelPosition &pixel) {
    gui_set_text(window, status_line, status_text(state, pixel));
    gui_set_text(window, value_line, value_text(state, pixel));
}

// The screen place of an image pixel, in the client area.
GuiRect pixel_place(const Window *window, const DisplayState &display, const PixelPosition &pixel) {
    const GuiPoint scroll = gui_scroll_position(window);
    const int left = static_cast<int>(pixel.column * display.zoom / display.shrink - std::llround(scroll.x));
    const int top = static_cast<int>(pixel.row * display.zoom / display.shrink - std::llround(scroll.y));
    return {left, top, display.zoom, display.zoom};
}

void show_read_out(Window *window, GenericState *state, const PixelPosition &pixel) {
    DisplayState &display = *state->display_state;
    display.read_out = pixel;
    display.remark_shown = false;
    set_pixel_window(window, *state, pixel);
    place_read_out(window, *state);
    gui_show_control(window, status_line, true);
    gui_show_control(window, value_line, !gui_text(window, value_line).empty());
    display.status_shown = true;
}

void hide_cursor(Window *window, DisplayState *display) {
    if (!display->cursor.is_somewhere())
        return;
    display->cursor = {};
    gui_invalidate(window);
}

// The smallest scroll that brings [place, place + length) into a client area of this extent.
double scroll_into_view(double scroll, int place, int length, int extent) {
    if (place < 0)
        return scroll + place;
    if (place + length > extent)
        return scroll + place + length - extent;
    return scroll;
}

PixelPosition pixel_in_the_middle(const Window *window, const GenericState &state) {
    const PixelImage &image = *state.image_info->display_image;
    const GuiSize client = gui_client_size(window);
    PixelPosition pixel;
    if (!pixel_at(window, state, {client.width / 2.0, client.height / 2.0}, &pixel))
        pixel = {image.width / 2, image.height / 2};
    return pixel;
}

}  // namespace

bool pixel_at(const Window *window, const GenericState &state, GuiPoint point, PixelPosition *pixel) {
    const DisplayState &display = *state.display_state;
    const PixelImage &image = *state.image_info->display_image;
    const GuiSize client = gui_client_size(window);
    if (point.x < 0 || point.y < 0 || point.x >= client.width || point.y >= client.height)
        return false;
    const GuiPoint scroll = gui_scroll_position(window);
    pixel->column = static_cast<int64_t>(std::floor(point.x + scroll.x)) * display.shrink / display.zoom;
    pixel->row = static_cast<int64_t>(std::floor(point.y + scroll.y)) * display.shrink / display.zoom;
    return pixel->column < image.width && pixel->row < image.height;
}

void show_remark(Window *window, const std::string &text) {
    const GenericState *state = window_state(window);
    state->display_state->remark_shown = true;
    gui_set_text(window, status_line, text);
    gui_set_text(window, value_line, "");
    place_read_out(window, *state);
    gui_show_control(window, status_line, true);
    gui_show_control(window, value_line, false);
}

void prepare_read_out(Window *window, const GenericState &state) {
    gui_show_control(window, status_line, false);
    gui_show_control(window, value_line, false);
    gui_check_command(window, hexadecimal_command, state.display_state->integers_as_hexadecimal);
}

void move_read_out(Window *window, GenericState *state, GuiPoint pointer) {
    hide_cursor(window, state->display_state.get());
    state->display_state->pointer = pointer;
    PixelPosition pixel;
    if (pixel_at(window, *state, pointer, &pixel))
        show_read_out(window, state, pixel);
}

void move_cursor(Window *window, GenericState *state, int columns, int rows) {
    DisplayState &display = *state->display_state;
    const PixelImage &image = *state->image_info->display_image;
    const GuiSize client = gui_client_size(window);
    PixelPosition &cursor = display.cursor;
    if (!cursor.is_somewhere())
        cursor = pixel_in_the_middle(window, *state);
    // One step is at least one screen pixel.
    cursor.column = std::clamp<int64_t>(cursor.column + int64_t{columns} * display.shrink, 0, image.width - 1);
    cursor.row = std::clamp<int64_t>(cursor.row + int64_t{rows} * display.shrink, 0, image.height - 1);

    const GuiRect place = pixel_place(window, display, cursor);
    const GuiPoint scroll = gui_scroll_position(window);
    gui_scroll_to(window, {scroll_into_view(scroll.x, place.left, place.width, client.width),
                           scroll_into_view(scroll.y, place.top, place.height, client.height)});
    show_read_out(window, state, cursor);
    gui_invalidate(window);
}

void hide_read_out(Window *window, DisplayState *display) {
    gui_show_control(window, status_line, false);
    gui_show_control(window, value_line, false);
    display->status_shown = false;
    display->remark_shown = false;
    hide_cursor(window, display);
}

// The lines lie along the bottom edge of the client area, and along the top while they would cover the pixel that they
// read out; a remark about all of the picture lies at the bottom.
void place_read_out(Window *window, const GenericState &state) {
    const DisplayState &display = *state.display_state;
    const GuiSize client = gui_client_size(window);
    const GuiSize status = gui_wanted_size(window, status_line);
    const GuiSize value = gui_wanted_size(window, value_line);
    const int width = std::max({smallest_status.width, status.width, value.width});
    const int status_height = std::max(smallest_status.height, status.height);
    const int value_height = gui_text(window, value_line).empty() ? 0 : std::max(smallest_status.height, value.height);
    const GuiRect pixel = pixel_place(window, display, display.read_out);
    const int bottom = client.height - status_height - value_height;
    const bool covers = !display.remark_shown && display.read_out.is_somewhere() && pixel.left < width &&
                        pixel.top + pixel.height > bottom;
    const int top = covers && pixel.top >= status_height + value_height ? 0 : bottom;
    gui_move_control(window, value_line, {0, top, width, value_height});
    gui_move_control(window, status_line, {0, top + value_height, width, status_height});
}

void draw_cursor(const Window *window, const DisplayState &display, Canvas *canvas) {
    if (!display.cursor.is_somewhere())
        return;
    const GuiRect place = pixel_place(window, display, display.cursor);
    const int margin = std::max(1, (smallest_marker - place.width) / 2);
    gui_draw_cross_hair(canvas,
                        {place.left - margin, place.top - margin, place.width + 2 * margin, place.height + 2 * margin});
}

void refresh_read_out(Window *window) {
    GenericState *state = window_state(window);
    if (!display_image(state))
        return;
    if (std::exchange(state->display_state->remark_shown, false))  // what it told of has changed
        gui_show_control(window, status_line, false);
    if (!state->display_state->status_shown)
        return;
    PixelPosition pixel = state->display_state->cursor;
    if (pixel.is_somewhere() || pixel_at(window, *state, state->display_state->pointer, &pixel))
        show_read_out(window, state, pixel);
}

void copy_read_out(Window *window) {
    const GenericState *state = window_state(window);
    if (!display_image(state) || !state->display_state->read_out.is_somewhere()) {
        gui_note("Nothing was read out yet. Point at the image with the mouse, or press an arrow key.");
        return;
    }
    const PixelPosition &pixel = state->display_state->read_out;
    const std::string value = value_text(*state, pixel);
    gui_copy_text(status_text(*state, pixel) + (value.empty() ? "" : "\n" + value));
}

void toggle_hexadecimal(Window *window) {
    const GenericState *state = window_state(window);
    if (!display_image(state))
        return;
    bool &shown = state->display_state->integers_as_hexadecimal;
    shown = !shown;
    gui_check_command(window, hexadecimal_command, shown);
    refresh_read_out(window);
}
