// Object access: from a label tree to data in memory. Start here. The headers beside this one are its inside, lowest
// first: stream.h (files in their record formats), data_type.h (names of storage types), binrep.h (their bits),
// sdt.h (the plan that converts described data), strided_reader.h and image_band.h (samples in files). Qubes have a
// public header of their own: qube.h.
//
// A routine that fails sets oa_errno, formats error_string and reports it (base/error.h), then returns null, 0 or the
// code its comment names. One thread uses the library.
#pragma once

#include "base/error.h"
#include "base/memory.h"
#include "odl/odl.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// --- Profile ------------------------------------------------------------------------------------------------------

enum OaInterchangeFormat : uint8_t { OA_NO_FORMAT = 0, OA_ASCII = 1, OA_BINARY = 2 };

// How data are converted; process-wide.
struct OaProfile {
    uint8_t dst_format_for_ascii = OA_BINARY;   // OaInterchangeFormat of what ASCII sources become
    uint8_t dst_format_for_binary = OA_BINARY;  // and of what binary sources become
    uint8_t dst_alignment_type = 1;             // 0 none, 1 two bytes, 2 natural
    uint8_t data_translation_profile = 2;       // 0 as stored, 1 most significant byte first and IEEE, 2 low byte first
    uint8_t reserved = 1;
};
extern OaProfile Oa_profile;

// --- Classes ------------------------------------------------------------------------------------------------------

enum OaObjectClass {
    OA_UNKNOWN_CLASS = 0,
    OA_ALIAS,
    OA_ARRAY,
    OA_BIT_COLUMN,
    OA_BIT_ELEMENT,
    OA_COLLECTION,
    OA_COLUMN,
    OA_CONTAINER,
    OA_ELEMENT,
    OA_GAZETTEER,
    OA_HISTOGRAM,
    OA_HISTORY,
    OA_IMAGE,
    OA_PALETTE,
    OA_QUBE,
    OA_SERIES,
    OA_SPECTRUM,
    OA_TABLE,
};

// By exact name, failing that by suffix (SPECTRAL_QUBE is a QUBE); case and outer blanks do not matter.
OaObjectClass OaGetObjectClass(const ObjDesc *node);
// The class's name; "OA_UNKNOWN_CLASS" for any other code.
const char *OaObjectClasstoStr(int object_class);

// --- Keywords -----------------------------------------------------------------------------------------------------
// Names are patterns ("*" is the wildcard) searched on the node alone. Getters return 0, or 1 when the keyword is
// absent or its value has another type (oa_errno 600).

int OaKwdValuetoStr(const char *name, const ObjDesc *node, const char **out);  // the tree keeps the text
int OaKwdValuetoLong(const char *name, const ObjDesc *node, int64_t *out);     // based integers count with their value
int OaKwdValuetoDouble(const char *name, const ObjDesc *node, double *out);    // integers and reals
// Replace the value of the keyword, or append a new one. A null text leaves an empty value. 0, or 1 after reporting a
// null argument (501).
int OaStrtoKwdValue(const char *name, ObjDesc *node, const char *text);
int OaLongtoKwdValue(const char *name, ObjDesc *node, int64_t value);
int OaDeleteKwd(const char *name, ObjDesc *node);  // the first that matches: 0, or 1 when there is none
// The elements of a sequence or set (a scalar counts as one), without brackets, quotes and units; split at commas
// outside quotes. 0, or 1 when an element is no integer (oa_errno 600).
int OaSequencetoLongArray(const char *value, std::vector<int64_t> *out);
int OaSequencetoStrArray(const char *value, std::vector<std::string> *out);
// The current name of a keyword that older labels call otherwise; `name` itself when it has no other.
const char *OaDealiasKwdName(const char *name);

// OA_ASCII for a HISTORY, OA_BINARY when the label is silent; OA_NO_FORMAT after reporting a value that is neither
// (531).
OaInterchangeFormat OaGetObjectInterchangeFormat(const ObjDesc *node);

// --- Trees --------------------------------------------------------------------------------------------------------

// Parses the label of any product file. Null after reporting. `expand`: OdlExpand bits.
ObjDesc *OaParseLabelFile(const char *file_name, const char *message_file_name, int expand, int suppress_messages);

