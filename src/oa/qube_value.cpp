// Stored values of qube items: special ones, and what the others mean.
#include "base/text.h"
#include "oa/binrep.h"
#include "oa/data_type.h"
#include "oa/qube_stored.h"
#include "oa/value_text.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

// By OaQubeState.
constexpr std::array<const char *, OA_QUBE_VALID + 1> state_names = {"NULL",
                                                                     "LOW_REPR_SATURATION",
                                                                     "LOW_INSTR_SATURATION",
                                                                     "HIGH_INSTR_SATURATION",
                                                                     "HIGH_REPR_SATURATION",
                                                                     "BELOW_MINIMUM",
                                                                     "NOT_FINITE",
                                                                     ""};

OaDataType type_of(const OaQubeItem &item) {
    std::string name = item.type;
    return OaStrtoKRVDataType(name.data(), OA_BINARY);
}

uint64_t largest_of(int64_t bytes) {
    return bytes >= 8 ? UINT64_MAX : (uint64_t{1} << (8 * bytes)) - 1;
}

// --- Texts of special values ----------------------------------------------------------------------------------------

bool parse_unsigned(std::string_view text, int radix, uint64_t *out) {
    const auto [stopped, error] = std::from_chars(text.data(), text.data() + text.size(), *out, radix);
    return error == std::errc() && stopped == text.data() + text.size();
}

// "16#FF7FFFFB#"
bool parse_pattern(std::string_view text, uint64_t *out) {
    const size_t mark = text.find('#');
    uint64_t radix = 0;
    if (mark == std::string_view::npos || !parse_unsigned(text.substr(0, mark), 10, &radix) || radix < 2 ||
        radix > 16 || !text.ends_with('#'))
        return false;
    const std::string_view digits = text.substr(mark + 1);
    return parse_unsigned(digits.substr(0, digits.size() - 1), static_cast<int>(radix), out);
}

// The native real whose stored form has the pattern's bits, its sign and exponent first.
uint64_t native_real(uint64_t pattern, const OaQubeItem &item) {
    const char *form = nullptr;
    switch (type_of(item)) {
        case OA_VAX_REAL:
            form = item.bytes == 4 ? "VAXF_REAL4" : "VAXD_REAL8";
            break;
        case OA_VAXG_REAL:
            form = "VAXG_REAL8";
            break;
        default:
            return pattern;
    }
    // VAX words have their low byte first.
    uint8_t bytes[8];
    for (int64_t i = 0; i < item.bytes; ++i)
        bytes[i ^ 1] = static_cast<uint8_t>(pattern >> (8 * (item.bytes - 1 - i)));
    const bool low_byte_first = std::endian::native == std::endian::little;
    const char *native4 = low_byte_first ? "PC_REAL4" : "IEEE_REAL4";
    const char *native8 = low_byte_first ? "PC_REAL8" : "IEEE_REAL8";
    uint8_t native[8] = {};
    BinrepConvert(bytes, native, OalFindBinrepDescrip(form), OalFindBinrepDescrip(item.bytes == 4 ? native4 : native8));
    if (item.bytes == 8)
        return std::bit_cast<uint64_t>(native);
    uint32_t bits = 0;
    memcpy(&bits, native, sizeof bits);
    return bits;
}

std::optional<uint64_t> real_bits(double value, int64_t bytes) {
    if (!std::isfinite(value))
        return std::nullopt;
    if (bytes == 8)
        return std::bit_cast<uint64_t>(value);
    // Half a unit beyond the greatest float still rounds to it; further the conversion has no result.
    constexpr double beyond = 3.4028235677973366e38;
    if (std::fabs(value) >= beyond)
        return std::nullopt;
    return std::bit_cast<uint32_t>(static_cast<float>(value));
}

std::optional<uint64_t> integer_bits(std::string_view text, OaNumberKind kind, int64_t bytes) {
    uint64_t large = 0;
    if (kind == OaNumberKind::Unsigned && parse_unsigned(text, 10, &large))
        return large <= largest_of(bytes) ? std::optional(large) : std::nullopt;
    int64_t value = 0;
    if (!OalParseInteger(text, &value)) {
        // "-32768.0"
        double real = 0;
        if (!OalParseReal(text, &real) || std::fabs(real) >= 0x1p53 || real != std::trunc(real))
            return std::nullopt;
        value = static_cast<int64_t>(real);
    }
    const int64_t limit = static_cast<int64_t>(largest_of(bytes) >> 1);
    const bool fits = kind == OaNumberKind::Signed ? value >= -limit - 1 && value <= limit
                                                   : value >= 0 && static_cast<uint64_t>(value) <= largest_of(bytes);
    return fits ? std::optional(static_cast<uint64_t>(value) & largest_of(bytes)) : std::nullopt;
}

