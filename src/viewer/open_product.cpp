#include "viewer/open_product.h"

#include "base/file.h"
#include "base/text.h"
#include "viewer/allocate.h"
#include "viewer/session.h"
#include "viewer/text_window.h"
#include "viewer/unattended.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::span<const ProductOpener> openers;

// Moves a keyword from where it stands to just after the root's first keyword.
void lift_keyword(Kwd *keyword, ObjDesc *root) {
    OdlCutKwd(keyword);
    if (root->first_keyword)
        OdlPasteKwdAfter(keyword, root->first_keyword);
    else
        OdlPasteKwd(keyword, root);
}

void lift_record_bytes(ObjDesc *root, ObjDesc *file_object) {
    if (OdlFindKwd(root, "RECORD_BYTES", nullptr, 1, SCOPE_THIS_OBJECT))
        return;
    if (Kwd *own = OdlFindKwd(file_object, "RECORD_BYTES", nullptr, 1, SCOPE_THIS_OBJECT)) {
        lift_keyword(own, root);
    } else if (const Kwd *row = OdlFindKwd(root, "ROW_BYTES", nullptr, 1, SCOPE_TO_END)) {
        Kwd *made = OdlNewKwd("RECORD_BYTES", row->value, nullptr, nullptr, row->file_name, row->line_number);
        lift_keyword(made, root);
    }
}

// Chooses the file by dialog, from the directory of the last one; the name of an existing file.
bool ask_for_file(const std::string &caller_name, FileSpec *chosen) {
    FileRequest request;
    request.prompt = "Open";
    switch (gui_open_file(request, chosen)) {
        case FileAnswer::Cancel:
            return false;
        case FileAnswer::Bad:
            gui_error(util_format("%s - bad file name, missing directory, or missing disk.", caller_name.c_str()));
            return false;
        case FileAnswer::Ok:
            return true;
    }
    return false;
}

// Splits the waiting file name at its last separator. A backslash is one too, as in names typed on other systems,
// unless a file of the name as it stands exists.
FileSpec take_cmdline_file() {
    std::string path = std::move(session().cmdline_fname);
    session().cmdline_fname.clear();
    struct stat status;
    const char *separators = stat(path.c_str(), &status) == 0 ? "/" : "/\\";
    const size_t separator = path.find_last_of(separators);
    if (separator == std::string::npos)
        return {session().working_directory, path};
    return {separator == 0 ? "/" : path.substr(0, separator), path.substr(separator + 1)};
}

bool is_directory(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool parse_label(const std::string &caller_name, GenericState *state) {
    LabelState &label = *state->label_state;
    const std::string path = path_in(state->directory, label.file_name);
    if (!util_open_regular(path.c_str())) {
        gui_error(util_format("Unable to open the label file to parse: %s", path.c_str()));
        return false;
    }
    const BusyCursor busy;
    error_string.clear();
    label.root.reset(OaParseLabelFile(path.c_str(), nullptr, ODL_EXPAND_STRUCTURE | ODL_EXPAND_CATALOG, 1));
    if (!label.root) {
        const std::string reason = error_string.empty() ? "" : "\n" + error_string;
        gui_error(util_format("%s - unable to parse label file: %s", caller_name.c_str(), path.c_str()) + reason);
        return false;
    }
    if (OaIsOlderLabel(label.root.get()) && OaConvertOlderLabel(label.root.get()) != 0) {
        gui_error(util_format("%s -- conversion of label failed\n%s", caller_name.c_str(), error_string.c_str()));
        return false;
    }
    remove_file_object(label.root.get());
    return true;
}

bool may_open_as_text(const std::string &file_name) {
    if (session().unattended)
        return true;
    switch (gui_question(util_format("Label/Object not found.\nFile %s will be opened as text", file_name.c_str()),
                         {"OK", "Cancel"})) {
        case 0:
            return true;
        case 1:
            return false;
        default:
            gui_error("Open Text Dialog - invalid command");
            return false;
    }
}

bool fits(const ProductOpener &opener, const ObjDesc *object) {
    return object && object->class_name && OdlWildCardCompare(opener.class_pattern, object->class_name) &&
           (!opener.condition || opener.condition(object));
}

const ProductOpener *choose_opener(LabelState *label) {
    for (const ProductOpener &opener : openers) {
        for (ObjDesc *object = label->root.get(); object; object = OdlTraverseTree(object, 0)) {
            if (fits(opener, object)) {
                label->current_object = object;
                return &opener;
            }
        }
    }
    return nullptr;
}

}  // namespace

void set_product_openers(std::span<const ProductOpener> rows) {
    openers = rows;
}

std::span<const ProductOpener> product_openers() {
    return openers;
}

std::string path_in(const std::string &directory, const std::string &name) {
    return name.starts_with('/') || directory.empty() ? name : directory + "/" + name;
}

const ProductOpener *find_opener(const LabelState &label) {
    for (const ProductOpener &opener : openers) {
        if (fits(opener, label.current_object))
            return &opener;
    }
    return nullptr;
}

