#include "viewer/open_product.h"

#include "base/file.h"
#include "base/text.h"
#include "viewer/session.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t probe_size = 10000;  // bytes of a file in which its label is looked for

std::span<const ProductOpener> openers;

std::string in_directory(const std::string &directory, const std::string &name) {
    return name.starts_with('/') ? name : directory + "/" + name;
}

// The first bytes of a regular file; false when it does not open.
bool read_probe(const std::string &path, std::string *bytes) {
    const FilePtr file = util_open_regular(path.c_str());
    if (!file)
        return false;
    bytes->resize(probe_size);
    bytes->resize(fread(bytes->data(), 1, probe_size, file.get()));
    return true;
}

// Files that carry their own description: GIF, JPEG 2000 file format, JPEG 2000 codestream.
bool describes_itself(std::string_view bytes) {
    using namespace std::string_view_literals;
    constexpr std::array signatures = {"GIF87a"sv, "GIF89a"sv, "\0\0\0\x0CjP  \r\n\x87\n"sv, "\xFF\x4F\xFF\x51"sv};
    for (const std::string_view signature : signatures) {
        if (bytes.starts_with(signature))
            return true;
    }
    return false;
}

// The label beside a file: its name with the three-letter extension "lbl" or "LBL". Empty when there is none.
std::string label_beside(const std::string &directory, const std::string &name) {
    constexpr size_t extension = 3;
    if (name.size() <= extension || name[name.size() - extension - 1] != '.')
        return {};
    for (const char *other : {"lbl", "LBL"}) {
        std::string label = name.substr(0, name.size() - extension) + other;
        if (label != name && util_open_regular(in_directory(directory, label).c_str()))
            return label;
    }
    return {};
}

LabelCheck offer_label_beside(const std::string &directory, LabelState *state) {
    const std::string label = label_beside(directory, state->file_name);
    std::string bytes;
    if (label.empty() || !read_probe(in_directory(directory, label), &bytes) || !util_contains(bytes, "RECORD_TYPE"))
        return LabelCheck::NoLabel;
    if (session().unattended) {
        state->file_name = label;
        return LabelCheck::AnotherFileUnasked;
    }
    const std::string question =
        util_format("Label not found in file \"%s\"\nLabel file \"%s\" found\nWould you like to use this file instead?",
                    state->file_name.c_str(), label.c_str());
    switch (gui_question(question, {"Yes", "No"})) {
        case 0:
            state->file_name = label;
            return LabelCheck::AnotherFile;
        case 1:
            return LabelCheck::NoLabel;
        default:
            gui_error("Change Filename - invalid command");
            return LabelCheck::NoLabel;
    }
}

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

bool parse_label(const std::string &caller_name, GenericState *state) {
    LabelState &label = *state->label_state;
    const std::string path = in_directory(state->directory, label.file_name);
    if (!util_open_regular(path.c_str())) {
        gui_error(util_format("Unable to open the label file to parse: %s", path.c_str()));
        return false;
    }
    const BusyCursor busy;
    label.root.reset(OaParseLabelFile(path.c_str(), nullptr, ODL_EXPAND_STRUCTURE | ODL_EXPAND_CATALOG, 1));
    if (!label.root) {
        gui_error(util_format("%s - unable to parse label file: %s", caller_name.c_str(), path.c_str()));
        return false;
    }
    if (OaIsOlderLabel(label.root.get()) && OaConvertOlderLabel(label.root.get()) != 0) {
        gui_error(util_format("%s -- conversion of label failed\n%s", caller_name.c_str(), error_string.c_str()));
        return false;
    }
    remove_file_object(label.root.get());
    return true;
}

const ProductOpener *choose_opener(LabelState *label) {
    for (const ProductOpener &opener : openers) {
        if (opener.condition && !opener.condition(label->root.get()))
            continue;
        label->current_object =
            OdlFindObjDesc(label->root.get(), opener.class_pattern, nullptr, nullptr, 1, SCOPE_TO_END);
        if (label->current_object)
            return &opener;
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

bool setup_open_object_1(const std::string &caller_name, std::string *directory, std::string *file_name) {
    FileSpec chosen;
    const bool asked = session().cmdline_fname.empty();
    if (asked && !ask_for_file(caller_name, &chosen))
        return false;
    if (!asked)
        chosen = take_cmdline_file();

    if (chdir(chosen.directory.c_str()) != 0) {
        gui_error(util_format("%s - unable to set directory", caller_name.c_str()));
        return false;
    }
    char *resolved = getcwd(nullptr, 0);
    *directory = resolved ? resolved : chosen.directory;
    free(resolved);
    *file_name = chosen.name;
    if (!util_open_regular(in_directory(*directory, *file_name).c_str())) {
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

LabelCheck validate_label(const std::string &directory, LabelState *state) {
    std::string bytes;
    if (!read_probe(in_directory(directory, state->file_name), &bytes))
        return LabelCheck::Unreadable;
    if (describes_itself(bytes) || util_contains(bytes, "RECORD_TYPE"))
        return LabelCheck::Attached;
    // Both spellings are asked for on purpose.
    if (util_contains(state->file_name, "lbl") && util_contains(state->file_name, "LBL"))
        return util_contains(bytes, "TEXT") && util_contains(bytes, "OBJECT") ? LabelCheck::TextOnly
                                                                              : LabelCheck::NoLabel;
    return offer_label_beside(directory, state);
}

bool setup_open_object_2(const std::string &caller_name, GenericState *state, const std::string &file_name) {
    LabelState &label = *state->label_state;
    label.file_name = file_name;
    session().cmdline_fname.clear();

    const LabelCheck check = validate_label(state->directory, &label);
    label.label_from_another_file = check == LabelCheck::AnotherFile || check == LabelCheck::AnotherFileUnasked;
    switch (check) {
        case LabelCheck::Unreadable:
            if (!session().unattended)
                gui_error("KRV label or ASCII file required.");
            return false;
        case LabelCheck::NoLabel:
        case LabelCheck::TextOnly:
            label.text_only = check == LabelCheck::TextOnly;
            if (!session().unattended)
                gui_error(util_format("Label/Object not found.\nFile %s describes no object that can be shown.",
                                      label.file_name.c_str()));
            return false;
        case LabelCheck::AnotherFile:
        case LabelCheck::AnotherFileUnasked:
        case LabelCheck::Attached:
            break;
    }
    return parse_label(caller_name, state);
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

void open_object(int browser_number) {
    restore_profile();
    auto state = std::make_unique<GenericState>();
    state->label_state = std::make_unique<LabelState>();
    if (browser_number > 0)
        state->browser_tag = util_format(" Browser Number %d", browser_number);

    std::string file_name;
    if (!setup_open_object_1("open_object", &state->directory, &file_name) ||
        !setup_open_object_2("open_object", state.get(), file_name))
        return;
    if (const ProductOpener *opener = choose_opener(state->label_state.get()))
        opener->open(std::move(state));
    else if (!session().unattended)
        gui_error("Open Object - no valid object\n\nOnly FILE, IMAGE, and TABLE objects are supported at this time");
}

void open_file(const std::string &path) {
    session().cmdline_fname = path;
    open_object(0);
}

void open_files(const std::vector<std::string> &paths) {
    for (const std::string &path : paths)
        open_file(path);
}
