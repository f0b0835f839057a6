// Where axes, curves and texts go in a picture of a given size.
#include "tables/model/curve_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

constexpr int margin = 12;
constexpr int gap = 6;  // between texts and what they name
constexpr int tick_length = 5;
constexpr int sample_length = 22;       // of a line in the legend
constexpr int room_beside_frame = 120;  // that ticks and margins take at most
constexpr size_t most_line_points = 60000;

struct Scale {
    CurveRange range;
    double from = 0;  // pixel of the range's low end
    double to = 1;

    double at(double value) const { return from + (value - range.low) / (range.high - range.low) * (to - from); }
};

// The points of a curve as they come, fewer of them: of those in one column of pixels the first, the lowest, the
// highest and the last make the same picture.
class LineReducer {
  public:
    void add(CurvePoint point) {
        if (count_ > 0 && std::floor(point.x) == column_) {
            last_ = point;
            if (point.y < low_.y)
                low_ = point, low_place_ = count_;
            if (point.y > high_.y)
                high_ = point, high_place_ = count_;
            ++count_;
            return;
        }
        flush();
        first_ = low_ = high_ = last_ = point;
        low_place_ = high_place_ = 0;
        column_ = std::floor(point.x);
        count_ = 1;
    }

    std::vector<CurvePoint> take() {
        flush();
        return std::exchange(points_, {});
    }
    size_t size() const { return points_.size(); }

  private:
    void flush() {
        if (count_ == 0)
            return;
        put(first_);
        put(low_place_ < high_place_ ? low_ : high_);
        put(low_place_ < high_place_ ? high_ : low_);
        put(last_);
        count_ = 0;
    }
    void put(CurvePoint point) {
        if (points_.empty() || !(points_.back() == point))
            points_.push_back(point);
    }

    std::vector<CurvePoint> points_;
    CurvePoint first_, low_, high_, last_;
    int64_t low_place_ = 0;
    int64_t high_place_ = 0;
    int64_t count_ = 0;
    double column_ = 0;
};

// Calls `point(place)` for each point that is shown and `end()` at each gap and behind the last.
template <typename Point, typename End>
void walk(const Curve &curve, const Scale &x, const Scale &y, Point point, End end) {
    for (size_t i = 0; i < curve.size(); ++i) {
        const CurvePoint place = {x.at(curve.x[i]), y.at(curve.y[i])};
        if (std::isfinite(place.x) && std::isfinite(place.y))
            point(place);
        else
            end();
    }
    end();
}

// False when the lines are too many.
bool add_lines(const Curve &curve, size_t index, const Scale &x, const Scale &y, CurveScene *scene) {
    LineReducer reducer;
    std::vector<CurveLine> lines;
    size_t kept = 0;
    bool too_many = false;
    walk(
        curve, x, y,
        [&](CurvePoint place) {
            if (!too_many)
                reducer.add(place);
            too_many = too_many || kept + reducer.size() > most_line_points;
        },
        [&] {
            std::vector<CurvePoint> points = reducer.take();
            kept += points.size();
            if (!points.empty() && !too_many)
                lines.push_back({std::move(points), CurveInk::Curve, index});
        });
    if (too_many)
        return false;
    scene->lines.insert(scene->lines.end(), std::make_move_iterator(lines.begin()),
                        std::make_move_iterator(lines.end()));
    return true;
}

// One mark in a pixel is as good as many.
void add_marks(const Curve &curve, size_t index, const Scale &x, const Scale &y, CurveScene *scene) {
    std::vector<bool> taken(static_cast<size_t>(scene->width) * static_cast<size_t>(scene->height));
    CurveMarks marks = {{}, index};
    walk(
        curve, x, y,
        [&](CurvePoint place) {
            const auto column = static_cast<int64_t>(std::clamp(place.x, 0.0, scene->width - 1.0));
            const auto row = static_cast<int64_t>(std::clamp(place.y, 0.0, scene->height - 1.0));
            const auto pixel = static_cast<size_t>(row * scene->width + column);
            if (!taken[pixel])
                marks.places.push_back(place);
            taken[pixel] = true;
        },
        [] {});
    scene->marks.push_back(std::move(marks));
}

