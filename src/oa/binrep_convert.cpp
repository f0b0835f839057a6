#include "oa/binrep_layout.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

// A real value: significand x 2^(exponent - 127), the significand's top bit set when finite. The payload of a NaN
// stands in the significand, its first fraction bit on top.
struct Real {
    enum Class { zero, finite, infinite, nan, reserved_operand };

    Class kind = zero;
    bool negative = false;
    int exponent = 0;
    uint128 significand = 0;
};

struct Integer {
    bool negative = false;
    uint128 magnitude = 0;
};

constexpr uint128 low_bits(int count) {
    return count >= 128 ? ~uint128{0} : (uint128{1} << count) - 1;
}

int leading_zeros(uint128 value) {
    const auto high = static_cast<uint64_t>(value >> 64);
    return high ? std::countl_zero(high) : 64 + std::countl_zero(static_cast<uint64_t>(value));
}

// --- Bit lists ----------------------------------------------------------------------------------------------------

// The stored bytes as a number whose top bit is the first byte's most significant.
uint128 load_bits(const uint8_t *bytes, int size) {
    uint128 bits = 0;
    for (int i = 0; i < size; ++i)
        bits = bits << 8 | bytes[i];
    return bits << (128 - 8 * size);
}

void store_bits(uint128 bits, uint8_t *bytes, int size) {
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(bits >> (120 - 8 * i));
}

uint128 gather(const BitList &list, uint128 bits) {
    uint128 value = 0;
    for (int i = 0; i < list.range_count; ++i) {
        const BitRange range = list.ranges[static_cast<size_t>(i)];
        value = value << range.count | (bits << range.first) >> (128 - range.count);
    }
    return value;
}

uint128 scatter(const BitList &list, uint128 value) {
    uint128 bits = 0;
    for (int i = list.range_count; i-- > 0;) {
        const BitRange range = list.ranges[static_cast<size_t>(i)];
        bits |= (value & low_bits(range.count)) << (128 - range.first - range.count);
        value >>= range.count;
    }
    return bits;
}

// --- Integers -----------------------------------------------------------------------------------------------------

Integer decode_integer(const BinrepDescrip &form, const BinrepLayout &layout, const uint8_t *bytes) {
    uint128 bits = 0;
    for (int i = 0; i < form.size; ++i)
        bits = bits << 8 | bytes[layout.low_byte_first ? form.size - 1 - i : i];
    const int width = 8 * form.size;
    if (!layout.is_signed || !(bits >> (width - 1)))
        return {false, bits};
    return {true, (~bits & low_bits(width)) + 1};
}

void encode_integer(const BinrepDescrip &form, const BinrepLayout &layout, Integer value, uint8_t *bytes) {
    const int width = 8 * form.size;
    uint128 limit = low_bits(layout.is_signed ? width - 1 : width);
    if (value.negative)
        limit = layout.is_signed ? limit + 1 : 0;
    if (value.magnitude > limit) {
        value.magnitude = limit;
        ++binrep_errors.overflows;
    }
    uint128 bits = value.negative ? ~value.magnitude + 1 : value.magnitude;
    for (int i = 0; i < form.size; ++i, bits >>= 8)
        bytes[layout.low_byte_first ? i : form.size - 1 - i] = static_cast<uint8_t>(bits);
}

// --- Reals --------------------------------------------------------------------------------------------------------

// Bits of the significand, the leading one included.
int precision(const BinrepLayout &layout) {
    return layout.mantissa.bits + (layout.implied_one ? 1 : 0);
}

Real decode_real(const BinrepDescrip &form, const BinrepLayout &layout, const uint8_t *bytes) {
    const uint128 bits = load_bits(bytes, form.size);
    const int width = precision(layout);
    const auto exponent = static_cast<int>(gather(layout.exponent, bits));
    uint128 mantissa = gather(layout.mantissa, bits);
    Real value;
    value.negative = (bits >> (127 - form.sign_bit)) & 1;

    if (layout.has_infinities && exponent == (1 << layout.exponent.bits) - 1) {
        value.significand = mantissa << (128 - width + 1);
        value.kind = value.significand ? Real::nan : Real::infinite;
        return value;
    }
    if (!layout.has_infinities && exponent == 0) {
        value.kind = value.negative ? Real::reserved_operand : Real::zero;
        return value;
    }
    if (layout.implied_one && exponent != 0)
        mantissa |= uint128{1} << (width - 1);
    if (mantissa == 0)
        return value;
    const int shift = leading_zeros(mantissa);
    value.kind = Real::finite;
    value.exponent = std::max(exponent, 1) - form.exponent_bias - (shift - (128 - width));
    value.significand = mantissa << shift;
    return value;
}

// The first `bits` bits of a significand, rounded to nearest with ties to even: up to 2^bits.
uint128 round_to(uint128 significand, int bits, bool *exact) {
    const uint128 rest = bits == 0 ? significand : significand << bits;
    const uint128 half = uint128{1} << 127;
    uint128 rounded = bits == 0 ? 0 : significand >> (128 - bits);
    *exact = rest == 0;
    if (rest > half || (rest == half && (rounded & 1)))
        ++rounded;
    return rounded;
}

class RealEncoder {
  public:
    RealEncoder(const BinrepDescrip &form, const BinrepLayout &layout, uint8_t *bytes)
        : form_(form), layout_(layout), bytes_(bytes) {}

