#include "tables/model/plot_data.h"

#include "base/text.h"
#include "oa/ascii_number.h"
#include "tables/model/keyword_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

constexpr size_t longest_number = 30;  // characters of a field that are read

struct TypeNote {
    std::string_view data_type;
    const char *note;  // null: the text is read as numbers
};
constexpr std::array type_notes = {
    TypeNote{"CHARACTER", nullptr},
    TypeNote{"ASCII_INTEGER", nullptr},
    TypeNote{"ASCII_REAL", nullptr},
    TypeNote{"IEEE_REAL", "Plot conversion code for IEEE_REAL is incomplete"},
    TypeNote{"MSB_INTEGER", "Plot conversion code for MSB_INTEGER is incomplete"},
    TypeNote{"LSB_INTEGER", "Plot conversion code for LSB_INTEGER is incomplete"},
    TypeNote{"PC_REAL", "Plot conversion code for PC_REAL is incomplete"},
    TypeNote{"TIME", "Plot conversion code for TIME is incomplete"},
    TypeNote{"LSB_UNSIGNED_INTEGER", "Plot conversion code for LSB_UNSIGNED_INTEGER is incomplete"},
    TypeNote{"MSB_UNSIGNED_INTEGER", "Plot conversion code for MSB_UNSIGNED_INTEGER is incomplete"},
    TypeNote{"MSB_BIT_STRING", "Plot conversion code for MSB_BIT_INTEGER is incomplete"},
};
constexpr char other_note[] = "Plot conversion code for this format is incomplete";

// The field's characters between the blanks before it and the next one.
std::string_view field_text(FieldSpan field) {
    std::string_view text(reinterpret_cast<const char *>(field.data()), field.size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, std::min(text.find(' '), longest_number));
}

bool begins_number(FieldSpan field) {
    constexpr std::string_view beginnings = "0123456789.eE";
    const std::string_view text = field_text(field);
    return !text.empty() && beginnings.find(text[0]) != std::string_view::npos;
}

// Pixels along an axis; what is no number has none.
int64_t pixels(double distance, double length, double range) {
    constexpr double farthest = 1e6;
    const double position = std::floor(distance * length / range);
    return std::isfinite(position) ? static_cast<int64_t>(std::clamp(position, -farthest, farthest)) : 0;
}

// As the texts tell it; without one all points are at the minimum.
double range_of(const PlotAxis &axis) {
    const double range = atof(axis.maximum.c_str()) - atof(axis.minimum.c_str());
    return range == 0 ? 1 : range;
}

// The picture has room for a range that its texts round to half.
constexpr int picture_width = 2 * static_cast<int>(plot_frame_size.x) - 1;
constexpr int picture_height = 2 * static_cast<int>(plot_frame_size.y) - 1;
constexpr PlotPoint picture_place = {plot_frame.x, plot_frame.y + plot_frame_size.y - picture_height};

void draw_segment(PixelImage *image, PlotPoint from, PlotPoint to) {
    const int64_t across = std::abs(to.x - from.x);
    const int64_t down = -std::abs(to.y - from.y);
    const int64_t step_x = from.x < to.x ? 1 : -1;
    const int64_t step_y = from.y < to.y ? 1 : -1;
    int64_t error = across + down;
    for (;;) {
        image->pixels.get()[from.y * picture_width + from.x] = 1;
        if (from == to)
            return;
        const int64_t twice = 2 * error;
        if (twice >= down) {
            error += down;
            from.x += step_x;
        }
        if (twice <= across) {
            error += across;
            from.y += step_y;
        }
    }
}

PlotPoint in_picture(PlotPoint point) {
    return {std::clamp<int64_t>(point.x - picture_place.x, 0, picture_width - 1),
            std::clamp<int64_t>(point.y - picture_place.y, 0, picture_height - 1)};
}

}  // namespace

std::vector<const ColumnInfo *> plot_columns(const TableInfo &table) {
    std::vector<const ColumnInfo *> columns;
    for (const ColumnInfo &column : table.columns) {
        const bool listed = tb_class_of(column.object) == "COLUMN" || table.is_spreadsheet();
        if (listed && !column.in_container)
            columns.push_back(&column);
    }
    return columns;
}