// --- Samples --------------------------------------------------------------------------------------------------------

template <typename T>
using Bits = std::conditional_t<
    sizeof(T) == 1, uint8_t,
    std::conditional_t<sizeof(T) == 2, uint16_t, std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>>>;

// An item's values as native samples of type T.
template <typename T>
class ValueReader {
  public:
    explicit ValueReader(const OaQubeItem &item) : base_(item.base), multiplier_(item.multiplier) {
        for (size_t i = 0; i < oa_qube_specials; ++i)
            if (item.specials[i])
                specials_[count_++] = {value(*item.specials[i]), bits(*item.specials[i]), static_cast<OaQubeState>(i)};
        if (item.valid_minimum)
            minimum_ = value(*item.valid_minimum);
    }

    OaQubeValue read(const uint8_t *sample) const {
        T stored;
        memcpy(&stored, sample, sizeof stored);
        // By bits first: a special value may be a NaN. Then by value: zeros have two forms.
        for (size_t i = 0; i < count_; ++i)
            if (specials_[i].bits == std::bit_cast<Bits<T>>(stored) || specials_[i].value == stored)
                return {specials_[i].state, 0};
        if constexpr (std::is_floating_point_v<T>)
            if (!std::isfinite(stored))
                return {OA_QUBE_NOT_FINITE, 0};
        if (minimum_ && stored < *minimum_)
            return {OA_QUBE_BELOW_MINIMUM, 0};
        const double physical = base_ + multiplier_ * static_cast<double>(stored);
        return std::isfinite(physical) ? OaQubeValue{OA_QUBE_VALID, physical} : OaQubeValue{OA_QUBE_NOT_FINITE, 0};
    }

    // Physical values of `count` samples, NaN where there is no data; the same as of one by one. Loops without
    // branches, which become vectors.
    void read_piece(const uint8_t *samples, size_t count, double *out) const {
        constexpr double no_data = std::numeric_limits<double>::quiet_NaN();
        std::array<T, piece> stored;
        memcpy(stored.data(), samples, count * sizeof(T));
        for (size_t i = 0; i < count; ++i) {
            const double physical = base_ + multiplier_ * static_cast<double>(stored[i]);
            out[i] = std::fabs(physical) <= DBL_MAX ? physical : no_data;
        }
        for (size_t s = 0; s < count_; ++s) {
            const T special = specials_[s].value;  // one that is a NaN, only its bits would find: it is no data anyway
            for (size_t i = 0; i < count; ++i)
                out[i] = stored[i] == special ? no_data : out[i];
        }
        if (!minimum_)
            return;
        const T minimum = *minimum_;
        for (size_t i = 0; i < count; ++i)
            out[i] = stored[i] < minimum ? no_data : out[i];
    }

    static constexpr size_t piece = 1024;  // samples at most

  private:
    struct Special {
        T value;
        Bits<T> bits;
        OaQubeState state;
    };
    static Bits<T> bits(uint64_t native) { return static_cast<Bits<T>>(native); }
    static T value(uint64_t native) { return std::bit_cast<T>(bits(native)); }

    double base_;
    double multiplier_;
    std::array<Special, oa_qube_specials> specials_ = {};
    size_t count_ = 0;
    std::optional<T> minimum_;
};

// Calls `use` with a ValueReader for the item; false when the item holds no numbers.
template <typename Use>
bool with_reader(const OaQubeItem &item, Use use) {
    const OaNumberKind kind = OaQubeNumberKind(item);
    const bool is_signed = kind == OaNumberKind::Signed;
    if (kind == OaNumberKind::None)
        return false;
    if (kind == OaNumberKind::Real)
        item.bytes == 4 ? use(ValueReader<float>(item)) : use(ValueReader<double>(item));
    else if (item.bytes == 1)
        is_signed ? use(ValueReader<int8_t>(item)) : use(ValueReader<uint8_t>(item));
    else if (item.bytes == 2)
        is_signed ? use(ValueReader<int16_t>(item)) : use(ValueReader<uint16_t>(item));
    else if (item.bytes == 4)
        is_signed ? use(ValueReader<int32_t>(item)) : use(ValueReader<uint32_t>(item));
    else
        is_signed ? use(ValueReader<int64_t>(item)) : use(ValueReader<uint64_t>(item));
    return true;
}

// Calls `use` with the physical values of some samples after others, NaN where there is no data; there is room for a
// whole piece. False when the item holds no numbers.
template <typename Use>
bool for_pieces(const OaQubeItem &item, const uint8_t *samples, int64_t count, Use use) {
    return with_reader(item, [&](const auto &reader) {
        constexpr size_t piece = std::remove_cvref_t<decltype(reader)>::piece;
        std::array<double, piece> values;
        for (int64_t done = 0; done < count;) {
            const auto some = static_cast<size_t>(std::min<int64_t>(piece, count - done));
            reader.read_piece(samples + done * item.bytes, some, values.data());
            use(values.data(), some);
            done += static_cast<int64_t>(some);
        }
    });
}

