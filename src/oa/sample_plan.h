// How the samples of an image become native, whatever the bytes they are taken from.
#pragma once

#include "oa/sdt.h"

#include <initializer_list>

// The image's only leaf that is not a SPARE, and the label that the samples have when they are native.
struct SamplePlan {
    OaSlot item;
    int64_t items_per_sample = 1;  // two for complex samples
    OdlTree label;

    int64_t native_size() const { return items_per_sample * item.dst.size; }
    bool in_place() const { return item.src.size == item.dst.size; }
    bool as_stored() const { return item.conversion_type == OA_COPY; }
};

// False after reporting in the name of `routine`.
bool make_sample_plan(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                      OaInterchangeFormat src_format, SamplePlan *plan);

// A copy of the image's label without what stands inside the image (a window, a group of remarks): that describes no
// bytes of its own.
OdlTree copy_image_label(const ObjDesc *image_node);
// Removes what described the stored form: encoding, bytes around lines.
void delete_storage_keywords(ObjDesc *label);
void delete_keywords(ObjDesc *node, std::initializer_list<const char *> patterns);
