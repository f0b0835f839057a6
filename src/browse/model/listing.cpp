#include "browse/model/listing.h"

#include "base/text.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr char scratch_name[] = "lumacart.jnk";
constexpr std::string_view plain_bytes = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_-.";
constexpr std::string_view wildcard_bytes = "*?[]";

bool is_plain(std::string_view text) {
    return text.find_first_not_of(plain_bytes) == std::string_view::npos;
}

// Nothing but a quote itself ends what the shell takes between quotes.
std::string quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string pattern_for_shell(const std::string &names) {
    const bool is_harmless =
        names.find_first_not_of(std::string(plain_bytes) + std::string(wildcard_bytes)) == std::string::npos;
    return is_harmless ? "\"" + names + "\"" : quoted(names);
}

// A name that begins with a sign would be an option or an expression of find.
std::string directory_for_find(const std::string &directory) {
    const bool may_mean_more = directory[0] == '-' || !is_plain(directory.substr(0, 1));
    return may_mean_more ? "./" + directory : directory;
}

struct LineBuffer {
    ~LineBuffer() { free(bytes); }

    // The next line without its line feed; false at the end.
    bool read(FILE *file, std::string *line) {
        const ssize_t length = getline(&bytes, &room, file);
        if (length <= 0)
            return false;
        const bool is_ended = bytes[length - 1] == '\n';
        line->assign(bytes, static_cast<size_t>(length) - (is_ended ? 1 : 0));
        return true;
    }

    char *bytes = nullptr;
    size_t room = 0;
};

FilePtr open_own(const std::string &path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return nullptr;
    struct stat status;
    const bool is_own = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
                        status.st_nlink == 1;
    FilePtr file(is_own ? fdopen(descriptor, "rb") : nullptr);
    if (!file)
        close(descriptor);
    return file;
}

}  // namespace

ListingCommand listing_command(const std::string &pattern) {
    const size_t slash = pattern.rfind('/');
    const std::string names = pattern_for_shell(slash == std::string::npos ? pattern : pattern.substr(slash + 1));
    std::string directory = ".";
    if (slash == 0)
        directory = "/";
    else if (slash != std::string::npos)
        directory = directory_for_find(pattern.substr(0, slash));
    const std::string word = is_plain(directory) ? directory : quoted(directory);
    return {"find " + word + " -name " + names + " -print > " + scratch_name,
            directory.ends_with('/') ? directory : directory + "/"};
}

ScratchList::ScratchList(const std::string &directory)
    : path_(directory + (directory.ends_with('/') ? "" : "/") + scratch_name) {}

bool ScratchList::remove() const {
    return unlink(path_.c_str()) == 0 || errno == ENOENT;
}

bool ScratchList::take() {
    if (taken_)
        return true;
    taken_ = open_own(path_);
    return taken_ && remove();
}

// A name with a line feed stands in several lines, of which those behind the first do not begin with the prefix. The
// prefix itself may hold line feeds.
bool ScratchList::read(const std::string &prefix, StringList *files) {
    if (!take())
        return false;
    LineBuffer lines;
    std::string line, path, whole;
    while (lines.read(taken_.get(), &path)) {
        while (path.size() < prefix.size() && prefix.starts_with(path + '\n') && lines.read(taken_.get(), &line))
            path += '\n' + line;
        const bool begins = path.starts_with(prefix);
        if (begins && !whole.empty())
            util_append_string_list(files, std::move(whole));
        whole = begins ? std::move(path) : std::string();
    }
    if (!whole.empty())
        util_append_string_list(files, std::move(whole));
    return true;
}
