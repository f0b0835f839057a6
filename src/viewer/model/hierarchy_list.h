// What the windows on a label list, line by line, and what may be opened from the list of objects.
#pragma once

#include "odl/odl.h"

#include <cstdint>
#include <string>
#include <vector>

// One line for every object from the root on but the insides of tables: number, class indented by level, name. A line
// is one line whatever the label holds. The columns line up where blanks are half as wide as digits.
std::vector<std::string> hierarchy_lines(const ObjDesc *root);

// The object that a line, counted from 0, stands for; null when there are not so many.
ObjDesc *object_of_line(ObjDesc *root, int64_t line);
// The line of the object; of what holds it when it is not listed itself; 0 when neither is.
int64_t line_of_object(const ObjDesc *root, const ObjDesc *object);

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
