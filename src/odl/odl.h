// The label language: a label's text parsed into a tree of object descriptions, each holding an ordered list of
// keywords, and everything that finds, changes, checks and prints it. Start here; the other headers of this folder are
// its inside.
//
// The tree is plain data. All texts are NUL-terminated copies owned by their record (OaCopyText / OaFree) and may be
// null. One thread uses the library. Nothing here recurses over data: sibling chains and nesting may be of any length.
#pragma once

#include <cstdint>
#include <cstdio>

struct Kwd;

struct ObjDesc {
    char *class_name;    // value after OBJECT = or GROUP =; "ROOT" for the root that the parser makes
    char *pre_comment;   // comment lines before the OBJECT line
    char *line_comment;  // comment on the OBJECT line
    char *post_comment;  // comment lines before the END_OBJECT line
    char *end_comment;   // comment on the END_OBJECT line
    char *file_name;     // label file that the object was read from
    void *appl1;         // free for the application: never copied or freed here
    void *appl2;
    int16_t is_a_group;    // 1 when opened with GROUP
    uint32_t level;        // 0 without parent, else the parent's level + 1
    int32_t line_number;   // line of the OBJECT statement, 0 for the root
    uint32_t child_count;  // as counted by the parser; paste and cut do not maintain it
    ObjDesc *parent;
    ObjDesc *left_sibling;
    ObjDesc *right_sibling;
    ObjDesc *first_child;
    ObjDesc *last_child;
    Kwd *first_keyword;
    Kwd *last_keyword;
};

struct Kwd {
    char *name;          // as written; a pointer's name begins with "^"
    char *file_name;     // label file that the keyword was read from
    char *value;         // as written, with quotes, brackets and units
    uint32_t size;       // length of the value
    char *pre_comment;   // comment lines before the statement
    char *line_comment;  // comment on the statement's own line
    void *appl1;
    void *appl2;
    int16_t is_a_pointer;  // 1 when the name begins with "^"
    int16_t is_a_list;     // 1 when the value begins with "(" or "{"
    int32_t line_number;   // line on which the statement began
    ObjDesc *parent;
    Kwd *left_sibling;
    Kwd *right_sibling;
};

// The last failure; set, never cleared. 1 null argument, 10 no parent to paste under, 50 out of memory, 200 file,
// 300-311 problems of the label's text.
extern int odl_errno;

enum OdlValueType {
    VALUE_UNKNOWN = 0,
    VALUE_INTEGER = 1,  // decimal, or based: 16#FF#
    VALUE_REAL = 2,
    VALUE_SYMBOL = 3,     // identifier, single-quoted or empty text
    VALUE_TEXT = 4,       // double-quoted text
    VALUE_DATE = 5,       // 1997-12-31, 1997-365
    VALUE_DATE_TIME = 6,  // 1997-12-31T23:59:59.5Z
    VALUE_SEQUENCE = 7,   // (...)
    VALUE_SET = 8,        // {...}
};

// Which objects a search visits after the start object, which is always visited first. Any other code acts as
// SCOPE_TO_END.
enum OdlSearchScope {
    SCOPE_SUBTREE = 0,  // pre-order successors below the start's level; from a childless start its right siblings
                        // and their subtrees too: do not use it to mean "descendants" of a possible leaf
    SCOPE_TO_END = 1,   // everything that follows in pre-order
    SCOPE_CHILDREN = 2,
    SCOPE_SIBLINGS = 3,  // right siblings only
    SCOPE_THIS_OBJECT = 4,
};

// --- Making, copying, freeing -------------------------------------------------------------------------------------
// New records are detached; each non-null text is copied. Out of memory ends the process (OaOutOfMemory).

ObjDesc *OdlNewObjDesc(const char *class_name, const char *pre_comment, const char *line_comment,
                       const char *post_comment, const char *end_comment, const char *file_name, int16_t is_a_group,
                       int32_t line_number);
