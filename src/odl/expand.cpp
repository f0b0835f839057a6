// Structure and catalog files: what pointers name is parsed and grafted into the tree behind them.
#include "base/file.h"
#include "base/memory.h"
#include "base/notice.h"
#include "base/text.h"
#include "odl/odl.h"
#include "odl/parser.h"

#include <sys/stat.h>
#include <vector>

namespace {

// Two pointers in each file to the next one double the tree with every level, so depth, number and amount of what a
// label may draw in are bounded. A keyword takes some thirty times the bytes of its shortest text.
constexpr int deepest_inclusion = 32;
constexpr int most_inclusions = 1000;
constexpr int64_t most_included_bytes = int64_t{1} << 24;

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

// A pointer keyword and the file that it was read from.
struct Pointer {
    Kwd *keyword = nullptr;
    int source = 0;
};

class Expander {
  public:
    Expander(const ObjDesc *root, const std::vector<Kwd *> &pointers, const char *message_file_name,
             int suppress_messages);

    // Includes what the pointers of that name stand for, and what the pointers in there stand for.
    void expand(const char *pattern);
    // Tells what could not be included, all at once: each notice may be a box that must be closed.
    void show_notes() const;

  private:
    static Source identify(const char *path);
    bool is_on_chain(const Source &file, int source) const;
    std::vector<Kwd *> expand_pointer(const Pointer &pointer, const char *pattern);
    std::vector<Kwd *> include(const Pointer &pointer, const char *path, int64_t start_location, int location_type);
    void report_missing(const Kwd *pointer, const char *pattern, const char *file_name);
    void report_excess(const Kwd *pointer);
    void note(const Kwd *pointer, const std::string &text);

    const char *message_file_name_;
    int suppress_messages_;
    std::vector<Source> sources_;
    std::vector<Pointer> pointers_;  // not expanded so far, in order
    int attempts_ = 0;
    int64_t included_bytes_ = 0;
    bool excess_reported_ = false;
    std::string notes_;  // one a line
};

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

Expander::Expander(const ObjDesc *root, const std::vector<Kwd *> &pointers, const char *message_file_name,
                   int suppress_messages)
    : message_file_name_(message_file_name), suppress_messages_(suppress_messages) {
    sources_.push_back(identify(root->file_name ? root->file_name : ""));
    for (Kwd *keyword : pointers)
        pointers_.push_back({keyword, 0});
}

void Expander::expand(const char *pattern) {
    std::vector<Pointer> stack(pointers_.rbegin(), pointers_.rend());
    pointers_.clear();
    while (!stack.empty()) {
        const Pointer pointer = stack.back();
        stack.pop_back();
        if (!OdlWildCardCompare(pattern, pointer.keyword->name)) {
            pointers_.push_back(pointer);
            continue;
        }
        const std::vector<Kwd *> included = expand_pointer(pointer, pattern);
        const int source = static_cast<int>(sources_.size()) - 1;
        for (auto keyword = included.rbegin(); keyword != included.rend(); ++keyword)
            stack.push_back({*keyword, source});
    }
}

Source Expander::identify(const char *path) {
    struct stat status;
    if (stat(path, &status) != 0)
        return {};
    return {status.st_dev, status.st_ino};
}

bool Expander::is_on_chain(const Source &file, int source) const {
    for (; source >= 0; source = sources_[static_cast<size_t>(source)].includer) {
        const Source &known = sources_[static_cast<size_t>(source)];
        if (known.inode == file.inode && known.device == file.device)
            return true;
    }
    return false;
}

// Returns the pointers of the included file.
std::vector<Kwd *> Expander::expand_pointer(const Pointer &pointer, const char *pattern) {
    if (attempts_ >= most_inclusions || included_bytes_ >= most_included_bytes) {
        report_excess(pointer.keyword);
        return {};
    }
    ++attempts_;
    int64_t start_location = 1;
    int location_type = ODL_RECORD_LOCATION;
    const OaPtr<char> file_name(OdlGetFileName(pointer.keyword, &start_location, &location_type));
    const OaPtr<char> path(file_name ? OdlGetFileSpec(file_name.get(), pointer.keyword->file_name, pattern) : nullptr);
    if (path)
        return include(pointer, path.get(), start_location, location_type);
    report_missing(pointer.keyword, pattern, file_name ? file_name.get() : "");
    return {};
}

std::vector<Kwd *> Expander::include(const Pointer &pointer, const char *path, int64_t start_location,
                                     int location_type) {
    Source file = identify(path);
    file.includer = pointer.source;
    file.depth = sources_[static_cast<size_t>(pointer.source)].depth + 1;
    if (file.depth > deepest_inclusion || is_on_chain(file, pointer.source))
        return {};
    const FilePtr stream(OdlLocateStart(path, start_location, location_type));
    if (!stream)
        return {};
    const int64_t start = ftello(stream.get());
    std::vector<Kwd *> pointers;
    ObjDesc *included = odl::parse_label({.file_name = path,
                                          .file_handle = stream.get(),
                                          .message_file_name = message_file_name_,
                                          .suppress_messages = suppress_messages_,
                                          .ignore_missing_end = 1,
                                          .most_bytes = most_included_bytes - included_bytes_},
                                         pointers);
    included_bytes_ += ftello(stream.get()) - start;
    sources_.push_back(file);
    move_keywords(included, pointer.keyword);
    move_children(included, pointer.keyword->parent);
    OdlFreeTree(included);
    return pointers;
}

void Expander::report_missing(const Kwd *pointer, const char *pattern, const char *file_name) {
    odl_errno = 200;
    const std::string problem = util_format("Unable to locate %s file:  %s", pattern, file_name);
    OdlPrintMessage(message_file_name_, nullptr, pointer->line_number, problem.c_str());
    note(pointer, std::string("Unable to locate required format file: ") + file_name);
}

// Once for all pointers that are left as they are.
void Expander::report_excess(const Kwd *pointer) {
    if (excess_reported_)
        return;
    excess_reported_ = true;
    const std::string problem = util_format("%s names one file too many:  %d files and %lld bytes have been included",
                                            pointer->name, attempts_, static_cast<long long>(included_bytes_));
    OdlPrintMessage(message_file_name_, nullptr, pointer->line_number, problem.c_str());
    note(pointer, problem);
}

void Expander::show_notes() const {
    if (!notes_.empty())
        util_notice(NoticeKind::Note, notes_);
}

void Expander::note(const Kwd *pointer, const std::string &text) {
    notes_ += util_format("%sLine %d: %s", notes_.empty() ? "" : "\n", pointer->line_number, text.c_str());
}

}  // namespace

ObjDesc *odl::expand_label(ObjDesc *root, const std::vector<Kwd *> &pointers, const char *message_file_name, int expand,
                           int suppress_messages) {
    Expander expander(root, pointers, message_file_name, suppress_messages);
    for (const Pattern &pattern : patterns) {
        if (expand & pattern.expand)
            expander.expand(pattern.text);
    }
    expander.show_notes();
    return root;
}

ObjDesc *OdlExpandLabelFile(ObjDesc *root, const char *message_file_name, int expand, int suppress_messages) {
    if (!root) {
        odl_errno = 1;
        return nullptr;
    }
    odl_suppress_messages = suppress_messages;
    std::vector<Kwd *> pointers;
    for (ObjDesc *object = root; object; object = OdlTraverseTree(object, root->level)) {
        for (Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling) {
            if (keyword->is_a_pointer)
                pointers.push_back(keyword);
        }
    }
    return odl::expand_label(root, pointers, message_file_name, expand, suppress_messages);
}
