#include "base/text.h"
#include "oa/oa.h"
#include "oa/value_text.h"

#include <string_view>

namespace {

Kwd *find_kwd(const char *name, const ObjDesc *node) {
    if (!name || !node)
        return nullptr;
    for (Kwd *keyword = node->first_keyword; keyword; keyword = keyword->right_sibling)
        if (keyword->name && OdlWildCardCompare(name, keyword->name))
            return keyword;
    return nullptr;
}

struct Alias {
    std::string_view old_name;
    const char *name;
};
constexpr Alias aliases[] = {
    {"IMAGE_LINES", "LINES"},
    {"BITS_PER_SAMPLE", "SAMPLE_BITS"},
    {"NUMBER_OF_ROWS", "ROWS"},
};

}  // namespace

int OaKwdValuetoStr(const char *name, const ObjDesc *node, const char **out) {
    const Kwd *keyword = find_kwd(name, node);
    if (!keyword || !out)
        return 1;
    *out = keyword->value ? keyword->value : "";
    return 0;
}

int OaKwdValuetoLong(const char *name, const ObjDesc *node, int64_t *out) {
    const char *value = nullptr;
    if (!out || OaKwdValuetoStr(name, node, &value) != 0)
        return 1;
    if (OdlDataType(value) != VALUE_INTEGER) {
        OaReportFailure(600, "%s: %s keyword value is not an integer.", __func__, name);
        return 1;
    }
    int64_t number = 0;
    if (!OalParseInteger(value, &number)) {
        OaReportFailure(600, "%s: sscanf failed to convert %s keyword value to long", __func__, name);
        return 1;
    }
    *out = number;
    return 0;
}

int OaKwdValuetoDouble(const char *name, const ObjDesc *node, double *out) {
    const char *value = nullptr;
    if (!out || OaKwdValuetoStr(name, node, &value) != 0)
        return 1;
    double number = 0;
    if (!OalParseReal(value, &number)) {
        OaReportFailure(600, "%s: %s keyword value is not a number.", __func__, name);
        return 1;
    }
    *out = number;
    return 0;
}

int OaStrtoKwdValue(const char *name, ObjDesc *node, const char *text) {
    if (!name || !node) {
        OaReportFailure(501, "%s: name or node is NULL.", __func__);
        return 1;
    }
    const std::string_view value = text ? text : "";
    Kwd *keyword = find_kwd(name, node);
    if (!keyword) {
        OdlPasteKwd(OdlNewKwd(name, value.data(), nullptr, nullptr, node->file_name, 0), node);
        return 0;
    }
    const OaPtr<char> old(keyword->value);  // freed last: `text` may be it
    keyword->value = OaCopyText(value);
    keyword->size = static_cast<uint32_t>(value.size());
    keyword->is_a_list = value.starts_with('(') || value.starts_with('{');
    return 0;
}

int OaLongtoKwdValue(const char *name, ObjDesc *node, int64_t value) {
    return OaStrtoKwdValue(name, node, std::to_string(value).c_str());
}

int OaDeleteKwd(const char *name, ObjDesc *node) {
    Kwd *keyword = find_kwd(name, node);
    if (!keyword)
        return 1;
    OdlFreeKwd(OdlCutKwd(keyword));
    return 0;
}

const char *OaDealiasKwdName(const char *name) {
    if (name)
        for (const Alias &alias : aliases)
            if (alias.old_name == name)
                return alias.name;
    return name;
}
