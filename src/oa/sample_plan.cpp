#include "oa/sample_plan.h"

namespace {

const OaSlot *sample_slot(const ObjDesc *image) {
    const OaSlot *slot = OalSlotOf(image);
    for (const ObjDesc *child = LeftmostSDTChild(image); child; child = RightSDTSibling(child))
        if (OalSlotOf(child)->conversion_type != OA_SKIP)
            slot = OalSlotOf(child);
    return slot;
}

}  // namespace

void delete_keywords(ObjDesc *node, std::initializer_list<const char *> patterns) {
    for (const char *pattern : patterns) {
        int absent = 0;
        while (!absent)
            absent = OaDeleteKwd(pattern, node);
    }
}

void delete_storage_keywords(ObjDesc *label) {
    delete_keywords(label, {"ENCODING_TYPE", "LINE*PREFIX*BYTES", "LINE*SUFFIX*BYTES", "^LINE*PREFIX*STRUCTURE",
                            "^LINE*SUFFIX*STRUCTURE"});
}

OdlTree copy_image_label(const ObjDesc *image_node) {
    OdlTree tree(OaCopyTree(image_node, OA_COPY_LABEL));
    while (tree->first_child)
        OdlFreeTree(OdlCutObjDesc(tree->first_child));
    return tree;
}

bool make_sample_plan(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                      OaInterchangeFormat src_format, SamplePlan *plan) {
    OaSdt tree(copy_image_label(image_node).release());
    delete_keywords(tree.get(), {"BANDS", "BAND_STORAGE_TYPE", "BAND_SEQUENCE"});
    if (!OalCreateSDT(tree.get(), src_format)) {
        OaReportFailure(oa_errno, "%s: CreateSDT returned error.", routine);
        return false;
    }
    plan->item = *sample_slot(tree.get());
    if (plan->item.conversion_type == OA_ASCII_TO_BINARY || plan->item.conversion_type == OA_BINARY_TO_ASCII) {
        OaReportFailure(520, "%s: CreateSDT returned error. Samples from or to text are not supported.", routine);
        return false;
    }
    if (plan->item.src.binrep == plan->item.dst.binrep)
        plan->item.conversion_type = OA_COPY;
    plan->items_per_sample = image.sample_bits / 8 / plan->item.src.size;
    OalSDTtoODLTree(tree.get(), OA_BINARY);
    delete_storage_keywords(tree.get());
    plan->label.reset(tree.release());
    return true;
}