// Whether a label is of the older dialect: no objects, but a FILE_TYPE keyword at the root.
bool OaIsOlderLabel(const ObjDesc *root);
// Turns such a label into what a present one says (docs/older-labels.md): what describes the file's object moves into
// an object of the class that FILE_TYPE names; histograms that only have pointers get objects. 0, or 1 with the tree as
// it was after reporting: 501 not such a label, 530 a class that is not read.
int OaConvertOlderLabel(ObjDesc *root);

enum OaCopyOptions { OA_COPY_LABEL = 0, OA_COPY_SDT = 1 };
// A detached deep copy of the subtree; with OA_COPY_SDT the conversion slots (sdt.h) of its nodes too.
ObjDesc *OaCopyTree(const ObjDesc *node, int options);
// 0 when the tree is not null and its links agree, else 1.
int OaCheckODLTree(const ObjDesc *node);

struct OdlTreeDeleter {
    void operator()(ObjDesc *root) const { OdlFreeTree(root); }
};
using OdlTree = std::unique_ptr<ObjDesc, OdlTreeDeleter>;

// --- Data objects -------------------------------------------------------------------------------------------------

// Data in memory and the label that describes them there.
struct OaObject {
    ObjDesc *odl = nullptr;  // owned
    void *data = nullptr;    // freed with the object when owns_data
    int64_t size = 0;        // bytes
    bool owns_data = true;
    void *appl1 = nullptr;  // an open image's handle
};
// Takes over both, which may be null; `data` is a block of OaMalloc. Never null.
OaObject *OaNewOaObject(ObjDesc *odl, void *data, int64_t size);
OaObject *OaDeleteObject(OaObject *object);  // null is allowed; returns null
// Reads an object by the reader of its class, of an image the first band. Null after reporting: 530 for a class that
// has none.
OaObject *OaReadObject(const ObjDesc *node);

struct OaObjectDeleter {
    void operator()(OaObject *object) const { OaDeleteObject(object); }
};
using OaObjectPtr = std::unique_ptr<OaObject, OaObjectDeleter>;

// --- Where an object's data are -----------------------------------------------------------------------------------

enum OaRecordType {
    OA_UNKNOWN_RECORD_TYPE = 0,
    OA_FIXED_LENGTH = 1,
    OA_STREAM = 2,
    OA_VARIABLE_LENGTH = 3,
    OA_UNDEFINED = 4,
    OA_GIF = 5,
};

struct OaFileKeywords {
    std::string file_name;  // path of an existing file
    int record_type = OA_UNDEFINED;
    int64_t record_bytes = 0;
    int64_t file_records = 0;
    int64_t start = 0;  // 0-based: byte, or record index of a file of variable-length records
    OaInterchangeFormat interchange_format = OA_BINARY;
    bool stands_for_uncompressed = false;  // the JPEG 2000 form of the file that the pointer names
};
// From the pointer of the node's class (or name) on the nearest ancestor. Call it on the original node, not on a copy.
// Where that file does not exist, an image's is the JPEG 2000 file that a FILE, COMPRESSED_FILE, ... object around or
// beside it names. 0, or 1 after reporting: 531 no pointer or a bad interchange format, 700 no such file, 502 a start
// that is no position.
int OaGetFileKeywords(const ObjDesc *node, OaFileKeywords *out);

// ROWS, ROW_BYTES, row prefix and suffix of a table-like node. 0, or -1 with oa_errno 531.
int OaGetTableKeywords(const ObjDesc *node, int64_t *rows, int64_t *row_bytes, int64_t *prefix, int64_t *suffix);

// --- Images -------------------------------------------------------------------------------------------------------

enum OaBandStorage { OA_NO_BAND_STORAGE = 0, OA_BAND_SEQUENTIAL, OA_LINE_INTERLEAVED, OA_SAMPLE_INTERLEAVED };
enum OaImageEncoding {
    OA_UNKNOWN_ENCODING = 0,
    OA_NOT_ENCODED,
    OA_HUFFMAN,
    OA_PREVIOUS_PIXEL,
    OA_CLEMENTINE_JPEG,
    OA_GIF_ENCODING,
};

