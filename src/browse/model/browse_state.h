// What browse mode knows of a walk, and the rules by which files are offered.
#pragma once

#include "base/string_list.h"

#include <string>

// One set for the program.
struct BrowseSettings {
    int browse_interval = 6000;      // milliseconds between files of a timed walk
    bool timed_browse_go = false;    // a timed walk runs, it is not paused
    bool file_is_displayed = false;  // a browsed file is on the screen
};
BrowseSettings &browse_settings();

constexpr int shortest_browse_interval = 3000;
constexpr int longest_browse_interval = 30000;

// One for each walk. Names of files are shown and tested by their clean text, as clean_name makes it, and opened by
// their bytes.
struct BrowseState {
    std::string directory;                // as it was chosen
    std::string file_pattern;             // the directory and "/*.*"
    std::string exclusive_extension;      // without its point; empty: none
    std::string skipped_extensions;       // one behind the other, each with its point
    std::string skipped_directory;        // in capitals, with its separator; empty: none
    bool include_subdirectories = false;  // as the user marked it; the walk goes into them in any case
    StringList files;                     // paths
    StringListEntry *cursor = nullptr;    // the file offered last
    std::string current_file;             // its clean name
};

// The number that a text begins with times 1000; 0 when there is none, the greatest of its type when it is greater.
int browse_milliseconds(const std::string &seconds);

// The text of a path that is shown and tested.
std::string clean_name(const std::string &path);

// Whether a file is offered. The second is for walks without an exclusive extension; it ends the skipping of a
// directory when the file lies elsewhere.
bool browse_check_priority_ext(const std::string &file, BrowseState *state);
bool browse_this_file(const std::string &file, BrowseState *state);

// Skip files like the current one from now on.
void skip_extension_of_current(BrowseState *state);
void skip_directory_of_current(BrowseState *state);
// Skips the files of a web site, which archives hold beside their products.
void skip_web_pages(BrowseState *state);

// The next regular file that is to be offered becomes the current one; false when there is none.
bool advance_to_next_file(BrowseState *state);

// A quick look at a file's name and first bytes: 1 when it is likely a label, 0 when not, -1 when it does not open.
int avalidate_label(const std::string &path);
