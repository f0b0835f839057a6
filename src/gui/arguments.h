// The command line, parted into what the toolkit takes and what the program sees. Private to the folder.
#pragma once

#include <string_view>
#include <vector>

struct Arguments {
    std::vector<char *> toolkit;  // the program's name and the toolkit's own options, null-terminated
    std::vector<char *> program;  // the program's name and everything else, null-terminated

    int toolkit_count() const { return static_cast<int>(toolkit.size()) - 1; }
    int program_count() const { return static_cast<int>(program.size()) - 1; }
    // Value of a toolkit option that was given; empty when it was not.
    std::string_view toolkit_value(std::string_view option) const;
};

Arguments split_arguments(int argc, char **argv);
