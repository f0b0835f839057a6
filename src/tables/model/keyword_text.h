// Keywords of tables and columns as their records keep them. Nothing here reports.
#pragma once

#include "oa/oa.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// The object's class, trimmed and in upper case; "" when it has none.
std::string tb_class_of(const ObjDesc *node);
// The keyword's value; "" when it is absent.
std::string_view tb_text_of(const char *keyword, const ObjDesc *node);
// The first of the keywords that is an integer.
int64_t tb_number_of(std::initializer_list<const char *> keywords, const ObjDesc *node, int64_t otherwise);
// NAME without double quotes, as far as 1024 bytes; when absent, `otherwise`.
std::string tb_name_of(const ObjDesc *node, const std::string &otherwise);
