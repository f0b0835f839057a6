// Parsing for the library's own use: the tree together with what there is to graft into it.
#pragma once

#include "odl/odl.h"

#include <vector>

namespace odl {

// No label is as long as this. What goes on without an END is the data behind it, which may be larger than the memory.
constexpr int64_t longest_label = int64_t{1} << 26;

// What OdlParseFile takes; see there.
struct ParseRequest {
    const char *file_name = nullptr;
    FILE *file_handle = nullptr;
    const char *label_text = nullptr;
    const char *message_file_name = nullptr;
    FILE *message_file_handle = nullptr;
    int suppress_messages = 0;
    int suppress_metrics = 1;
    int suppress_hierarchy = 1;
    int ignore_missing_end = 0;
    int64_t most_bytes = longest_label;  // parsing ends with the line that reaches them
};

// As OdlParseFile; also adds the label's pointer keywords, in their order, to `pointers`.
ObjDesc *parse_label(const ParseRequest &request, std::vector<Kwd *> &pointers);

// As OdlExpandLabelFile for a tree whose pointer keywords are known.
ObjDesc *expand_label(ObjDesc *root, const std::vector<Kwd *> &pointers, const char *message_file_name, int expand,
                      int suppress_messages);

}  // namespace odl