// Physical values may lie beyond what a float holds.
float as_float(double value) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr auto limit = static_cast<double>(FLT_MAX);
    const float rounded = value > limit ? infinity : static_cast<float>(value);
    return value < -limit ? -infinity : rounded;
}

template <typename Number, typename Convert>
void put_physical_values(const OaQubeItem &item, const void *samples, int64_t count, Number *out, Convert convert) {
    const bool known =
        for_pieces(item, static_cast<const uint8_t *>(samples), count, [&](const double *values, size_t some) {
            for (size_t i = 0; i < some; ++i)
                out[i] = convert(values[i]);
            out += some;
        });
    if (!known)
        std::fill(out, out + count, std::numeric_limits<Number>::quiet_NaN());
}

}  // namespace

const char *OaQubeStateName(OaQubeState state) {
    return state_names[state];
}

OaNumberKind OaQubeNumberKind(const OaQubeItem &item) {
    const OaDataType type = type_of(item);
    switch (type) {
        case OA_IEEE_REAL:
        case OA_PC_REAL:
        case OA_VAX_REAL:
            return item.bytes == 4 || item.bytes == 8 ? OaNumberKind::Real : OaNumberKind::None;
        case OA_VAXG_REAL:
            return item.bytes == 8 ? OaNumberKind::Real : OaNumberKind::None;
        default:
            break;
    }
    if (item.bytes != 1 && item.bytes != 2 && item.bytes != 4 && item.bytes != 8)
        return OaNumberKind::None;
    switch (type) {
        case OA_MSB_INTEGER:
        case OA_LSB_INTEGER:
        case OA_IBM_INTEGER:
            return OaNumberKind::Signed;
        case OA_MSB_UNSIGNED_INTEGER:
        case OA_LSB_UNSIGNED_INTEGER:
        case OA_IBM_UNSIGNED_INTEGER:
            return OaNumberKind::Unsigned;
        case OA_BOOLEAN:
            return item.bytes == 8 ? OaNumberKind::None : OaNumberKind::Unsigned;
        default:
            return OaNumberKind::None;
    }
}

std::optional<uint64_t> parse_stored_value(std::string_view text, const OaQubeItem &item) {
    const OaNumberKind kind = OaQubeNumberKind(item);
    if (kind == OaNumberKind::None)
        return std::nullopt;
    text = util_trim(text);
    uint64_t pattern = 0;
    if (parse_pattern(text, &pattern)) {
        if (pattern > largest_of(item.bytes))
            return std::nullopt;
        return kind == OaNumberKind::Real ? native_real(pattern, item) : pattern;
    }
    if (kind != OaNumberKind::Real)
        return integer_bits(text, kind, item.bytes);
    double value = 0;
    return OalParseReal(text, &value) ? real_bits(value, item.bytes) : std::nullopt;
}

OaQubeValue OaQubeValueOf(const OaQubeItem &item, const void *native_sample) {
    OaQubeValue value;
    with_reader(item, [&](const auto &reader) { value = reader.read(static_cast<const uint8_t *>(native_sample)); });
    return value;
}

void OaQubePhysicalValues(const OaQubeItem &item, const void *native_samples, int64_t count, double *out) {
    put_physical_values(item, native_samples, count, out, [](double value) { return value; });
}

void OaQubePhysicalValues(const OaQubeItem &item, const void *native_samples, int64_t count, float *out) {
    put_physical_values(item, native_samples, count, out, as_float);
}

void OaQubeWidenRange(const OaQubeItem &item, const void *native_samples, int64_t count, double *minimum,
                      double *maximum) {
    constexpr size_t lanes = 8;  // comparisons that need not wait for each other
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::array<double, lanes> least;
    std::array<double, lanes> greatest;
    least.fill(infinity);
    greatest.fill(-infinity);
    const auto *samples = static_cast<const uint8_t *>(native_samples);
    for_pieces(item, samples, count, [&](double *values, size_t some) {
        const size_t whole = (some + lanes - 1) / lanes * lanes;
        std::fill(values + some, values + whole, std::numeric_limits<double>::quiet_NaN());
        for (size_t i = 0; i < whole; i += lanes)
            for (size_t lane = 0; lane < lanes; ++lane) {  // a comparison with NaN is false
                const double value = values[i + lane];
                least[lane] = value < least[lane] ? value : least[lane];
                greatest[lane] = value > greatest[lane] ? value : greatest[lane];
            }
    });
    *minimum = std::min(*minimum, *std::min_element(least.begin(), least.end()));
    *maximum = std::max(*maximum, *std::max_element(greatest.begin(), greatest.end()));
}