// A bare copy: texts, group flag and line number; no keywords, no children, level 0.
ObjDesc *OdlCopyObjDesc(const ObjDesc *object);
Kwd *OdlNewKwd(const char *name, const char *value, const char *pre_comment, const char *line_comment,
               const char *file_name, int32_t line_number);
Kwd *OdlCopyKwd(const Kwd *keyword);
// Frees the object, its subtree and, where it is still linked among siblings, all its right siblings with theirs: cut
// an object out before freeing it. Returns null.
ObjDesc *OdlFreeTree(ObjDesc *object);
void OdlFreeAllKwds(ObjDesc *object);
// Frees without unlinking; returns the right sibling.
Kwd *OdlFreeKwd(Kwd *keyword);

// --- Linking ------------------------------------------------------------------------------------------------------
// Each returns its first argument; the pastes before and after return null with odl_errno 10 when `old` has no parent.

ObjDesc *OdlPasteObjDesc(ObjDesc *object, ObjDesc *parent);
ObjDesc *OdlPasteObjDescBefore(ObjDesc *object, ObjDesc *old);
ObjDesc *OdlPasteObjDescAfter(ObjDesc *object, ObjDesc *old);
// Unlinks the object with its keywords and subtree; its level stays as it was.
ObjDesc *OdlCutObjDesc(ObjDesc *object);
// Sets the levels of the object and its subtree from its parent's.
ObjDesc *OdlAdjustObjDescLevel(ObjDesc *object);
Kwd *OdlPasteKwd(Kwd *keyword, ObjDesc *object);
Kwd *OdlPasteKwdBefore(Kwd *keyword, Kwd *old);
Kwd *OdlPasteKwdAfter(Kwd *keyword, Kwd *old);
Kwd *OdlCutKwd(Kwd *keyword);

// --- Reading records ----------------------------------------------------------------------------------------------
// Each sets odl_errno to 1 and returns null or 0 when given null. Returned texts stay the record's.

const char *OdlGetObjDescClassName(const ObjDesc *object);
uint32_t OdlGetObjDescChildCount(const ObjDesc *object);  // counted along the child list
Kwd *OdlGetFirstKwd(const ObjDesc *object);
Kwd *OdlGetNextKwd(const Kwd *keyword);
const char *OdlGetKwdName(const Kwd *keyword);
const char *OdlGetKwdValue(const Kwd *keyword);
OdlValueType OdlGetKwdValueType(const Kwd *keyword);
const char *OdlGetLabelVersion(const ObjDesc *object);

// --- Walking and searching ----------------------------------------------------------------------------------------
// Patterns are compared by OdlWildCardCompare; a null pattern always matches. `instance` 0 and 1 mean the first match,
// n the n-th in visiting order.

ObjDesc *OdlTraverseTree(const ObjDesc *object, uint32_t root_level);  // pre-order successor, null at the end
ObjDesc *OdlNextObjDesc(const ObjDesc *object, uint32_t root_level, int *scope);
ObjDesc *OdlFindObjDesc(ObjDesc *start, const char *class_name, const char *keyword_name, const char *keyword_value,
                        uint32_t instance, int scope);
Kwd *OdlFindKwd(ObjDesc *start, const char *name, const char *value, uint32_t instance, int scope);
Kwd *OdlNextKwd(Kwd *start_keyword, const char *name, const char *value, uint32_t instance, int scope);
// 1 when `text` matches `pattern`, in which "*" stands for any run of characters; case-sensitive. Takes time at most
// proportional to pattern times text.
int OdlWildCardCompare(const char *pattern, const char *text);

// --- Value texts --------------------------------------------------------------------------------------------------

OdlValueType OdlDataType(const char *text);
// First character of the text that is no bracket, comma, blank or newline (possibly the NUL).
const char *OdlValueStart(const char *text);
// Last character of the element that begins the text: before the next bracket, comma or the end, less blanks.
const char *OdlValueEnd(const char *text);
// First character of codes 33-126, or the NUL; null for null.
const char *OdlFirstWord(const char *text);
const char *OdlNextWord(const char *text);

