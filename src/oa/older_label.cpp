// Labels of the older dialect: no objects, the keywords of one at the root, FILE_TYPE names its class.
#include "base/text.h"
#include "oa/oa.h"

#include <algorithm>
#include <set>
#include <span>
#include <utility>

namespace {

constexpr const char *routine = "OaConvertOlderLabel";

// Keywords that describe an object of a class, as patterns; what is not named here stays at the root.
constexpr const char *image_keywords[] = {"IMAGE_LINES",
                                          "LINES",
                                          "LINE_SAMPLES",
                                          "SAMPLE_*",
                                          "BITS_PER_SAMPLE",
                                          "BANDS",
                                          "BAND_*",
                                          "LINE_PREFIX_*",
                                          "LINE_SUFFIX_*",
                                          "LINE*PREFIX*BYTES",
                                          "LINE*SUFFIX*BYTES",
                                          "LINE_DISPLAY_DIRECTION",
                                          "ENCODING_TYPE",
                                          "INTERCHANGE_FORMAT",
                                          "MINIMUM",
                                          "MAXIMUM",
                                          "MEAN",
                                          "STANDARD_DEVIATION",
                                          "OFFSET",
                                          "SCALING_FACTOR",
                                          "CHECKSUM",
                                          "DERIVED_M*",
                                          "STRETCH_M*",
                                          "VALID_M*",
                                          "MISSING_CONSTANT",
                                          "INVALID_CONSTANT"};
constexpr const char *table_keywords[] = {
    "NUMBER_OF_ROWS",        "ROWS",      "RECORDS", "COLUMNS", "ROW_*", "INTERCHANGE_FORMAT", "SAMPLING_PARAMETER_*",
    "M*_SAMPLING_PARAMETER", "DERIVED_M*"};
constexpr const char *histogram_keywords[] = {"ITEMS", "ITEM_*", "DATA_TYPE", "BYTES", "INTERCHANGE_FORMAT"};
constexpr const char *qube_keywords[] = {"AXES",   "AXIS_*",   "CORE_*", "SUFFIX_*",          "*_SUFFIX_*",
                                         "BAND_*", "SAMPLE_*", "LINE_*", "INTERCHANGE_FORMAT"};

std::span<const char *const> keywords_of(OaObjectClass object_class) {
    switch (object_class) {
        case OA_IMAGE:
            return image_keywords;
        case OA_HISTOGRAM:
            return histogram_keywords;
        case OA_QUBE:
            return qube_keywords;
        case OA_TABLE:
        case OA_SERIES:
        case OA_SPECTRUM:
        case OA_PALETTE:
        case OA_GAZETTEER:
            return table_keywords;
        default:
            return {};
    }
}

// Histograms that stand in the file beside the object: only their pointers are in the label.
struct PointedHistogram {
    const char *pointer;
    const char *items;
};
constexpr PointedHistogram histograms[] = {{"^IMAGE_HISTOGRAM", "256"}, {"^ENCODING_HISTOGRAM", "511"}};

Kwd *find_root_keyword(ObjDesc *root, const char *name) {
    return OdlFindKwd(root, name, nullptr, 1, SCOPE_THIS_OBJECT);
}

// Moves what describes the object from the root into it, in the order of the label, under its present name. Of several
// keywords of one meaning the first moves.
void move_keywords(ObjDesc *root, ObjDesc *object, std::span<const char *const> patterns) {
    std::set<std::string> moved;
    for (Kwd *keyword = root->first_keyword; keyword;) {
        Kwd *const next = keyword->right_sibling;
        const std::string name = OaDealiasKwdName(keyword->name);
        const bool describes = std::any_of(patterns.begin(), patterns.end(), [&](const char *pattern) {
            return OdlWildCardCompare(pattern, keyword->name) != 0;
        });
        if (describes && !keyword->is_a_pointer && moved.insert(name).second) {
            OaFree(keyword->name);
            keyword->name = OaCopyText(name);
            OdlPasteKwd(OdlCutKwd(keyword), object);
        }
        keyword = next;
    }
}

// Pastes the object as the root's last child.
void add_object(ObjDesc *root, OdlTree object) {
    OdlPasteObjDesc(object.release(), root);
    ++root->child_count;
}

// An object described where the keyword stands that tells of it.
OdlTree new_object(const std::string &class_name, const Kwd *source) {
    return OdlTree(OdlNewObjDesc(class_name.c_str(), nullptr, nullptr, nullptr, nullptr, source->file_name, 0,
                                 source->line_number));
}

void add_histogram(ObjDesc *root, const PointedHistogram &histogram) {
    const Kwd *pointer = find_root_keyword(root, histogram.pointer);
    if (!pointer)
        return;
    OdlTree object = new_object(histogram.pointer + 1, pointer);
    OaStrtoKwdValue("ITEMS", object.get(), histogram.items);
    OaStrtoKwdValue("ITEM_BYTES", object.get(), "4");
    OaStrtoKwdValue("DATA_TYPE", object.get(), "LSB_UNSIGNED_INTEGER");
    add_object(root, std::move(object));
}

// The class that FILE_TYPE names, in upper case; empty when that is no name.
std::string class_named(const Kwd *file_type) {
    const std::string name = util_upper(util_trim(file_type->value ? file_type->value : "", " \"'"));
    const bool is_name = name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == std::string::npos;
    return is_name ? name : "";
}

}  // namespace

bool OaIsOlderLabel(const ObjDesc *root) {
    const char *ignored = nullptr;
    return root && !root->first_child && OaKwdValuetoStr("FILE_TYPE", root, &ignored) == 0;
}

int OaConvertOlderLabel(ObjDesc *root) {
    const Kwd *file_type = root ? find_root_keyword(root, "FILE_TYPE") : nullptr;
    if (!file_type || root->first_child) {
        OaReportFailure(501, "%s: the label has objects or no FILE_TYPE keyword.", routine);
        return 1;
    }
    OdlTree object = new_object(class_named(file_type), file_type);
    const OaObjectClass object_class = OaGetObjectClass(object.get());
    const std::span<const char *const> patterns = keywords_of(object_class);
    if (patterns.empty()) {
        OaReportFailure(530, "%s: FILE_TYPE = %.80s names no class of objects that can be shown.", routine,
                        file_type->value ? file_type->value : "");
        return 1;
    }
    move_keywords(root, object.get(), patterns);
    if (object_class == OA_IMAGE && !find_root_keyword(object.get(), "SAMPLE_TYPE"))
        OaStrtoKwdValue("SAMPLE_TYPE", object.get(), "UNSIGNED_INTEGER");
    add_object(root, std::move(object));
    if (object_class == OA_IMAGE)
        for (const PointedHistogram &histogram : histograms)
            add_histogram(root, histogram);
    return 0;
}
