// Labels as tests see them: trees as indented text, messages as text.
#pragma once

#include "odl/odl.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

struct TreeDeleter {
    void operator()(ObjDesc *root) const { OdlFreeTree(root); }
};
using TreePtr = std::unique_ptr<ObjDesc, TreeDeleter>;

// One line per object and keyword, indented by level, in the order of the label:
//   TABLE @3
//     ROWS = 5 @4
// "@" tells the line; comments follow as "pre{...} line{...} post{...} end{...}", a null text is "(null)".
inline std::string outline(const ObjDesc *root) {
    const auto shown = [](const char *text) { return text ? std::string(text) : "(null)"; };
    const auto comment = [](const char *kind, const char *text) {
        return text ? std::string(" ") + kind + "{" + text + "}" : "";
    };
    std::string text;
    for (const ObjDesc *object = root; object; object = OdlTraverseTree(object, root->level)) {
        const std::string indent(2 * size_t{object->level}, ' ');
        text += indent + (object->is_a_group ? "group " : "") + shown(object->class_name) + " @" +
                std::to_string(object->line_number) + comment("pre", object->pre_comment) +
                comment("line", object->line_comment) + comment("post", object->post_comment) +
                comment("end", object->end_comment) + "\n";
        for (const Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling)
            text += indent + "  " + shown(keyword->name) + " = " + shown(keyword->value) + " @" +
                    std::to_string(keyword->line_number) + comment("pre", keyword->pre_comment) +
                    comment("line", keyword->line_comment) + "\n";
    }
    return text;
}

// What `write` prints on the stream that it is given.
inline std::string printed(const std::function<void(FILE *)> &write) {
    char *bytes = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&bytes, &size);
    write(stream);
    fclose(stream);
    std::string text(bytes, size);
    free(bytes);
    return text;
}

struct ParsedLabel {
    TreePtr root;
    std::string messages;  // without the banner

    std::string outline() const { return ::outline(root.get()); }
};

// Parses a text in memory that stands in a label file of the name "test.lbl".
inline ParsedLabel parse_text(const std::string &text) {
    ParsedLabel label;
    label.messages = printed([&](FILE *stream) {
        label.root.reset(OdlParseFile("test.lbl", nullptr, text.c_str(), nullptr, stream, 0, 1, 1, 0));
    });
    label.messages.erase(0, label.messages.find("-\n\n") + 3);
    return label;
}