bool setup_open_object_1(const std::string &caller_name, std::string *directory, std::string *file_name) {
    FileSpec chosen;
    const bool asked = session().cmdline_fname.empty();
    if (asked && !ask_for_file(caller_name, &chosen))
        return false;
    if (!asked) {
        chosen = take_cmdline_file();
        if (!is_directory(chosen.directory)) {
            gui_error(
                util_format("old parser: %s  could not convert string to a directory path", chosen.directory.c_str()));
            return false;
        }
    }
    if (chdir(chosen.directory.c_str()) != 0) {
        gui_error(util_format("%s - unable to set directory", caller_name.c_str()));
        return false;
    }
    char *resolved = getcwd(nullptr, 0);
    if (!resolved) {
        gui_error("Open Object - unable to find current directory");
        return false;
    }
    *directory = resolved;
    free(resolved);
    *file_name = chosen.name;
    if (!util_open_regular(path_in(*directory, *file_name).c_str())) {
        gui_error(util_format("Cannot open file: %s/%s\n%s", directory->c_str(), file_name->c_str(),
                              errno == EINVAL ? "Not a regular file" : strerror(errno)));
        return false;
    }
    return true;
}

bool reopen_label(const GenericState &from, GenericState *to) {
    to->directory = from.directory;
    to->browser_tag = from.browser_tag;
    to->label_state = std::make_unique<LabelState>();
    to->label_state->file_name = from.label_state->file_name;
    to->label_state->label_from_another_file = from.label_state->label_from_another_file;
    // The same label gives the same tree: the object keeps its place in it. The place is looked up first, for `from`
    // may go while parsing shows a message.
    int64_t place = 0;
    for (const ObjDesc *object = from.label_state->root.get(); object && object != from.label_state->current_object;
         object = OdlTraverseTree(object, 0))
        ++place;
    if (!parse_label("open_object", to))
        return false;
    ObjDesc *twin = to->label_state->root.get();
    for (; twin && place > 0; --place)
        twin = OdlTraverseTree(twin, 0);
    to->label_state->current_object = twin;
    if (!twin)
        gui_error("Open Object - no valid object");
    return twin != nullptr;
}

bool setup_open_object_2(const std::string &caller_name, std::unique_ptr<GenericState> *state,
                         const std::string &file_name) {
    LabelState &label = *(*state)->label_state;
    label.file_name = file_name;
    session().cmdline_fname.clear();

    std::string reason;
    const LabelCheck check = validate_label((*state)->directory, &label, &reason);
    label.label_from_another_file = check == LabelCheck::AnotherFile || check == LabelCheck::AnotherFileUnasked;
    switch (check) {
        case LabelCheck::Unreadable:
            tell_error("KRV label or ASCII file required.\n" + reason);
            return false;
        case LabelCheck::NoLabel:
        case LabelCheck::TextOnly:
            label.text_only = check == LabelCheck::TextOnly;
            if (may_open_as_text(label.file_name))
                open_text(std::move(*state));
            return false;
        case LabelCheck::AnotherFile:
        case LabelCheck::AnotherFileUnasked:
        case LabelCheck::Attached:
            break;
    }
    return parse_label(caller_name, state->get());
}

ObjDesc *remove_file_object(ObjDesc *root) {
    ObjDesc *file_object = OdlFindObjDesc(root, "FILE", nullptr, nullptr, 1, SCOPE_TO_END);
    if (!file_object)
        return root;
    lift_record_bytes(root, file_object);
    for (const char *name : {"INTERCHANGE_FORMAT", "RECORD_TYPE", "FILE_RECORDS", "FILE_NAME"}) {
        if (Kwd *keyword = OdlFindKwd(root, name, nullptr, 1, SCOPE_TO_END))
            lift_keyword(keyword, root);
    }
    return root;
}

std::unique_ptr<GenericState> new_product_state(int browser_number) {
    auto state = new_or_null<GenericState>();
    if (!state) {
        fatal_out_of_memory("Open Object - allocating generic state");
        return nullptr;
    }
    state->label_state = new_or_null<LabelState>();
    if (!state->label_state) {
        fatal_out_of_memory("Open Object - unable to allocate label state");
        return nullptr;
    }
    if (browser_number > 0)
        state->browser_tag = util_format(" Browser Number %d", browser_number);
    return state;
}

void open_object(int browser_number) {
    const BusyCursor busy;
    restore_profile();
    std::unique_ptr<GenericState> state = new_product_state(browser_number);
    std::string file_name;
    if (!state || !setup_open_object_1("open_object", &state->directory, &file_name) ||
        !setup_open_object_2("open_object", &state, file_name))
        return;
    if (const ProductOpener *opener = choose_opener(state->label_state.get()))
        opener->open(std::move(state));
    else
        tell_error("Open Object - no valid object\n\nOnly FILE, IMAGE, and TABLE objects are supported at this time");
}

void open_file(const std::string &path) {
    session().cmdline_fname = path;
    open_object(0);
}

void open_files(const std::vector<std::string> &paths) {
    for (const std::string &path : paths) {
        if (!gui_task_window())
            return;  // the application ended while a question was shown
        open_file(path);
    }
}
