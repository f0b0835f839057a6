// Bands and other planes of qubes as images.
#pragma once

#include "oa/qube.h"
#include "viewer/model/sample_source.h"

#include <functional>

// What to do with a click at a line and sample of the plane's image; true when something was made of it.
using QubeClick = std::function<bool(int64_t line, int64_t sample)>;

// A plane of an open qube: the stored values where they are integers or 4-byte reals and stand for themselves, else
// physical values as 4-byte reals, NaN where there is no data. The qube is not null. A suffix plane is told by its
// name; bands are told by their numbers and centres.
std::unique_ptr<SampleSource> qube_plane_source(std::shared_ptr<OaQube> qube, const OaQubePlane &plane,
                                                std::string suffix_name = "", QubeClick click = nullptr);
// One band (from 1) of a QUBE node, which is opened for it; what its label says wrongly is told. The node is not kept.
std::unique_ptr<SampleSource> qube_band_source(const ObjDesc *qube, int64_t band);
