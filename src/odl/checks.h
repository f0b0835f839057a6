// The checks of statements on views: one set of rules for the parser and for the public OdlValid functions. Each
// returns true when it had nothing to say; texts passed by reference are trimmed.
#pragma once

#include "odl/characters.h"
#include "odl/message.h"

#include <cstdint>
#include <string_view>

namespace odl {

struct Nesting {
    int64_t braces = 0;
    int64_t parentheses = 0;

    void add(std::string_view text);
    bool balanced() const { return braces == 0 && parentheses == 0; }
};

size_t quote_count(std::string_view text);

bool check_identifier(std::string_view &text, std::string_view what, const MessagePlace &place);
bool check_element(std::string_view element, const MessagePlace &place, long element_number);
bool check_value_list(std::string_view value, const MessagePlace &place);
bool check_braces(std::string_view value, const MessagePlace &place);
bool check_object(bool has_equals, std::string_view &class_name, const MessagePlace &place);
bool check_end_object(const ObjDesc *current, bool has_equals, std::string_view &class_name, const MessagePlace &place);

// The parts of a keyword statement: the name is what stands before the "=", or all of it when there is none.
struct KeywordStatement {
    std::string_view name;
    bool has_equals;
    std::string_view value;

    bool is_sfdu_header() const;
};

bool check_keyword_name(KeywordStatement &statement, const MessagePlace &place);
bool report_duplicate(std::string_view name, const MessagePlace &place);
bool check_keyword_value(const KeywordStatement &statement, const MessagePlace &place);

// All checks of a keyword statement. `is_duplicate` tells whether the object already has a keyword of a name.
template <typename IsDuplicate>
bool check_keyword(KeywordStatement &statement, const MessagePlace &place, IsDuplicate is_duplicate) {
    bool valid = check_keyword_name(statement, place);
    if (!statement.name.empty() && is_duplicate(statement.name))
        valid = report_duplicate(statement.name, place);
    return check_keyword_value(statement, place) && valid;
}

bool is_sfdu_label(std::string_view line);

}  // namespace odl
