// What the windows of a qube share.
#pragma once

#include "qubes/qubes.h"
#include "qubes/spectrum_state.h"

#include <cstdint>
#include <memory>

// Of an image window that shows a band or a suffix plane.
struct QubeState : ModuleState {
    std::shared_ptr<OaQube> qube;
    OaQubePlane plane;  // shown; while several bands are, the last that was shown alone
    bool spectrum_on_click = true;
    int64_t box = 1;  // of spectra: lines and samples taken together
    SpectrumState spectra;
    Window *image_window = nullptr;  // null until it is there
};

// Null for windows that show no part of a qube.
QubeState *qube_state(const Window *image_window);
