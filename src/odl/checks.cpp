#include "odl/checks.h"

#include "base/text.h"
#include "odl/value.h"

#include <algorithm>

namespace {

using odl::is_digit;
using odl::marks_of;
using odl::MessagePlace;

enum ErrorCode {
    ERROR_END_OBJECT = 300,
    ERROR_BRACKETS = 303,
    ERROR_QUOTES = 304,
    ERROR_MULTIPLE_UNDERSCORES = 305,
    ERROR_VALUE_TYPE = 306,
    ERROR_UNITS = 307,
    ERROR_IDENTIFIER = 308,
    ERROR_KEYWORD = 309,
    ERROR_OBJECT = 310,
};

std::string quoted(std::string_view text) {
    return std::string(1, '"').append(text).append(1, '"');
}

bool is_letter(char c) {
    return marks_of(c) & odl::MARK_LETTER;
}

// Element `number` of a list, or the whole value for 0.
struct Element {
    std::string_view text;
    const MessagePlace &place;
    long number;

    // "VALUE", or "VALUE LIST element 3".
    std::string what() const { return number > 0 ? util_format("VALUE LIST element %ld", number) : "VALUE"; }
    bool report(int code, const std::string &problem) const { return place.report(code, problem + what()); }
};

bool check_quotes_inside(const Element &element) {
    if (element.text.size() < 3)
        return true;
    const std::string_view inside = element.text.substr(1, element.text.size() - 2);
    bool valid = true;
    if (util_contains(inside, "\""))
        valid = element.report(ERROR_QUOTES, "Embedded double quote in ");
    if (util_contains(inside, "'"))
        valid = element.report(ERROR_QUOTES, "Embedded single quote in ");
    return valid;
}

bool is_quoted(std::string_view text) {
    return text.front() == '"' || text.front() == '\'';
}

bool is_closed(std::string_view text) {
    return text.size() > 1 && text.back() == text.front();
}

// Whether the text is a decimal integer or an identifier at first sight: no quotes, no units, and a type for certain.
bool is_plain(std::string_view text) {
    const auto all = [text](uint16_t mark) { return odl::all_marked(text, mark); };
    return is_digit(text.front()) ? all(odl::MARK_DIGIT) : all(odl::MARK_IDENTIFIER);
}

bool check_underscores(const Element &element) {
    bool valid = true;
    if (util_contains(element.text, "__"))
        valid = element.report(ERROR_MULTIPLE_UNDERSCORES, "Multiple underscores in ");
    if (element.text.front() == '_')
        valid = element.report(ERROR_QUOTES, "First character is an underscore in ");
    if (element.text.back() == '_')
        valid = element.report(ERROR_QUOTES, "Last character is an underscore in ");
    return valid;
}

// `value` is what stands before the units, `units` what stands after their "<".
bool check_units(const Element &element, std::string_view value, std::string_view units) {
    const auto report = [&](std::string_view problem) {
        return element.place.report(ERROR_UNITS, std::string(problem) + " in the UNITS expression: \"<" +
                                                     std::string(units) + "\", for " + element.what() + ":  " +
                                                     quoted(value));
    };
    bool valid = true;
    if (util_contains(units, "<"))
        valid = report("Embedded '<' character found");
    const size_t closing = units.find('>');
    if (closing == std::string_view::npos)
        valid = report("Missing the closing '>' character");
    else if (closing + 1 != units.size())
        valid = report("Extraneous characters found after the closing '>' character");
    return valid;
}

// Finds the first wrong bracket of a list; empty when there is none.
std::string_view bracket_problem(std::string_view value) {
    constexpr std::string_view not_enclosed = "VALUE LIST not properly enclosed in braces or parentheses";
    std::string open;
    for (size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        const bool opens = c == '(' || c == '{';
        // The outermost bracket is the first character and closes with the last.
        if (open.empty() && !(opens && i == 0))
            return not_enclosed;
        if (!(marks_of(c) & odl::MARK_BREAK))
            continue;
        if (opens)
            open.push_back(c);
        else if (c == '}' && open.back() == '(')
            return "Bad nesting in VALUE LIST.  Expected a right parenthesis and found a brace instead.";
        else if (c == ')' && open.back() == '{')
            return "Bad nesting in VALUE LIST.  Expected a right brace and found a parenthesis instead.";
        else if (c == ')' || c == '}')
            open.pop_back();
    }
    return open.empty() ? std::string_view() : not_enclosed;
}

}  // namespace

void odl::Nesting::add(std::string_view text) {
    for (const char c : text) {
        if (!(marks_of(c) & MARK_BREAK))
            continue;
        braces += (c == '{') - (c == '}');
        parentheses += (c == '(') - (c == ')');
    }
}

size_t odl::quote_count(std::string_view text) {
    size_t count = 0;
    for (size_t quote = text.find('"'); quote != std::string_view::npos; quote = text.find('"', quote + 1))
        ++count;
    return count;
}

bool odl::check_identifier(std::string_view &text, std::string_view what, const MessagePlace &place) {
    text = without_trailing(text, MARK_CONTROL);
    if (text.empty())
        return place.report(ERROR_IDENTIFIER, std::string(what) + " identifier is missing");
    bool valid = true;
    if (!is_letter(text.front()))
        valid = place.report(ERROR_IDENTIFIER,
                             std::string(what) + " identifier:  " + quoted(text) + "  does not begin with a letter");
    if (all_marked(text, MARK_IDENTIFIER))
        return valid;
    const auto foreign =
        std::count_if(text.begin(), text.end(), [](char c) { return !(marks_of(c) & MARK_IDENTIFIER); });
    return place.report(ERROR_IDENTIFIER,
                        std::string(what) + " identifier:  " + quoted(text) +
                            util_format("  contains %ld embedded non-alphanumeric or \"_\" character%s",
                                        static_cast<long>(foreign), foreign > 1 ? "s" : ""));
}

