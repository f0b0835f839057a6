#include "viewer/image_window.h"

#include "viewer/commands.h"
#include "viewer/image_read_out.h"
#include "viewer/model/rotate.h"
#include "viewer/model/stretch.h"
#include "viewer/open_product.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"
#include "viewer/unattended.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t longest_title_name = 60;
constexpr int scroll_step = 16;
constexpr int largest_zoom = 32;
constexpr int64_t smallest_shrunk_side = 32;  // the longer side keeps so many screen pixels
constexpr int far_cursor_step = 10;

// --- Creation -----------------------------------------------------------------------------------------------------

// Reads the samples of the description's block. The reason of a failure is in error_string.
bool read_block(GenericState *state) {
    const BusyCursor busy;
    ImageDescription &image = *state->image_info;
    SampleSource &source = *state->display_state->source;
    if (source.gives_pictures()) {
        image.display_image = source.read_picture(image.block);
        return image.display_image != nullptr;
    }
    state->label_state->image_data = source.read_block(image.block);
    return state->label_state->image_data != nullptr;
}

bool get_partial_image_obj(Window *window, GenericState *state) {
    if (!read_block(state)) {
        tell_error("Image Create - could not find partial image\n" + error_string);
        return false;
    }
    set_large_menu_items(window, *state);
    return true;
}

// Reads the whole image when it fits one block and none was asked for, else the block.
bool read_samples(Window *window, GenericState *state) {
    ImageDescription &image = *state->image_info;
    const SampleBlock &requested = state->label_state->requested_block;
    if (requested != SampleBlock()) {
        image.block = requested;
        return get_partial_image_obj(window, state);
    }
    initialize_display_image_ranges(&image, image.lines_large, image.samples_large);
    if (image.lines_large || image.samples_large)
        return get_partial_image_obj(window, state);
    if (read_block(state))
        return true;
    tell_error(error_string);
    return false;
}

bool create_image(GenericState *state) {
    ImageDescription &image = *state->image_info;
    if (image.display_image)
        return true;
    const OaObject *samples = state->label_state->image_data.get();
    const std::string remark =
        build_display_image(samples ? samples->data : nullptr, &image, image.block.lines(), image.block.samples());
    if (!remark.empty() && image.display_image)
        gui_note(remark);
    else if (!remark.empty())
        gui_error(remark);
    return image.display_image != nullptr;
}

// Turns the display image as its directions say.
bool turn_image(ImageDescription *image) {
    if (image->line_display_direction == "DOWN" && image->sample_display_direction == "RIGHT")
        return true;
    RotatedImage turned =
        rotate_image(*image->display_image, image->line_display_direction, image->sample_display_direction);
    if (turned.out_of_memory) {
        fatal_out_of_memory("Rotate image");
        return false;
    }
    for (const std::string &error : turned.errors)
        gui_error(error);
    if (turned.image)
        image->display_image = std::move(turned.image);
    return true;
}

void update_content_size(Window *window, const GenericState &state) {
    const PixelImage &image = *state.image_info->display_image;
    const DisplayState &display = *state.display_state;
    const auto shown = [&](int side) { return (side * display.zoom + display.shrink - 1) / display.shrink; };
    gui_set_content_size(window, {shown(image.width), shown(image.height)}, scroll_step);
}

long win_image_e_create(Window *window) {
    GenericState *state = window_state(window);
    if (!state || !state->image_info || !state->display_state) {
        gui_error("Image Create - invalid state");
        return 1;
    }
    set_error_window(window);
    const char *kind = state->display_state->is_of_qube ? "Lumacart - Image from QUBE - " : "Lumacart - Image - ";
    const std::string &path = state->label_state->file_name;
    const std::string name = shown_name(path.substr(path.rfind('/') + 1), longest_title_name);
    const std::string part = shown_name(state->display_state->part_name, longest_title_name);
    gui_set_title(window, kind + name + (part.empty() ? "" : " - " + part) + state->browser_tag);
    prepare_read_out(window, *state);

    enable_known_commands(window, CommandDispatcher::Application);
    for (const int number : {1064, 1071, 1072, 1073, 1074})
        gui_enable_command(window, number, false);
    if (!read_samples(window, state) || !create_image(state) || !turn_image(state->image_info.get()))
        return 1;
    if (!gui_window_exists(window))  // it went while a message was shown
        return 1;
    prepare_palettes(window);
    const ImageDescription &image = *state->image_info;
    update_content_size(window, *state);
    gui_set_client_size(window, {image.display_image->width, image.display_image->height});
    return 0;
}

