// What a window of curves keeps, and how its scene is drawn. Private to the folder.
#pragma once

#include "tables/model/curve_plot.h"
#include "tables/tables.h"

#include <optional>

struct CurveReadOut {
    size_t curve = 0;
    size_t point = 0;

    bool operator==(const CurveReadOut &) const = default;
};

struct CurveState : ModuleState {
    CurvePlot plot;
    CurveLook look;
    std::shared_ptr<GuiRect> place;        // to be remembered; null: not
    std::optional<CurveScene> scene;       // as last drawn
    std::optional<CurveReadOut> read_out;  // the point that is told
};

// The state of a window of curves; null for any other.
CurveState *curve_state(const Window *window);

// What texts of the window take.
CurveFont curve_font();

struct CurveInks {
    Colour text;
    Colour ground;
    bool dark = false;
};
CurveInks desktop_inks();
CurveInks paper_inks();  // black on white, for files
void draw_scene(Canvas *canvas, const CurveScene &scene, const CurveInks &inks);
