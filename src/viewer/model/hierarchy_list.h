// What the windows on a label list, line by line, and what may be opened from the list of objects.
#pragma once

#include "odl/odl.h"

#include <cstdint>
#include <string>
#include <vector>

// An object in the list. Its place in the tree, in pre-order with the root at 0, counts the objects that are not listed
// too: it finds the same object in another tree of the same label.
struct ObjectLine {
    std::string text;
    int64_t place = 0;
};

// One line for every object from the root on but the insides of tables: number, class indented by level, name. A line
// is one line whatever the label holds. Blanks are half as wide as digits where the columns shall line up.
std::vector<ObjectLine> hierarchy_lines(const ObjDesc *root);

int64_t object_place(const ObjDesc *root, const ObjDesc *object);
ObjDesc *object_at_place(ObjDesc *root, int64_t place);  // null when there are not so many objects

// The class in a line: its first word behind the number.
std::string class_of_line(const std::string &line);

enum class ListedObject {
    Refused,      // with a note why
    Opened,       // in the window for its class
    TableOrPlot,  // the user says which
    Ignored,
};
// What choosing an object of this class does. `note` becomes the text of a refusal, else null.
ListedObject listed_object(const std::string &class_name, bool unattended, const char **note);

// "OBJECT = class", then one line per keyword of the object. Long values are cut.
std::vector<std::string> keyword_lines(const ObjDesc *object);