struct OaImageKeywords {
    int64_t lines = 0;
    int64_t line_samples = 0;
    int64_t sample_bits = 0;
    std::string sample_type;  // without quotes
    int64_t bands = 1;
    OaBandStorage band_storage = OA_NO_BAND_STORAGE;
    int64_t line_prefix_bytes = 0;
    int64_t line_suffix_bytes = 0;
    OaImageEncoding encoding = OA_NOT_ENCODED;
};
// 0, or 1 after reporting a node of another class, a missing keyword (531), a value that is no size (502) or an unknown
// ENCODING_TYPE (531). Sizes are then positive and lines x samples x bytes x bands fits in 63 bits.
int OaGetImageKeywords(const ObjDesc *node, OaImageKeywords *out);

// Checks what the label claims against the data file before anything is allocated: 0, or 1 after reporting (502) that
// the file does not hold one whole line from the image's start on, or that the claim is more than 16 times what it
// holds; of an encoded image counts the least that its encoding needs. The message names keywords and numbers.
int OaCheckImageExtent(const OaImageKeywords &image, const OaFileKeywords &file);

// One band, whole, as native samples: lines x line_samples, row after row, without padding. The label of the result
// says SAMPLE_TYPE and SAMPLE_BITS of the native form. A file that ends early leaves zeros and one notice. `band` from
// 1. Null after reporting.
OaObject *OaReadImage(const ObjDesc *image_node, int64_t band);

// A handle that reads rectangles of one band. Of a file that ends early it gives one notice, whatever is read. Null
// after reporting; close it with OaCloseImage.
OaObject *OaOpenImage(const ObjDesc *image_node, int64_t band);
// Number of consecutive native samples available from (line, sample), both 1-based, on; the handle object's data points
// at the first of them until the next call. 0 after reporting.
int64_t OaReadImagePixels(OaObject *handle, int64_t line, int64_t sample);
// The rectangle, bounds 1-based and inclusive, as a new object. Null after reporting.
OaObject *OaReadPartialImage(OaObject *handle, int64_t start_line, int64_t stop_line, int64_t start_sample,
                             int64_t stop_sample);
OaObject *OaCloseImage(OaObject *handle);  // null is allowed; returns null

// The encoding histogram of an image of Huffman lines: the first HISTOGRAM beside it of at least 511 ITEMS whose NAME
// value or class tells of encoding. Null without a report when there is none; after reporting for a node of another
// class (501) or without a parent (530).
const ObjDesc *OaFindEncodingHistogram(const ObjDesc *image);

// --- Histograms, tables, arrays -----------------------------------------------------------------------------------
// A claim is compared with what the file holds before anything is allocated (502). Of a file that ends early the rest
// becomes blanks where the result is text, else zeros, and one notice tells.

// The ITEMS values as native 32-bit integers, whatever Oa_profile says: signed, but for unsigned sources; what does not
// fit saturates, reals are truncated. Null after reporting.
OaObject *OaReadHistogram(const ObjDesc *node);

// Tables: what is TABLE-like by class, and an INDEX. Rows count from 1 and so do columns, which are the table's direct
// children (COLUMNs, CONTAINERs and whatever else takes bytes of a row, each as one column however often it repeats;
// ALIASes do not count). Bounds are inclusive; those outside the table are refused (502). The label of the result
// describes the converted data: rows without prefix, suffix and gaps. A table of no rows gives an object of no bytes.

// All of it. Null after reporting.
OaObject *OaReadTable(const ObjDesc *node);
// A page. Only its own bytes are read, wherever they are in the file; FIRST_ROW and FIRST_COLUMN in its label tell its
// place. Null after reporting.
OaObject *OaReadSubTable(const ObjDesc *node, int64_t first_row, int64_t last_row, int64_t first_column,
                         int64_t last_column);
// Rows of some columns of a table that was read, packed without gaps in the order of `names` (`count` of them, compared
// without case; the first column of a name counts). Row by row, whatever the order in `object`. Null after reporting.
OaObject *OaGetSubTable(const OaObject *object, int64_t first_row, int64_t last_row, const char *const *names,
                        int64_t count);
