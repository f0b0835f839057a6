// What the translation profiles make of each source type.
#include "oa/data_type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

namespace {

enum class Destination { signed_integer, unsigned_integer, real };

struct Source {
    OaDataType type;
    int size;                // bytes; 0: any
    const char *src_q_code;  // null: not a binary representation
    Destination destination;
    int dst_size;     // bytes of the binary destination
    int ascii_width;  // of the default ASCII form, its leading blank included
};

// clang-format off
constexpr Source binary_sources[] = {
    {OA_MSB_INTEGER,          1, "INT1",        Destination::signed_integer,   1,  5},
    {OA_MSB_INTEGER,          2, "MSB_INT",     Destination::signed_integer,   2,  7},
    {OA_MSB_INTEGER,          4, "MSB_INT",     Destination::signed_integer,   4, 12},
    {OA_IBM_INTEGER,          1, "INT1",        Destination::signed_integer,   1,  5},
    {OA_IBM_INTEGER,          2, "MSB_INT",     Destination::signed_integer,   2,  7},
    {OA_IBM_INTEGER,          4, "MSB_INT",     Destination::signed_integer,   4, 12},
    {OA_LSB_INTEGER,          1, "INT1",        Destination::signed_integer,   1,  5},
    {OA_LSB_INTEGER,          2, "LSB_INT",     Destination::signed_integer,   2,  7},
    {OA_LSB_INTEGER,          4, "LSB_INT",     Destination::signed_integer,   4, 12},
    {OA_MSB_UNSIGNED_INTEGER, 1, "UINT1",       Destination::unsigned_integer, 1,  4},
    {OA_MSB_UNSIGNED_INTEGER, 2, "MSB_UINT",    Destination::unsigned_integer, 2,  6},
    {OA_MSB_UNSIGNED_INTEGER, 4, "MSB_UINT",    Destination::unsigned_integer, 4, 11},
    {OA_IBM_UNSIGNED_INTEGER, 1, "UINT1",       Destination::unsigned_integer, 1,  4},
    {OA_IBM_UNSIGNED_INTEGER, 2, "MSB_UINT",    Destination::unsigned_integer, 2,  6},
    {OA_IBM_UNSIGNED_INTEGER, 4, "MSB_UINT",    Destination::unsigned_integer, 4, 11},
    {OA_LSB_UNSIGNED_INTEGER, 1, "UINT1",       Destination::unsigned_integer, 1,  4},
    {OA_LSB_UNSIGNED_INTEGER, 2, "LSB_UINT",    Destination::unsigned_integer, 2,  6},
    {OA_LSB_UNSIGNED_INTEGER, 4, "LSB_UINT",    Destination::unsigned_integer, 4, 11},
    {OA_BOOLEAN,              1, "UINT1",       Destination::unsigned_integer, 1,  4},
    {OA_BOOLEAN,              2, "MSB_UINT",    Destination::unsigned_integer, 2,  6},
    {OA_BOOLEAN,              4, "MSB_UINT",    Destination::unsigned_integer, 4, 11},
    {OA_IEEE_REAL,            4, "IEEE_REAL",   Destination::real,             4, 15},
    {OA_IEEE_REAL,            8, "IEEE_REAL",   Destination::real,             8, 23},
    {OA_IEEE_REAL,           10, "IEEE_REAL",   Destination::real,             8, 23},
    {OA_PC_REAL,              4, "PC_REAL",     Destination::real,             4, 15},
    {OA_PC_REAL,              8, "PC_REAL",     Destination::real,             8, 23},
    {OA_PC_REAL,             10, "PC_REAL",     Destination::real,             8, 23},
    {OA_VAX_REAL,             4, "VAXF_REAL4",  Destination::real,             4, 15},
    {OA_VAX_REAL,             8, "VAXD_REAL8",  Destination::real,             8, 23},
    {OA_VAX_REAL,            16, "VAXH_REAL16", Destination::real,             8, 23},
    {OA_VAXG_REAL,            8, "VAXG_REAL8",  Destination::real,             8, 23},
};

constexpr Source ascii_sources[] = {
    {OA_ASCII_INTEGER,        0, nullptr,       Destination::signed_integer,   4,  0},
    {OA_ASCII_REAL,           0, nullptr,       Destination::real,             8,  0},
};
// clang-format on

// Bits are never interpreted, only printed.
constexpr OaTypeConversion bits_to_ascii = {nullptr, OA_NO_DATA_TYPE, 0, nullptr, 0, OA_ASCII_BIT_STRING};

struct Entry {
    OaDataType type;
    int size;
    OaTypeConversion conversion;
};

constexpr OaTypeConversion conversion_of(const Source &source, bool low_byte_first) {
    OaTypeConversion conversion = {};
    conversion.src_q_code = source.src_q_code;
    conversion.dst_size = source.dst_size;
    conversion.ascii_width = source.ascii_width;
    conversion.ascii_type = OA_ASCII_INTEGER;
    switch (source.destination) {
        case Destination::signed_integer:
            conversion.dst_type = low_byte_first ? OA_LSB_INTEGER : OA_MSB_INTEGER;
            conversion.dst_q_code = source.dst_size == 1 ? "INT1" : low_byte_first ? "LSB_INT" : "MSB_INT";
            break;
        case Destination::unsigned_integer:
            conversion.dst_type = low_byte_first ? OA_LSB_UNSIGNED_INTEGER : OA_MSB_UNSIGNED_INTEGER;
            conversion.dst_q_code = source.dst_size == 1 ? "UINT1" : low_byte_first ? "LSB_UINT" : "MSB_UINT";
            break;
        case Destination::real:
            conversion.dst_type = low_byte_first ? OA_PC_REAL : OA_IEEE_REAL;
            conversion.dst_q_code = low_byte_first ? "PC_REAL" : "IEEE_REAL";
            conversion.ascii_type = OA_ASCII_REAL;
            break;
    }
    return conversion;
}

template <size_t rows>
constexpr std::array<Entry, rows> entries_of(const Source (&sources)[rows], bool low_byte_first) {
    std::array<Entry, rows> entries = {};
    for (size_t i = 0; i < rows; ++i)
        entries[i] = {sources[i].type, sources[i].size, conversion_of(sources[i], low_byte_first)};
    return entries;
}

constexpr auto binary_low_first = entries_of(binary_sources, true);
constexpr auto binary_high_first = entries_of(binary_sources, false);
constexpr auto ascii_low_first = entries_of(ascii_sources, true);
constexpr auto ascii_high_first = entries_of(ascii_sources, false);

const OaTypeConversion *find(std::span<const Entry> entries, OaDataType type, int64_t size) {
    for (const Entry &entry : entries)
        if (entry.type == type && (entry.size == 0 || entry.size == size))
            return &entry.conversion;
    return nullptr;
}

}  // namespace

const OaTypeConversion *OalGetTypeConversionFromProfile(OaDataType type, int64_t size, OaInterchangeFormat src_format,
                                                        OaInterchangeFormat dst_format) {
    // Data left as stored still need the machine's forms where they are made from text.
    constexpr uint8_t as_stored = 0;
    const uint8_t profile = Oa_profile.data_translation_profile;
    const bool low_byte_first = profile == as_stored ? std::endian::native == std::endian::little : profile != 1;
    if (src_format == OA_ASCII) {
        if (dst_format != OA_BINARY)
            return nullptr;
        return find(low_byte_first ? ascii_low_first : ascii_high_first, type, size);
    }
    if (dst_format == OA_ASCII && (type == OA_MSB_BIT_STRING || type == OA_LSB_BIT_STRING || type == OA_BCD))
        return &bits_to_ascii;
    if (dst_format == OA_BINARY && profile == as_stored)
        return nullptr;
    return find(low_byte_first ? std::span<const Entry>(binary_low_first) : std::span<const Entry>(binary_high_first),
                OalHalfOfComplex(type), size);
}
