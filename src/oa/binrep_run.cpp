// The fast ways between forms, and which pair takes which. Each gives the bits that the conversion by layout gives.
#include "oa/binrep_layout.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

namespace {

using Run = void (*)(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count);

template <typename T>
constexpr T swap_bytes(T value) {
    if constexpr (sizeof(T) == 2)
        return static_cast<T>(__builtin_bswap16(static_cast<uint16_t>(value)));
    else if constexpr (sizeof(T) == 4)
        return static_cast<T>(__builtin_bswap32(static_cast<uint32_t>(value)));
    else if constexpr (sizeof(T) == 8)
        return static_cast<T>(__builtin_bswap64(static_cast<uint64_t>(value)));
    else
        return value;
}

// A value stored in the given byte order to or from the machine's.
template <std::endian order, typename T>
constexpr T reorder(T value) {
    return order == std::endian::native ? value : swap_bytes(value);
}

// --- Kernels: one value each ----------------------------------------------------------------------------------------

template <typename T>
struct Swap {
    using Src = T;
    using Dst = T;
    [[gnu::always_inline]] static Dst item(Src value) { return swap_bytes(value); }
};

template <typename SrcType, std::endian src_order, typename DstType, std::endian dst_order>
struct Widen {
    using Src = SrcType;
    using Dst = DstType;
    [[gnu::always_inline]] static Dst item(Src value) {
        return reorder<dst_order>(static_cast<Dst>(reorder<src_order>(value)));
    }
};

// VAX values are stored as 16-bit words, low byte first, the word with sign and exponent first.
[[gnu::always_inline]] inline uint32_t vax_word_order(uint32_t stored) {
    return std::rotl(reorder<std::endian::little>(stored), 16);
}
[[gnu::always_inline]] inline uint64_t vax_word_order(uint64_t stored) {
    constexpr uint64_t even_bytes = 0x00FF00FF00FF00FF;
    const uint64_t reversed = reorder<std::endian::big>(stored);
    return (reversed & even_bytes) << 8 | (reversed >> 8 & even_bytes);
}

// F to IEEE of 4 bytes and G to IEEE of 8 have the same fields: the exponent, whose bias is two greater, is lowered by
// two. Exponent 0 is zero. Special: the reserved operand and the two exponents that become subnormal.
template <typename T, int exponent_bits, std::endian dst_order>
struct VaxSameFields {
    using Src = T;
    using Dst = T;
    static constexpr int mantissa_bits = 8 * sizeof(T) - 1 - exponent_bits;
    static constexpr T exponents = (T{1} << exponent_bits) - 1;
    [[gnu::always_inline]] static bool special(Src stored) {
        const T sign_and_exponent = vax_word_order(stored) >> mantissa_bits;
        return sign_and_exponent == exponents + 1 || ((sign_and_exponent & exponents) - 1) < 2;
    }
    [[gnu::always_inline]] static Dst item(Src stored) {
        const T value = vax_word_order(stored);
        const T real = value - (T{2} << mantissa_bits);
        return reorder<dst_order>((value >> mantissa_bits & exponents) == 0 ? T{0} : real);
    }
};
template <std::endian dst_order>
using VaxF = VaxSameFields<uint32_t, 8, dst_order>;
template <std::endian dst_order>
using VaxG = VaxSameFields<uint64_t, 11, dst_order>;

// D has 55 mantissa bits behind 8 exponent bits: three are rounded away, to even; a carry goes into the exponent as it
// should. Exponent 0 is zero. Special: the reserved operand.
template <std::endian dst_order>
struct VaxD {
    using Src = uint64_t;
    using Dst = uint64_t;
    [[gnu::always_inline]] static bool special(Src stored) { return vax_word_order(stored) >> 55 == 0x100; }
    [[gnu::always_inline]] static Dst item(Src stored) {
        constexpr uint64_t sign_bit = uint64_t{1} << 63;
        constexpr uint64_t rebias = uint64_t{1023 - 129} << 52;
        const uint64_t value = vax_word_order(stored);
        const uint64_t magnitude = value & ~sign_bit;
        const uint64_t rounded = (magnitude + 3 + (magnitude >> 3 & 1)) >> 3;
        const uint64_t real = (value & sign_bit) | (rounded + rebias);
        return reorder<dst_order>((value >> 55 & 0xFF) == 0 ? 0 : real);
    }
};

// --- Loops ----------------------------------------------------------------------------------------------------------

template <typename T>
[[gnu::always_inline]] inline T load(const uint8_t *bytes) {
    T value;
    memcpy(&value, bytes, sizeof(T));
    return value;
}

template <typename Kernel>
[[gnu::always_inline]] inline void convert_values(const uint8_t *src, uint8_t *dst, int64_t count) {
    using Src = typename Kernel::Src;
    using Dst = typename Kernel::Dst;
    // Source and destination are apart or one and the same, so that no value written is one still to be read: said
    // here, as the compiler would otherwise leave the vectors where the two are one. (clang makes an error of a promise
    // that it does not use.)
#ifndef __clang__
#pragma GCC ivdep
#endif
    for (int64_t i = 0; i < count; ++i) {
        const Dst value = Kernel::item(load<Src>(src + i * int64_t{sizeof(Src)}));
        memcpy(dst + i * int64_t{sizeof(Dst)}, &value, sizeof(Dst));
    }
}

template <typename Kernel>
struct PlainLoop {
    [[gnu::always_inline]] static void run(const BinrepPlan &, const uint8_t *src, uint8_t *dst, int64_t count) {
        convert_values<Kernel>(src, dst, count);
    }
};

// Looks a block over for special values first; in a block that has any, those go the way by layout.
template <typename Kernel>
struct LoopWithSpecials {
    [[gnu::always_inline]] static void run(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
        using Src = typename Kernel::Src;
        constexpr int64_t block_values = 128;
        while (count > 0) {
            const int64_t values = std::min(count, block_values);
            Src specials = 0;
            for (int64_t i = 0; i < values; ++i)
                specials |= Src{Kernel::special(load<Src>(src + i * int64_t{sizeof(Src)}))};
            if (specials)
                convert_singly(plan, src, dst, values);
            else
                convert_values<Kernel>(src, dst, values);
            src += values * int64_t{sizeof(Src)};
            dst += values * int64_t{sizeof(typename Kernel::Dst)};
            count -= values;
        }
    }

