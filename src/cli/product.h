// Finding and reading the label of a product that a user names.
#pragma once

#include "oa/oa.h"

#include <string>

// Path of the file that holds the label: `file` itself, or, when it has none, the one beside it with the extension lbl
// or LBL, saying so. Empty after saying why there is none.
std::string find_label_file(const std::string &file);

// From now on notices go to standard error, each text once: a picture is read a second time for its levels.
void show_notices();
bool had_notices();
