// The list of a directory's files, as the shell's find writes it into a scratch file.
#pragma once

#include "base/file.h"
#include "base/string_list.h"

#include <string>

struct ListingCommand {
    std::string shell;   // to be run by the shell in the directory of the scratch file
    std::string prefix;  // that every path of the list begins with
};

// The command that lists the files of a pattern: a directory, a slash and a pattern of names; or such a pattern alone,
// of files below the current directory. Whatever a directory is called, it is data to the shell and to find.
ListingCommand listing_command(const std::string &pattern);

// The scratch file in a directory. It is made by the shell, which must not write over a file that is there.
class ScratchList {
  public:
    explicit ScratchList(const std::string &directory);
    ~ScratchList() { remove(); }
    ScratchList(const ScratchList &) = delete;
    ScratchList &operator=(const ScratchList &) = delete;

    // Removes it. False when something of its name stays there.
    bool remove() const;
    // Opens it and removes its name, so that it goes with whoever still writes or reads it, however they end. False
    // when it is not there yet or was not made by us.
    bool take();
    // The paths in it, taken before or now. False when it cannot be taken. Names with a line feed are left out.
    bool read(const std::string &prefix, StringList *files);

  private:
    std::string path_;
    FilePtr taken_;
};
