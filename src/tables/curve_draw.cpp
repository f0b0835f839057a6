// Draws curves on a canvas and saves them as files.
#include "base/file.h"
#include "base/text.h"
#include "tables/curve_state.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr double curve_width = 1.5;
constexpr double grid_strength = 0.14;  // of the text's colour
constexpr double frame_strength = 0.6;

uint8_t mixed(uint8_t ground, uint8_t text, double strength) {
    return static_cast<uint8_t>(ground + (text - ground) * strength);
}

Colour mixed(const CurveInks &inks, double strength) {
    return {mixed(inks.ground.red, inks.text.red, strength), mixed(inks.ground.green, inks.text.green, strength),
            mixed(inks.ground.blue, inks.text.blue, strength)};
}

Colour colour_of(const CurveInks &inks, CurveInk ink, size_t curve) {
    switch (ink) {
        case CurveInk::Text:
            return inks.text;
        case CurveInk::Frame:
            return mixed(inks, frame_strength);
        case CurveInk::Grid:
            return mixed(inks, grid_strength);
        case CurveInk::Curve:
            break;
    }
    const CurveColour colour = curve_colour(curve, inks.dark);
    return {colour.red, colour.green, colour.blue};
}

void draw_marks(Canvas *canvas, const CurveMarks &marks, const CurveInks &inks) {
    constexpr size_t many = 2000;  // that large ones would hide
    const int radius = marks.places.size() < many ? 2 : 1;
    const int size = 2 * radius + 1;
    const Colour colour = colour_of(inks, CurveInk::Curve, marks.curve);
    for (const CurvePoint &place : marks.places)
        gui_fill_rectangle(canvas, {static_cast<int>(place.x) - radius, static_cast<int>(place.y) - radius, size, size},
                           colour);
}

// The painter joins all segments of a line before it fills them; pieces are much faster.
void draw_line(Canvas *canvas, const CurveLine &line, const CurveInks &inks) {
    constexpr size_t piece = 200;
    const Colour colour = colour_of(inks, line.ink, line.curve);
    const double width = line.ink == CurveInk::Curve ? curve_width : 1;
    if (line.points.size() == 1)
        return draw_marks(canvas, {line.points, line.curve}, inks);
    std::vector<GuiPoint> points;
    for (const CurvePoint &point : line.points) {
        points.push_back({point.x, point.y});
        if (points.size() > piece) {
            gui_draw_lines(canvas, points, colour, width);
            points = {points.back()};
        }
    }
    gui_draw_lines(canvas, points, colour, width);
}

void draw_text(Canvas *canvas, const CurveText &text, const CurveInks &inks) {
    const GuiSize size = gui_text_size(text.text);
    const double left = text.align == CurveTextAlign::Left     ? text.place.x
                        : text.align == CurveTextAlign::Centre ? text.place.x - size.width / 2.0
                                                               : text.place.x - size.width;
    gui_draw_text(
        canvas,
        {static_cast<int>(left), static_cast<int>(text.place.y - size.height / 2.0), size.width + 1, size.height},
        text.text, inks.text);
}

// Where to save; false when nothing was chosen or the file that is there is to stay.
bool choose_file(const CurvePlot &plot, const char *type, const char *prompt, std::string *path, std::string *name) {
    FileRequest request;
    request.prompt = prompt;
    request.file_type = type;
    request.proposed = {plot.directory, plot.file_stem + "." + type};
    FileSpec chosen;
    switch (gui_save_file(request, &chosen)) {
        case FileAnswer::Cancel:
            return false;
        case FileAnswer::Bad:
            gui_error("Save - Error getting file name.");
            return false;
        case FileAnswer::Ok:
            break;
    }
    *path = path_in(chosen.directory, chosen.name);
    *name = chosen.name;
    struct stat status;
    return stat(path->c_str(), &status) != 0 ||
           gui_question(util_format("File \"%s\" already exists. Replace existing file?", name->c_str()),
                        {"Cancel", "Replace"}) == 1;
}

template <typename Write>
void save(Window *window, const char *type, const char *prompt, Write write) {
    const CurveState *state = curve_state(window);
    std::string path, name;
    if (!state || !choose_file(state->plot, type, prompt, &path, &name) || !gui_window_exists(window))
        return;
    const BusyCursor busy;
    ReplacingFile file;
    if (!file.open(path))
        return gui_error("Save - Unable to open file for writing");
    if (!write(file.stream()) || !file.commit())
        gui_error(util_format("Save - Unable to write file %s\n%s", name.c_str(), strerror(errno)));
}

bool write_bytes(const std::string &bytes, FILE *file) {
    return !bytes.empty() && fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

// As the window shows it, whatever its size.
CurveScene scene_to_save(const Window *window) {
    const CurveState &state = *curve_state(window);
    constexpr int least_width = 640, least_height = 400;
    const GuiSize size = gui_client_size(window);
    return curve_scene(state.plot, state.look, std::max(size.width, least_width), std::max(size.height, least_height),
                       curve_font());
}

}  // namespace

CurveFont curve_font() {
    return {[](const std::string &text) { return gui_text_size(text).width; }, gui_text_size("0").height};
}

CurveInks desktop_inks() {
    const Colour ground = gui_colour(GuiColour::Ground);
    return {gui_colour(GuiColour::Text), ground, ground.red + ground.green + ground.blue < 3 * 128};
}

CurveInks paper_inks() {
    return {{0, 0, 0}, {255, 255, 255}, false};
}

void draw_scene(Canvas *canvas, const CurveScene &scene, const CurveInks &inks) {
    for (const CurveLine &line : scene.lines)
        draw_line(canvas, line, inks);
    for (const CurveMarks &marks : scene.marks)
        draw_marks(canvas, marks, inks);
    for (const CurveText &text : scene.texts)
        draw_text(canvas, text, inks);
}

void save_curves_as_png(Window *window) {
    save(window, "png", "Save picture as:", [window](FILE *file) {
        constexpr int scale = 2;  // sharp on paper, too
        const CurveScene scene = scene_to_save(window);
        return write_bytes(gui_png({scene.width, scene.height}, scale,
                                   [&](Canvas *canvas) { draw_scene(canvas, scene, paper_inks()); }),
                           file);
    });
}

void save_curves_as_svg(Window *window) {
    save(window, "svg",
         "Save drawing as:", [window](FILE *file) { return write_bytes(curve_svg(scene_to_save(window)), file); });
}

void save_curves_as_csv(Window *window) {
    save(window, "csv",
         "Save numbers as:", [window](FILE *file) { return write_curve_csv(curve_state(window)->plot, file); });
}
