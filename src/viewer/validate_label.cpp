// What a chosen file is, by its name and its first bytes.
#include "base/file.h"
#include "base/text.h"
#include "oa/signatures.h"
#include "viewer/open_moc.h"
#include "viewer/open_product.h"
#include "viewer/session.h"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

constexpr size_t probe_size = 10000;  // bytes of a file in which its label is looked for

// The first bytes of a regular file.
class Probe {
  public:
    enum class Outcome { Done, Unreadable, OutOfMemory };

    Outcome read(const std::string &path) {
        const FilePtr file = util_open_regular(path.c_str());
        if (!file)
            return Outcome::Unreadable;
        bytes_.reset(static_cast<char *>(OaMalloc(probe_size)));
        if (!bytes_)
            return Outcome::OutOfMemory;
        size_ = fread(bytes_.get(), 1, probe_size, file.get());
        return Outcome::Done;
    }
    std::string_view bytes() const { return {bytes_.get(), size_}; }
    bool contains(std::string_view part) const { return util_contains(bytes(), part); }

  private:
    OaPtr<char> bytes_;
    size_t size_ = 0;
};

LabelCheck out_of_memory() {
    gui_error("Can't allocate memory.");
    return LabelCheck::NoLabel;
}

bool is_moc_product(std::string_view name, const Probe &probe) {
    return (util_contains(name, ".IMQ") || util_contains(name, ".imq")) && probe.contains("KESTREL_ORBITER");
}

// The label beside a file: its name with the three-letter extension "lbl" or "LBL". Empty when there is none.
std::string label_beside(const std::string &directory, const std::string &name) {
    constexpr size_t extension = 3;
    if (name.size() <= extension || name[name.size() - extension - 1] != '.')
        return {};
    for (const char *other : {"lbl", "LBL"}) {
        std::string label = name.substr(0, name.size() - extension) + other;
        if (label != name && util_open_regular(path_in(directory, label).c_str()))
            return label;
    }
    return {};
}

LabelCheck offer_label_beside(const std::string &directory, LabelState *state) {
    const std::string label = label_beside(directory, state->file_name);
    Probe probe;
    const Probe::Outcome outcome = label.empty() ? Probe::Outcome::Unreadable : probe.read(path_in(directory, label));
    if (outcome == Probe::Outcome::OutOfMemory)
        return out_of_memory();
    if (outcome != Probe::Outcome::Done || !probe.contains("RECORD_TYPE"))
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

LabelCheck take_decompressed(const std::string &directory, LabelState *state, std::string *reason) {
    std::string made;
    if (!decompress_moc(path_in(directory, state->file_name), &made)) {
        *reason = error_string;
        return LabelCheck::Unreadable;
    }
    if (!util_open_regular(made.c_str())) {
        *reason = made + ": " + strerror(errno);
        return LabelCheck::Unreadable;
    }
    state->file_name = made;
    return LabelCheck::AnotherFile;
}

}  // namespace

LabelCheck validate_label(const std::string &directory, LabelState *state, std::string *reason) {
    Probe probe;
    switch (probe.read(path_in(directory, state->file_name))) {
        case Probe::Outcome::Unreadable:
            *reason = strerror(errno);
            return LabelCheck::Unreadable;
        case Probe::Outcome::OutOfMemory:
            return out_of_memory();
        case Probe::Outcome::Done:
            break;
    }
    if (describes_itself(probe.bytes()))
        return LabelCheck::Attached;
    if (is_moc_product(state->file_name, probe))
        return take_decompressed(directory, state, reason);
    if (probe.contains("RECORD_TYPE"))
        return LabelCheck::Attached;
    // Both spellings are asked for on purpose.
    if (util_contains(state->file_name, "lbl") && util_contains(state->file_name, "LBL"))
        return probe.contains("TEXT") && probe.contains("OBJECT") ? LabelCheck::TextOnly : LabelCheck::NoLabel;
    return offer_label_beside(directory, state);
}
