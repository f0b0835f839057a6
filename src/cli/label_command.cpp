#include "base/file.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/product.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

// Gathers the parser's messages, which it appends to a file by name: standard error may be something that has no name.
class MessageFile {
  public:
    MessageFile() {
        std::error_code missing;
        std::string path = (std::filesystem::temp_directory_path(missing) / "lumacart-XXXXXX").string();
        const int descriptor = missing ? -1 : mkstemp(path.data());
        if (descriptor < 0)
            return;
        close(descriptor);
        path_ = path;
    }
    ~MessageFile() { remove(); }
    MessageFile(const MessageFile &) = delete;
    MessageFile &operator=(const MessageFile &) = delete;

    const char *path() const { return path_.empty() ? nullptr : path_.c_str(); }

    // Copies the messages to standard error; false when there are none. The parser heads each file with a banner, a
    // name between two rules, of which the name is kept where messages follow.
    bool show() {
        const std::string rule(74, '-');
        std::ifstream file(path_);
        remove();  // first, for a reader of our output that goes away ends us
        std::string banner;
        bool is_banner = false;
        bool any = false;
        for (std::string line; std::getline(file, line);) {
            if (line == rule) {
                is_banner = !is_banner;
                if (is_banner)
                    banner.clear();
            } else if (is_banner) {
                banner += line + "\n";
            } else if (!line.empty()) {
                fprintf(stderr, "%s%s\n", banner.c_str(), line.c_str());
                banner.clear();
                any = true;
            }
        }
        return any;
    }

  private:
    void remove() {
        if (!path_.empty())
            unlink(path_.c_str());
        path_.clear();
    }

    std::string path_;
};

}  // namespace

int run_label(std::span<char *const> arguments) {
    std::string file;
    const std::string mistake = take_arguments(arguments, {}, &file);
    if (!mistake.empty())
        return fail(mistake);
    const std::string label = find_label_file(file);
    if (label.empty())
        return exit_failed;

    MessageFile messages;
    if (!messages.path())
        return fail("no temporary file can be made for messages");
    show_notices();
    const OdlTree root = read_label(label, messages.path());
    const bool has_messages = messages.show();
    if (!root)
        return exit_failed;
    OdlPrintHierarchy(root.get(), nullptr, stdout);
    return has_messages || had_notices() ? exit_with_messages : exit_done;
}
