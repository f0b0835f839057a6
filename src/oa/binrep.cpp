#include "oa/binrep.h"

#include "base/error.h"
#include "oa/binrep_layout.h"

#include <bit>
#include <charconv>
#include <map>
#include <string>
#include <string_view>

BinrepErrors binrep_errors;

namespace {

// Reads a list such as "9..15,0..0" or "'1.',1..7,24..31".
constexpr BitList compile_bits(std::string_view text) {
    BitList list;
    size_t at = 0;
    const auto number = [&] {
        int value = 0;
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
            value = value * 10 + (text[at] - '0');
        return value;
    };
    while (at < text.size()) {
        if (text[at] < '0' || text[at] > '9') {  // a comma or a quoted point
            ++at;
            if (text[at - 1] == '\'')
                at = text.find('\'', at) + 1;
            continue;
        }
        const int first = number();
        at += 2;
        const int last = number();
        const int count = last - first + 1;
        list.ranges[static_cast<size_t>(list.range_count++)] = {static_cast<uint8_t>(first),
                                                                static_cast<uint8_t>(count)};
        list.bits += count;
    }
    return list;
}

constexpr BinrepForm integer(const char *name, uint8_t size, char complement, const char *byte_order,
                             bool made_at_run_time = false) {
    BinrepLayout layout;
    layout.is_signed = complement == '2';
    layout.low_byte_first = byte_order[0] != '0';
    return {{name, size, 0, made_at_run_time ? 0 : -1, complement, byte_order, 0, "", "", made_at_run_time}, layout};
}

constexpr BinrepForm real(const char *name, uint8_t size, int32_t sign_bit, int32_t bias, const char *exponent_bits,
                          const char *mantissa_bits) {
    BinrepLayout layout;
    layout.is_real = true;
    layout.implied_one = std::string_view(mantissa_bits).starts_with("'1.'");
    layout.has_infinities = !std::string_view(name).starts_with("VAX");
    layout.exponent = compile_bits(exponent_bits);
    layout.mantissa = compile_bits(mantissa_bits);
    return {{name, size, 1, sign_bit, '\0', "", bias, exponent_bits, mantissa_bits, false}, layout};
}

// clang-format off
constexpr BinrepForm forms[] = {
    integer("UINT1",     1, '0', "0..0"),
    integer("INT1",      1, '2', "0..0"),
    integer("MSB_UINT2", 2, '0', "0..1"),
    integer("MSB_UINT4", 4, '0', "0..3"),
    integer("MSB_UINT8", 8, '0', "0..7"),
    integer("MSB_INT2",  2, '2', "0..1"),
    integer("MSB_INT4",  4, '2', "0..3"),
    integer("MSB_INT8",  8, '2', "0..7"),
    integer("LSB_UINT2", 2, '0', "1..0"),
    integer("LSB_UINT4", 4, '0', "3..0"),
    integer("LSB_UINT8", 8, '0', "7..0"),
    integer("LSB_INT2",  2, '2', "1..0"),
    integer("LSB_INT4",  4, '2', "3..0"),
    integer("LSB_INT8",  8, '2', "7..0"),
    real("IEEE_REAL4",   4,  0,   127, "1..8",         "'1.',9..31"),
    real("IEEE_REAL8",   8,  0,  1023, "1..11",        "'1.',12..63"),
    real("IEEE_REAL10", 10,  0, 16383, "1..15",        "16..16,'.',17..79"),
    real("VAXF_REAL4",   4,  8,   129, "9..15,0..0",   "'1.',1..7,24..31,16..23"),
    real("VAXD_REAL8",   8,  8,   129, "9..15,0..0",   "'1.',1..7,24..31,16..23,40..47,32..39,56..63,48..55"),
    real("VAXG_REAL8",   8,  8,  1025, "9..15,0..3",   "'1.',4..7,24..31,16..23,40..47,32..39,56..63,48..55"),
    real("VAXH_REAL16", 16,  8, 16385, "9..15,0..7",   "'1.',24..31,16..23,40..47,32..39,56..63,48..55,72..79,64..71,"
                                                       "88..95,80..87,104..111,96..103,120..127,112..119"),
    real("PC_REAL4",     4, 24,   127, "25..31,16..16", "'1.',17..23,8..15,0..7"),
    real("PC_REAL8",     8, 56,  1023, "57..63,48..51", "'1.',52..55,40..47,32..39,24..31,16..23,8..15,0..7"),
    real("PC_REAL10",   10, 72, 16383, "73..79,64..71", "56..56,'.',57..63,48..55,40..47,32..39,24..31,16..23,8..15,"
                                                        "0..7"),
};
// clang-format on

// The size that a name such as MSB_UINT3 ends in: 1 to 16, without leading zeros. 0 for any other name.
uint8_t run_time_size(std::string_view name) {
    constexpr std::string_view prefixes[] = {"MSB_INT", "MSB_UINT", "LSB_INT", "LSB_UINT"};
    for (const std::string_view prefix : prefixes) {
        if (!name.starts_with(prefix))
            continue;
        const std::string_view digits = name.substr(prefix.size());
        uint8_t size = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), size);
        const bool whole = error == std::errc() && end == digits.data() + digits.size();
        return whole && digits[0] != '0' && size <= 16 ? size : uint8_t{0};
    }
    return 0;
}

struct RunTimeForm {
    std::string byte_order;
    BinrepForm form;
};

// One record a name, made when first asked for; at most 64.
const BinrepDescrip *find_run_time_form(std::string_view name) {
    static std::map<std::string, RunTimeForm, std::less<>> made;
    const uint8_t size = run_time_size(name);
    if (size == 0)
        return nullptr;
    const auto [entry, is_new] = made.try_emplace(std::string(name));
    RunTimeForm &record = entry->second;
    if (is_new) {
        const std::string last = std::to_string(size - 1);
        record.byte_order = name.starts_with("MSB_") ? "0.." + last : last + "..0";
        const char complement = name.find("_UINT") != std::string_view::npos ? '0' : '2';
        record.form = integer(entry->first.c_str(), size, complement, record.byte_order.c_str(), true);
    }
    return &record.form.descrip;
}

}  // namespace

const BinrepDescrip *OalFindBinrepDescrip(const char *name) {
    if (!name || !*name)
        return nullptr;
    for (const BinrepForm &form : forms)
        if (std::string_view(form.descrip.name) == name)
            return &form.descrip;
    return find_run_time_form(name);
}

const OaNativeTypes &OalGetNativeCTypeInfo() {
    constexpr bool low_first = std::endian::native == std::endian::little;
    static const OaNativeTypes native = {OalFindBinrepDescrip(low_first ? "LSB_INT8" : "MSB_INT8"),
                                         OalFindBinrepDescrip(low_first ? "LSB_UINT8" : "MSB_UINT8"),
                                         OalFindBinrepDescrip(low_first ? "PC_REAL8" : "IEEE_REAL8")};
    return native;
}

void OalReportBinrepErrors(const char *routine) {
    const BinrepErrors &errors = binrep_errors;
    if (errors.overflows == 0 && errors.underflows == 0 && errors.reserved_operands == 0)
        return;
    OaReportFailure(710,
                    "%s: converted data lost values: %lld too large for their destination, %lld too small, "
                    "%lld VAX reserved operands.",
                    routine, static_cast<long long>(errors.overflows), static_cast<long long>(errors.underflows),
                    static_cast<long long>(errors.reserved_operands));
}

void OalResetBinrepErrors() {
    binrep_errors = {};
}