bool odl::check_element(std::string_view text, const MessagePlace &place, long element_number) {
    if (text.empty())
        return true;
    const Element element{text, place, element_number};
    if (is_plain(text))
        return check_underscores(element);
    bool valid = check_quotes_inside(element);
    if (is_quoted(text)) {
        if (is_closed(text))
            return valid;
        valid = element.report(ERROR_QUOTES,
                               text.front() == '"' ? "Unpaired double quote in " : "Unpaired single quote in ");
    }
    if (text == "N/A" || text == "n/a")
        return valid;
    valid = check_underscores(element) && valid;
    const size_t units = text.find('<');
    const std::string_view value = text.substr(0, units);
    if (value_type(value) == VALUE_UNKNOWN)
        valid = place.report(ERROR_VALUE_TYPE,
                             "Unable to determine the data type of " + element.what() + ": " + quoted(value));
    if (units != std::string_view::npos)
        valid = check_units(element, value, text.substr(units + 1)) && valid;
    return valid;
}

bool odl::check_value_list(std::string_view value, const MessagePlace &place) {
    bool valid = true;
    long number = 0;
    for (std::string_view element = take_element(value); !element.empty(); element = take_element(value))
        valid = check_element(element, place, ++number) && valid;
    return valid;
}

bool odl::check_braces(std::string_view value, const MessagePlace &place) {
    const std::string_view problem = bracket_problem(value);
    return problem.empty() ||
           MessagePlace{place.file_name, place.handle, 0}.report(ERROR_BRACKETS, std::string(problem));
}

bool odl::check_object(bool has_equals, std::string_view &class_name, const MessagePlace &place) {
    if (!has_equals)
        return place.report(ERROR_OBJECT, "Missing equals sign after OBJECT statement");
    class_name = without_trailing_blanks(class_name);
    return check_identifier(class_name, "OBJECT class", place);
}

bool odl::check_end_object(const ObjDesc *current, bool has_equals, std::string_view &class_name,
                           const MessagePlace &place) {
    bool valid = true;
    if (!current || !current->parent)
        valid = place.report(ERROR_END_OBJECT, "Extra END_OBJECT encountered");
    if (!has_equals)
        return valid;
    class_name = without_trailing(without_trailing_blanks(class_name), MARK_CONTROL);
    if (current && !class_name.empty() && class_name != view_of(current->class_name))
        valid = place.report(ERROR_END_OBJECT, "OBJECT and END_OBJECT class identifiers do not match");
    return check_identifier(class_name, "END_OBJECT class", place) && valid;
}

bool odl::KeywordStatement::is_sfdu_header() const {
    return !has_equals && is_sfdu_label(name);
}

bool odl::check_keyword_name(KeywordStatement &statement, const MessagePlace &place) {
    std::string_view &name = statement.name;
    if (statement.has_equals && name.empty())
        return place.report(ERROR_KEYWORD, "KEYWORD identifier is missing");
    bool valid = true;
    if (statement.has_equals)
        name = without_trailing_blanks(name);
    else if (statement.is_sfdu_header())
        return true;
    else
        valid = place.report(ERROR_KEYWORD, "Missing equals sign after KEYWORD identifier:  " + quoted(name));
    const size_t caret = name.starts_with('^') ? 1 : 0;
    std::string_view identifier = name.substr(caret);
    valid = check_identifier(identifier, "KEYWORD", place) && valid;
    name = name.substr(0, caret + identifier.size());
    return valid;
}

bool odl::report_duplicate(std::string_view name, const MessagePlace &place) {
    return place.report(ERROR_KEYWORD, "Duplicate KEYWORD identifier:  " + quoted(name));
}

bool odl::check_keyword_value(const KeywordStatement &statement, const MessagePlace &place) {
    const std::string_view value = statement.value;
    if (value.starts_with('(') || value.starts_with('{'))
        return check_value_list(value, place);
    if (!value.empty())
        return check_element(value, place, 0);
    return statement.is_sfdu_header() ||
           place.report(ERROR_KEYWORD, "KEYWORD identifier:  " + quoted(statement.name) + "  is missing a VALUE");
}

// Control authority (4), version, class, spare (2), description (4), length (8): twenty characters in all.
bool odl::is_sfdu_label(std::string_view line) {
    if (line.starts_with("CCSD"))
        return true;
    if (line.size() < 20)
        return false;
    const auto is_restricted = [](char c) { return is_digit(c) || (c >= 'A' && c <= 'Z'); };
    const auto all = [line](size_t from, size_t count, auto is_allowed) {
        return std::all_of(line.begin() + from, line.begin() + from + count, is_allowed);
    };
    return all(0, 4, is_restricted) && line[4] >= '1' && line[4] <= '3' && line[5] >= 'A' && line[5] <= 'Z' &&
           all(6, 6, is_restricted) && all(12, 8, is_digit);
}

bool OdlIsSfduLabel(const char *line) {
    return line && odl::is_sfdu_label(line);
}
