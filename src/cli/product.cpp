#include "cli/product.h"

#include "base/file.h"
#include "base/notice.h"
#include "base/text.h"
#include "cli/commands.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

namespace {

constexpr size_t head_size = 10000;  // a label begins at the start of its file

std::set<std::string> notices;

std::string head_of(FILE *file) {
    std::string head(head_size, '\0');
    head.resize(fread(head.data(), 1, head.size(), file));
    return head;
}

// Files of some image formats describe themselves.
bool has_image_signature(std::string_view head) {
    using namespace std::string_view_literals;
    for (const std::string_view signature :
         {"GIF87a"sv, "GIF89a"sv, "\0\0\0\x0cjP  \r\n\x87\n"sv, "\xff\x4f\xff\x51"sv}) {
        if (head.substr(0, signature.size()) == signature)
            return true;
    }
    return false;
}

bool holds_label(std::string_view head) {
    return has_image_signature(head) || util_contains(head, "RECORD_TYPE") ||
           (util_contains(head, "OBJECT") && util_contains(head, "="));
}

}  // namespace

std::string find_label_file(const std::string &file) {
    const FilePtr chosen = util_open_regular(file.c_str());
    if (!chosen) {
        fail(file + ": " + strerror(errno));
        return "";
    }
    if (holds_label(head_of(chosen.get())))
        return file;
    for (const char *extension : {"lbl", "LBL"}) {
        const std::string beside = std::filesystem::path(file).replace_extension(extension).string();
        const FilePtr label = util_open_regular(beside.c_str());
        if (label && holds_label(head_of(label.get()))) {
            fprintf(stderr, "lumacart-cli: %s has no label of its own; using %s\n", file.c_str(), beside.c_str());
            return beside;
        }
    }
    fail(file + ": there is no label in the file nor beside it");
    return "";
}

void show_notices() {
    util_set_notice_hook([](NoticeKind, const std::string &text) {
        if (notices.insert(text).second)
            fprintf(stderr, "lumacart-cli: %s\n", text.c_str());
    });
}

bool had_notices() {
    return !notices.empty();
}
