// The window of curves: axes, lines or points, and the read-out of single points.
#include "base/text.h"
#include "tables/curve_state.h"
#include "tables/model/curve_column.h"
#include "tables/page_state.h"
#include "tables/plot_state.h"

#include <cmath>
#include <optional>

namespace {

constexpr int read_out_label = 2;
constexpr int lines_command = 2062;
constexpr int points_command = 2063;
constexpr int grid_command = 2064;
constexpr int read_out_height = 20;

void show_marks_of_look(Window *window) {
    const CurveLook &look = curve_state(window)->look;
    gui_check_command(window, lines_command, look.lines);
    gui_check_command(window, points_command, look.points);
    gui_check_command(window, grid_command, look.grid);
}

GuiSize picture_size(const Window *window) {
    const GuiSize size = gui_client_size(window);
    return {std::max(size.width, 1), std::max(size.height - read_out_height, 1)};
}

// The scene of the window's present size and look.
const CurveScene &present_scene(const Window *window, CurveState *state) {
    const GuiSize size = picture_size(window);
    const bool is_present = state->scene && state->scene->width == size.width && state->scene->height == size.height;
    if (!is_present)
        state->scene = curve_scene(state->plot, state->look, size.width, size.height, curve_font());
    return *state->scene;
}

// Where a point is in the picture: nowhere, which is no finite number, when it is too far away. Divides first, for the
// pixels in a unit of a narrow range are beyond all numbers.
GuiPoint place_of(const CurveScene &scene, double x, double y) {
    const double across = (x - scene.x.low) / (scene.x.high - scene.x.low);
    const double up = (y - scene.y.low) / (scene.y.high - scene.y.low);
    return {scene.frame_left + across * (scene.frame_right - scene.frame_left),
            scene.frame_bottom - up * (scene.frame_bottom - scene.frame_top)};
}

bool is_shown(const Curve &curve, size_t point) {
    return std::isfinite(curve.x[point]) && std::isfinite(curve.y[point]);
}

// --- Read-out -----------------------------------------------------------------------------------------------------

void show_read_out(Window *window) {
    const CurveState &state = *curve_state(window);
    std::string text;
    if (state.read_out) {
        const Curve &curve = state.plot.curves[state.read_out->curve];
        const size_t point = state.read_out->point;
        text = util_format("%s = %.10g   %s = %.10g   (point %zu of %zu)", state.plot.x_title.c_str(), curve.x[point],
                           curve.name.c_str(), curve.y[point], point + 1, curve.size());
    } else {
        text = state.scene && state.scene->lines_left_out ? "Too many lines to be told apart: points are shown."
                                                          : state.plot.remark;
    }
    gui_set_text(window, read_out_label, text);
    gui_invalidate(window);
}

// The shown point nearest to a place in the picture, of those near it.
std::optional<CurveReadOut> nearest_point(const CurveState &state, const CurveScene &scene, GuiPoint place) {
    constexpr double near = 40;  // pixels
    std::optional<CurveReadOut> nearest;
    double least = near * near;
    for (size_t i = 0; i < state.plot.curves.size(); ++i) {
        const Curve &curve = state.plot.curves[i];
        for (size_t point = 0; point < curve.size(); ++point) {
            const GuiPoint at = place_of(scene, curve.x[point], curve.y[point]);
            const double distance = (at.x - place.x) * (at.x - place.x) + (at.y - place.y) * (at.y - place.y);
            if (distance < least) {  // never of what is no number
                least = distance;
                nearest = {i, point};
            }
        }
    }
    return nearest;
}

void follow_pointer(Window *window, GuiPoint place) {
    CurveState &state = *curve_state(window);
    const auto nearest = nearest_point(state, present_scene(window, &state), place);
    if (!nearest || nearest == state.read_out)
        return;
    state.read_out = nearest;
    show_read_out(window);
}

// The next shown point of the curve in this direction; false when there is none.
bool step_to(CurveState *state, size_t curve_index, int64_t point, int64_t step) {
    const Curve &curve = state->plot.curves[curve_index];
    const auto count = static_cast<int64_t>(curve.size());
    for (; point >= 0 && point < count; point += step) {
        if (is_shown(curve, static_cast<size_t>(point))) {
            state->read_out = {curve_index, static_cast<size_t>(point)};
            return true;
        }
    }
    return false;
}

bool step_by_key(CurveState *state, GuiKey key) {
    constexpr int64_t page = 100;
    const CurveReadOut at = state->read_out.value_or(CurveReadOut{});
    const auto point = static_cast<int64_t>(at.point);
    const auto last = static_cast<int64_t>(state->plot.curves[at.curve].size()) - 1;
    const int64_t start = state->read_out ? 1 : 0;
    switch (key) {
        case GuiKey::Right:
            return step_to(state, at.curve, point + start, 1);
        case GuiKey::Left:
            return step_to(state, at.curve, point - start, -1);
        case GuiKey::PageDown:
            return step_to(state, at.curve, std::min(point + page, last), 1);
        case GuiKey::PageUp:
            return step_to(state, at.curve, std::max<int64_t>(point - page, 0), -1);
        case GuiKey::Home:
            return step_to(state, at.curve, 0, 1);
        case GuiKey::End:
            return step_to(state, at.curve, last, -1);
        case GuiKey::Up:
            return at.curve > 0 && step_to(state, at.curve - 1, point, 1);
        case GuiKey::Down:
            return at.curve + 1 < state->plot.curves.size() && step_to(state, at.curve + 1, point, 1);
        default:
            return false;
    }
}

bool follow_key(Window *window, const Event &event) {
    CurveState &state = *curve_state(window);
    if (event.modifiers != 0 || state.plot.curves.empty() || !step_by_key(&state, event.key))
        return false;
    show_read_out(window);
    return true;
}

void draw_read_out(Canvas *canvas, const CurveState &state) {
    constexpr int radius = 5;
    if (!state.read_out)
        return;
    const Curve &curve = state.plot.curves[state.read_out->curve];
    const GuiPoint place = place_of(*state.scene, curve.x[state.read_out->point], curve.y[state.read_out->point]);
    if (!std::isfinite(place.x) || !std::isfinite(place.y))
        return;
    const int left = static_cast<int>(place.x) - radius;
    const int top = static_cast<int>(place.y) - radius;
    gui_draw_rectangle(canvas, {left, top, 2 * radius + 1, 2 * radius + 1}, gui_colour(GuiColour::Text), 2);
}

// --- Window -------------------------------------------------------------------------------------------------------

void place_read_out(Window *window) {
    const GuiSize size = gui_client_size(window);
    gui_move_control(window, read_out_label, {0, size.height - read_out_height, size.width, read_out_height});
}

void draw(Window *window, const Event &event) {
    CurveState &state = *curve_state(window);
    gui_fill_rectangle(event.canvas, event.area, gui_colour(GuiColour::Ground));
    draw_scene(event.canvas, present_scene(window, &state), desktop_inks());
    draw_read_out(event.canvas, state);
}

long create_curve_window(Window *window) {
    const std::shared_ptr<GuiRect> &place = curve_state(window)->place;
    if (place && place->width > 0)
        gui_place_window(window, *place);
    gui_set_title(window, curve_state(window)->plot.title);
    enable_known_commands(window, CommandDispatcher::Label);
    show_marks_of_look(window);
    place_read_out(window);
    gui_set_pointer(window, PointerShape::Cross);
    CurveState *state = curve_state(window);
    present_scene(window, state);
    show_read_out(window);
    return 0;
}

long curve_window_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_curve_window(window);
        case EventType::Size:
            place_read_out(window);
            break;
        case EventType::Update:
            draw(window, event);
            break;
        case EventType::MouseMove:
            follow_pointer(window, event.position);
            break;
        case EventType::Key:
            return follow_key(window, event) ? 1 : 0;
        case EventType::Destroy:
            if (const CurveState *state = curve_state(window); state && state->place)
                *state->place = gui_own_place(window);
            [[fallthrough]];
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}

