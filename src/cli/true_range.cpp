#include "cli/true_range.h"

#include "base/text.h"
#include "oa/data_type.h"

#include <limits>

namespace {

// Before anything was seen: the first value replaces both.
template <typename T>
constexpr Extremes<T> nothing = {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};

template <typename T, typename Wide>
void widen(Extremes<Wide> *known, const void *samples, int64_t count) {
    const Extremes<T> found = widened<Infinities::PassedOver>(static_cast<const T *>(samples), count, nothing<T>);
    if (found.minimum > found.maximum)
        return;
    known->minimum = std::min<Wide>(known->minimum, found.minimum);
    known->maximum = std::max<Wide>(known->maximum, found.maximum);
}

OaDataType type_of(std::string name) {
    return OaStrtoKRVDataType(name.data(), OA_BINARY);
}

}  // namespace

TrueRange::TrueRange(const std::string &sample_type, int64_t sample_bits)
    : bits_(sample_bits), signed_(nothing<int64_t>), unsigned_(nothing<uint64_t>), reals_(nothing<double>) {
    switch (type_of(sample_type)) {
        case OA_LSB_INTEGER:
            kind_ = Kind::Signed;
            break;
        case OA_LSB_UNSIGNED_INTEGER:
            kind_ = Kind::Unsigned;
            break;
        case OA_MSB_INTEGER:
            kind_ = bits_ == 8 ? Kind::Signed : Kind::None;
            break;
        case OA_MSB_UNSIGNED_INTEGER:
            kind_ = bits_ == 8 ? Kind::Unsigned : Kind::None;
            break;
        case OA_PC_REAL:
            kind_ = Kind::Real;
            break;
        default:
            break;
    }
}

void TrueRange::add(const void *samples, int64_t count) {
    const bool is_signed = kind_ == Kind::Signed;
    if (kind_ == Kind::None)
        return;
    if (kind_ == Kind::Real) {
        if (bits_ == 32)
            widen<float>(&reals_, samples, count);
        else if (bits_ == 64)
            widen<double>(&reals_, samples, count);
    } else if (bits_ == 8) {
        is_signed ? widen<int8_t>(&signed_, samples, count) : widen<uint8_t>(&unsigned_, samples, count);
    } else if (bits_ == 16) {
        is_signed ? widen<int16_t>(&signed_, samples, count) : widen<uint16_t>(&unsigned_, samples, count);
    } else if (bits_ == 32) {
        is_signed ? widen<int32_t>(&signed_, samples, count) : widen<uint32_t>(&unsigned_, samples, count);
    } else if (bits_ == 64) {
        is_signed ? widen<int64_t>(&signed_, samples, count) : widen<uint64_t>(&unsigned_, samples, count);
    }
}

std::string TrueRange::text() const {
    if (signed_.minimum <= signed_.maximum)
        return util_format("%lld %lld", static_cast<long long>(signed_.minimum),
                           static_cast<long long>(signed_.maximum));
    if (unsigned_.minimum <= unsigned_.maximum)
        return util_format("%llu %llu", static_cast<unsigned long long>(unsigned_.minimum),
                           static_cast<unsigned long long>(unsigned_.maximum));
    if (reals_.minimum <= reals_.maximum)
        return util_format("%.9g %.9g", reals_.minimum, reals_.maximum);
    return "- -";
}
