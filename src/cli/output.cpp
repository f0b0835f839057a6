#include "cli/output.h"

#include "cli/commands.h"

#include <algorithm>
#include <filesystem>

std::string Output::open(const std::string &path) {
    path_ = path;
    return path_.empty() || file_.open(path_) ? "" : failure();
}

std::string Output::commit() {
    return !stream() || file_.commit() ? "" : failure();
}

std::string Output::failure() const {
    return path_ + ": " + open_failure();
}

std::set<std::string> files_of_product(const ObjDesc *node, const std::string &data_file) {
    std::set<std::string> files = {data_file};
    while (node->parent)
        node = node->parent;
    for (auto *object = const_cast<ObjDesc *>(node); object; object = OdlTraverseTree(object, 0)) {
        if (object->file_name)
            files.insert(object->file_name);
        for (const Kwd *keyword = object->first_keyword; keyword; keyword = keyword->right_sibling) {
            if (keyword->file_name)
                files.insert(keyword->file_name);
        }
    }
    return files;
}

bool is_one_of(const std::string &path, const std::set<std::string> &files) {
    return std::any_of(files.begin(), files.end(), [&](const std::string &file) {
        std::error_code ignored;
        return std::filesystem::equivalent(path, file, ignored);
    });
}
