#include "viewer/model/hierarchy_list.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr uint32_t deepest_indentation = 10;  // levels, the root's is 1
constexpr size_t longest_value = 60;          // characters

constexpr std::array table_insides = {"*COLUMN", "*CONTAINER", "*FIELD", "*ELEMENT"};

struct ClassRule {
    const char *pattern;
    ListedObject choice;
    const char *note;
};
constexpr char no_columns[] =
    "Neither COLUMN nor CONTAINER objects may be selected for display.  "
    "Select the table containing these objects instead";
// The first that matches decides.
constexpr std::array refusals = {
    ClassRule{"*COLUMN", ListedObject::Refused, no_columns},
    ClassRule{"*CONTAINER", ListedObject::Refused, no_columns},
    ClassRule{"*FIELD", ListedObject::Refused,
              "FIELD objects may not be selected for display. Select the spreadsheet containing these objects instead"},
    ClassRule{"*COLLECTION", ListedObject::Refused, "COLLECTION objects are not supported by Lumacart at this time"},
    ClassRule{"*HEADER", ListedObject::Refused, "HEADER objects may not be selected for display."},
};
constexpr std::array displays = {
    ClassRule{"*IMAGE", ListedObject::Opened, nullptr},
    ClassRule{"*QUBE", ListedObject::Opened, nullptr},
    ClassRule{"*SERIES", ListedObject::Opened, nullptr},
    ClassRule{"*SPREADSHEET", ListedObject::Opened, nullptr},
    ClassRule{"*TABLE", ListedObject::TableOrPlot, nullptr},
    ClassRule{"*SPECTRUM", ListedObject::TableOrPlot, nullptr},
    ClassRule{"*PALETTE", ListedObject::TableOrPlot, nullptr},
    ClassRule{"*GAZETTEER", ListedObject::TableOrPlot, nullptr},
    ClassRule{"INDEX", ListedObject::TableOrPlot, nullptr},
};

template <typename Rules>
const ClassRule *find_rule(const Rules &rules, const std::string &class_name) {
    const auto found = std::find_if(rules.begin(), rules.end(), [&](const ClassRule &rule) {
        return OdlWildCardCompare(rule.pattern, class_name.c_str());
    });
    return found == rules.end() ? nullptr : &*found;
}

std::string_view text_of(const char *text) {
    return text ? text : "";
}

bool is_control(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7F;
}

// Line ends and other control characters as blanks.
std::string on_one_line(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        line += is_control(text[i]) ? ' ' : text[i];
    }
    return line;
}

// The byte at which the first `count` UTF-8 characters end.
size_t end_of_characters(std::string_view text, size_t count) {
    size_t end = 0;
    for (; end < text.size(); ++end) {
        const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
        if (begins && count-- == 0)
            break;
    }
    return end;
}

std::string cut_value(const std::string &value) {
    const size_t end = end_of_characters(value, longest_value);
    return end == value.size() ? value : value.substr(0, end) + " ...";
}

std::string name_of(const ObjDesc *object) {
    if (!object->parent)
        return " ";
    const Kwd *name = OdlFindKwd(const_cast<ObjDesc *>(object), "NAME", nullptr, 1, SCOPE_THIS_OBJECT);
    return name ? std::string(util_trim(text_of(name->value), "\"")) : "No NAME KEYWORD";
}

bool is_listed(const ObjDesc *object) {
    return !object->parent || std::none_of(table_insides.begin(), table_insides.end(), [&](const char *pattern) {
        return object->class_name && OdlWildCardCompare(pattern, object->class_name);
    });
}

const ObjDesc *next_listed(const ObjDesc *object) {
    do
        object = OdlTraverseTree(object, 0);
    while (object && !is_listed(object));
    return object;
}

std::string hierarchy_line(const ObjDesc *object, size_t number) {
    // A digit is as wide as two blanks.
    constexpr std::array paddings = {10, 8, 6, 4, 2};
    const std::string digits = std::to_string(number);
    const auto padding = static_cast<size_t>(paddings[std::min(digits.size(), paddings.size()) - 1]);
    const size_t indentation = 2 * size_t{std::min(object->level + 1, deepest_indentation)};
    return digits + std::string(padding + indentation, ' ') + on_one_line(text_of(object->class_name)) + "   " +
           on_one_line(name_of(object));
}

}  // namespace

std::vector<std::string> hierarchy_lines(const ObjDesc *root) {
    std::vector<std::string> lines;
    for (const ObjDesc *object = root; object; object = next_listed(object))
        lines.push_back(hierarchy_line(object, lines.size()));
    return lines;
}

ObjDesc *object_of_line(ObjDesc *root, int64_t line) {
    const ObjDesc *object = root;
    for (; object && line > 0; --line)
        object = next_listed(object);
    return const_cast<ObjDesc *>(object);
}

int64_t line_of_object(const ObjDesc *root, const ObjDesc *object) {
    while (object && !is_listed(object))
        object = object->parent;
    int64_t line = 0;
    for (const ObjDesc *listed = root; listed; listed = next_listed(listed), ++line) {
        if (listed == object)
            return line;
    }
    return 0;
}

std::string class_of_line(const std::string &line) {
    const size_t number_end = line.find(' ');
    const size_t start = line.find_first_not_of(' ', number_end);
    return start == std::string::npos ? std::string() : line.substr(start, line.find(' ', start) - start);
}

ListedObject listed_object(const std::string &class_name, bool unattended, const char **note) {
    *note = nullptr;
    if (const ClassRule *refusal = find_rule(refusals, class_name)) {
        *note = refusal->note;
        return refusal->choice;
    }
    if (unattended)
        return ListedObject::Opened;
    const ClassRule *display = find_rule(displays, class_name);
    return display ? display->choice : ListedObject::Ignored;
}

std::vector<std::string> keyword_lines(const ObjDesc *object) {
    std::vector<std::string> lines = {"OBJECT = " + on_one_line(text_of(object->class_name))};
    for (const Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling)
        lines.push_back("   " + on_one_line(text_of(keyword->name)) + " = " +
                        cut_value(on_one_line(text_of(keyword->value))));
    return lines;
}
