// The names by which labels call storage types, and what each is converted to.
#pragma once

#include "oa/oa.h"

#include <cstdint>

enum OaDataType : uint8_t {
    OA_NO_DATA_TYPE = 0,
    OA_ASCII_INTEGER = 1,
    OA_ASCII_COMPLEX = 2,
    OA_MSB_BIT_STRING = 3,
    OA_BOOLEAN = 4,
    OA_CHARACTER = 5,
    OA_IEEE_COMPLEX = 6,
    OA_DATE = 7,
    OA_IEEE_REAL = 8,
    OA_IBM_COMPLEX = 9,
    OA_IBM_INTEGER = 10,
    OA_IBM_UNSIGNED_INTEGER = 11,
    OA_LSB_BIT_STRING = 13,
    OA_LSB_INTEGER = 14,
    OA_LSB_UNSIGNED_INTEGER = 15,
    OA_MSB_INTEGER = 16,
    OA_MSB_UNSIGNED_INTEGER = 17,
    OA_PC_COMPLEX = 18,
    OA_PC_REAL = 19,
    OA_TIME = 20,
    OA_VAX_COMPLEX = 21,
    OA_VAX_REAL = 22,
    OA_VAXG_COMPLEX = 25,
    OA_VAXG_REAL = 26,
    OA_IBM_REAL = 27,
    OA_ASCII_BIT_STRING = 28,
    OA_BCD = 29,
    OA_ASCII_REAL = 99,
    OA_STRUCTURE = 255,  // a structural slot without a type of its own
};

// Code of a label's name; for other formats than OA_BINARY the code of its ASCII form. Double quotes at both ends are
// removed from `name` in place: pass a copy. OA_NO_DATA_TYPE when no row of the table has the name.
OaDataType OaStrtoKRVDataType(char *name, OaInterchangeFormat interchange_format);
// The canonical name, or "UNK".
const char *OaKRVDataTypetoStr(int code);

bool OalIsComplexType(OaDataType type);
// The type of a complex type's two halves, and the complex type of two such; a type that has none is its own.
OaDataType OalHalfOfComplex(OaDataType type);
OaDataType OalComplexOfHalves(OaDataType half);

// What a translation profile does with one source type and size.
struct OaTypeConversion {
    const char *src_q_code;  // name of the source's representation without its size; null: bytes are not interpreted
    OaDataType dst_type;
    int dst_size;            // bytes of one item; 0: as the source
    const char *dst_q_code;  // null: copy
    int ascii_width;         // of the default ASCII form, its leading blank included
    OaDataType ascii_type;
};
// The entry of profile Oa_profile.data_translation_profile for a source type and item size (bytes; half size for
// complex types), or null when data of that type are copied.
const OaTypeConversion *OalGetTypeConversionFromProfile(OaDataType type, int64_t size, OaInterchangeFormat src_format,
                                                        OaInterchangeFormat dst_format);
