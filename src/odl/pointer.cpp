// From a pointer keyword to an open file: the name in its value, the file on disk, the place in it.
#include "base/file.h"
#include "base/memory.h"
#include "base/text.h"
#include "odl/characters.h"
#include "odl/odl.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using odl::view_of;

bool is_quote(char c) {
    return c == '"' || c == '\'';
}

// --- The value of a pointer ---------------------------------------------------------------------------------------

// A pointer's value split at its units, with blanks for the brackets and commas outside of quotes.
struct PointerText {
    std::string location;
    std::string units;  // from the "<" on
};

PointerText split_value(std::string_view value) {
    PointerText parts;
    char quote = '\0';
    for (size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (quote) {
            quote = c == quote ? '\0' : quote;
        } else if (is_quote(c)) {
            quote = c;
        } else if (c == '<') {
            parts.units = value.substr(i);
            break;
        }
        const bool is_separator = !quote && (odl::marks_of(c) & odl::MARK_BREAK);
        parts.location.push_back(is_separator ? ' ' : c);
    }
    return parts;
}

// A decimal integer, the nearest 64-bit one where it is larger; none when the word is anything else.
std::optional<int64_t> integer_of(std::string_view word) {
    if (word.starts_with('+'))
        word.remove_prefix(1);
    int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (end != word.data() + word.size() || error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return word.starts_with('-') ? INT64_MIN : INT64_MAX;
    return number;
}

// The text between the quotes that begin `text`; moves `text` behind them.
std::string take_quoted(std::string_view &text) {
    const char quote = text.front();
    const size_t end = std::min(text.find(quote, 1), text.size());
    std::string name(text.substr(1, end - 1));
    text.remove_prefix(std::min(end + 1, text.size()));
    std::replace_if(name.begin(), name.end(), is_quote, ' ');
    name.resize(odl::without_trailing_blanks(name).size());
    return name;
}

// --- Finding a file -----------------------------------------------------------------------------------------------

// How many folders above the label are looked through for its LABEL or CATALOG folder.
constexpr int most_levels_up = 5;

bool opens(const std::string &path) {
    return util_open_regular(path.c_str()) != nullptr;
}

std::string with_separator(std::string directory) {
    if (!directory.empty() && !directory.ends_with(pathSep))
        directory += pathSep;
    return directory;
}

std::string_view file_part(std::string_view path) {
    const size_t separator = path.rfind(*pathSep);
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

// Up to and including the last separator; empty when there is none.
std::string_view directory_part(std::string_view path) {
    return path.substr(0, path.size() - file_part(path).size());
}

// The folder above, with its separator; empty when the path does not tell one.
std::string_view parent_of(std::string_view path) {
    while (path.ends_with(pathSep))
        path.remove_suffix(1);
    return directory_part(path);
}

// The path under which the file opens, or empty.
std::string path_that_opens(const std::string &directory, std::string_view file_name) {
    const std::string written = with_separator(directory) + std::string(file_name);
    const std::string in_lower_case = std::string(directory_part(written)) + util_lower(file_part(written));
    const std::string version = util_contains(file_name, ";1") ? "" : ";1";
    for (const std::string &path : {written, in_lower_case, written + version, in_lower_case + version}) {
        if (opens(path))
            return path;
    }
    return {};
}

// Tries the folders in turn.
std::string first_that_opens(const std::vector<std::string> &directories, std::string_view file_name) {
    for (const std::string &directory : directories) {
        std::string path = path_that_opens(directory, file_name);
        if (!path.empty())
            return path;
    }
    return {};
}

void add_folders_above(std::vector<std::string> &directories, std::string_view label_directory,
                       const std::string &folder) {
    std::string_view parent = parent_of(label_directory);
    for (int level = 0; level < most_levels_up && !parent.empty(); ++level) {
        directories.push_back(std::string(parent) + folder);
        parent = parent_of(parent);
    }
}

// Where a file that a label names may be, in order of trial; "" is the name as it stands.
std::vector<std::string> directories_to_try(std::string_view label_file_name, const char *keyword_name) {
    const std::string label_directory(directory_part(label_file_name));
    std::vector<std::string> directories = {"", label_directory};
    if (!keyword_name)
        return directories;
    const std::string folder = util_contains(keyword_name, "STRUCTURE") ? "LABEL" : "CATALOG";
    add_folders_above(directories, label_directory, folder);
    // Last resorts: volumes copied in lower case, labels beside the folder, labels named relative to where we work.
    add_folders_above(directories, label_directory, util_lower(folder));
    directories.push_back(label_directory + folder);
    directories.push_back(label_directory + util_lower(folder));
    std::error_code failure;
    const std::string absolute = std::filesystem::absolute(label_file_name, failure).lexically_normal().string();
    if (!failure && absolute != label_file_name) {
        add_folders_above(directories, directory_part(absolute), folder);
        add_folders_above(directories, directory_part(absolute), util_lower(folder));
    }
    return directories;
}

// --- Positioning --------------------------------------------------------------------------------------------------

bool skip_lines(FILE *file, int64_t count) {
    if (count > util_file_size(file))  // each has a byte at least
        return false;
    char line[30000];
    for (; count > 0; --count) {
        if (!fgets(line, sizeof line, file))
            return false;
    }
    return true;
}

}  // namespace

char *OdlGetFileName(const Kwd *keyword, int64_t *start_location, int *location_type) {
    if (!keyword || !keyword->value) {
        odl_errno = 1;
        return nullptr;
    }
    const PointerText parts = split_value(keyword->value);
    *location_type = parts.units.starts_with("<BYTE") ? ODL_BYTE_LOCATION : ODL_RECORD_LOCATION;
    std::string_view rest = parts.location;
    rest.remove_prefix(odl::first_word_position(rest));
    const std::string_view word = odl::first_word(rest);
    if (const std::optional<int64_t> number = integer_of(word)) {
        *start_location = *number;
        return keyword->file_name ? OaCopyText(keyword->file_name) : nullptr;
    }
    std::string name;
    if (!rest.empty() && is_quote(rest.front())) {
        name = take_quoted(rest);
    } else {
        name = word;
        rest.remove_prefix(word.size());
    }
    *start_location = integer_of(odl::first_word(rest)).value_or(1);
    return OaCopyText(name);
}

char *OdlCheckFileSpec(const char *directory, const char *file_name) {
    if (!file_name) {
        odl_errno = 1;
        return nullptr;
    }
    const std::string path = path_that_opens(directory ? directory : "", file_name);
    return path.empty() ? nullptr : OaCopyText(path);
}

char *OdlGetFileSpec(const char *file_name, const char *label_file_name, const char *keyword_name) {
    if (!file_name) {
        odl_errno = 1;
        return nullptr;
    }
    const std::string path = first_that_opens(directories_to_try(view_of(label_file_name), keyword_name), file_name);
    if (path.empty())
        odl_errno = 200;
    return path.empty() ? nullptr : OaCopyText(path);
}

FILE *OdlLocateStart(const char *path, int64_t start_location, int location_type) {
    FilePtr file = path ? util_open_regular(path) : nullptr;
    bool located = file != nullptr;
    if (located && start_location >= 2) {
        // Byte n is sought as offset n: labels that include a part of another file count its bytes from 0.
        located = location_type == ODL_BYTE_LOCATION ? fseeko(file.get(), start_location, SEEK_SET) == 0
                                                     : skip_lines(file.get(), start_location - 1);
    }
    if (!located)
        odl_errno = 200;
    return located ? file.release() : nullptr;
}

const char *OdlExtractFilename(const char *path) {
    return path ? file_part(path).data() : nullptr;
}

char *OdlGetParentDir(const char *path) {
    const std::string_view parent = parent_of(view_of(path));
    return parent.empty() ? nullptr : OaCopyText(parent);
}
