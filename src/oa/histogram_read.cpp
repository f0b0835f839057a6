// Histograms as the decoders want them: 32-bit counts, however they are stored.
#include "oa/binrep.h"
#include "oa/object_read.h"
#include "oa/sdt.h"

#include <bit>
#include <string>

namespace {

constexpr int64_t count_bytes = 4;

// Counts become the machine's integers, whatever the user's profile says.
class NativeProfile {
  public:
    NativeProfile() : saved_(Oa_profile) { Oa_profile = native(); }
    ~NativeProfile() { Oa_profile = saved_; }
    NativeProfile(const NativeProfile &) = delete;
    NativeProfile &operator=(const NativeProfile &) = delete;

  private:
    static OaProfile native() {
        OaProfile profile;
        profile.data_translation_profile = std::endian::native == std::endian::little ? 2 : 1;
        return profile;
    }

    OaProfile saved_;
};

// The forms that an item of a histogram has once it is read. Integers of odd sizes come as strings of bits.
struct Form {
    OaDataType type;
    const char *q_code;
    bool is_signed;
};
constexpr Form forms[] = {
    {OA_LSB_INTEGER, "LSB_INT", true},      {OA_LSB_UNSIGNED_INTEGER, "LSB_UINT", false},
    {OA_MSB_INTEGER, "MSB_INT", true},      {OA_MSB_UNSIGNED_INTEGER, "MSB_UINT", false},
    {OA_IBM_INTEGER, "MSB_INT", true},      {OA_IBM_UNSIGNED_INTEGER, "MSB_UINT", false},
    {OA_MSB_BIT_STRING, "MSB_UINT", false}, {OA_LSB_BIT_STRING, "LSB_UINT", false},
    {OA_BOOLEAN, "MSB_UINT", false},        {OA_PC_REAL, "PC_REAL", true},
    {OA_IEEE_REAL, "IEEE_REAL", true},
};

const Form *find_form(OaDataType type) {
    for (const Form &form : forms)
        if (form.type == type)
            return &form;
    return nullptr;
}

OaDataType type_of(const ObjDesc *node) {
    const char *text = nullptr;
    if (OaKwdValuetoStr("DATA_TYPE", node, &text) != 0)
        return OA_NO_DATA_TYPE;
    std::string name(text);
    return OaStrtoKRVDataType(name.data(), OA_BINARY);
}

// How the items that were read are represented; a string of bits is what `stored`, the label in the file, calls it.
const Form *form_of(const ObjDesc *stored, const ObjDesc *read) {
    const OaDataType type = type_of(read);
    if (type == OA_MSB_BIT_STRING || type == OA_LSB_BIT_STRING)
        if (const Form *form = find_form(type_of(stored)))
            return form;
    return find_form(type);
}

void describe_counts(ObjDesc *label, int64_t items, bool is_signed) {
    constexpr bool low_first = std::endian::native == std::endian::little;
    const OaDataType type = is_signed ? (low_first ? OA_LSB_INTEGER : OA_MSB_INTEGER)
                                      : (low_first ? OA_LSB_UNSIGNED_INTEGER : OA_MSB_UNSIGNED_INTEGER);
    OaStrtoKwdValue("DATA_TYPE", label, OaKRVDataTypetoStr(type));
    OaLongtoKwdValue("ITEM_BYTES", label, count_bytes);
    const char *present = nullptr;
    if (OaKwdValuetoStr("BYTES", label, &present) == 0)
        OaLongtoKwdValue("BYTES", label, items * count_bytes);
}

// Converts the items of an object that was read to counts. Null after reporting.
OaObject *with_counts(const char *routine, const ObjDesc *stored, OaObjectPtr read) {
    constexpr bool low_first = std::endian::native == std::endian::little;
    int64_t item_bytes = 0;
    const Form *form = form_of(stored, read->odl);
    if (!form || OaKwdValuetoLong("ITEM_BYTES", read->odl, &item_bytes) != 0 || item_bytes < 1) {
        OaReportFailure(520, "%s: can't convert the items of the HISTOGRAM to integers.", routine);
        return nullptr;
    }
    const BinrepDescrip *src = OalFindBinrepDescrip((form->q_code + std::to_string(item_bytes)).c_str());
    const char *name =
        form->is_signed ? (low_first ? "LSB_INT4" : "MSB_INT4") : (low_first ? "LSB_UINT4" : "MSB_UINT4");
    const BinrepDescrip *dst = OalFindBinrepDescrip(name);
    if (!src || !dst) {
        OaReportFailure(730, "%s: couldn't find q_code: %s%lld in binrep_descriptions", routine, form->q_code,
                        static_cast<long long>(item_bytes));
        return nullptr;
    }
    const int64_t items = read->size / item_bytes;
    const int64_t bytes = items * count_bytes;
    OaPtr<uint8_t> counts(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(bytes))));
    if (!counts) {
        OaReportFailure(720, "%s: OaMalloc failed to allocate %lld bytes for output buffer.", routine,
                        static_cast<long long>(bytes));
        return nullptr;
    }
    OalResetBinrepErrors();
    BinrepConvertRun(OalPlanBinrep(src, dst), read->data, counts.get(), items);
    OalReportBinrepErrors(routine);
    describe_counts(read->odl, items, form->is_signed);
    OdlTree label(read->odl);
    read->odl = nullptr;
    return OaNewOaObject(label.release(), counts.release(), bytes);
}

}  // namespace

OaObject *OaReadHistogram(const ObjDesc *node) {
    if (OaGetObjectClass(node) != OA_HISTOGRAM) {
        OaReportFailure(501, "%s: input ODL tree node must have class HISTOGRAM.", __func__);
        return nullptr;
    }
    const NativeProfile native;
    OaObjectPtr read(read_described_object(__func__, node));
    return read ? with_counts(__func__, node, std::move(read)) : nullptr;
}
