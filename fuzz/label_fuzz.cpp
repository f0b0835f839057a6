// Any bytes as a label: from memory and from a file, with every reader of the tree let loose on the result.
#include "base/memory.h"
#include "base/notice.h"
#include "odl/odl.h"
#include "odl/validate.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void demand(bool holds) {
    if (!holds)
        abort();
}

// Where messages are written, so that their making is run too.
FILE *discarded() {
    static FILE *stream = fopen("/dev/null", "w");
    return stream;
}

// A file in memory; the label includes itself when it names it.
int label_file() {
    static const int descriptor = memfd_create("label", 0);
    return descriptor;
}

void write_label(const std::string &text) {
    demand(ftruncate(label_file(), 0) == 0);
    demand(pwrite(label_file(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
}

void read_value(const Kwd *keyword) {
    const char *value = OdlGetKwdValue(keyword);
    OdlGetKwdValueType(keyword);
    OdlFirstWord(value);
    OdlNextWord(value);
    OdlWildCardCompare("*A*1*", value);
    if (!value)
        return;
    const char *start = OdlValueStart(value);
    demand(OdlValueEnd(start) >= start);
    OdlValidElement(value, nullptr, discarded(), 1, 0);
    OdlValidValueList(value, nullptr, discarded(), 1);
    OdlValidBraces(value, nullptr, discarded(), 1);
    int64_t location = 0;
    int type = 0;
    const OaPtr<char> file_name(OdlGetFileName(keyword, &location, &type));
}

void read_tree(ObjDesc *root) {
    OdlPrintHierarchy(root, nullptr, discarded());
    OdlGetLabelVersion(root);
    for (ObjDesc *object = root; object; object = OdlTraverseTree(object, 0)) {
        demand(object == root || object->level == object->parent->level + 1);
        demand(!object->first_child || object->first_child->parent == object);
        demand(!object->last_child || !object->last_child->right_sibling);
        for (const Kwd *keyword = OdlGetFirstKwd(object); keyword; keyword = OdlGetNextKwd(keyword)) {
            demand(keyword->parent == object);
            read_value(keyword);
        }
    }
    OdlFindKwd(root, "*A", "*1*", 2, SCOPE_SUBTREE);
    OdlFindObjDesc(root, "*", "N*", nullptr, 0, SCOPE_SUBTREE);
}

// Moves the first child of the root before the deepest last descendant of another one.
void cut_and_paste(ObjDesc *root) {
    ObjDesc *child = root->first_child;
    ObjDesc *target = root->last_child;
    if (child == target)
        return;
    while (target->last_child)
        target = target->last_child;
    OdlPasteObjDescBefore(OdlCutObjDesc(child), target);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const std::string text(reinterpret_cast<const char *>(data), size);

    ObjDesc *root = OdlParseFile("fuzz.lbl", nullptr, text.c_str(), nullptr, discarded(), 0, 0, 0, 0);
    read_tree(root);
    cut_and_paste(root);
    read_tree(root);
    OdlFreeTree(root);

    write_label(text);
    const std::string path = std::string("/proc/self/fd/") + std::to_string(label_file());
    root = OdlParseLabelFile(path.c_str(), nullptr, ODL_EXPAND_STRUCTURE | ODL_EXPAND_CATALOG, 1);
    demand(root != nullptr);
    odl_suppress_messages = 0;
    read_tree(root);
    OdlFreeTree(root);
    return 0;
}
