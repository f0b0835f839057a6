// The checks that the parser makes of each statement. They only report (OdlPrintMessage) and trim; each returns 1 when
// it had nothing to say. Texts passed as `char *` are trimmed in place.
#pragma once

#include "odl/odl.h"

// True when the statement's value is complete: quotes paired, brackets balanced.
bool CheckBalance(const char *statement);
// Adds the nesting of braces and parentheses over the whole text to the two counts.
void OdlNestingLevel(const char *text, long *braces, long *parentheses);

// `equals` points at the statement's "=" or is null; `class_name` at the text after it.
int OdlValidObjDesc(const char *equals, char *class_name, const char *message_file, FILE *message_handle, long line);
int OdlValidEndObjDesc(const ObjDesc *current, const char *equals, char *class_name, const char *message_file,
                       FILE *message_handle, long line);
// Cuts `name` at the "=" and trims it.
int OdlValidKwd(const ObjDesc *object, char *name, char *equals, const char *value, const char *message_file,
                FILE *message_handle, long line);
int OdlValidBraces(const char *value, const char *message_file, FILE *message_handle, long line);
int OdlValidValueList(const char *value, const char *message_file, FILE *message_handle, long line);
int OdlValidElement(const char *element, const char *message_file, FILE *message_handle, long line,
                    long element_number);
// `what` is "OBJECT class", "END_OBJECT class" or "KEYWORD".
int OdlValidIdentifier(char *text, const char *what, const char *message_file, FILE *message_handle, long line);
