#include "oa/made_label.h"

#include "base/text.h"

#include <string_view>

namespace {

// A pointer's file name loses quotes and its last blanks; a file of such a name is pointed into as the label's own.
bool can_be_quoted(std::string_view name) {
    return name.find_first_of("\"'") == name.npos && !name.ends_with(' ');
}

}  // namespace

ObjDesc *OalNewMadeLabel(const char *file_name) {
    ObjDesc *root = OdlNewObjDesc("ROOT", nullptr, nullptr, nullptr, nullptr, file_name ? file_name : "", 0, 0);
    OalAddKeyword(root, "KRV_VERSION_ID", "KRV3");
    OalAddKeyword(root, "RECORD_TYPE", "UNDEFINED");
    return root;
}

void OalAddKeyword(ObjDesc *node, const char *name, const char *value) {
    OdlPasteKwd(OdlNewKwd(name, value, nullptr, nullptr, node->file_name, 0), node);
}

void OalAddKeyword(ObjDesc *node, const char *name, int64_t value) {
    OalAddKeyword(node, name, std::to_string(value).c_str());
}

ObjDesc *OalAddObject(ObjDesc *parent, const char *class_name) {
    ObjDesc *object = OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, parent->file_name, 0, 0);
    ++parent->child_count;
    return OdlPasteObjDesc(object, parent);
}

ObjDesc *OalAddPointedObject(ObjDesc *root, const std::string &name, int64_t byte) {
    const auto at = static_cast<long long>(byte);
    const std::string place = can_be_quoted(root->file_name) ? util_format("(\"%s\",%-lld<BYTES>)", root->file_name, at)
                                                             : util_format("%-lld<BYTES>", at);
    OalAddKeyword(root, util_format("^%s", util_upper(name).c_str()).c_str(), place.c_str());
    return OalAddObject(root, name.c_str());
}
