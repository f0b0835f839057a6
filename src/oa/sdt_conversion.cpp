// Choosing what happens to the items of a leaf, and what they become.
#include "oa/sdt_ascii.h"
#include "oa/sdt_walk.h"

#include <string>

namespace {

constexpr const char *routine = "OalDetermineConvertParameters";

bool is_integer_type(OaDataType type) {
    switch (type) {
        case OA_MSB_INTEGER:
        case OA_MSB_UNSIGNED_INTEGER:
        case OA_LSB_INTEGER:
        case OA_LSB_UNSIGNED_INTEGER:
        case OA_IBM_INTEGER:
        case OA_IBM_UNSIGNED_INTEGER:
            return true;
        default:
            return false;
    }
}

// Samples of an image, or of its line where the lines have a prefix or suffix.
bool holds_samples(const ObjDesc *node) {
    const ObjDesc *object = node->parent ? node->parent : node;
    return OaGetObjectClass(object) == OA_IMAGE;
}

// Integers of odd sizes are strings of bits to us.
OaDataType as_bit_string(OaDataType type, int64_t size) {
    if (size == 1 || size == 2 || size == 4)
        return type;
    if (type == OA_MSB_INTEGER)
        return OA_MSB_BIT_STRING;
    return type == OA_LSB_INTEGER ? OA_LSB_BIT_STRING : type;
}

// The profiles leave 8-byte integers as stored, which suits tables; whoever shows an image needs native samples.
struct WideInteger {
    OaDataType type;
    uint8_t profile;  // those in which the bytes must turn round
    OaTypeConversion conversion;
};
constexpr WideInteger wide_integers[] = {
    {OA_MSB_INTEGER, 2, {"MSB_INT8", OA_LSB_INTEGER, 8, "LSB_INT8", 0, OA_ASCII_INTEGER}},
    {OA_IBM_INTEGER, 2, {"MSB_INT8", OA_LSB_INTEGER, 8, "LSB_INT8", 0, OA_ASCII_INTEGER}},
    {OA_LSB_INTEGER, 1, {"LSB_INT8", OA_MSB_INTEGER, 8, "MSB_INT8", 0, OA_ASCII_INTEGER}},
    {OA_MSB_UNSIGNED_INTEGER, 2, {"MSB_UINT8", OA_LSB_UNSIGNED_INTEGER, 8, "LSB_UINT8", 0, OA_ASCII_INTEGER}},
    {OA_IBM_UNSIGNED_INTEGER, 2, {"MSB_UINT8", OA_LSB_UNSIGNED_INTEGER, 8, "LSB_UINT8", 0, OA_ASCII_INTEGER}},
    {OA_LSB_UNSIGNED_INTEGER, 1, {"LSB_UINT8", OA_MSB_UNSIGNED_INTEGER, 8, "MSB_UINT8", 0, OA_ASCII_INTEGER}},
};
const OaTypeConversion *wide_integer_conversion(OaDataType type) {
    for (const WideInteger &row : wide_integers)
        if (row.type == type && row.profile == Oa_profile.data_translation_profile)
            return &row.conversion;
    return nullptr;
}

// The description of a representation by its name, to which the size is added where it does not end in one.
const BinrepDescrip *find_binrep(std::string q_code, int64_t size) {
    if (!q_code.empty() && (q_code.back() < '0' || q_code.back() > '9'))
        q_code += std::to_string(size);
    return OalFindBinrepDescrip(q_code.c_str());
}

// Each gives 0, or 1 after reporting a representation that is not known.
int find_source_binrep(OaSlot &slot, const char *q_code) {
    slot.src.binrep = find_binrep(q_code, slot.src.size);
    if (slot.src.binrep)
        return 0;
    OaReportFailure(730, "%s: couldn't find q_code: %s in binrep_descriptions", routine, q_code);
    return 1;
}

int find_destination_binrep(OaSlot &slot, const OaTypeConversion &conversion) {
    slot.dst.data_type = conversion.dst_type;
    slot.dst.size = conversion.dst_size ? conversion.dst_size : slot.src.size;
    slot.dst.binrep = find_binrep(conversion.dst_q_code, slot.dst.size);
    if (slot.dst.binrep)
        return 0;
    OaReportFailure(730, "%s: couldn't find q_code: %s in binrep_descriptions for KRV_data_type: %s.", routine,
                    conversion.dst_q_code, OaKRVDataTypetoStr(conversion.dst_type));
    return 1;
}

int plan_binary_to_binary(ObjDesc *node, const OaTypeConversion &conversion) {
    OaSlot &slot = *OalSlotOf(node);
    if (find_source_binrep(slot, conversion.src_q_code) != 0 || find_destination_binrep(slot, conversion) != 0)
        return 1;
    slot.conversion_type = OA_BINARY_TO_BINARY;
    slot.plan = OalPlanBinrep(slot.src.binrep, slot.dst.binrep);
    if (slot.src.binrep->kind != slot.dst.binrep->kind)
        OaDeleteKwd("FORMAT", node);
    return 0;
}

int plan_ascii_to_binary(OaSlot &slot, const OaTypeConversion &conversion) {
    if (find_destination_binrep(slot, conversion) != 0)
        return 1;
    OalPlanAsciiToBinary(&slot);
    return 0;
}

void plan_copy(OaSlot &slot) {
    slot.conversion_type = OA_COPY;
    slot.dst.data_type = slot.src.data_type;
    slot.dst.size = slot.src.size;
    slot.dst.alignment_req = 1;
}

// BIT_COLUMNs count their bits from the first stored byte on, so that bytes turned round would take them apart.
bool holds_bit_columns(const ObjDesc *node) {
    for (const ObjDesc *child = LeftmostSDTChild(node); child; child = RightSDTSibling(child))
        if (OaGetObjectClass(child) == OA_BIT_COLUMN)
            return true;
    return false;
}

int alignment_of(int64_t size) {
    constexpr uint8_t two_bytes = 1;
    constexpr uint8_t natural = 2;
    if (size != 2 && size != 4 && size != 8 && size != 16)
        return 1;
    switch (Oa_profile.dst_alignment_type) {
        case two_bytes:
            return 2;
        case natural:
            return size >= 8 ? 8 : static_cast<int>(size);
        default:
            return 1;
    }
}

}  // namespace