void toggle(Window *window, bool CurveLook::*part) {
    CurveState *state = curve_state(window);
    if (!state)
        return;
    state->look.*part = !(state->look.*part);
    // Something of the curves is always shown.
    if (!state->look.lines && !state->look.points)
        (part == &CurveLook::lines ? state->look.points : state->look.lines) = true;
    state->scene.reset();
    show_marks_of_look(window);
    present_scene(window, state);
    show_read_out(window);
}

}  // namespace

CurveState *curve_state(const Window *window) {
    const GenericState *state = gui_window_exists(window) ? window_state(window) : nullptr;
    return state ? dynamic_cast<CurveState *>(state->module.get()) : nullptr;
}

Window *open_curve_plot(CurvePlot plot, const CurveOptions &options) {
    auto curves = std::make_unique<CurveState>();
    curves->plot = std::move(plot);
    curves->place = options.place;
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = curves->plot.directory;
    state->module = std::move(curves);
    return open_document_window(options.resource, curve_window_eh, std::move(state), options.owner);
}

bool replace_curves(Window *window, CurvePlot plot) {
    CurveState *state = curve_state(window);
    if (!state)
        return false;
    state->plot = std::move(plot);
    state->scene.reset();
    // The point of the same number goes on being told.
    const auto &at = state->read_out;
    const auto &curves = state->plot.curves;
    if (at &&
        !(at->curve < curves.size() && at->point < curves[at->curve].size() && is_shown(curves[at->curve], at->point)))
        state->read_out.reset();
    gui_set_title(window, state->plot.title);
    present_scene(window, state);
    show_read_out(window);
    return true;
}