std::string plot_column_name(const ColumnInfo &column) {
    return std::string(util_trim(column.name, "\"' "));
}

int64_t plot_row_number(const std::string &typed) {
    return OalReadAsciiInteger(reinterpret_cast<const uint8_t *>(typed.data()), static_cast<int64_t>(typed.size()));
}

std::string plot_choice_note(const PlotChoice &choice, int64_t rows) {
    if (choice.x == choice.y)
        return "The column selected for the X Axis must not be the same one selected for the Y Axis";
    if (choice.y < 0)
        return "Select a column for the Y Axis too";
    if (choice.first_row < 1)
        return "The beginning row must be at least one";
    if (choice.first_row > choice.last_row)
        return "The beginning row number may not be less than the starting row number";
    if (choice.last_row > rows)
        return util_format("The last row must not be beyond row %lld, the table's last", static_cast<long long>(rows));
    if (choice.last_row - choice.first_row >= most_plot_rows)
        return util_format("At most %lld rows can be plotted", static_cast<long long>(most_plot_rows));
    return "";
}

PlotRefusal plot_refusal(const ColumnInfo &column, FieldSpan first_field) {
    const std::string type = util_upper(util_trim(tb_text_of("DATA_TYPE", column.object), "\"' "));
    for (const TypeNote &row : type_notes) {
        if (row.data_type != type)
            continue;
        if (row.note)
            return {row.note, true};
        return {"", type == "CHARACTER" && !begins_number(first_field)};
    }
    return {other_note, true};
}

// As atof reads it; most fields need not its slowness.
double plot_number(FieldSpan field) {
    const std::string_view text = field_text(field);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool is_hexadecimal = text.find_first_of("xX") != std::string_view::npos;
    if (result.ec == std::errc() && !is_hexadecimal)
        return value;
    std::array<char, longest_number + 1> copy = {};
    memcpy(copy.data(), text.data(), text.size());
    return atof(copy.data());
}

void plot_read_column(TableReader *reader, const ColumnInfo &column, int64_t first, int64_t last,
                      std::vector<double> *values) {
    FieldBytes field;
    for (int64_t row = first - 1; row < last && reader->read(row, column, 1, &field); ++row)
        values->push_back(plot_number(field.bytes));
}

void scale_axis(PlotAxis *axis) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const double value : axis->values) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    if (low > high)  // there is no number
        low = high = 0;
    axis->minimum = util_format("%f", low);
    axis->maximum = util_format("%f", high);
    for (double &value : axis->values)
        value -= low;
}

std::array<PlotText, 6> plot_texts(const PlotAxis &x, const PlotAxis &y) {
    constexpr int64_t left = plot_frame.x;
    constexpr int64_t top = plot_frame.y;
    return {PlotText{{left, top + 215}, x.minimum},      PlotText{{left + 300, top + 215}, x.maximum},
            PlotText{{left, top + 230}, x.name},         PlotText{{left - 100, top + 200}, y.minimum},
            PlotText{{left - 100, top + 10}, y.maximum}, PlotText{{left - 100, top - 15}, y.name}};
}

std::vector<PlotPoint> plot_line(const PlotAxis &x, const PlotAxis &y) {
    const double x_range = range_of(x);
    const double y_range = range_of(y);
    const size_t count = std::min(x.values.size(), y.values.size());
    std::vector<PlotPoint> line = {plot_frame};
    line.reserve(count + 1);
    for (size_t i = 0; i < count; ++i)
        line.push_back({plot_frame.x + pixels(x.values[i], 400.0, x_range),
                        plot_frame.y - pixels(y.values[i], 200.0, y_range) + 200});
    return line;
}

PlotPicture plot_picture(const std::vector<PlotPoint> &line) {
    PlotPicture picture = {picture_place, util_new_pixel_image(picture_width, picture_height, 1)};
    if (!picture.image)
        return picture;
    for (size_t i = 1; i < line.size(); ++i)
        draw_segment(picture.image.get(), in_picture(line[i - 1]), in_picture(line[i]));
    return picture;
}