int widest(const std::vector<std::string> &texts, const CurveFont &font) {
    int width = 0;
    for (const std::string &text : texts)
        width = std::max(width, font.width(text));
    return width;
}

// Ticks that leave room between their texts.
CurveTicks ticks_across(CurveRange range, double length, const CurveFont &font) {
    for (int most = std::clamp(static_cast<int>(length / 60), 2, 12); most > 2; --most) {
        CurveTicks ticks = curve_ticks(range, most);
        const auto count = static_cast<double>(std::max<size_t>(ticks.texts.size(), 1));
        if (widest(ticks.texts, font) + 2.0 * gap <= length / count)
            return ticks;
    }
    return curve_ticks(range, 2);
}

// Names of curves and samples of their lines: in the row of the Y title where there is room, else in rows of their own
// below it.
class Legend {
  public:
    Legend(const CurvePlot &plot, const CurveFont &font, double width) : plot_(plot), font_(font) {
        constexpr size_t most_names = 24;
        if (plot.curves.size() < (plot.names_one ? 1 : 2))
            return;
        const double room_beside = width - font.width(plot.y_title) - 2 * gap;
        double left = 0;
        for (size_t i = 0; i < std::min(plot.curves.size(), most_names); ++i) {
            const double needed = sample_length + gap + font.width(plot.curves[i].name);
            if (left > 0 && left + needed > width) {
                left = 0;
                ++rows_;
            }
            items_.push_back({left, rows_});
            left += needed + 2 * gap;
        }
        width_ = left;
        const bool fits_beside = rows_ == 0 && left <= room_beside;
        rows_ = fits_beside ? 0 : rows_ + 1;
    }

    int height() const { return rows_ * font_.height; }

    void add(CurveScene *scene) const {
        const double start = rows_ == 0 ? scene->frame_right - width_ + 2 * gap : scene->frame_left;
        const int rows = std::max(rows_, 1);
        for (size_t i = 0; i < items_.size(); ++i) {
            const double left = start + items_[i].left;
            const double middle = scene->frame_top - gap - (rows - items_[i].row - 0.5) * font_.height;
            scene->lines.push_back({{{left, middle}, {left + sample_length, middle}}, CurveInk::Curve, i});
            scene->texts.push_back({{left + sample_length + gap, middle}, plot_.curves[i].name, CurveTextAlign::Left});
        }
    }

  private:
    struct Item {
        double left;
        int row;
    };

    const CurvePlot &plot_;
    const CurveFont &font_;
    std::vector<Item> items_;
    double width_ = 0;
    int rows_ = 0;
};

void add_ticks(const CurveTicks &x_ticks, const CurveTicks &y_ticks, const Scale &x, const Scale &y, bool grid,
               const CurveFont &font, CurveScene *scene) {
    for (size_t i = 0; i < x_ticks.values.size(); ++i) {
        const double place = std::round(x.at(x_ticks.values[i]));
        if (grid)
            scene->lines.push_back({{{place, scene->frame_top}, {place, scene->frame_bottom}}, CurveInk::Grid, 0});
        scene->lines.push_back(
            {{{place, scene->frame_bottom}, {place, scene->frame_bottom + tick_length}}, CurveInk::Frame, 0});
        scene->texts.push_back({{place, scene->frame_bottom + tick_length + font.height / 2.0 + 1},
                                x_ticks.texts[i],
                                CurveTextAlign::Centre});
    }
    for (size_t i = 0; i < y_ticks.values.size(); ++i) {
        const double place = std::round(y.at(y_ticks.values[i]));
        if (grid)
            scene->lines.push_back({{{scene->frame_left, place}, {scene->frame_right, place}}, CurveInk::Grid, 0});
        scene->lines.push_back(
            {{{scene->frame_left - tick_length, place}, {scene->frame_left, place}}, CurveInk::Frame, 0});
        scene->texts.push_back(
            {{scene->frame_left - tick_length - gap / 2.0, place}, y_ticks.texts[i], CurveTextAlign::Right});
    }
}

