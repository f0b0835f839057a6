// Where the data of an object are: file, record format and start.
#include "base/file.h"
#include "base/text.h"
#include "oa/jpeg2000.h"
#include "oa/oa.h"
#include "oa/value_text.h"

#include <algorithm>
#include <cinttypes>
#include <string_view>

namespace {

constexpr const char *routine = "OaGetFileKeywords";

std::string_view class_of(const ObjDesc *node) {
    return node->class_name ? node->class_name : "";
}

std::string_view unquoted(const char *text) {
    return util_trim(text, " \"'");
}

// --- The pointer --------------------------------------------------------------------------------------------------

// Objects of the node's class that come before it below `ancestor`, in the order of the label.
size_t equals_before(const ObjDesc *node, const ObjDesc *ancestor) {
    size_t count = 0;
    for (const ObjDesc *at = ancestor; at != node;) {
        if (at != ancestor && class_of(at) == class_of(node))
            ++count;
        if (at->first_child) {
            at = at->first_child;
            continue;
        }
        while (!at->right_sibling)
            at = at->parent;
        at = at->right_sibling;
    }
    return count;
}

bool is_pointer_to(const Kwd *keyword, std::string_view name) {
    const std::string_view written = keyword->name ? keyword->name : "";
    return written.starts_with('^') && written.substr(1) == name;
}

// The pointer to that name on the nearest ancestor that has one. Of several the one whose place among them is the
// object's place among its equals, else the last.
const Kwd *find_pointer(const ObjDesc *node, std::string_view name) {
    for (const ObjDesc *ancestor = node->parent; ancestor; ancestor = ancestor->parent) {
        std::vector<const Kwd *> pointers;
        for (const Kwd *keyword = ancestor->first_keyword; keyword; keyword = keyword->right_sibling)
            if (is_pointer_to(keyword, name))
                pointers.push_back(keyword);
        if (pointers.size() == 1)
            return pointers[0];
        if (!pointers.empty())
            return pointers[std::min(equals_before(node, ancestor), pointers.size() - 1)];
    }
    return nullptr;
}

const Kwd *find_pointer(const ObjDesc *node) {
    if (const Kwd *pointer = find_pointer(node, class_of(node)))
        return pointer;
    const char *name = nullptr;
    if (OaKwdValuetoStr("NAME", node, &name) != 0)
        return nullptr;
    return find_pointer(node, unquoted(name));
}

// --- The record format --------------------------------------------------------------------------------------------

// The nearest value that is a number, else 0. Labels say UNK and N/A here, which is no failure to report.
int64_t inherited_long(const char *name, const ObjDesc *node) {
    const char *text = nullptr;
    int64_t value = 0;
    for (; node; node = node->parent)
        if (OaKwdValuetoStr(name, node, &text) == 0 && OalParseInteger(text, &value))
            return value;
    return 0;
}

int record_type_of(const ObjDesc *node) {
    struct Prefix {
        std::string_view text;
        OaRecordType type;
    };
    constexpr Prefix prefixes[] = {{"FIXED", OA_FIXED_LENGTH}, {"STREAM", OA_STREAM}, {"VARIABLE", OA_VARIABLE_LENGTH}};
    const char *value = nullptr;
    while (node && OaKwdValuetoStr("RECORD_TYPE", node, &value) != 0)
        node = node->parent;
    if (!node)
        return OA_UNDEFINED;
    const std::string name = util_upper(unquoted(value));
    for (const Prefix &prefix : prefixes)
        if (name.starts_with(prefix.text))
            return prefix.type;
    return OA_UNDEFINED;
}

// --- The start ----------------------------------------------------------------------------------------------------

// Byte offset of a line, from 1, or -1 when the file has fewer. Lines end as they do for OalReadStream: with a line
// feed, a carriage return, or both.
int64_t offset_of_line(const std::string &path, int64_t line) {
    const FilePtr file = util_open_regular(path.c_str());
    if (!file || line - 1 > util_file_size(file.get()))  // each line has a byte at least
        return -1;
    int64_t offset = 0;
    while (line > 1) {
        const int c = getc_unlocked(file.get());
        if (c == EOF)
            return -1;
        ++offset;
        if (c != '\n' && c != '\r')
            continue;
        --line;
        const int next = getc_unlocked(file.get());
        if (next != c && (next == '\n' || next == '\r'))
            ++offset;
        else
            ungetc(next, file.get());
    }
    return offset;
}

// 0-based position of a pointer's 1-based location, or -1.
int64_t start_of(int64_t location, int location_type, const OaFileKeywords &file) {
    if (location < 1)
        return -1;
    if (location_type == ODL_BYTE_LOCATION)
        return file.record_type == OA_VARIABLE_LENGTH ? -1 : location - 1;
    switch (file.record_type) {
        case OA_VARIABLE_LENGTH:
            return location - 1;
        case OA_STREAM:
            return offset_of_line(file.file_name, location);
        default: {
            if (location == 1)
                return 0;
            int64_t start = -1;
            const bool overflow = __builtin_mul_overflow(location - 1, file.record_bytes, &start);
            return overflow || file.record_bytes < 1 ? -1 : start;
        }
    }
}

}  // namespace

int OalFindData(const ObjDesc *node, OaFileKeywords *out, std::string *fault) {
    const Kwd *pointer = find_pointer(node);
    int64_t location = 0;
    int location_type = ODL_RECORD_LOCATION;
    const OaPtr<char> name(pointer ? OdlGetFileName(pointer, &location, &location_type) : nullptr);
    const OaPtr<char> path(name ? OdlGetFileSpec(name.get(), pointer->file_name, nullptr) : nullptr);
    OaFileKeywords file;
    if (!path && OalFindJpeg2000File(node, name ? name.get() : "", &file.file_name)) {
        file.stands_for_uncompressed = true;
        *out = file;
        return 0;
    }
    if (!name) {
        *fault = util_format("no pointer to the data of the %s object.", std::string(class_of(node)).c_str());
        return 531;
    }
    if (!path) {
        *fault = util_format("can't find the file %s that %s names.", name.get(), pointer->name);
        return 700;
    }
    file.file_name = path.get();
    file.record_type = record_type_of(node);
    file.record_bytes = inherited_long("RECORD_BYTES", node);
    file.file_records = inherited_long("FILE_RECORDS", node);
    file.start = start_of(location, location_type, file);
    if (file.start < 0) {
        *fault = util_format("%s names no position in %s (location %" PRId64 ", RECORD_BYTES %" PRId64
                             ", RECORD_TYPE code %d).",
                             pointer->name, path.get(), location, file.record_bytes, file.record_type);
        return 502;
    }
    *out = file;
    return 0;
}

int OaGetFileKeywords(const ObjDesc *node, OaFileKeywords *out) {
    if (!node || !out) {
        OaReportFailure(501, "%s: node or result is NULL.", routine);
        return 1;
    }
    OaFileKeywords file;
    std::string fault;
    const int code = OalFindData(node, &file, &fault);
    if (code != 0) {
        OaReportFailure(code, "%s: %s", routine, fault.c_str());
        return 1;
    }
    file.interchange_format = OaGetObjectInterchangeFormat(node);
    if (file.interchange_format == OA_NO_FORMAT)
        return 1;
    *out = file;
    return 0;
}
