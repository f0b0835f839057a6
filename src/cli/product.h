// Finding and reading the label of a product that a user names.
#pragma once

#include "oa/oa.h"

#include <initializer_list>
#include <string>

// Path of the file that holds the label: `file` itself, or, when it has none, the one beside it with the extension lbl
// or LBL, saying so. Empty after saying why there is none.
std::string find_label_file(const std::string &file);

// The tree of a label file, of an older label as a present one would describe it. Messages go to the named file; null:
// none are wanted. Null after saying why there is none.
OdlTree read_label(const std::string &label, const char *message_file);

// Both for a command on a product's data: the tree, and in `label` the path; notices go to standard error from now on.
// Null after saying why there is none.
OdlTree open_product(const std::string &file, std::string *label);

// The first object of a class that matches the first of the patterns for which there is one; null when there is none.
const ObjDesc *find_object_of(ObjDesc *root, std::initializer_list<const char *> classes);
// The first object whose class or NAME matches the pattern, in which * stands for any text; null when there is none.
const ObjDesc *find_object(ObjDesc *root, const std::string &pattern);

// From now on notices go to standard error. Those that differ only in numbers are shown once: an image is read in
// strips, and again for its picture, and each strip behind the end of a file would give a notice of its own.
void show_notices();
bool had_notices();
