// Bands of JPEG 2000 images as image windows draw them.
#pragma once

#include "oa/jpeg2000.h"
#include "viewer/model/sample_source.h"

// For an IMAGE that OaIsJpeg2000Image knows; the node must outlive the source.
std::unique_ptr<SampleSource> jpeg2000_source(const ObjDesc *image, int64_t band, OaComponentSize size);
