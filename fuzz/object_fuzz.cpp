// The input is a TABLE, HISTOGRAM, ARRAY or COLLECTION object in label language (with file keywords before it, if any),
// a zero byte, and the bytes of the data file. The object is read whole; a table also by pages, which must agree.
#include "base/notice.h"
#include "base/text.h"
#include "data_file.h"
#include "oa/oa.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int64_t largest_compared = int64_t{1} << 20;  // bytes; larger tables are read but not compared

int64_t number_of(const ObjDesc *node, const char *name) {
    int64_t value = 0;
    return OaKwdValuetoLong(name, node, &value) == 0 ? value : 0;
}

// Rows of all columns keep their layout wherever the page begins.
void compare_pages(const ObjDesc *node, const OaObject *whole) {
    const int64_t rows = number_of(whole->odl, "ROWS");
    const int64_t row_bytes = number_of(whole->odl, "ROW_BYTES");
    const int64_t columns = number_of(whole->odl, "COLUMNS");
    const char *storage = nullptr;
    if (rows < 1 || columns < 1 || row_bytes < 1 || OaKwdValuetoStr("TABLE_STORAGE_TYPE", whole->odl, &storage) == 0)
        return;
    require(whole->size == rows * row_bytes);
    const int64_t first = rows / 2 + 1;
    const OaObjectPtr page(OaReadSubTable(node, first, rows, 1, columns));
    require(page && page->size == (rows - first + 1) * row_bytes);
    require(memcmp(page->data, static_cast<const char *>(whole->data) + (first - 1) * row_bytes,
                   static_cast<size_t>(page->size)) == 0);
    const OaObjectPtr last(OaReadSubTable(node, first, first, columns, columns));
    const char *name = nullptr;
    if (last && OaKwdValuetoStr("NAME", last->odl->first_child, &name) == 0)
        const OaObjectPtr part(OaGetSubTable(last.get(), 1, 1, &name, 1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const size_t label_end = std::min(input.find('\0'), input.size());
    const DataFile file(input.substr(std::min(label_end + 1, input.size())));
    std::string label;
    constexpr const char *classes[] = {"TABLE", "HISTOGRAM", "ARRAY", "COLLECTION"};
    for (const char *name : classes)
        label += util_format("^%s = (\"%s\", 1)\n", name, file.path().c_str());
    label += std::string(input.substr(0, label_end)) + "\nEND\n";
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    for (const char *name : classes) {
        const ObjDesc *node = tree ? OdlFindObjDesc(tree.get(), name, nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
        const OaObjectPtr whole(node ? OaReadObject(node) : nullptr);
        if (whole && whole->size <= largest_compared && OaGetObjectClass(node) == OA_TABLE)
            compare_pages(node, whole.get());
    }
    return 0;
}
