// Where everything stands in a histogram window's drawing area, and its drawing.
#pragma once

#include "viewer/state.h"

#include <array>
#include <optional>

struct HistogramLayout {
    GuiRect plot;                    // of the 256 levels
    GuiRect strip;                   // of the colours that they are shown in, below
    std::array<GuiRect, 3> handles;  // of the bars, by DisplayBar, above
};

HistogramLayout lay_out_histogram(const HistogramState &histogram, const DisplayControl &control, GuiSize client);

// The middle of a level, and the level at a place, which may be beyond the scale.
double level_place(const HistogramLayout &layout, int level);
int level_at(const HistogramLayout &layout, double x);

// The bar that a press takes: by its handle, else the nearest line within reach, of several the selected one.
std::optional<DisplayBar> bar_at(const HistogramLayout &layout, const HistogramState &histogram,
                                 const DisplayControl &control, GuiPoint point);

void draw_histogram(Canvas *canvas, const GuiRect &exposed, const HistogramState &histogram,
                    const DisplayControl &control, const ColourTable &colours, GuiSize client);
