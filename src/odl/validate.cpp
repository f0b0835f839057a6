// The public checks: the shared rules on NUL-terminated texts, trimmed in place.
#include "odl/validate.h"

#include "odl/checks.h"

namespace {

using odl::view_of;

// Ends `text` where the view that the check left of it ends.
void cut_to(char *text, std::string_view trimmed) {
    if (text)
        text[trimmed.size()] = '\0';
}

bool has_keyword(const ObjDesc *object, std::string_view name) {
    const Kwd *keyword = object ? object->first_keyword : nullptr;
    while (keyword && view_of(keyword->name) != name)
        keyword = keyword->right_sibling;
    return keyword != nullptr;
}

}  // namespace

bool CheckBalance(const char *statement) {
    const std::string_view text = view_of(statement);
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        return true;
    const std::string_view value = text.substr(odl::first_word_position(text, equals + 1));
    if (value.starts_with('"'))
        return odl::quote_count(value) % 2 == 0;
    if (!value.starts_with('{') && !value.starts_with('('))
        return true;
    odl::Nesting nesting;
    nesting.add(value);
    return nesting.balanced();
}

void OdlNestingLevel(const char *text, long *braces, long *parentheses) {
    odl::Nesting nesting;
    nesting.add(view_of(text));
    *braces += nesting.braces;
    *parentheses += nesting.parentheses;
}

int OdlValidObjDesc(const char *equals, char *class_name, const char *message_file, FILE *message_handle, long line) {
    std::string_view text = view_of(class_name);
    const bool valid = odl::check_object(equals, text, {message_file, message_handle, line});
    cut_to(class_name, text);
    return valid;
}

int OdlValidEndObjDesc(const ObjDesc *current, const char *equals, char *class_name, const char *message_file,
                       FILE *message_handle, long line) {
    std::string_view text = view_of(class_name);
    const bool valid = odl::check_end_object(current, equals, text, {message_file, message_handle, line});
    cut_to(class_name, text);
    return valid;
}

int OdlValidKwd(const ObjDesc *object, char *name, char *equals, const char *value, const char *message_file,
                FILE *message_handle, long line) {
    if (equals)
        *equals = '\0';
    odl::KeywordStatement statement{view_of(name), equals != nullptr, view_of(value)};
    const bool valid = odl::check_keyword(statement, {message_file, message_handle, line},
                                          [object](std::string_view text) { return has_keyword(object, text); });
    cut_to(name, statement.name);
    return valid;
}

int OdlValidBraces(const char *value, const char *message_file, FILE *message_handle, long line) {
    return odl::check_braces(view_of(value), {message_file, message_handle, line});
}

int OdlValidValueList(const char *value, const char *message_file, FILE *message_handle, long line) {
    return odl::check_value_list(view_of(value), {message_file, message_handle, line});
}

int OdlValidElement(const char *element, const char *message_file, FILE *message_handle, long line,
                    long element_number) {
    return odl::check_element(view_of(element), {message_file, message_handle, line}, element_number);
}

int OdlValidIdentifier(char *text, const char *what, const char *message_file, FILE *message_handle, long line) {
    std::string_view trimmed = view_of(text);
    const bool valid = odl::check_identifier(trimmed, view_of(what), {message_file, message_handle, line});
    cut_to(text, trimmed);
    return valid;
}
