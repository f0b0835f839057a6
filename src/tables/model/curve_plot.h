// Curves in a frame with axes: what is drawn and where, for any surface that has lines, marks and texts.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// Points are joined in their order. Where a coordinate is no finite number there is a gap.
struct Curve {
    std::string name;
    std::vector<double> x;
    std::vector<double> y;

    size_t size() const { return x.size() < y.size() ? x.size() : y.size(); }
};

struct CurvePlot {
    std::string title;  // of its window
    std::string x_title;
    std::string y_title;
    std::vector<Curve> curves;
    std::string directory = {};  // where to save, and the name to propose for that, without extension
    std::string file_stem = "plot";
    std::string remark = {};  // while no point is told; in the picture where it has none
    bool names_one = false;   // a single curve has its name in the picture, too
};

struct CurveLook {
    bool lines = true;
    bool points = false;
    bool grid = true;

    bool operator==(const CurveLook &) const = default;
};

// --- Axes ---------------------------------------------------------------------------------------------------------

struct CurveRange {
    double low = 0;
    double high = 1;
};
// The least range that shows all points, with a little room on both sides; of equal values a range around them. Where
// there is no point, of the values alone.
CurveRange curve_x_range(const CurvePlot &plot);
CurveRange curve_y_range(const CurvePlot &plot);

struct CurveTicks {
    std::vector<double> values;
    std::vector<std::string> texts;  // as many digits as tell them apart
};
// At multiples of 1, 2 or 5 times a power of ten, at most `most` (2 or more) of them.
CurveTicks curve_ticks(CurveRange range, int most);

// --- The picture --------------------------------------------------------------------------------------------------

struct CurvePoint {
    double x = 0;
    double y = 0;

    bool operator==(const CurvePoint &) const = default;
};
enum class CurveInk { Text, Frame, Grid, Curve };

struct CurveLine {
    std::vector<CurvePoint> points;
    CurveInk ink = CurveInk::Curve;
    size_t curve = 0;  // that it belongs to
};
struct CurveMarks {
    std::vector<CurvePoint> places;  // their middles
    size_t curve = 0;
};
enum class CurveTextAlign { Left, Centre, Right };
struct CurveText {
    CurvePoint place;  // in the middle of its height, at the side that it is aligned to
    std::string text;
    CurveTextAlign align = CurveTextAlign::Left;
};
// In the order of drawing.
struct CurveScene {
    int width = 0;
    int height = 0;
    double frame_left = 0;
    double frame_top = 0;
    double frame_right = 0;
    double frame_bottom = 0;
    CurveRange x;
    CurveRange y;
    std::vector<CurveLine> lines;
    std::vector<CurveMarks> marks;
    std::vector<CurveText> texts;
    bool lines_left_out = false;  // there are too many to be told apart: marks stand for them
};

struct CurveFont {
    std::function<int(const std::string &)> width;  // of a text, in pixels
    int height = 16;
};

// Of each column of pixels that a curve runs through in order no more points are drawn than make its picture.
CurveScene curve_scene(const CurvePlot &plot, CurveLook look, int width, int height, const CurveFont &font);

// --- Files --------------------------------------------------------------------------------------------------------

// The scene as an SVG picture on white.
std::string curve_svg(const CurveScene &scene);
// A line of titles, then the points: one column of x where all curves have the same, else one before each curve. Gaps
// are empty. False when writing failed.
bool write_curve_csv(const CurvePlot &plot, FILE *file);

// Red, green and blue of a curve on light or dark ground.
struct CurveColour {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};
CurveColour curve_colour(size_t curve, bool dark_ground);