  private:
    static void convert_singly(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
        for (; count > 0; --count, src += sizeof(typename Kernel::Src), dst += sizeof(typename Kernel::Dst)) {
            if (Kernel::special(load<typename Kernel::Src>(src)))
                BinrepConvertByLayout(plan, src, dst, 1);
            else
                convert_values<Kernel>(src, dst, 1);
        }
    }
};

void copy_run(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
    if (src != dst && count > 0)
        memcpy(dst, src, static_cast<size_t>(count) * plan.src->size);
}

template <typename Loop>
void run_plain(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
    Loop::run(plan, src, dst, count);
}

#if defined(__x86_64__)
template <typename Loop>
[[gnu::target("avx2")]] void run_avx2(const BinrepPlan &plan, const uint8_t *src, uint8_t *dst, int64_t count) {
    Loop::run(plan, src, dst, count);
}
#endif

// The loop compiled for this machine's vectors.
template <typename Loop>
Run run_of() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        return run_avx2<Loop>;
#endif
    return run_plain<Loop>;
}

// --- Choice: integers -----------------------------------------------------------------------------------------------

template <typename T, std::endian src_order, typename D>
Run widen_to_type(bool low_byte_first) {
    if constexpr (sizeof(D) <= sizeof(T))
        return nullptr;
    else if (low_byte_first)
        return run_of<PlainLoop<Widen<T, src_order, D, std::endian::little>>>();
    else
        return run_of<PlainLoop<Widen<T, src_order, D, std::endian::big>>>();
}

// The bits of a widened value do not depend on the destination's sign, so that one type a size serves.
template <typename T, std::endian src_order>
Run widen_from(int dst_size, bool low_byte_first) {
    switch (dst_size) {
        case 2:
            return widen_to_type<T, src_order, uint16_t>(low_byte_first);
        case 4:
            return widen_to_type<T, src_order, uint32_t>(low_byte_first);
        case 8:
            return widen_to_type<T, src_order, uint64_t>(low_byte_first);
        default:
            return nullptr;
    }
}

template <typename T>
Run widen_from_type(bool src_low_byte_first, int dst_size, bool dst_low_byte_first) {
    return src_low_byte_first ? widen_from<T, std::endian::little>(dst_size, dst_low_byte_first)
                              : widen_from<T, std::endian::big>(dst_size, dst_low_byte_first);
}

