#include "oa/data_type.h"

#include <cstring>
#include <string_view>

namespace {

struct DataTypeName {
    std::string_view name;
    OaDataType type;
    OaDataType ascii_type;  // when the interchange format is ASCII
    bool is_alias;
};

// clang-format off
constexpr DataTypeName OaKRV_data_type_info[] = {
    {"ASCII_REAL",           OA_ASCII_REAL,            OA_ASCII_REAL,       false},
    {"ASCII_INTEGER",        OA_ASCII_INTEGER,         OA_ASCII_INTEGER,    false},
    {"ASCII_COMPLEX",        OA_ASCII_COMPLEX,         OA_ASCII_COMPLEX,    false},
    {"ASCII_BIT_STRING",     OA_ASCII_BIT_STRING,      OA_ASCII_BIT_STRING, false},
    {"BCD",                  OA_BCD,                   OA_ASCII_BIT_STRING, false},
    {"BINARY CODED DECIMAL", OA_BCD,                   OA_ASCII_BIT_STRING, true},
    {"BINARY_CODED_DECIMAL", OA_BCD,                   OA_ASCII_BIT_STRING, true},
    {"BIT_STRING",           OA_MSB_BIT_STRING,        OA_ASCII_BIT_STRING, true},
    {"BOOLEAN",              OA_BOOLEAN,               OA_ASCII_INTEGER,    false},
    {"CHARACTER",            OA_CHARACTER,             OA_CHARACTER,        false},
    {"COMPLEX",              OA_IEEE_COMPLEX,          OA_ASCII_COMPLEX,    true},
    {"DATE",                 OA_DATE,                  OA_DATE,             false},
    {"FLOAT",                OA_IEEE_REAL,             OA_ASCII_REAL,       true},
    {"IBM_COMPLEX",          OA_IBM_COMPLEX,           OA_ASCII_COMPLEX,    false},
    {"IBM_INTEGER",          OA_IBM_INTEGER,           OA_ASCII_INTEGER,    false},
    {"IBM_REAL",             OA_IBM_REAL,              OA_ASCII_REAL,       false},
    {"IBM_UNSIGNED_INTEGER", OA_IBM_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    false},
    {"IEEE_COMPLEX",         OA_IEEE_COMPLEX,          OA_ASCII_COMPLEX,    false},
    {"IEEE_REAL",            OA_IEEE_REAL,             OA_ASCII_REAL,       false},
    {"INTEGER",              OA_MSB_INTEGER,           OA_ASCII_INTEGER,    true},
    {"LSB_BIT_STRING",       OA_LSB_BIT_STRING,        OA_ASCII_BIT_STRING, false},
    {"LSB_INTEGER",          OA_LSB_INTEGER,           OA_ASCII_INTEGER,    false},
    {"LSB_UNSIGNED_INTEGER", OA_LSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    false},
    {"MAC_COMPLEX",          OA_IEEE_COMPLEX,          OA_ASCII_COMPLEX,    true},
    {"MAC_INTEGER",          OA_MSB_INTEGER,           OA_ASCII_INTEGER,    true},
    {"MAC_REAL",             OA_IEEE_REAL,             OA_ASCII_REAL,       true},
    {"MAC_UNSIGNED_INTEGER", OA_MSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    true},
    {"MSB_BIT_STRING",       OA_MSB_BIT_STRING,        OA_ASCII_BIT_STRING, false},
    {"MSB_INTEGER",          OA_MSB_INTEGER,           OA_ASCII_INTEGER,    false},
    {"MSB_UNSIGNED_INTEGER", OA_MSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    false},
    {"PC_COMPLEX",           OA_PC_COMPLEX,            OA_ASCII_COMPLEX,    false},
    {"PC_INTEGER",           OA_LSB_INTEGER,           OA_ASCII_INTEGER,    true},
    {"PC_REAL",              OA_PC_REAL,               OA_ASCII_REAL,       false},
    {"PC_UNSIGNED_INTEGER",  OA_LSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    true},
    {"REAL",                 OA_IEEE_REAL,             OA_ASCII_REAL,       true},
    {"SUN_COMPLEX",          OA_IEEE_COMPLEX,          OA_ASCII_COMPLEX,    true},
    {"SUN_INTEGER",          OA_MSB_INTEGER,           OA_ASCII_INTEGER,    true},
    {"SUN_REAL",             OA_IEEE_REAL,             OA_ASCII_REAL,       true},
    {"SUN_UNSIGNED_INTEGER", OA_MSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    true},
    {"TIME",                 OA_TIME,                  OA_TIME,             false},
    {"UNSIGNED_INTEGER",     OA_MSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    true},
    {"VAX_BIT_STRING",       OA_LSB_BIT_STRING,        OA_ASCII_INTEGER,    true},
    {"VAX_COMPLEX",          OA_VAX_COMPLEX,           OA_ASCII_COMPLEX,    false},
    {"VAX_DOUBLE",           OA_VAX_REAL,              OA_ASCII_COMPLEX,    true},
    {"VAX_INTEGER",          OA_LSB_INTEGER,           OA_ASCII_INTEGER,    true},
    {"VAX_REAL",             OA_VAX_REAL,              OA_ASCII_REAL,       false},
    {"VAX_UNSIGNED_INTEGER", OA_LSB_UNSIGNED_INTEGER,  OA_ASCII_INTEGER,    true},
    {"VAXG_COMPLEX",         OA_VAXG_COMPLEX,          OA_ASCII_COMPLEX,    false},
    {"VAXG_REAL",            OA_VAXG_REAL,             OA_ASCII_REAL,       false},
    // Its quotes belong to the name: a label's value, which loses its own, never equals it.
    {"\"N/A\"",              OA_NO_DATA_TYPE,          OA_NO_DATA_TYPE,     false},
};

struct ComplexType {
    OaDataType type;
    OaDataType half;
};
constexpr ComplexType complex_types[] = {
    {OA_IEEE_COMPLEX, OA_IEEE_REAL},
    {OA_IBM_COMPLEX,  OA_IBM_REAL},
    {OA_PC_COMPLEX,   OA_PC_REAL},
    {OA_VAX_COMPLEX,  OA_VAX_REAL},
    {OA_VAXG_COMPLEX, OA_VAXG_REAL},
};
// clang-format on

void remove_double_quotes(char *text) {
    char *start = text;
    while (*start == '"')
        ++start;
    size_t length = strlen(start);
    while (length > 0 && start[length - 1] == '"')
        --length;
    memmove(text, start, length);
    text[length] = '\0';
}

}  // namespace

OaDataType OaStrtoKRVDataType(char *name, OaInterchangeFormat interchange_format) {
    if (!name)
        return OA_NO_DATA_TYPE;
    remove_double_quotes(name);
    for (const DataTypeName &row : OaKRV_data_type_info)
        if (row.name == name)
            return interchange_format == OA_BINARY ? row.type : row.ascii_type;
    return OA_NO_DATA_TYPE;
}

const char *OaKRVDataTypetoStr(int code) {
    for (const DataTypeName &row : OaKRV_data_type_info)
        if (row.type == code && !row.is_alias)
            return row.name.data();
    return "UNK";
}

bool OalIsComplexType(OaDataType type) {
    return OalHalfOfComplex(type) != type;
}

OaDataType OalHalfOfComplex(OaDataType type) {
    for (const ComplexType &row : complex_types)
        if (row.type == type)
            return row.half;
    return type;
}

OaDataType OalComplexOfHalves(OaDataType half) {
    for (const ComplexType &row : complex_types)
        if (row.half == half)
            return row.type;
    return half;
}