    void encode(const Real &value) const {
        switch (value.kind) {
            case Real::zero:
                store(value.negative && layout_.has_infinities, 0, 0);
                break;
            case Real::finite:
                encode_finite(value);
                break;
            case Real::infinite:
                if (!layout_.has_infinities)
                    ++binrep_errors.overflows;
                store_greatest(value.negative);
                break;
            case Real::nan:
                if (!layout_.has_infinities)
                    ++binrep_errors.overflows;
                store_nan(value);
                break;
            case Real::reserved_operand:
                ++binrep_errors.reserved_operands;
                store_nan(value);
                break;
        }
    }

  private:
    int greatest_exponent() const { return (1 << layout_.exponent.bits) - 1; }

    void store(bool negative, int exponent, uint128 mantissa) const {
        const uint128 sign = uint128{negative} << (127 - form_.sign_bit);
        store_bits(
            sign | scatter(layout_.exponent, static_cast<uint128>(exponent)) | scatter(layout_.mantissa, mantissa),
            bytes_, form_.size);
    }

    // The leading one as the form stores it.
    uint128 stored_one() const { return layout_.implied_one ? 0 : uint128{1} << (precision(layout_) - 1); }

    // Infinity, or the greatest number of a form without infinities.
    void store_greatest(bool negative) const {
        store(negative, greatest_exponent(), layout_.has_infinities ? stored_one() : low_bits(layout_.mantissa.bits));
    }

    // The payload's leading bits; the reserved operand in a form without NaNs.
    void store_nan(const Real &value) const {
        if (!layout_.has_infinities)
            return store(true, 0, 0);
        const int fraction_bits = precision(layout_) - 1;
        uint128 payload = value.significand >> (128 - fraction_bits);
        if (payload == 0)
            payload = uint128{1} << (fraction_bits - 1);
        store(value.kind == Real::nan && value.negative, greatest_exponent(), stored_one() | payload);
    }

    void encode_finite(const Real &value) const {
        const int width = precision(layout_);
        int exponent = value.exponent + form_.exponent_bias;
        // Below the smallest exponent IEEE forms keep fewer bits.
        const bool subnormal = layout_.has_infinities && exponent < 1;
        const int bits = subnormal ? width - 1 + exponent : width;
        bool exact = bits >= 0;
        uint128 mantissa = exact ? round_to(value.significand, bits, &exact) : 0;
        if (subnormal) {
            if (!exact)
                ++binrep_errors.underflows;
            exponent = mantissa >> (width - 1) ? 1 : 0;
        } else if (mantissa >> width) {
            mantissa >>= 1;
            ++exponent;
        }

        const int limit = layout_.has_infinities ? greatest_exponent() - 1 : greatest_exponent();
        if (exponent > limit) {
            ++binrep_errors.overflows;
            return store_greatest(value.negative);
        }
        if (!layout_.has_infinities && exponent < 1) {
            ++binrep_errors.underflows;
            return store(false, 0, 0);
        }
        store(value.negative, exponent, mantissa & low_bits(layout_.mantissa.bits));
    }

    const BinrepDescrip &form_;
    const BinrepLayout &layout_;
    uint8_t *bytes_;
};

// --- Between the kinds --------------------------------------------------------------------------------------------

Real to_real(Integer value) {
    if (value.magnitude == 0)
        return {};
    const int shift = leading_zeros(value.magnitude);
    return {Real::finite, value.negative, 127 - shift, value.magnitude << shift};
}

// Truncated toward zero. What no integer can hold is 2^128 - 1, which only a 16-byte unsigned destination holds.
void encode_truncated(const BinrepDescrip &form, const BinrepLayout &layout, const Real &value, uint8_t *bytes) {
    Integer integer = {value.negative, 0};
    if (value.kind == Real::reserved_operand) {
        ++binrep_errors.reserved_operands;
    } else if (value.kind == Real::nan) {
        ++binrep_errors.overflows;
    } else if (value.kind == Real::infinite || (value.kind == Real::finite && value.exponent > 127)) {
        integer.magnitude = ~uint128{0};
        if (form.size == 16 && !layout.is_signed && !value.negative)
            ++binrep_errors.overflows;
    } else if (value.kind == Real::finite && value.exponent >= 0) {
        integer.magnitude = value.significand >> (127 - value.exponent);
    }
    encode_integer(form, layout, integer, bytes);
}

}  // namespace

void BinrepConvertByLayout(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
    const BinrepDescrip &from = *plan.src;
    const BinrepDescrip &to = *plan.dst;
    const BinrepLayout &from_layout = LayoutOf(plan.src);
    const BinrepLayout &to_layout = LayoutOf(plan.dst);
    for (int64_t i = 0; i < count; ++i, src += from.size, dst += to.size) {
        if (!from_layout.is_real) {
            const Integer value = decode_integer(from, from_layout, src);
            if (to_layout.is_real)
                RealEncoder(to, to_layout, dst).encode(to_real(value));
            else
                encode_integer(to, to_layout, value, dst);
        } else {
            const Real value = decode_real(from, from_layout, src);
            if (to_layout.is_real)
                RealEncoder(to, to_layout, dst).encode(value);
            else
                encode_truncated(to, to_layout, value, dst);
        }
    }
}
