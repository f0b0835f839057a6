// Records made from views, for the parser, which holds no NUL-terminated texts. A view without data is a null text.
#pragma once

#include "odl/odl.h"

#include <string_view>

namespace odl {

struct ObjDescTexts {
    std::string_view class_name = {};
    std::string_view pre_comment = {};
    std::string_view line_comment = {};
    std::string_view post_comment = {};
    std::string_view end_comment = {};
    std::string_view file_name = {};
};

struct KwdTexts {
    std::string_view name = {};
    std::string_view value = {};
    std::string_view pre_comment = {};
    std::string_view line_comment = {};
    std::string_view file_name = {};
};

ObjDesc *new_obj_desc(const ObjDescTexts &texts, int16_t is_a_group, int32_t line_number);
Kwd *new_kwd(const KwdTexts &texts, int32_t line_number);

}  // namespace odl
