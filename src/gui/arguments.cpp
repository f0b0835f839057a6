#include "gui/arguments.h"

#include <algorithm>
#include <iterator>

namespace {

// Options of QApplication that are followed by a value, and those that are not.
constexpr std::string_view VALUED_OPTIONS[] = {
    "display",       "geometry",        "icon",         "name",          "platform",   "platformpluginpath",
    "platformtheme", "plugin",          "session",      "style",         "stylesheet", "qwindowicon",
    "qwindowtitle",  "qwindowgeometry", "qwindow-icon", "qwindow-title",
};
constexpr std::string_view PLAIN_OPTIONS[] = {"reverse", "dograb", "nograb"};

template <size_t N>
bool contains(const std::string_view (&names)[N], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// The name of an argument spelt "-name" or "--name"; empty for any other.
std::string_view option_name(std::string_view argument) {
    const size_t dashes = argument.substr(0, 2) == "--" ? 2 : argument.substr(0, 1) == "-" ? 1 : 0;
    return dashes == 0 ? std::string_view() : argument.substr(dashes);
}

}  // namespace

std::string_view Arguments::toolkit_value(std::string_view option) const {
    for (size_t i = 1; i + 1 < toolkit.size(); ++i) {
        const std::string_view name = option_name(toolkit[i]);
        if (name == option)
            return toolkit[i + 1] ? toolkit[i + 1] : std::string_view();
        if (name.size() > option.size() && name.substr(0, option.size()) == option && name[option.size()] == '=')
            return name.substr(option.size() + 1);
    }
    return {};
}

Arguments split_arguments(int argc, char **argv) {
    Arguments arguments;
    arguments.toolkit.push_back(argv[0]);
    arguments.program.push_back(argv[0]);
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = option_name(argv[i]);
        const size_t equals = name.find('=');
        if (contains(VALUED_OPTIONS, name)) {
            arguments.toolkit.push_back(argv[i]);
            if (i + 1 < argc)
                arguments.toolkit.push_back(argv[++i]);
        } else if (contains(PLAIN_OPTIONS, name) ||
                   (equals != name.npos && contains(VALUED_OPTIONS, name.substr(0, equals)))) {
            arguments.toolkit.push_back(argv[i]);
        } else {
            arguments.program.push_back(argv[i]);
        }
    }
    arguments.toolkit.push_back(nullptr);
    arguments.program.push_back(nullptr);
    return arguments;
}
