#include "cli/product.h"

#include "base/file.h"
#include "base/notice.h"
#include "base/text.h"
#include "cli/commands.h"
#include "oa/signatures.h"

#include <filesystem>
#include <set>

namespace {

constexpr size_t head_size = 10000;  // a label begins at the start of its file

std::set<std::string> notices;

std::string head_of(FILE *file) {
    std::string head(head_size, '\0');
    head.resize(fread(head.data(), 1, head.size(), file));
    return head;
}

bool holds_label(std::string_view head) {
    return describes_itself(head) || util_contains(head, "RECORD_TYPE") ||
           (util_contains(head, "OBJECT") && util_contains(head, "="));
}

std::string without_digits(std::string text) {
    std::erase_if(text, [](char c) { return c >= '0' && c <= '9'; });
    return text;
}

}  // namespace

std::string find_label_file(const std::string &file) {
    const FilePtr chosen = util_open_regular(file.c_str());
    if (!chosen) {
        fail(file + ": " + open_failure());
        return "";
    }
    if (holds_label(head_of(chosen.get())))
        return file;
    for (const char *extension : {"lbl", "LBL"}) {
        std::string beside = std::filesystem::path(file).replace_extension(extension).string();
        const FilePtr label = util_open_regular(beside.c_str());
        if (label && holds_label(head_of(label.get()))) {
            fprintf(stderr, "lumacart-cli: %s has no label of its own; using %s\n", file.c_str(), beside.c_str());
            return beside;
        }
    }
    fail(file + ": there is no label in the file nor beside it");
    return "";
}

OdlTree read_label(const std::string &label, const char *message_file) {
    OdlTree root(OaParseLabelFile(label.c_str(), message_file, ODL_EXPAND_STRUCTURE, message_file ? 0 : 1));
    if (!root)
        fail(label + ": the label cannot be read");
    if (OaIsOlderLabel(root.get()) && OaConvertOlderLabel(root.get()) != 0) {
        fail(label + ": conversion of label failed");
        root.reset();
    }
    return root;
}

OdlTree open_product(const std::string &file, std::string *label) {
    *label = find_label_file(file);
    if (label->empty())
        return nullptr;
    show_notices();
    return read_label(*label, nullptr);
}

const ObjDesc *find_object_of(ObjDesc *root, std::initializer_list<const char *> classes) {
    const ObjDesc *found = nullptr;
    for (const char *pattern : classes)
        if (!found)
            found = OdlFindObjDesc(root, pattern, nullptr, nullptr, 1, SCOPE_TO_END);
    return found;
}

const ObjDesc *find_object(ObjDesc *root, const std::string &pattern) {
    for (ObjDesc *node = root->first_child; node; node = OdlTraverseTree(node, root->level)) {
        const Kwd *name = OdlFindKwd(node, "NAME", nullptr, 1, SCOPE_THIS_OBJECT);
        const char *value = name ? OdlGetKwdValue(name) : nullptr;
        if ((node->class_name && OdlWildCardCompare(pattern.c_str(), node->class_name)) ||
            (value && OdlWildCardCompare(pattern.c_str(), util_without(value, '"').c_str())))
            return node;
    }
    return nullptr;
}

void show_notices() {
    util_set_notice_hook([](NoticeKind, const std::string &text) {
        if (notices.insert(without_digits(text)).second)
            fprintf(stderr, "lumacart-cli: %s\n", text.c_str());
    });
}

bool had_notices() {
    return !notices.empty();
}
