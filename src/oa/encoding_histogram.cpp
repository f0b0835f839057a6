// The histogram that an encoder left for its decoder.
#include "base/text.h"
#include "decoders/huffman.h"
#include "oa/oa.h"

namespace {

bool tells_of_encoding(const char *text) {
    return text && util_contains(util_upper(text), "ENCOD");
}

bool is_encoding_histogram(const ObjDesc *node) {
    int64_t items = 0;
    if (OaGetObjectClass(node) != OA_HISTOGRAM || OaKwdValuetoLong("ITEMS", node, &items) != 0 ||
        items < hfd_frequencies)
        return false;
    const char *name = nullptr;
    return (OaKwdValuetoStr("NAME", node, &name) == 0 && tells_of_encoding(name)) ||
           tells_of_encoding(node->class_name);
}

}  // namespace

const ObjDesc *OaFindEncodingHistogram(const ObjDesc *image) {
    if (!image || OaGetObjectClass(image) != OA_IMAGE) {
        OaReportFailure(501, "%s: input node must be an IMAGE.", __func__);
        return nullptr;
    }
    if (!image->parent) {
        OaReportFailure(530, "%s: couldn't find HFD decoding HISTOGRAM.", __func__);
        return nullptr;
    }
    for (const ObjDesc *node = image->parent->first_child; node; node = node->right_sibling)
        if (is_encoding_histogram(node))
            return node;
    return nullptr;
}
