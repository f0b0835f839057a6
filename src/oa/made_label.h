// Label trees made for files that carry no label.
#pragma once

#include "oa/oa.h"

#include <string>

// A root with the keywords that every label begins with.
ObjDesc *OalNewMadeLabel(const char *file_name);
void OalAddKeyword(ObjDesc *node, const char *name, const char *value);
void OalAddKeyword(ObjDesc *node, const char *name, int64_t value);
ObjDesc *OalAddObject(ObjDesc *parent, const char *class_name);
// An object and the pointer to its data, at `byte` (from 1) of the root's file.
ObjDesc *OalAddPointedObject(ObjDesc *root, const std::string &name, int64_t byte);
