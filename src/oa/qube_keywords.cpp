// What a QUBE node says of its qube.
#include "base/text.h"
#include "oa/qube_layout.h"
#include "oa/qube_stored.h"
#include "oa/value_text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr const char *routine = "OaGetQubeKeywords";
constexpr std::array<const char *, oa_qube_axes> axis_names = {"SAMPLE", "LINE", "BAND"};

// By OaQubeState.
constexpr std::array<const char *, oa_qube_specials> special_keywords = {
    "CORE_NULL", "CORE_LOW_REPR_SATURATION", "CORE_LOW_INSTR_SATURATION", "CORE_HIGH_INSTR_SATURATION",
    "CORE_HIGH_REPR_SATURATION"};

// The keyword's elements (a value counts as one), without quotes and units. False when it is absent.
bool elements_of(const ObjDesc *node, const std::string &keyword, std::vector<std::string> *out) {
    const char *text = nullptr;
    return OaKwdValuetoStr(keyword.c_str(), node, &text) == 0 && OaSequencetoStrArray(text, out) == 0;
}

std::string text_of(const ObjDesc *node, const std::string &keyword) {
    std::vector<std::string> elements;
    return elements_of(node, keyword, &elements) && !elements.empty() ? elements[0] : "";
}

// Labels say so where a keyword must be there but nothing is to be told.
bool says_nothing(const std::string &text) {
    const std::string word = util_upper(util_trim(text));
    return word.empty() || word == "N/A" || word == "UNK" || word == "NULL" || word == "NONE";
}

// Names and units are shown in one line, beside others.
std::string name_of(const std::string &text) {
    constexpr size_t longest = 120;
    return says_nothing(text) ? "" : util_short_line(text, longest);
}
std::string unit_of(const std::string &text) {
    constexpr size_t longest = 60;
    return says_nothing(text) ? "" : util_short_line(text, longest);
}

bool parse_number(const std::string &text, double *out) {
    return OalParseReal(text, out) && std::isfinite(*out);
}

// --- Sizes ----------------------------------------------------------------------------------------------------------

int fail_as_size(const std::string &keyword, const std::string &text) {
    OaReportFailure(502, "%s: %s = %s is not a size.", routine, keyword.c_str(), text.c_str());
    return 1;
}

// 0, or 1 after reporting. Where the keyword may be absent, one that is, or says nothing, leaves `out` as it is.
int read_size(const ObjDesc *node, const char *keyword, bool required, int64_t *out) {
    std::vector<std::string> elements;
    if (!elements_of(node, keyword, &elements)) {
        if (!required)
            return 0;
        OaReportFailure(531, "%s: %s keyword missing.", routine, keyword);
        return 1;
    }
    const std::string text = elements.empty() ? "" : elements[0];
    if (!required && elements.size() <= 1 && says_nothing(text))
        return 0;
    return elements.size() == 1 && OalParseInteger(text, out) && *out >= 1 ? 0 : fail_as_size(keyword, text);
}

// A list with one size for each axis. 0, or 1 after reporting.
int read_sizes(const char *keyword, const std::vector<std::string> &elements, const OaQubeKeywords &qube,
               int64_t minimum, std::array<int64_t, oa_qube_axes> *out) {
    if (elements.size() != static_cast<size_t>(qube.axes)) {
        OaReportFailure(502, "%s: %s has %zu values, AXES = %d.", routine, keyword, elements.size(), qube.axes);
        return 1;
    }
    for (size_t place = 0; place < elements.size(); ++place) {
        int64_t &size = (*out)[qube.order[place]];
        if (!OalParseInteger(elements[place], &size) || size < minimum)
            return fail_as_size(keyword, elements[place]);
    }
    return 0;
}

// --- Axes -----------------------------------------------------------------------------------------------------------

int read_axis_count(const ObjDesc *node, OaQubeKeywords *out) {
    std::vector<std::string> items;
    if (!elements_of(node, "CORE_ITEMS", &items)) {
        OaReportFailure(531, "%s: CORE_ITEMS keyword missing.", routine);
        return 1;
    }
    auto axes = static_cast<int64_t>(items.size());
    if (read_size(node, "AXES", false, &axes) != 0)
        return 1;
    if (axes < 1 || axes > oa_qube_axes) {
        OaReportFailure(520, "%s: AXES = %lld: qubes have 1 to %d axes here.", routine, static_cast<long long>(axes),
                        oa_qube_axes);
        return 1;
    }
    out->axes = static_cast<int>(axes);
    return 0;
}

