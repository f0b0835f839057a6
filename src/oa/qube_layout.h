// Where the items of a qube are in its file: arithmetic only.
#pragma once

#include "oa/qube.h"

#include <array>
#include <cstdint>
#include <optional>

// By place of AXIS_NAME, fastest first, from 0.
struct QubeLayout {
    std::array<int64_t, oa_qube_axes> core = {1, 1, 1};    // items
    std::array<int64_t, oa_qube_axes> suffix = {0, 0, 0};  // items
    int64_t core_bytes = 1;                                // of an item
    int64_t suffix_bytes = 4;
    bool has_corners = true;  // where suffixes of two axes meet
    int64_t core_line = 0;    // bytes, with the suffix items of the line
    int64_t suffix_line = 0;
    int64_t core_plane = 0;
    int64_t suffix_plane = 0;
    int64_t total = 0;

    // Of item (i, j, k), bytes from the start of the qube. The item must be in the layout: without corners at most one
    // index lies behind the core.
    int64_t offset(int64_t i, int64_t j, int64_t k) const;
};

// Nothing when the sizes are more than 63 bits hold.
std::optional<QubeLayout> plan_qube_layout(const OaQubeKeywords &qube, bool with_corners);

// The layout for a file that holds `bytes_held` bytes from the qube's start on: without corners where it is too short
// for them but long enough otherwise. `qube` as OaGetQubeKeywords gave it.
QubeLayout choose_qube_layout(const OaQubeKeywords &qube, int64_t bytes_held);

// Items of a plane across one axis, or of all of the core's.
struct QubePlaneLayout {
    int64_t first = 0;                              // byte of its first item
    std::array<int64_t, oa_qube_axes> stride = {};  // bytes between neighbours, by place
};
// The plane that `item` (from 0) along the axis at `place` spans with the other two axes' core items.
QubePlaneLayout core_plane_layout(const QubeLayout &layout, int place, int64_t item);
QubePlaneLayout suffix_plane_layout(const QubeLayout &layout, int place, int64_t item);
