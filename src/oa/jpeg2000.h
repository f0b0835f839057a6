// JPEG 2000 images as products: files that need no label, and images that labels describe. Their readers stand beside
// those of other images: ask OaIsJpeg2000Image first, since OaReadImage knows no such encoding.
#pragma once

#include "decoders/jpeg2000.h"
#include "oa/oa.h"

#include <string>
#include <string_view>

// Whether an IMAGE's samples are JPEG 2000 data: by the bytes at its start or that of its file, by the ENCODING_TYPE
// of it or of a file object around it, or because only such a form of the file that it names exists. Reports nothing.
bool OaIsJpeg2000Image(const ObjDesc *image_node);

// How many bands the codestream of an IMAGE has, which its label need not tell; 0 when it has none that can be read.
// Reports nothing.
int64_t OaJpeg2000Bands(const ObjDesc *image_node);

// Finds and opens the data of an IMAGE. Where its label and the codestream disagree the codestream holds, and a notice
// tells, once a file. 0, or 1 after reporting.
int OaOpenJpeg2000(const ObjDesc *image_node, Jpeg2000Image *image);

// A component may have fewer samples than others: it is given as it is, or each of its samples as often as it takes to
// lie on the image's.
enum OaComponentSize { OA_OWN_SIZE, OA_IMAGE_SIZE };

// A band (from 1) as the codestream describes it: the IMAGE's label with its LINES, LINE_SAMPLES, SAMPLE_BITS (8, 16 or
// 32), SAMPLE_TYPE and BANDS, without its encoding. For a band that is not there the first. Never null.
OdlTree OaDescribeJpeg2000Band(const ObjDesc *image_node, const Jpeg2000Image &image, int64_t band,
                               OaComponentSize size);

// A rectangle of a band, from 1 and inclusive, as native samples; only what it touches is decoded. Data that end early
// leave zeros and a notice. Null after reporting: 502 no such band or rectangle, 700 data that cannot be decoded.
OaObject *OaReadJpeg2000Part(const ObjDesc *image_node, const Jpeg2000Image &image, int64_t band, OaComponentSize size,
                             int64_t first_line, int64_t last_line, int64_t first_sample, int64_t last_sample);
// All of a band in the image's size. Null after reporting.
OaObject *OaReadJpeg2000Image(const ObjDesc *image_node, int64_t band);

// --- Inside the library -------------------------------------------------------------------------------------------

// Describes a JPEG 2000 file: one IMAGE, whose BANDS are its components. Null after reporting.
ObjDesc *OalCreateODLTreeFromJpeg2000(const char *file_name);

// SAMPLE_TYPE of decoded samples.
std::string OalJpeg2000SampleType(int64_t sample_bytes, bool is_signed);
// Tells, once a file, where a label says other sizes than the codestream.
void OalTellLabelDifference(const ObjDesc *image_node, const Jpeg2000Image &image);

// The JPEG 2000 file that a file object around or beside an IMAGE names; best the one that says it stands for
// `uncompressed_name`. False when there is none, or no such file.
bool OalFindJpeg2000File(const ObjDesc *node, std::string_view uncompressed_name, std::string *path);

// What OaGetFileKeywords does, without reports and the interchange format: 0, or an error code and what is wrong.
int OalFindData(const ObjDesc *node, OaFileKeywords *out, std::string *fault);