int read_axis_names(const ObjDesc *node, OaQubeKeywords *out) {
    std::vector<std::string> names;
    if (!elements_of(node, "AXIS_NAME", &names))
        return 0;
    if (names.size() != static_cast<size_t>(out->axes)) {
        OaReportFailure(502, "%s: AXIS_NAME has %zu values, AXES = %d.", routine, names.size(), out->axes);
        return 1;
    }
    std::vector<OaQubeAxis> order;
    for (const std::string &name : names) {
        const std::string plain = util_upper(util_trim(name));
        const auto found = std::find(axis_names.begin(), axis_names.end(), plain);
        if (found == axis_names.end()) {
            OaReportFailure(520, "%s: AXIS_NAME has %s; the axes are SAMPLE, LINE and BAND.", routine, name.c_str());
            return 1;
        }
        const auto axis = static_cast<OaQubeAxis>(found - axis_names.begin());
        if (std::find(order.begin(), order.end(), axis) != order.end()) {
            OaReportFailure(502, "%s: AXIS_NAME has %s twice.", routine, plain.c_str());
            return 1;
        }
        order.push_back(axis);
    }
    for (const OaQubeAxis axis : {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS})
        if (std::find(order.begin(), order.end(), axis) == order.end())
            order.push_back(axis);
    std::copy(order.begin(), order.end(), out->order.begin());
    return 0;
}

int read_extents(const ObjDesc *node, OaQubeKeywords *out) {
    std::vector<std::string> elements;
    elements_of(node, "CORE_ITEMS", &elements);
    if (read_sizes("CORE_ITEMS", elements, *out, 1, &out->core_items) != 0)
        return 1;
    std::array<int64_t, oa_qube_axes> suffix_items = {};
    if (elements_of(node, "SUFFIX_ITEMS", &elements) && !(elements.size() == 1 && says_nothing(elements[0])) &&
        read_sizes("SUFFIX_ITEMS", elements, *out, 0, &suffix_items) != 0)
        return 1;
    for (size_t axis = 0; axis < oa_qube_axes; ++axis)
        out->suffixes[axis].items = suffix_items[axis];
    return 0;
}

// --- Core -----------------------------------------------------------------------------------------------------------

int read_core_number(const ObjDesc *node, const char *keyword, double *out) {
    const std::string text = text_of(node, keyword);
    if (says_nothing(text) || parse_number(text, out))
        return 0;
    OaReportFailure(502, "%s: %s = %s is not a number.", routine, keyword, text.c_str());
    return 1;
}

void read_special(const ObjDesc *node, const std::string &keyword, const OaQubeItem &item,
                  std::optional<uint64_t> *special, std::vector<std::string> *remarks) {
    const std::string text = text_of(node, keyword);
    if (says_nothing(text))
        return;
    *special = parse_stored_value(text, item);
    if (!*special)
        remarks->push_back(util_format("%s = %s is no value of %s of %lld bytes and does not count.", keyword.c_str(),
                                       text.c_str(), item.type.c_str(), static_cast<long long>(item.bytes)));
}

int read_core(const ObjDesc *node, OaQubeKeywords *out) {
    OaQubeItem &core = out->core;
    if (read_size(node, "CORE_ITEM_BYTES", true, &core.bytes) != 0)
        return 1;
    if (core.bytes != 1 && core.bytes != 2 && core.bytes != 4 && core.bytes != 8) {
        OaReportFailure(520, "%s: CORE_ITEM_BYTES = %lld; 1, 2, 4 and 8 are supported.", routine,
                        static_cast<long long>(core.bytes));
        return 1;
    }
    const char *type = nullptr;
    if (OaKwdValuetoStr("CORE_ITEM_TYPE", node, &type) != 0) {
        OaReportFailure(531, "%s: CORE_ITEM_TYPE keyword missing.", routine);
        return 1;
    }
    core.type = text_of(node, "CORE_ITEM_TYPE");
    if (OaQubeNumberKind(core) == OaNumberKind::None) {
        OaReportFailure(520, "%s: CORE_ITEM_TYPE = %s with CORE_ITEM_BYTES = %lld is not supported.", routine, type,
                        static_cast<long long>(core.bytes));
        return 1;
    }
    core.name = name_of(text_of(node, "CORE_NAME"));
    core.unit = unit_of(text_of(node, "CORE_UNIT"));
    for (size_t i = 0; i < special_keywords.size(); ++i)
        read_special(node, special_keywords[i], core, &core.specials[i], &out->remarks);
    read_special(node, "CORE_VALID_MINIMUM", core, &core.valid_minimum, &out->remarks);
    if (read_core_number(node, "CORE_BASE", &core.base) != 0)
        return 1;
    return read_core_number(node, "CORE_MULTIPLIER", &core.multiplier);
}

