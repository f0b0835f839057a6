// What the windows of a qube share.
#pragma once

#include "qubes/qubes.h"
#include "qubes/spectrum_state.h"

#include <cstdint>
#include <memory>

// Of an image window that shows bands or a suffix plane.
struct QubeState : ModuleState {
    QubeState(std::shared_ptr<OaQube> open_qube, const OaQubePlane &shown) : qube(std::move(open_qube)), plane(shown) {}

    std::shared_ptr<OaQube> qube;
    OaQubePlane plane;  // shown; while several bands are, the last that was shown alone
    bool spectrum_on_click = true;
    int64_t box = 1;  // of spectra: lines and samples taken together
    SpectrumState spectra;

    // Of another window on the same qube, with the same settings.
    std::unique_ptr<QubeState> of_plane(const OaQubePlane &shown) const;

    bool offers(int command) const override;
    std::unique_ptr<ModuleState> twin() const override;
    std::unique_ptr<SampleSource> prepare_image(GenericState *state) override;
    void follow_bands(Window *window) override;

  private:
    // Side and bottom planes have no place in the image that a spectrum could be of.
    bool has_spectra() const { return plane.axis == OA_BAND_AXIS; }
    std::unique_ptr<SampleSource> source_of(const OaQubePlane &shown);
};

// Null for windows that show no part of a qube.
QubeState *qube_state(const Window *image_window);
int64_t band_count(const QubeState &state);
// The label's file name, cut to what titles have room for.
std::string name_for_titles(const Window *image_window);
// Whether the window shows the plane, not several bands together.
bool shows_plane(const Window *image_window);
