// What the windows of plots share. Private to the folder.
#pragma once

#include "tables/model/plot_data.h"
#include "tables/tables.h"

#include <memory>
#include <string>
#include <vector>

// A table to be plotted. The dialog and each plot window of it hold it.
struct PlotSource {
    std::unique_ptr<GenericState> product;  // owns the label that the rest points into
    TableProduct tables;
    TableInfo table;
    std::vector<const ColumnInfo *> columns;  // as they are listed
};

// Opens the plot window. The window, or null after a message.
Window *open_plot_window(std::shared_ptr<PlotSource> source, const PlotChoice &choice, PlotAxis x, PlotAxis y);
// Reads the columns afresh, as numbers of any type, and opens the window of curves.
void open_detailed_plot(const PlotSource &source, const PlotChoice &choice);
