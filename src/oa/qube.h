// Qubes: what their labels say, and reading bands, planes and spectra of them. oa.h comes first.
//
// A qube has three axes, named SAMPLE, LINE and BAND in any order; the first varies fastest in the file. Its core is a
// box of items of one type. Along each axis further items may stand behind those of the core: side planes along SAMPLE,
// bottom planes along LINE, back planes along BAND.
#pragma once

#include "oa/oa.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum OaQubeAxis : uint8_t { OA_SAMPLE_AXIS = 0, OA_LINE_AXIS = 1, OA_BAND_AXIS = 2 };
inline constexpr int oa_qube_axes = 3;
const char *OaQubeAxisName(OaQubeAxis axis);  // "SAMPLE"

// --- Values -------------------------------------------------------------------------------------------------------

// Whether a stored value is data, and if not, why.
enum OaQubeState : uint8_t {
    OA_QUBE_NULL = 0,
    OA_QUBE_LOW_REPR_SATURATION,
    OA_QUBE_LOW_INSTR_SATURATION,
    OA_QUBE_HIGH_INSTR_SATURATION,
    OA_QUBE_HIGH_REPR_SATURATION,
    OA_QUBE_BELOW_MINIMUM,
    OA_QUBE_NOT_FINITE,
    OA_QUBE_VALID,
};
inline constexpr int oa_qube_specials = 5;       // the first states, which the label gives values
const char *OaQubeStateName(OaQubeState state);  // "NULL", "LOW_REPR_SATURATION", ..; "" for valid data

// How an item is stored and what it means.
struct OaQubeItem {
    std::string name;  // this, type and unit without quotes; name and unit are one line of 120 and 60 bytes at most,
                       // empty when the label has none or says N/A and the like
    std::string type;  // as SAMPLE_TYPE
    int64_t bytes = 0;
    double base = 0;  // physical value = base + multiplier x stored value
    double multiplier = 1;
    std::string unit;
    // Bits of native values, in the low bytes: those that stand for no data, by OaQubeState, and the least that does.
    std::array<std::optional<uint64_t>, oa_qube_specials> specials;
    std::optional<uint64_t> valid_minimum;

    bool is_scaled() const { return base != 0 || multiplier != 1; }
};

enum class OaNumberKind : uint8_t { None, Signed, Unsigned, Real };
// Of the native form of an item; None when items of that type and size hold no number that can be read.
OaNumberKind OaQubeNumberKind(const OaQubeItem &item);

struct OaQubeValue {
    OaQubeState state = OA_QUBE_NOT_FINITE;
    double physical = 0;  // of valid data
};
// What a native sample of the item's size says.
OaQubeValue OaQubeValueOf(const OaQubeItem &item, const void *native_sample);
// The same for many samples: physical values, NaN where there is no data.
void OaQubePhysicalValues(const OaQubeItem &item, const void *native_samples, int64_t count, double *out);
void OaQubePhysicalValues(const OaQubeItem &item, const void *native_samples, int64_t count, float *out);
// Widens a range to the physical values of those that are data.
void OaQubeWidenRange(const OaQubeItem &item, const void *native_samples, int64_t count, double *minimum,
                      double *maximum);

// --- The label ----------------------------------------------------------------------------------------------------

struct OaQubeSuffix {
    int64_t items = 0;
    std::vector<OaQubeItem> described;  // the first items, as far as lists of the label reach
    OaQubeItem others;                  // the rest
};

struct OaBandBins {  // as long as the label's lists are; NaN where an entry is no number
    std::vector<double> centers;
    std::vector<double> widths;
    std::string unit;
};

struct OaQubeKeywords {
    // Axis of each place of AXIS_NAME, fastest first. Axes that the label does not have come last, with one item.
    std::array<OaQubeAxis, oa_qube_axes> order = {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS};
    int axes = oa_qube_axes;  // of the label
    // By OaQubeAxis, not by place.
    std::array<int64_t, oa_qube_axes> core_items = {1, 1, 1};
    std::array<OaQubeSuffix, oa_qube_axes> suffixes;
    OaQubeItem core;
    int64_t suffix_bytes = 4;  // that each suffix item takes in the file
    OaBandBins band_bins;
    // What the label says and was not taken over: a keyword each, with what holds instead.
    std::vector<std::string> remarks;
};
// 0, or 1 after reporting a node of another class (501), a missing keyword (531), a value that is no size or number
// (502), or axes, item types and sizes that are not supported (520). Sizes then multiply within 63 bits. Without AXES
// their number is that of CORE_ITEMS; lists of suffixes that do not match SUFFIX_ITEMS count as far as they reach, and
// special values that do not parse do not count: remarks tell of both.
int OaGetQubeKeywords(const ObjDesc *node, OaQubeKeywords *out);

// The description of a suffix item, from 0.
const OaQubeItem &OaQubeSuffixItem(const OaQubeKeywords &qube, OaQubeAxis axis, int64_t item);

// --- The data -----------------------------------------------------------------------------------------------------

// A plane across one axis, numbered from 1 along it: through the core, or, numbered anew, the suffix items behind it.
// As an image its samples and lines run along SAMPLE and LINE (across BAND), SAMPLE and BAND (across LINE), or LINE and
// BAND (across SAMPLE), over the core's items.
struct OaQubePlane {
    OaQubeAxis axis = OA_BAND_AXIS;
    int64_t number = 1;
    bool is_suffix = false;
};

struct OaQubeExtent {
    int64_t lines = 0;
    int64_t samples = 0;
};
OaQubeExtent OaQubePlaneExtent(const OaQubeKeywords &qube, OaQubeAxis axis);

// An open qube. It keeps its file open and serves any part; of bands that lie within each other it keeps some in memory
// (64 MiB at most, or 256 MiB once neighbours are asked for in turn).
struct OaQube;

// Null after reporting what OaGetQubeKeywords and OaGetFileKeywords report, and 520 for files of variable-length
// records or ASCII data. A file that ends early is opened. The node is not kept. Close it with OaCloseQube.
OaQube *OaOpenQube(const ObjDesc *qube_node);
OaQube *OaCloseQube(OaQube *qube);  // null is allowed; returns null
const OaQubeKeywords &OaKeywordsOfQube(const OaQube *qube);
// How the items of a plane are stored; null when there is no such plane.
const OaQubeItem *OaItemOfPlane(const OaQube *qube, const OaQubePlane &plane);

// Native samples as a new object, row after row, with a label of class IMAGE (LINES, LINE_SAMPLES, SAMPLE_TYPE,
// SAMPLE_BITS, FIRST_LINE, FIRST_SAMPLE). Null after reporting: 502 for what is not in the qube or, with the numbers,
// not in its file, 520 for items whose type and size are not supported, 700, 720.
OaObject *OaReadQubePlane(OaQube *qube, const OaQubePlane &plane);
// Lines and samples 1-based, inclusive.
OaObject *OaReadQubePart(OaQube *qube, const OaQubePlane &plane, int64_t start_line, int64_t stop_line,
                         int64_t start_sample, int64_t stop_sample);
// All bands at a line and sample, as an image of one line. Reads nothing else, but for gaps of less than a page.
OaObject *OaReadQubeSpectrum(OaQube *qube, int64_t line, int64_t sample);

struct OaQubeCloser {
    void operator()(OaQube *qube) const { OaCloseQube(qube); }
};
using OaQubePtr = std::unique_ptr<OaQube, OaQubeCloser>;