// --- Zoom ---------------------------------------------------------------------------------------------------------

GuiPoint client_centre(const Window *window) {
    const GuiSize client = gui_client_size(window);
    return {client.width / 2.0, client.height / 2.0};
}

// Sets the scale, keeping the image pixel at `anchor` where it is.
void set_zoom(Window *window, int zoom, int shrink, GuiPoint anchor) {
    GenericState *state = window_state(window);
    if (!display_image(state))
        return;
    DisplayState &display = *state->display_state;
    const double before = static_cast<double>(display.zoom) / display.shrink;
    const double after = static_cast<double>(zoom) / shrink;
    const GuiPoint scroll = gui_scroll_position(window);
    display.zoom = zoom;
    display.shrink = shrink;
    display.keeps_fitting = false;
    update_content_size(window, *state);
    gui_scroll_to(
        window, {(scroll.x + anchor.x) / before * after - anchor.x, (scroll.y + anchor.y) / before * after - anchor.y});
    gui_invalidate(window);
    refresh_read_out(window);
}

void zoom_by(Window *window, int steps, GuiPoint anchor) {
    const GenericState *state = window_state(window);
    const PixelImage *image = display_image(state);
    if (!image)
        return;
    int zoom = state->display_state->zoom;
    int shrink = state->display_state->shrink;
    const int64_t longer_side = std::max(image->width, image->height);
    for (; steps > 0; --steps) {
        if (shrink > 1)
            --shrink;
        else if (zoom < largest_zoom)
            ++zoom;
    }
    for (; steps < 0; ++steps) {
        if (zoom > 1)
            --zoom;
        else if (longer_side / (shrink + 1) >= smallest_shrunk_side)
            ++shrink;
    }
    set_zoom(window, zoom, shrink, anchor);
}

// The largest whole zoom that shows all of the image; 0 when none does.
int fitting_zoom(const Window *window, const PixelImage &image) {
    const GuiSize client = gui_client_size_without_bars(window);
    return std::min({client.width / image.width, client.height / image.height, largest_zoom});
}

// In a window whose size is not for the user to say, as long as the user did not zoom.
void enlarge_to_fit(Window *window) {
    const GenericState *state = window_state(window);
    const int zoom = std::max(1, fitting_zoom(window, *display_image(state)));
    if (zoom != state->display_state->zoom || state->display_state->shrink != 1)
        set_zoom(window, zoom, 1, {0, 0});
    state->display_state->keeps_fitting = true;
}

// --- Events -------------------------------------------------------------------------------------------------------

void win_image_e_update(Window *window, const GenericState &state, const Event &event) {
    gui_clear(event.canvas, event.area);
    const PixelImage *image = display_image(&state);
    if (!image)
        return;
    set_error_window(window);
    const DisplayState &display = *state.display_state;
    const GuiPoint scroll = gui_scroll_position(window);
    gui_draw_image(event.canvas, *image, -static_cast<int>(std::lround(scroll.x)),
                   -static_cast<int>(std::lround(scroll.y)), display.zoom, display.shrink);
    draw_cursor(window, display, event.canvas);
}

// Whether something was made of a click on a pixel. The window may be gone afterwards.
bool click_pixel(const GenericState &state, const PixelPosition &pixel) {
    const ImagePosition position = image_position_at(*state.image_info, pixel.column, pixel.row);
    return state.display_state->source->click(position.line, position.sample);
}

