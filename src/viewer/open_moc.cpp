#include "viewer/open_moc.h"

#include "base/text.h"
#include "decoders/moc.h"
#include "viewer/image_window.h"
#include "viewer/open_product.h"
#include "viewer/session.h"
#include "viewer/unattended.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Which file it is, whatever its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    bool operator==(const FileIdentity &) const = default;
};

// Of the file of that name; of a symbolic link itself. False when there is none.
bool identify(const std::string &path, FileIdentity *identity) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
        return false;
    *identity = {status.st_dev, status.st_ino};
    return true;
}

// The files made in this run. They go when it ends by itself, unless others have taken their names; a signal that ends
// the program leaves them.
class TemporaryFiles {
  public:
    ~TemporaryFiles() {
        for (const auto &[path, identity] : files_) {
            FileIdentity present;
            if (identify(path, &present) && present == identity)
                unlink(path.c_str());
        }
    }
    void add(const std::string &path) {
        FileIdentity identity;
        if (identify(path, &identity))
            files_.push_back({path, identity});
    }

  private:
    struct Made {
        std::string path;
        FileIdentity identity;
    };
    std::vector<Made> files_;
};

std::string output_name(const std::string &path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return session().working_directory + name.substr(0, name.find('.')) + ".tmp";
}

bool is_same_file(const std::string &path, const std::string &other) {
    struct stat a, b;
    return stat(path.c_str(), &a) == 0 && lstat(other.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

ObjDesc *find_image(ObjDesc *root) {
    ObjDesc *image = OdlFindObjDesc(root, "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END);
    return image ? image : OdlFindObjDesc(root, "*IMAGE", nullptr, nullptr, 1, SCOPE_TO_END);
}

// Chooses the product; the current directory stays as it is.
bool choose_product(GenericState *state, std::string *file_name) {
    char *current = getcwd(nullptr, 0);
    const std::string directory = current ? current : session().working_directory;
    free(current);
    const bool chosen = setup_open_object_1("open_moc_object", &state->directory, file_name);
    if (chdir(directory.c_str()) == 0)
        return chosen;
    gui_error("open_moc_object - unable to set directory");
    return false;
}

// Decompresses the product and reads the label of what comes of it.
bool prepare_product(std::unique_ptr<GenericState> *state, const std::string &file_name) {
    std::string made;
    {
        const BusyCursor busy;
        if (!decompress_moc(path_in((*state)->directory, file_name), &made)) {
            gui_error(error_string);
            return false;
        }
    }
    if (!setup_open_object_2("open_moc_object", state, made))
        return false;
    (*state)->label_state->label_from_another_file = true;
    return true;
}

}  // namespace

bool decompress_moc(const std::string &path, std::string *made) {
    static TemporaryFiles temporary_files;
    const std::string output = output_name(path);
    if (is_same_file(path, output)) {
        OaReportFailure(502, "%s: %s would be written over by its own decompressed form.", __func__, path.c_str());
        return false;
    }
    unlink(output.c_str());  // where that fails the decoder tells
    if (OalDecompressMoc(path.c_str(), output.c_str()) != 0)
        return false;
    temporary_files.add(output);
    *made = output;
    return true;
}

void open_moc_object() {
    restore_profile();
    std::unique_ptr<GenericState> state = new_product_state(0);
    std::string file_name;
    if (!state || !choose_product(state.get(), &file_name) || !prepare_product(&state, file_name))
        return;
    const std::string directory = state->directory;
    LabelState &label = *state->label_state;
    label.current_object = find_image(label.root.get());
    if (label.current_object)
        open_image(std::move(state));
    else
        tell_error("Open Object - no valid object");
    if (chdir(directory.c_str()) != 0)
        gui_error("unable to set directory");
}
