// Bands of qubes as images.
#pragma once

#include "oa/qube.h"
#include "viewer/model/sample_range.h"
#include "viewer/model/sample_source.h"

// One band (from 1) of a QUBE node: the stored values where they are integers or 4-byte reals and stand for themselves,
// else physical values as 4-byte reals, NaN where there is no data. The node is not kept.
std::unique_ptr<SampleSource> qube_band_source(const ObjDesc *qube, int64_t band);

// Maps native samples linearly onto display bytes, clamped to the range; 8-bit ones as they are. No data become 0.
void map_qube_samples(const void *samples, const OaQubeItem &item, RealRange range, int64_t count, uint8_t *display);
