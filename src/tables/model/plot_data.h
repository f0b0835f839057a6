// One column of a table against another: what is told of the choice, the numbers, and where the plot window puts them.
#pragma once

#include "base/pixel_image.h"
#include "tables/model/table_reader.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

// --- What is chosen -----------------------------------------------------------------------------------------------

// Columns that can be plotted: the table's COLUMN children in the order of the label, or a spreadsheet's FIELDs. Of a
// column of several items the first is plotted.
std::vector<const ColumnInfo *> plot_columns(const TableInfo &table);
// A column's name as it is listed.
std::string plot_column_name(const ColumnInfo &column);

constexpr int64_t most_plot_rows = 50'000'000;  // at a time

struct PlotChoice {
    int x = -1;  // places in the list; -1: not chosen
    int y = -1;
    int64_t first_row = 1;  // from 1, inclusive
    int64_t last_row = 1;
};
// A row as the user typed it: the whole number at its start, 0 where there is none.
int64_t plot_row_number(const std::string &typed);
// What is wrong with the choice; "" when nothing is.
std::string plot_choice_note(const PlotChoice &choice, int64_t rows);

// --- The numbers --------------------------------------------------------------------------------------------------

struct PlotAxis {
    std::string name;
    std::string minimum;  // by "%f", of the values as they were
    std::string maximum;
    std::vector<double> values;  // each as its distance from the minimum
};

// What to tell of a column that is not plotted, by its data type as the label writes it and, of characters, its first
// field. "" when it is plotted.
struct PlotRefusal {
    std::string note;      // "" for characters that begin no number
    bool refused = false;  // the column cannot be converted
};
PlotRefusal plot_refusal(const ColumnInfo &column, FieldSpan first_field);

// The number at the start of a field, behind blanks, in at most 30 characters up to the next blank; 0 when there is
// none.
double plot_number(FieldSpan field);
// Appends the numbers of rows `first` to `last`, counted from 1; fields that the file does not hold are left out with
// all that follow.
void plot_read_column(TableReader *reader, const ColumnInfo &column, int64_t first, int64_t last,
                      std::vector<double> *values);
// Sets the texts of the axis and takes the minimum from its values.
void scale_axis(PlotAxis *axis);

// --- The picture --------------------------------------------------------------------------------------------------
// In pixels from the client area's top left.

struct PlotPoint {
    int64_t x = 0;
    int64_t y = 0;

    bool operator==(const PlotPoint &) const = default;
};
constexpr PlotPoint plot_frame = {100, 50};  // its top left
constexpr PlotPoint plot_frame_size = {401, 201};

struct PlotText {
    PlotPoint start;  // of its base line
    std::string text;
};
std::array<PlotText, 6> plot_texts(const PlotAxis &x, const PlotAxis &y);

// The line from the frame's top left through all points.
std::vector<PlotPoint> plot_line(const PlotAxis &x, const PlotAxis &y);

// A line drawn one pixel wide, in colour 1 on colour 0. Null when memory is out.
struct PlotPicture {
    PlotPoint place;  // of its top left
    std::unique_ptr<PixelImage> image;
};
PlotPicture plot_picture(const std::vector<PlotPoint> &line);
