#include "viewer/model/line_end_marks.h"

namespace {

constexpr size_t mark_length = 4;

// Whether a mark starts the text; `meant` is the character that it stands for.
bool starts_with_mark(std::string_view text, char *meant) {
    if (text.size() < mark_length)
        return false;
    const std::string_view mark = text.substr(0, mark_length);
    if (mark == "<LF>")
        *meant = '\n';
    else if (mark == "<CR>")
        *meant = '\r';
    else if (mark.starts_with("<?") && mark.ends_with('>'))
        *meant = mark[2];
    else
        return false;
    return true;
}

}  // namespace

std::string add_line_end_marks(std::string_view text) {
    std::string marked;
    marked.reserve(text.size() + 2 * mark_length);
    char meant = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\r')
            marked += "<CR>";
        else if (text[at] == '\n')
            marked += "<LF>";
        else if (text[at] == '<' && starts_with_mark(text.substr(at), &meant))
            marked += "<?<>";
        else
            marked += text[at];
    }
    return marked;
}

std::string remove_line_end_marks(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        char meant = text[at];
        at += text[at] == '<' && starts_with_mark(text.substr(at), &meant) ? mark_length : 1;
        plain += meant;
    }
    return plain;
}