// --- Parsing ------------------------------------------------------------------------------------------------------

// What OdlExpandLabelFile grafts into the tree; a bit set.
enum OdlExpand { ODL_EXPAND_STRUCTURE = 1, ODL_EXPAND_CATALOG = 2 };

// Parses a label file or text, tolerantly: problems are messages, never an end. Returns the root, which the caller
// frees with OdlFreeTree, or null with odl_errno 200 when the file does not open. Messages go to the named file (null:
// standard output) unless suppressed.
ObjDesc *OdlParseLabelFile(const char *file_name, const char *message_file_name, int expand, int suppress_messages);
ObjDesc *OdlParseLabelString(const char *text, const char *message_file_name, int expand, int suppress_messages);
// Input: `label_text` when given (`file_name` then only names it in the records), else `file_handle` from its current
// position, else the file. `suppress_metrics`, `suppress_hierarchy`: do not print the metrics box and the hierarchy.
// `ignore_missing_end`: no message for a label without END.
ObjDesc *OdlParseFile(const char *file_name, FILE *file_handle, const char *label_text, const char *message_file_name,
                      FILE *message_file_handle, int suppress_messages, int suppress_metrics, int suppress_hierarchy,
                      int ignore_missing_end);
// Grafts the files that ^*STRUCTURE and ^*CATALOG pointers name into the tree. A file that is already on the chain of
// inclusions is not included again. Returns the root.
ObjDesc *OdlExpandLabelFile(ObjDesc *root, const char *message_file_name, int expand, int suppress_messages);

// --- Pointers and files -------------------------------------------------------------------------------------------
// Returned texts are the caller's, to be freed with OaFree.

enum OdlLocationType { ODL_RECORD_LOCATION = 0, ODL_BYTE_LOCATION = 1 };

// The file that a pointer keyword names (its own label file for a bare number) and the 1-based record or byte there.
char *OdlGetFileName(const Kwd *keyword, int64_t *start_location, int *location_type);
// Path of an existing file: as named, beside the label, or in the LABEL or CATALOG folders above it when
// `keyword_name` is given. Null with odl_errno 200 when there is none.
char *OdlGetFileSpec(const char *file_name, const char *label_file_name, const char *keyword_name);
// Path under which directory + file name opens: as written, in lower case, with ";1", both. Null when none does.
char *OdlCheckFileSpec(const char *directory, const char *file_name);
// An open stream at a record (line) or byte position; null when it cannot be opened or positioned (odl_errno 200).
FILE *OdlLocateStart(const char *path, int64_t start_location, int location_type);
const char *OdlExtractFilename(const char *path);  // points into `path`
char *OdlGetParentDir(const char *path);

// True when the line has the form of an SFDU label: "CCSD", or control authority, version, class and length fields of
// the first twenty characters (CCSDS 620.0-B).
bool OdlIsSfduLabel(const char *line);

// --- Messages -----------------------------------------------------------------------------------------------------

extern long odl_message_count;     // messages since the parser last began, suppressed ones included
extern int odl_suppress_messages;  // when not 0 nothing is written
extern const char *const newline;  // joins comment lines
extern const char *const pathSep;

FILE *OdlOpenMessageFile(const char *file_name, FILE *handle);
// Counts the message and writes it, wrapped, behind " Line %d -- " when `line_number` is not 0. Returns 1.
int OdlPrintMessage(const char *file_name, FILE *handle, long line_number, const char *text);
// Writes the text as it is; not counted.
int OdlPrintLine(const char *file_name, FILE *handle, const char *text);
// Wrapped copy of the text, lines of at most 75 characters, to be freed with OaFree.
char *OdlFormatMessage(const char *text);
// One line per object: line number, level, name, class. `handle` may be null.
void OdlPrintHierarchy(const ObjDesc *root, const char *file_name, FILE *handle);
