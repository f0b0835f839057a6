#include "tables/model/keyword_text.h"

#include "base/text.h"
#include "oa/value_text.h"

namespace {

constexpr size_t longest_name = 1024;

}  // namespace

std::string tb_class_of(const ObjDesc *node) {
    return node && node->class_name ? util_upper(util_trim(node->class_name)).substr(0, longest_name) : "";
}

std::string_view tb_text_of(const char *keyword, const ObjDesc *node) {
    const char *text = nullptr;
    return OaKwdValuetoStr(keyword, node, &text) == 0 ? text : "";
}

int64_t tb_number_of(std::initializer_list<const char *> keywords, const ObjDesc *node, int64_t otherwise) {
    int64_t value = 0;
    for (const char *keyword : keywords)
        if (OalParseInteger(util_trim(tb_text_of(keyword, node), "\" "), &value))
            return value;
    return otherwise;
}

std::string tb_name_of(const ObjDesc *node, const std::string &otherwise) {
    const char *text = nullptr;
    if (OaKwdValuetoStr("NAME", node, &text) != 0)
        return otherwise;
    return util_without(std::string_view(text).substr(0, longest_name), '"');
}
