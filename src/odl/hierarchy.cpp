// The listing of a tree's objects.
#include "base/text.h"
#include "odl/message.h"
#include "odl/odl.h"

#include <algorithm>
#include <string_view>

namespace {

// Levels beyond this are not indented further: each of a hundred thousand nested objects would otherwise be listed on
// a line of three hundred thousand columns.
constexpr uint32_t deepest_indent = 100;

// The level is right-aligned in level + 1 columns and the name indented by two columns a level.
std::string hierarchy_line(ObjDesc *object) {
    const Kwd *name_keyword = OdlFindKwd(object, "NAME", nullptr, 1, SCOPE_THIS_OBJECT);
    const char *name = name_keyword && name_keyword->value ? name_keyword->value : "<no name>";
    const uint32_t depth = std::min(object->level, deepest_indent);
    std::string line = util_format(" Line %-5d %*u ", object->line_number, static_cast<int>(depth + 1), object->level);
    line.append(size_t{2} * depth, ' ').append(name);
    return line.append("  --  ").append(object->class_name ? object->class_name : "<no class>").append("\n");
}

}  // namespace

void OdlPrintHierarchy(const ObjDesc *root, const char *file_name, FILE *handle) {
    if (!root) {
        odl_errno = 1;
        return;
    }
    const odl::MessageFile messages(file_name, handle);
    // The walk and the search change nothing; they hand out modifiable objects.
    for (auto *object = const_cast<ObjDesc *>(root); object; object = OdlTraverseTree(object, root->level))
        OdlPrintLine(nullptr, messages.handle(), hierarchy_line(object).c_str());
}
