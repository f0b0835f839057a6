#include "viewer/model/file_colours.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view local_prefix = "LOCAL_";
constexpr std::string_view table_suffix = "COLOR_TABLE";

std::string_view class_of(const ObjDesc *node) {
    const char *name = node ? OdlGetObjDescClassName(node) : nullptr;
    return name ? name : "";
}

const ObjDesc *colour_table_of(const ObjDesc *image) {
    const ObjDesc *before = image ? image->left_sibling : nullptr;
    const std::string_view neighbour = class_of(before);
    if (neighbour.starts_with(local_prefix) && neighbour.ends_with(table_suffix))
        return before;
    while (before && class_of(before) != "GLOBAL_COLOR_TABLE")
        before = before->left_sibling;
    return before;
}

}  // namespace

std::optional<ColourTable> read_file_colours(const ObjDesc *image) {
    const ObjDesc *node = colour_table_of(image);
    int64_t rows = 0;
    int64_t row_bytes = 0;
    int64_t prefix = 0;
    int64_t suffix = 0;
    if (!node || OaGetTableKeywords(node, &rows, &row_bytes, &prefix, &suffix) != 0 || row_bytes != 3 || rows < 1 ||
        rows > 256)
        return std::nullopt;
    const OaObjectPtr table(OaReadTable(node));
    if (!table || !table->data)
        return std::nullopt;
    ColourTable colours = {};
    const auto *bytes = static_cast<const uint8_t *>(table->data);
    const size_t count = std::min(colours.size(), static_cast<size_t>(table->size / 3));
    for (size_t i = 0; i < count; ++i)
        colours[i] = {bytes[3 * i], bytes[3 * i + 1], bytes[3 * i + 2]};
    return colours;
}
