#include "base/text.h"
#include "oa/oa.h"

#include <string_view>

namespace {

// In the order of OaObjectClass, from OA_ALIAS on.
constexpr std::string_view class_names[] = {
    "ALIAS",     "ARRAY",   "BIT_COLUMN", "BIT_ELEMENT", "COLLECTION", "COLUMN", "CONTAINER", "ELEMENT", "GAZETTEER",
    "HISTOGRAM", "HISTORY", "IMAGE",      "PALETTE",     "QUBE",       "SERIES", "SPECTRUM",  "TABLE",
};
constexpr size_t longest_class_name = 80;

}  // namespace

OaObjectClass OaGetObjectClass(const ObjDesc *node) {
    if (!node || !node->class_name)
        return OA_UNKNOWN_CLASS;
    const std::string name = util_upper(util_trim(node->class_name));
    if (name.size() > longest_class_name)
        return OA_UNKNOWN_CLASS;
    int code = OA_ALIAS;
    for (const std::string_view known : class_names) {
        if (name == known)
            return static_cast<OaObjectClass>(code);
        ++code;
    }
    code = OA_ALIAS;
    for (const std::string_view known : class_names) {
        if (name.ends_with(known))
            return static_cast<OaObjectClass>(code);
        ++code;
    }
    return OA_UNKNOWN_CLASS;
}

const char *OaObjectClasstoStr(int object_class) {
    if (object_class < OA_ALIAS || object_class > OA_TABLE)
        return "OA_UNKNOWN_CLASS";
    return class_names[object_class - OA_ALIAS].data();
}

OaInterchangeFormat OaGetObjectInterchangeFormat(const ObjDesc *node) {
    if (OaGetObjectClass(node) == OA_HISTORY)
        return OA_ASCII;
    const char *value = nullptr;
    if (OaKwdValuetoStr("INTERCHANGE*FORMAT", node, &value) != 0)
        return OA_BINARY;
    const std::string format = util_upper(value);
    if (util_contains(format, "BINARY"))
        return OA_BINARY;
    if (util_contains(format, "ASCII"))
        return OA_ASCII;
    OaReportFailure(531, "%s: invalid interchange format: %s.", __func__, value);
    return OA_NO_FORMAT;
}
