#include "browse/model/browse_state.h"

#include "base/text.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr int milliseconds_a_second = 1000;
constexpr size_t most_skipped_extensions = 999;  // characters
constexpr std::array web_extensions = {".HTM", ".HTML", ".XML", ".SHTML", ".SHTM", ".STM", ".ASP", ".CSS", ".HTT"};

// From the first point of the whole path on, a point in a directory's name too; empty when there is none.
std::string_view extension_of(std::string_view path) {
    const size_t point = path.find('.');
    return point == std::string_view::npos ? std::string_view() : path.substr(point);
}

void skip_extension(BrowseState *state, std::string_view extension) {
    if (state->skipped_extensions.size() + extension.size() <= most_skipped_extensions)
        state->skipped_extensions += extension;
}

bool is_regular(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The directory is in capitals and the path is not made so.
bool lies_in_skipped_directory(std::string_view file, const std::string &directory) {
    return util_contains(file, directory) &&
           file.substr(directory.size()).find_first_of("/\\") == std::string_view::npos;
}

}  // namespace

BrowseSettings &browse_settings() {
    static BrowseSettings the_settings;
    return the_settings;
}

int browse_milliseconds(const std::string &seconds) {
    const long number = strtol(seconds.c_str(), nullptr, 10);
    int milliseconds = 0;
    if (__builtin_mul_overflow(number, milliseconds_a_second, &milliseconds))
        return number < 0 ? INT_MIN : INT_MAX;
    return milliseconds;
}

std::string clean_name(const std::string &path) {
    return util_compress_char(util_clean_up_string(path), ' ');
}

bool browse_check_priority_ext(const std::string &file, BrowseState *state) {
    if (state->exclusive_extension.empty())
        return browse_this_file(file, state);
    const std::string_view extension = extension_of(file);
    return !extension.empty() && extension.substr(1) == state->exclusive_extension;
}

bool browse_this_file(const std::string &file, BrowseState *state) {
    if (browse_settings().timed_browse_go && util_contains(file, "\\SOFTWARE"))
        return false;
    if (!state->skipped_directory.empty() && lies_in_skipped_directory(file, state->skipped_directory))
        return false;
    state->skipped_directory.clear();
    const std::string_view extension = extension_of(file);
    return extension.empty() || !util_contains(state->skipped_extensions, extension);
}

void skip_extension_of_current(BrowseState *state) {
    skip_extension(state, extension_of(state->current_file));
}

void skip_directory_of_current(BrowseState *state) {
    const size_t separator = state->current_file.find_last_of("/\\");
    const size_t length = separator == std::string::npos ? 0 : separator + 1;
    state->skipped_directory = util_upper(std::string_view(state->current_file).substr(0, length));
}

void skip_web_pages(BrowseState *state) {
    for (const char *extension : web_extensions)
        skip_extension(state, extension);
}

// Only what the rules accept is looked at on the disk, which may be far. What is no file changes nothing.
bool advance_to_next_file(BrowseState *state) {
    StringListEntry *next = state->cursor ? state->cursor->next : state->files.head;
    for (; next; next = next->next) {
        state->cursor = next;
        std::string name = clean_name(next->text);
        std::string skipped_directory = state->skipped_directory;
        if (!browse_check_priority_ext(name, state))
            continue;
        if (is_regular(next->text)) {
            state->current_file = std::move(name);
            return true;
        }
        state->skipped_directory = std::move(skipped_directory);
    }
    return false;
}
