#include "viewer/histogram_drawing.h"

#include "base/text.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double font_points = 8;
constexpr int margin = 14;
constexpr int gap = 4;
constexpr int strip_height = 12;
constexpr int reach = 6;  // of a bar's line, in pixels
constexpr int bar_count = 3;
constexpr int marked_levels[] = {0, 64, 128, 192, 255};
// From the upper lane to the lower.
constexpr DisplayBar lanes[bar_count] = {DisplayBar::Black, DisplayBar::Shift, DisplayBar::White};

std::string handle_text(DisplayBar bar, const DisplayControl &control) {
    switch (bar) {
        case DisplayBar::Black:
            return util_format("Black %d", control.lbarh);
        case DisplayBar::White:
            return util_format("White %d", control.rbarh);
        case DisplayBar::Shift:
            return util_format("Shift %+d", control.mbarh - control.maxpix);
    }
    return {};
}

int widest_tick(const LevelHistogram &histogram) {
    int widest = 0;
    for (const int64_t tick : histogram_ticks(histogram, histogram_scale(histogram)))
        widest = std::max(widest, gui_text_size(std::to_string(tick), font_points).width);
    return widest;
}

bool is_within(const GuiRect &place, GuiPoint point) {
    return point.x >= place.left && point.x < place.left + place.width && point.y >= place.top &&
           point.y < place.top + place.height;
}

Colour halfway(Colour one, Colour other) {
    const auto middle = [](uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b) / 2); };
    return {middle(one.red, other.red), middle(one.green, other.green), middle(one.blue, other.blue)};
}

// Levels are so wide that they lie without gaps between them.
GuiRect level_column(const GuiRect &plot, int level) {
    const int left = plot.left + level * plot.width / 256;
    const int right = plot.left + (level + 1) * plot.width / 256;
    return {left, plot.top, std::max(1, right - left), plot.height};
}

void draw_axes(Canvas *canvas, const HistogramLayout &layout, const LevelHistogram &histogram) {
    const GuiRect &plot = layout.plot;
    const Colour text = gui_colour(GuiColour::Text);
    const Colour grid = halfway(gui_colour(GuiColour::Ground), gui_colour(GuiColour::Faint));
    const int line = gui_text_size("0", font_points).height;
    const int64_t scale = histogram_scale(histogram);
    const int bottom = plot.top + plot.height;
    int last_top = bottom + 2 * line;
    for (const int64_t tick : histogram_ticks(histogram, scale)) {
        const int y = bottom - histogram_height(histogram, scale, tick, plot.height);
        if (last_top - y < line + 1)
            continue;
        last_top = y;
        gui_fill_rectangle(canvas, {plot.left, std::min(y, bottom - 1), plot.width, 1}, grid);
        gui_draw_text(canvas, {0, y - line / 2, plot.left - gap, line}, std::to_string(tick), text, font_points,
                      TextAlign::Right);
    }
    const int below = layout.strip.top + layout.strip.height + gap;
    for (const int level : marked_levels) {
        const int x = static_cast<int>(std::lround(level_place(layout, level)));
        gui_fill_rectangle(canvas, {x, below - gap, 1, gap}, gui_colour(GuiColour::Faint));
        gui_draw_text(canvas, {x - 20, below, 40, line}, std::to_string(level), text, font_points, TextAlign::Centre);
    }
    gui_draw_text(canvas, {gap, layout.strip.top, plot.left - 2 * gap, strip_height}, "Level", text, font_points,
                  TextAlign::Right);
    gui_draw_text(canvas, {gap, plot.top - line - 2 * gap, plot.left, line}, "Pixels", text, font_points);
}

// Ignored levels, which go beyond the scale, stand as empty frames.
void draw_levels(Canvas *canvas, const HistogramLayout &layout, const LevelHistogram &histogram) {
    const int64_t scale = histogram_scale(histogram);
    const Colour colour = gui_colour(GuiColour::Faint);
    for (int level = 0; level < 256; ++level) {
        const auto index = static_cast<size_t>(level);
        GuiRect column = level_column(layout.plot, level);
        const int height = histogram_height(histogram, scale, histogram.counts[index], column.height);
        column.top += column.height - height;
        column.height = height;
        if (height > 0 && histogram.ignored[index])
            gui_draw_rectangle(canvas, column, colour);
        else
            gui_fill_rectangle(canvas, column, colour);
    }
}

