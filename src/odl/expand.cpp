// Structure and catalog files: what pointers name is parsed and grafted into the tree behind them.
#include "base/file.h"
#include "base/memory.h"
#include "base/notice.h"
#include "base/text.h"
#include "odl/odl.h"

#include <sys/stat.h>
#include <unordered_map>
#include <vector>

namespace {

// Two pointers in each file to the next one double the tree with every level, so depth, number and amount of what a
// label may draw in are bounded.
constexpr int deepest_inclusion = 32;
constexpr int most_inclusions = 1000;
constexpr int64_t most_included_bytes = int64_t{1} << 28;

struct Pattern {
    OdlExpand expand;
    const char *text;
};
constexpr Pattern patterns[] = {{ODL_EXPAND_STRUCTURE, "^*STRUCTURE"}, {ODL_EXPAND_CATALOG, "^*CATALOG"}};

// An included file, and the file that included it; the label itself is number 0.
struct Source {
    dev_t device = 0;
    ino_t inode = 0;
    int includer = -1;
    int depth = 0;
};

class Expander {
  public:
    Expander(ObjDesc *root, const char *message_file_name, int suppress_messages)
        : root_(root), message_file_name_(message_file_name), suppress_messages_(suppress_messages) {
        sources_.push_back(identify(root->file_name ? root->file_name : ""));
    }

    void expand(const char *pattern);

  private:
    static Source identify(const char *path);
    int source_of(const Kwd *pointer) const;
    bool is_on_chain(const Source &file, int source) const;
    void expand_pointer(Kwd *pointer, const char *pattern);
    void include(Kwd *pointer, const char *path, int64_t start_location, int location_type);
    void remember_pointers(ObjDesc *included);
    void report_missing(const Kwd *pointer, const char *pattern, const char *file_name) const;

    ObjDesc *root_;
    const char *message_file_name_;
    int suppress_messages_;
    std::vector<Source> sources_;
    std::unordered_map<const Kwd *, int> pointer_sources_;  // pointers that were grafted; all others are the label's
    int attempts_ = 0;
    int64_t included_bytes_ = 0;
};

bool is_pointer_to_include(const Kwd *keyword) {
    for (const Pattern &pattern : patterns) {
        if (keyword->is_a_pointer && keyword->name && OdlWildCardCompare(pattern.text, keyword->name))
            return true;
    }
    return false;
}

ObjDesc *child_of_class(const ObjDesc *parent, const char *class_name) {
    // From the first child on, so that the parent itself is not taken for one of its children.
    return parent->first_child ? OdlFindObjDesc(parent->first_child, class_name, nullptr, nullptr, 1, SCOPE_SIBLINGS)
                               : nullptr;
}

// Moves the keywords of `included` behind `pointer`, in their order.
void move_keywords(ObjDesc *included, Kwd *pointer) {
    while (Kwd *keyword = included->last_keyword)
        OdlPasteKwdAfter(OdlCutKwd(keyword), pointer);
}

// Moves the children of `included` before the first column or container of `parent`, or to its end.
void move_children(ObjDesc *included, ObjDesc *parent) {
    ObjDesc *before = child_of_class(parent, "COLUMN");
    if (!before)
        before = child_of_class(parent, "CONTAINER");
    while (ObjDesc *child = included->first_child) {
        OdlCutObjDesc(child);
        if (before)
            OdlPasteObjDescBefore(child, before);
        else
            OdlPasteObjDesc(child, parent);
    }
    parent->child_count = included->child_count;
}

// Everything grafted comes after its pointer in pre-order, so one walk meets every pointer, at any depth of inclusion.
void Expander::expand(const char *pattern) {
    for (ObjDesc *object = root_; object; object = OdlTraverseTree(object, root_->level)) {
        for (Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling) {
            if (keyword->name && OdlWildCardCompare(pattern, keyword->name))
                expand_pointer(keyword, pattern);
        }
    }
}

Source Expander::identify(const char *path) {
    struct stat status;
    if (stat(path, &status) != 0)
        return {};
    return {status.st_dev, status.st_ino};
}

int Expander::source_of(const Kwd *pointer) const {
    const auto found = pointer_sources_.find(pointer);
    return found == pointer_sources_.end() ? 0 : found->second;
}

bool Expander::is_on_chain(const Source &file, int source) const {
    for (; source >= 0; source = sources_[static_cast<size_t>(source)].includer) {
        const Source &known = sources_[static_cast<size_t>(source)];
        if (known.inode == file.inode && known.device == file.device)
            return true;
    }
    return false;
}

void Expander::expand_pointer(Kwd *pointer, const char *pattern) {
    if (attempts_ >= most_inclusions || included_bytes_ >= most_included_bytes)
        return;
    ++attempts_;
    int64_t start_location = 1;
    int location_type = ODL_RECORD_LOCATION;
    const OaPtr<char> file_name(OdlGetFileName(pointer, &start_location, &location_type));
    const OaPtr<char> path(file_name ? OdlGetFileSpec(file_name.get(), pointer->file_name, pattern) : nullptr);
    if (path)
        include(pointer, path.get(), start_location, location_type);
    else
        report_missing(pointer, pattern, file_name ? file_name.get() : "");
}

void Expander::include(Kwd *pointer, const char *path, int64_t start_location, int location_type) {
    const int includer = source_of(pointer);
    Source file = identify(path);
    file.includer = includer;
    file.depth = sources_[static_cast<size_t>(includer)].depth + 1;
    if (file.depth > deepest_inclusion || is_on_chain(file, includer))
        return;
    const FilePtr stream(OdlLocateStart(path, start_location, location_type));
    if (!stream)
        return;
    ObjDesc *included =
        OdlParseFile(path, stream.get(), nullptr, message_file_name_, nullptr, suppress_messages_, 1, 1, 1);
    included_bytes_ += ftello(stream.get());
    sources_.push_back(file);
    remember_pointers(included);
    move_keywords(included, pointer);
    move_children(included, pointer->parent);
    OdlFreeTree(included);
}

void Expander::remember_pointers(ObjDesc *included) {
    const int source = static_cast<int>(sources_.size()) - 1;
    for (const ObjDesc *object = included; object; object = OdlTraverseTree(object, 0)) {
        for (const Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling) {
            if (is_pointer_to_include(keyword))
                pointer_sources_[keyword] = source;
        }
    }
}

void Expander::report_missing(const Kwd *pointer, const char *pattern, const char *file_name) const {
    odl_errno = 200;
    const std::string problem = util_format("Unable to locate %s file:  %s", pattern, file_name);
    OdlPrintMessage(message_file_name_, nullptr, pointer->line_number, problem.c_str());
    util_notice(NoticeKind::Note,
                util_format("Line %d: Unable to locate required format file: %s", pointer->line_number, file_name));
}

}  // namespace

ObjDesc *OdlExpandLabelFile(ObjDesc *root, const char *message_file_name, int expand, int suppress_messages) {
    if (!root) {
        odl_errno = 1;
        return nullptr;
    }
    odl_suppress_messages = suppress_messages;
    Expander expander(root, message_file_name, suppress_messages);
    for (const Pattern &pattern : patterns) {
        if (expand & pattern.expand)
            expander.expand(pattern.text);
    }
    return root;
}