int OalDetermineConvertParameters(ObjDesc *node, OaInterchangeFormat src_format, OaInterchangeFormat dst_format) {
    OaSlot &slot = *OalSlotOf(node);
    const OaDataType label_type = slot.src.data_type;
    const int64_t size = slot.src.size;
    slot.src.data_type = as_bit_string(label_type, size);
    const OaTypeConversion *conversion =
        OalGetTypeConversionFromProfile(slot.src.data_type, size, src_format, dst_format);
    if (src_format == OA_BINARY && dst_format == OA_BINARY && size == 8 && is_integer_type(label_type) &&
        holds_samples(node)) {
        slot.src.data_type = label_type;
        conversion = wide_integer_conversion(label_type);
    }
    if (slot.src.data_type == OA_ASCII_BIT_STRING && dst_format == OA_BINARY) {
        OaReportFailure(520, "Can't convert ASCII_BIT_STRING to binary!");
        conversion = nullptr;
    }

    if (src_format == OA_BINARY && dst_format == OA_ASCII && slot.src.data_type == OA_NO_DATA_TYPE) {
        slot.conversion_type = OA_SKIP;
        slot.dst.data_type = OA_NO_DATA_TYPE;
        slot.dst.size = 0;
        return 0;
    }
    const bool keeps_bits = src_format == OA_BINARY && dst_format == OA_BINARY && holds_bit_columns(node);
    if (!conversion || keeps_bits || (dst_format == OA_BINARY && !conversion->dst_q_code)) {
        plan_copy(slot);
        return 0;
    }
    if (dst_format == OA_ASCII) {
        if (conversion->src_q_code && find_source_binrep(slot, conversion->src_q_code) != 0)
            return 1;
        return OalPlanBinaryToAscii(node, conversion->ascii_type, conversion->ascii_width);
    }
    const int failed =
        src_format == OA_ASCII ? plan_ascii_to_binary(slot, *conversion) : plan_binary_to_binary(node, *conversion);
    slot.dst.alignment_req = alignment_of(slot.dst.size);
    return failed;
}