void draw_strip(Canvas *canvas, const HistogramLayout &layout, const ColourTable &colours) {
    for (int level = 0; level < 256; ++level)
        gui_fill_rectangle(canvas, level_column(layout.strip, level), colours[static_cast<size_t>(level)]);
    const GuiRect &strip = layout.strip;
    gui_draw_rectangle(canvas, {strip.left - 1, strip.top - 1, strip.width + 2, strip.height + 2},
                       gui_colour(GuiColour::Faint));
}

void draw_bar(Canvas *canvas, const HistogramLayout &layout, DisplayBar bar, bool selected,
              const DisplayControl &control) {
    const GuiRect &handle = layout.handles[static_cast<size_t>(bar)];
    const Colour ground = gui_colour(GuiColour::Ground);
    const Colour text = gui_colour(GuiColour::Text);
    const Colour frame = selected ? gui_colour(GuiColour::Accent) : text;
    const int x = static_cast<int>(std::lround(level_place(layout, bar_position(control, bar))));
    const int top = handle.top + handle.height;
    const int width = selected ? 3 : 1;
    gui_fill_rectangle(canvas, {x - width / 2, top, width, layout.strip.top - 1 - top}, frame);
    gui_fill_rectangle(canvas, handle, ground);
    gui_draw_rectangle(canvas, handle, frame, selected ? 2 : 1);
    gui_draw_text(canvas, handle, handle_text(bar, control), text, font_points, TextAlign::Centre);
}

}  // namespace

HistogramLayout lay_out_histogram(const HistogramState &histogram, const DisplayControl &control, GuiSize client) {
    const GuiSize letter = gui_text_size("0", font_points);
    const int lane = letter.height + 2 * gap;
    HistogramLayout layout;
    GuiRect &plot = layout.plot;
    plot.left = std::max(widest_tick(histogram.histogram), gui_text_size("Level", font_points).width) + 2 * gap + gap;
    plot.top = gap + bar_count * lane + gap;
    plot.width = std::max(256, client.width - plot.left - margin);
    plot.height = std::max(16, client.height - plot.top - strip_height - letter.height - 4 * gap);
    layout.strip = {plot.left, plot.top + plot.height + gap, plot.width, strip_height};
    for (int i = 0; i < bar_count; ++i) {
        const auto bar = static_cast<size_t>(lanes[i]);
        const int width = gui_text_size(handle_text(lanes[i], control), font_points).width + 4 * gap;
        const int middle = static_cast<int>(std::lround(level_place(layout, bar_position(control, lanes[i]))));
        const int left = std::clamp(middle - width / 2, 1, std::max(1, client.width - width - 1));
        layout.handles[bar] = {left, gap + i * lane, width, lane - 2};
    }
    return layout;
}

double level_place(const HistogramLayout &layout, int level) {
    return layout.plot.left + (level + 0.5) * layout.plot.width / 256 - 0.5;
}

int level_at(const HistogramLayout &layout, double x) {
    const double place = std::floor((x + 0.5 - layout.plot.left) * 256 / layout.plot.width);
    return static_cast<int>(std::clamp(place, -1000.0, 1000.0));
}

std::optional<DisplayBar> bar_at(const HistogramLayout &layout, const HistogramState &histogram,
                                 const DisplayControl &control, GuiPoint point) {
    for (const DisplayBar bar : lanes) {
        if (is_within(layout.handles[static_cast<size_t>(bar)], point))
            return bar;
    }
    std::optional<DisplayBar> nearest;
    double distance = reach;
    for (const DisplayBar bar : {histogram.bar, DisplayBar::Black, DisplayBar::White, DisplayBar::Shift}) {
        const double away = std::fabs(level_place(layout, bar_position(control, bar)) - point.x);
        if (away < distance) {
            nearest = bar;
            distance = away;
        }
    }
    return nearest;
}

void draw_histogram(Canvas *canvas, const GuiRect &exposed, const HistogramState &histogram,
                    const DisplayControl &control, const ColourTable &colours, GuiSize client) {
    const HistogramLayout layout = lay_out_histogram(histogram, control, client);
    gui_clear(canvas, exposed);
    draw_axes(canvas, layout, histogram.histogram);
    draw_levels(canvas, layout, histogram.histogram);
    draw_strip(canvas, layout, colours);
    for (const DisplayBar bar : lanes) {
        if (bar != histogram.bar)
            draw_bar(canvas, layout, bar, false, control);
    }
    draw_bar(canvas, layout, histogram.bar, true, control);
}