// 1 when the key was used.
long win_image_e_key(Window *window, GenericState *state, const Event &event) {
    const int far = event.modifiers & GUI_SHIFT ? far_cursor_step : 1;
    switch (event.key) {
        case GuiKey::Left:
            move_cursor(window, state, -far, 0);
            return 1;
        case GuiKey::Right:
            move_cursor(window, state, far, 0);
            return 1;
        case GuiKey::Up:
            move_cursor(window, state, 0, -far);
            return 1;
        case GuiKey::Down:
            move_cursor(window, state, 0, far);
            return 1;
        case GuiKey::Escape:
            hide_read_out(window, state->display_state.get());
            return 1;
        case GuiKey::Enter: {
            const PixelPosition cursor = state->display_state->cursor;
            return cursor.is_somewhere() && click_pixel(*state, cursor) ? 1 : 0;
        }
        case GuiKey::Character:
            break;
        default:
            return 0;
    }
    switch (event.character) {
        case U'+':
        case U'=':  // the same key without Shift on many keyboards
            zoom_in(window);
            return 1;
        case U'-':
            zoom_out(window);
            return 1;
        case U'0':
            zoom_actual(window);
            return 1;
        case U'f':
        case U'F':
            zoom_to_fit(window);
            return 1;
        default:
            return 0;
    }
}

void win_image_e_mouse_down(const Window *window, GenericState *state, const Event &event) {
    PixelPosition pixel;
    if (event.button == 1 && pixel_at(window, *state, event.position, &pixel))
        click_pixel(*state, pixel);
}

}  // namespace

void show_browsed(Window *window) {
    if (session().browse_size) {
        window_state(window)->display_state->keeps_fitting = true;
        gui_maximize(window);
    }
    if (session().browse_stretch_image)
        menu2_stretch_display(window);
}

long WIN_IMAGE_eh(Window *window, const Event &event) {
    if (event.type == EventType::Create)
        return win_image_e_create(window);
    if (event.type == EventType::Destroy) {
        forget_error_window(window);
        free_window_state(window);
        return 0;
    }
    GenericState *state = window_state(window);
    if (!display_image(state))
        return 0;
    switch (event.type) {
        case EventType::Update:
            win_image_e_update(window, *state, event);
            break;
        case EventType::Size:
            if (state->display_state->keeps_fitting)
                enlarge_to_fit(window);
            place_read_out(window, *state);
            break;
        case EventType::Close:
            gui_destroy_window(window);
            break;
        case EventType::MouseDown:
            win_image_e_mouse_down(window, state, event);
            break;
        case EventType::MouseMove:
            move_read_out(window, state, event.position);
            break;
        case EventType::MouseLeave:
            hide_read_out(window, state->display_state.get());
            break;
        case EventType::Wheel:
            zoom_by(window, event.wheel_steps, event.position);
            break;
        case EventType::Key:
            return win_image_e_key(window, state, event);
        case EventType::Scroll:
            gui_invalidate(window);
            refresh_read_out(window);
            break;
        case EventType::Timer:
            handle_error_timer(event);
            break;
        case EventType::Command:
            do_WIN_MENUBAR(window, event.number);
            break;
        default:
            break;
    }
    return 0;
}

void zoom_in(Window *window) {
    zoom_by(window, 1, client_centre(window));
}

void zoom_out(Window *window) {
    zoom_by(window, -1, client_centre(window));
}

void zoom_actual(Window *window) {
    set_zoom(window, 1, 1, client_centre(window));
}

void zoom_to_fit(Window *window) {
    const PixelImage *image = display_image(window_state(window));
    const GuiSize client = gui_client_size_without_bars(window);
    if (!image || image->width < 1 || image->height < 1 || client.width < 1 || client.height < 1)
        return;
    const int fits = fitting_zoom(window, *image);
    const int needs =
        std::max((image->width + client.width - 1) / client.width, (image->height + client.height - 1) / client.height);
    set_zoom(window, std::max(1, fits), fits >= 1 ? 1 : needs, {0, 0});
}
