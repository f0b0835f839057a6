// Files that commands write.
#pragma once

#include "base/file.h"
#include "oa/oa.h"

#include <set>
#include <string>

// An output file; it takes its place only when everything was done. Without a path nothing is written.
class Output {
  public:
    // Each returns an empty text, or what failed.
    std::string open(const std::string &path);
    std::string commit();

    FILE *stream() const { return file_.stream(); }
    std::string failure() const;

  private:
    std::string path_;
    ReplacingFile file_;
};

// The label of an object, what it includes, and the file of its data: files that no output may replace.
std::set<std::string> files_of_product(const ObjDesc *node, const std::string &data_file);
// Whether the path leads to one of the files.
bool is_one_of(const std::string &path, const std::set<std::string> &files);