Run choose_widening(const BinrepPlan &plan) {
    const BinrepLayout &src = LayoutOf(plan.src);
    const bool to_low = LayoutOf(plan.dst).low_byte_first;
    const int size = plan.dst->size;
    switch (plan.src->size) {
        case 1:
            return src.is_signed ? widen_from_type<int8_t>(true, size, to_low)
                                 : widen_from_type<uint8_t>(true, size, to_low);
        case 2:
            return src.is_signed ? widen_from_type<int16_t>(src.low_byte_first, size, to_low)
                                 : widen_from_type<uint16_t>(src.low_byte_first, size, to_low);
        case 4:
            return src.is_signed ? widen_from_type<int32_t>(src.low_byte_first, size, to_low)
                                 : widen_from_type<uint32_t>(src.low_byte_first, size, to_low);
        default:
            return nullptr;
    }
}

Run swap_of_size(int size) {
    switch (size) {
        case 2:
            return run_of<PlainLoop<Swap<uint16_t>>>();
        case 4:
            return run_of<PlainLoop<Swap<uint32_t>>>();
        case 8:
            return run_of<PlainLoop<Swap<uint64_t>>>();
        default:
            return nullptr;
    }
}

Run choose_for_integers(const BinrepPlan &plan) {
    const BinrepLayout &src = LayoutOf(plan.src);
    const BinrepLayout &dst = LayoutOf(plan.dst);
    if (plan.src->size != plan.dst->size)
        return src.is_signed && !dst.is_signed ? nullptr : choose_widening(plan);
    if (src.is_signed != dst.is_signed)
        return nullptr;
    return plan.src->size == 1 || src.low_byte_first == dst.low_byte_first ? copy_run : swap_of_size(plan.src->size);
}

// --- Choice: reals --------------------------------------------------------------------------------------------------

Run choose_for_reals(const BinrepPlan &plan) {
    struct Row {
        std::string_view src;
        std::string_view dst;
        Run (*run)();
    };
    using enum std::endian;
    static constexpr Row rows[] = {
        {"IEEE_REAL4", "PC_REAL4", run_of<PlainLoop<Swap<uint32_t>>>},
        {"PC_REAL4", "IEEE_REAL4", run_of<PlainLoop<Swap<uint32_t>>>},
        {"IEEE_REAL8", "PC_REAL8", run_of<PlainLoop<Swap<uint64_t>>>},
        {"PC_REAL8", "IEEE_REAL8", run_of<PlainLoop<Swap<uint64_t>>>},
        {"VAXF_REAL4", "PC_REAL4", run_of<LoopWithSpecials<VaxF<little>>>},
        {"VAXF_REAL4", "IEEE_REAL4", run_of<LoopWithSpecials<VaxF<big>>>},
        {"VAXD_REAL8", "PC_REAL8", run_of<LoopWithSpecials<VaxD<little>>>},
        {"VAXD_REAL8", "IEEE_REAL8", run_of<LoopWithSpecials<VaxD<big>>>},
        {"VAXG_REAL8", "PC_REAL8", run_of<LoopWithSpecials<VaxG<little>>>},
        {"VAXG_REAL8", "IEEE_REAL8", run_of<LoopWithSpecials<VaxG<big>>>},
    };
    for (const Row &row : rows)
        if (row.src == plan.src->name && row.dst == plan.dst->name)
            return row.run();
    return nullptr;
}

Run choose_run(const BinrepPlan &plan) {
    if (plan.src == plan.dst)
        return copy_run;
    if (plan.src->kind != plan.dst->kind)
        return nullptr;
    return LayoutOf(plan.src).is_real ? choose_for_reals(plan) : choose_for_integers(plan);
}

}  // namespace

BinrepPlan OalPlanBinrep(const BinrepDescrip *src, const BinrepDescrip *dst) {
    BinrepPlan plan = {src, dst, nullptr};
    const Run fast = choose_run(plan);
    plan.run = fast ? fast : BinrepConvertByLayout;
    return plan;
}

void BinrepConvert(const void *src, void *dst, const BinrepDescrip *src_form, const BinrepDescrip *dst_form) {
    // Callers convert one column's values one behind the other.
    static BinrepPlan last;
    if (last.src != src_form || last.dst != dst_form)
        last = OalPlanBinrep(src_form, dst_form);
    BinrepConvertRun(last, src, dst, 1);
}