void toggle_curve_lines(Window *window) {
    toggle(window, &CurveLook::lines);
}

void toggle_curve_points(Window *window) {
    toggle(window, &CurveLook::points);
}

void toggle_curve_grid(Window *window) {
    toggle(window, &CurveLook::grid);
}

namespace {

// The name of the data file's label without extension, to save beside it.
std::string stem_of(const std::string &file_name) {
    const std::string stem = file_name.substr(0, file_name.rfind('.'));
    return stem.empty() ? "plot" : shown_name(stem, 200);
}

// False after a note.
bool has_numbers(const PlotSource &source, const ColumnInfo &column) {
    if (is_numeric_column(source.table, column))
        return true;
    gui_note(util_format("The fields of column %s are no numbers.", plot_column_name(column).c_str()));
    return false;
}

bool read_curve(const PlotSource &source, const PlotChoice &choice, const ColumnInfo &x, const ColumnInfo &y,
                Curve *curve) {
    const BusyCursor busy;
    const auto reader = tb_open_reader(source.tables.file, source.table);
    if (!reader)
        return false;
    const int64_t last = std::min(choice.last_row, reader->rows_present());
    return with_memory([&] {
        read_curve_column(reader.get(), source.table, x, choice.first_row, last, &curve->x);
        read_curve_column(reader.get(), source.table, y, choice.first_row, last, &curve->y);
    });
}

}  // namespace

void open_detailed_plot(const PlotSource &source, const PlotChoice &choice) {
    const ColumnInfo &x = *source.columns[static_cast<size_t>(choice.x)];
    const ColumnInfo &y = *source.columns[static_cast<size_t>(choice.y)];
    if (!has_numbers(source, x) || !has_numbers(source, y))
        return;
    const std::string &file_name = source.product->label_state->file_name;
    CurvePlot plot;
    plot.title = "Lumacart - Detailed Plot - " + shown_name(file_name, longest_title_name);
    plot.x_title = curve_axis_title(x);
    plot.y_title = curve_axis_title(y);
    plot.directory = source.product->directory;
    plot.file_stem = stem_of(file_name);
    plot.curves.emplace_back();
    Curve &curve = plot.curves.back();
    curve.name = plot.y_title;
    if (!read_curve(source, choice, x, y, &curve))
        return table_error("OaReadObject failed!\n");
    for (size_t i = 0; i < curve.size(); ++i) {
        if (is_shown(curve, i)) {
            open_curve_plot(std::move(plot));
            return;
        }
    }
    gui_note("There are no numbers in these rows of the two columns.");
}