// --- Suffixes -------------------------------------------------------------------------------------------------------

// The keywords of one axis's suffixes, each with a value for all items or a list.
class SuffixLists {
  public:
    SuffixLists(const ObjDesc *node, OaQubeAxis axis, const OaQubeKeywords &qube, std::vector<std::string> *remarks)
        : prefix_(std::string(axis_names[axis]) + "_SUFFIX_"), qube_(qube), remarks_(remarks) {
        const int64_t items = qube.suffixes[axis].items;
        for (size_t i = 0; i < keywords.size(); ++i)
            take_list(node, i, items);
    }

    size_t longest() const {
        size_t longest = 0;
        for (const auto &list : lists_)
            longest = std::max(longest, list.is_list ? list.elements.size() : 0);
        return longest;
    }
    // `index` behind the lists: what holds for all items.
    OaQubeItem item(size_t index) {
        OaQubeItem item;
        item.type = qube_.core.type;
        item.bytes = qube_.suffix_bytes;
        item.name = name_of(text(name, index));
        item.unit = unit_of(text(unit, index));
        if (const std::string given = text(type, index); !says_nothing(given))
            item.type = given;
        const auto number = [&](Keyword keyword, double *out) {
            const std::string given = text(keyword, index);
            if (double value = 0; parse_number(given, &value))
                *out = value;
            else if (!says_nothing(given))
                remark(keyword, given);
        };
        if (const std::string given = text(bytes, index); !says_nothing(given)) {
            if (int64_t size = 0; OalParseInteger(given, &size) && size >= 1)
                item.bytes = size;
            else
                remark(bytes, given);
        }
        number(base, &item.base);
        number(multiplier, &item.multiplier);
        if (const std::string given = text(null, index); !says_nothing(given)) {
            item.specials[OA_QUBE_NULL] = parse_stored_value(given, item);
            if (!item.specials[OA_QUBE_NULL])
                remark(null, given);
        }
        return item;
    }

  private:
    enum Keyword : uint8_t { name, type, bytes, base, multiplier, null, unit };
    static constexpr std::array<const char *, 7> keywords = {"NAME",       "ITEM_TYPE", "ITEM_BYTES", "BASE",
                                                             "MULTIPLIER", "NULL",      "UNIT"};
    struct List {
        bool is_list = false;
        bool is_told = false;  // that an element does not count
        std::vector<std::string> elements;
    };

    void take_list(const ObjDesc *node, size_t keyword, int64_t items) {
        List &list = lists_[keyword];
        const char *value = nullptr;
        if (!elements_of(node, prefix_ + keywords[keyword], &list.elements) ||
            OaKwdValuetoStr((prefix_ + keywords[keyword]).c_str(), node, &value) != 0)
            return;
        list.is_list = OdlDataType(value) == VALUE_SEQUENCE || OdlDataType(value) == VALUE_SET;
        const auto count = static_cast<int64_t>(list.elements.size());
        if (!list.is_list || count == items)
            return;
        remarks_->push_back(util_format("%s%s has %lld values for %lld items; the rest is left open.", prefix_.c_str(),
                                        keywords[keyword], static_cast<long long>(count),
                                        static_cast<long long>(items)));
        if (count > items)
            list.elements.resize(static_cast<size_t>(items));
    }

    std::string text(Keyword keyword, size_t index) const {
        const List &list = lists_[keyword];
        const size_t place = list.is_list ? index : 0;
        return place < list.elements.size() ? list.elements[place] : "";
    }