void add_frame(CurveScene *scene) {
    const double left = scene->frame_left, top = scene->frame_top;
    const double right = scene->frame_right, bottom = scene->frame_bottom;
    scene->lines.push_back(
        {{{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}}, CurveInk::Frame, 0});
}

}  // namespace

CurveScene curve_scene(const CurvePlot &plot, CurveLook look, int width, int height, const CurveFont &font) {
    CurveScene scene;
    scene.width = std::clamp(width, 1, 20000);
    scene.height = std::clamp(height, 1, 20000);
    scene.x = curve_x_range(plot);
    scene.y = curve_y_range(plot);
    const Legend legend(plot, font, scene.width - room_beside_frame);
    scene.frame_top = margin + font.height + gap + legend.height();
    scene.frame_bottom = std::max(scene.frame_top + 1, scene.height - margin - 2.0 * font.height - tick_length - gap);
    const double tall = scene.frame_bottom - scene.frame_top;
    const CurveTicks y_ticks = curve_ticks(scene.y, std::clamp(static_cast<int>(tall / (2.5 * font.height)), 2, 12));
    scene.frame_left = margin + widest(y_ticks.texts, font) + tick_length + gap;
    scene.frame_right = std::max(scene.frame_left + 1, scene.width - 2.0 * margin);
    const CurveTicks x_ticks = ticks_across(scene.x, scene.frame_right - scene.frame_left, font);

    const Scale x = {scene.x, scene.frame_left, scene.frame_right};
    const Scale y = {scene.y, scene.frame_bottom, scene.frame_top};
    add_ticks(x_ticks, y_ticks, x, y, look.grid, font, &scene);
    add_frame(&scene);
    const size_t before = scene.lines.size();
    for (size_t i = 0; i < plot.curves.size(); ++i) {
        const bool drawn = look.lines && add_lines(plot.curves[i], i, x, y, &scene);
        scene.lines_left_out = scene.lines_left_out || (look.lines && !drawn);
        if (look.points || !drawn)
            add_marks(plot.curves[i], i, x, y, &scene);
    }
    const bool is_empty =
        scene.lines.size() == before &&
        std::all_of(scene.marks.begin(), scene.marks.end(), [](const auto &marks) { return marks.places.empty(); });
    if (is_empty)
        scene.texts.push_back({{(scene.frame_left + scene.frame_right) / 2, (scene.frame_top + scene.frame_bottom) / 2},
                               plot.remark,
                               CurveTextAlign::Centre});
    legend.add(&scene);
    const double title_middle = margin + font.height / 2.0;
    scene.texts.push_back({{scene.frame_left, title_middle}, plot.y_title, CurveTextAlign::Left});
    scene.texts.push_back(
        {{(scene.frame_left + scene.frame_right) / 2, scene.height - margin / 2.0 - font.height / 2.0},
         plot.x_title,
         CurveTextAlign::Centre});
    return scene;
}

CurveColour curve_colour(size_t curve, bool dark_ground) {
    // Told apart by people who see fewer colours, too.
    constexpr std::array<CurveColour, 6> on_light = {CurveColour{0, 90, 160}, {200, 80, 0},  {0, 130, 95},
                                                     {180, 90, 150},          {110, 110, 0}, {90, 90, 90}};
    constexpr std::array<CurveColour, 6> on_dark = {
        CurveColour{110, 190, 240}, {240, 160, 60}, {80, 200, 150}, {220, 150, 200}, {240, 228, 66}, {190, 190, 190}};
    return (dark_ground ? on_dark : on_light)[curve % on_light.size()];
}
