// From a file that the user chose to the first window that shows it.
#pragma once

#include "viewer/openers.h"

#include <memory>
#include <string>
#include <vector>

// The Open command: chooses a file (the one waiting in the session, else by dialog), reads its label and shows its
// first displayable object. `browser_number` is 0, or 1 or 2 from browse mode.
void open_object(int browser_number);
// The same on a file that is already known.
void open_file(const std::string &path);
// The same on each of the files that were dropped on a window.
void open_files(const std::vector<std::string> &paths);

// A chosen file: directory (made current) and name. False after a message, or silently when the user cancelled.
bool setup_open_object_1(const std::string &caller_name, std::string *directory, std::string *file_name);
// Validates, parses and tidies the label of the file into the state, whose directory is set. False after a message, or
// when the state went to a text window because the user takes the file as text.
bool setup_open_object_2(const std::string &caller_name, std::unique_ptr<GenericState> *state,
                         const std::string &file_name);

// The states of a product to be opened; null when memory is out and the application ends.
std::unique_ptr<GenericState> new_product_state(int browser_number);
// The path of a file in a directory (empty: the current one); a path from the root on stays as it is.
std::string path_in(const std::string &directory, const std::string &name);

// The label of another window's product parsed afresh, with the same object chosen. False after a message.
bool reopen_label(const GenericState &from, GenericState *to);

enum class LabelCheck {
    Unreadable = -1,
    NoLabel = 0,
    TextOnly = 1,     // a label that describes only text
    AnotherFile = 2,  // a detached label that the user accepted, or a decompressed file; the name was replaced
    Attached = 3,
    AnotherFileUnasked = 4,  // a detached label, taken without asking; the name was replaced
};
// Classifies the file by name and first bytes; `state`'s file name is replaced where another file is taken. Of an
// unreadable file `reason` says why it is.
LabelCheck validate_label(const std::string &directory, LabelState *state, std::string *reason);

// Lifts RECORD_BYTES, INTERCHANGE_FORMAT, RECORD_TYPE, FILE_RECORDS and FILE_NAME to the root of a label that has a
// FILE object. Returns the root.
ObjDesc *remove_file_object(ObjDesc *root);