    // Once for each keyword: lists may be long.
    void remark(Keyword keyword, const std::string &given) {
        if (!lists_[keyword].is_told)
            remarks_->push_back(
                util_format("%s%s = %s does not count.", prefix_.c_str(), keywords[keyword], given.c_str()));
        lists_[keyword].is_told = true;
    }

    std::string prefix_;
    const OaQubeKeywords &qube_;
    std::vector<std::string> *remarks_;
    std::array<List, keywords.size()> lists_;
};

int read_suffixes(const ObjDesc *node, OaQubeKeywords *out) {
    const bool has_suffixes = std::any_of(out->suffixes.begin(), out->suffixes.end(),
                                          [](const OaQubeSuffix &suffix) { return suffix.items > 0; });
    if (has_suffixes && read_size(node, "SUFFIX_BYTES", false, &out->suffix_bytes) != 0)
        return 1;
    for (const OaQubeAxis axis : {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS}) {
        OaQubeSuffix &suffix = out->suffixes[axis];
        if (suffix.items == 0)
            continue;
        SuffixLists lists(node, axis, *out, &out->remarks);
        for (size_t i = 0; i < lists.longest(); ++i)
            suffix.described.push_back(lists.item(i));
        suffix.others = lists.item(suffix.described.size());
    }
    return 0;
}

// --- Bands ----------------------------------------------------------------------------------------------------------

// NaN where an element is none; empty when the keyword is absent.
std::vector<double> numbers_of(const ObjDesc *node, const char *keyword) {
    std::vector<std::string> elements;
    if (!elements_of(node, keyword, &elements))
        return {};
    std::vector<double> numbers;
    for (const std::string &element : elements) {
        double number = 0;
        numbers.push_back(parse_number(element, &number) ? number : std::numeric_limits<double>::quiet_NaN());
    }
    return numbers;
}

// On the qube or a group in it; failing that, on a group beside it or what holds it.
void read_band_bins(const ObjDesc *node, OaBandBins *out) {
    const auto read_from = [out](const ObjDesc *holder) {
        if (out->centers.empty())
            out->centers = numbers_of(holder, "BAND_BIN_CENTER");
        if (out->widths.empty())
            out->widths = numbers_of(holder, "BAND_BIN_WIDTH");
        if (out->unit.empty())
            out->unit = unit_of(text_of(holder, "BAND_BIN_UNIT"));
    };
    read_from(node);
    for (const ObjDesc *child = node->first_child; child; child = child->right_sibling)
        read_from(child);
    if (!node->parent)
        return;
    for (const ObjDesc *beside = node->parent->first_child; beside; beside = beside->right_sibling)
        if (beside->is_a_group)
            read_from(beside);
    read_from(node->parent);
}

}  // namespace

const char *OaQubeAxisName(OaQubeAxis axis) {
    return axis_names[axis];
}

int OaGetQubeKeywords(const ObjDesc *node, OaQubeKeywords *out) {
    if (!out || !node || OaGetObjectClass(node) != OA_QUBE) {
        OaReportFailure(501, "%s: input ODL tree node must have class QUBE.", routine);
        return 1;
    }
    *out = {};
    if (read_axis_count(node, out) != 0 || read_axis_names(node, out) != 0 || read_extents(node, out) != 0 ||
        read_core(node, out) != 0 || read_suffixes(node, out) != 0)
        return 1;
    if (!plan_qube_layout(*out, true)) {
        OaReportFailure(502, "%s: CORE_ITEMS, SUFFIX_ITEMS and SUFFIX_BYTES describe a qube larger than any file.",
                        routine);
        return 1;
    }
    read_band_bins(node, &out->band_bins);
    const auto bands = static_cast<size_t>(out->core_items[OA_BAND_AXIS]);
    if (const size_t centers = out->band_bins.centers.size(); centers != 0 && centers != bands)
        out->remarks.push_back(util_format("BAND_BIN_CENTER has %zu values for %zu bands.", centers, bands));
    return 0;
}

const OaQubeItem &OaQubeSuffixItem(const OaQubeKeywords &qube, OaQubeAxis axis, int64_t item) {
    const OaQubeSuffix &suffix = qube.suffixes[axis];
    return item < static_cast<int64_t>(suffix.described.size()) ? suffix.described[static_cast<size_t>(item)]
                                                                : suffix.others;
}
