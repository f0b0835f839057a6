// Qubes on disk whose values tell where they belong, written item after item in the order of the file.
#pragma once

#include "base/text.h"
#include "oa/qube.h"
#include "support/scratch.h"

#include <array>
#include <bit>
#include <string>

// What stands at a sample, line and band of the core, from 1: below 128 for small qubes, so that a byte holds it.
inline int64_t core_value(int64_t sample, int64_t line, int64_t band) {
    return sample + 8 * line + 32 * band;
}

// Suffix `item` (from 1) along an axis at the places `u` and `v` of the other two axes, in the order SAMPLE, LINE,
// BAND.
inline int64_t suffix_value(OaQubeAxis axis, int64_t item, int64_t u, int64_t v) {
    return 9000 * (axis + 1) + 1000 * item + 30 * u + v;
}

constexpr int64_t corner_value = 31999;

// Bytes of a small positive integer in a type that labels name.
inline std::string stored_item(int64_t value, const std::string &type, int64_t bytes) {
    auto bits = static_cast<uint64_t>(value);
    const auto real4 = std::bit_cast<uint32_t>(static_cast<float>(value));
    const auto real8 = std::bit_cast<uint64_t>(static_cast<double>(value));
    const bool is_vax = type.starts_with("VAX") && (type.ends_with("REAL") || type.ends_with("DOUBLE"));
    const bool is_real = type.ends_with("REAL") || type.ends_with("FLOAT") || is_vax;
    if (is_real)
        bits = bytes == 4 ? real4 : real8;
    // The exponent of the F and G forms is two greater; that of D has 8 bits.
    if (is_vax)
        bits = bytes == 4            ? bits + (uint64_t{2} << 23)
               : type == "VAXG_REAL" ? bits + (uint64_t{2} << 52)
                                     : (real8 - (uint64_t{1023 - 129} << 52)) << 3;
    std::string stored;
    for (int64_t i = 0; i < bytes; ++i)
        stored += static_cast<char>(bits >> (8 * (bytes - 1 - i)));
    const bool low_first =
        type.starts_with("LSB") || type.starts_with("PC") || type == "VAX_INTEGER" || type == "VAX_UNSIGNED_INTEGER";
    if (low_first)
        stored = {stored.rbegin(), stored.rend()};
    for (size_t i = 0; is_vax && i + 1 < stored.size(); i += 2)
        std::swap(stored[i], stored[i + 1]);
    return stored;
}

struct QubeProduct {
    using Sizes = std::array<int64_t, oa_qube_axes>;  // by OaQubeAxis

    std::array<OaQubeAxis, oa_qube_axes> order = {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS};
    Sizes core = {4, 3, 2};
    Sizes suffix = {};
    std::string type = "MSB_INTEGER";
    int64_t bytes = 2;
    std::string suffix_type = "IEEE_REAL";
    int64_t suffix_item_bytes = 4;
    int64_t suffix_bytes = 4;
    bool corners = true;
    std::string more = {};  // more lines inside the object: "CORE_NULL = 3\n"

    std::string list(const Sizes &sizes) const {
        return util_format("(%lld, %lld, %lld)", static_cast<long long>(sizes[order[0]]),
                           static_cast<long long>(sizes[order[1]]), static_cast<long long>(sizes[order[2]]));
    }

    std::string object() const {
        std::string text = "OBJECT = QUBE\n AXES = 3\n AXIS_NAME = (" + std::string(OaQubeAxisName(order[0])) + ", \"" +
                           OaQubeAxisName(order[1]) + "\", " + util_lower(OaQubeAxisName(order[2])) +
                           ")\n CORE_ITEMS = " + list(core) + "\n CORE_ITEM_BYTES = " + std::to_string(bytes) +
                           "\n CORE_ITEM_TYPE = " + type + "\n";
        if (suffix != Sizes{}) {
            text += " SUFFIX_ITEMS = " + list(suffix) + "\n SUFFIX_BYTES = " + std::to_string(suffix_bytes) + "\n";
            for (const OaQubeAxis axis : order)
                text +=
                    util_format(" %s_SUFFIX_ITEM_TYPE = %s\n %s_SUFFIX_ITEM_BYTES = %lld\n", OaQubeAxisName(axis),
                                suffix_type.c_str(), OaQubeAxisName(axis), static_cast<long long>(suffix_item_bytes));
        }
        return text + more + "END_OBJECT = QUBE\n";
    }

    std::string data() const {
        std::string bytes_of_qube;
        const auto extent = [&](size_t place) { return core[order[place]] + suffix[order[place]]; };
        Sizes at = {};  // from 1, by axis
        int64_t &i = at[order[0]];
        int64_t &j = at[order[1]];
        int64_t &k = at[order[2]];
        for (k = 1; k <= extent(2); ++k)
            for (j = 1; j <= extent(1); ++j)
                for (i = 1; i <= extent(0); ++i)
                    bytes_of_qube += item(at);
        return bytes_of_qube;
    }

    std::string item(const Sizes &at) const {
        int behind = 0;
        size_t axis = 0;
        for (size_t a = 0; a < oa_qube_axes; ++a) {
            behind += at[a] > core[a];
            axis = at[a] > core[a] ? a : axis;
        }
        if (behind == 0)
            return stored_item(core_value(at[0], at[1], at[2]), type, bytes);
        if (behind > 1 && !corners)
            return "";
        const int64_t value = behind > 1 ? corner_value
                                         : suffix_value(static_cast<OaQubeAxis>(axis), at[axis] - core[axis],
                                                        at[axis == 0 ? 1 : 0], at[axis == 2 ? 1 : 2]);
        std::string stored = stored_item(value, suffix_type, suffix_item_bytes);
        stored.resize(static_cast<size_t>(suffix_bytes), '?');
        return stored;
    }
};

// Writes `name`.QUB and the label `name`.LBL, which points at the data's first byte behind `skipped` others. Returns
// the label's path.
inline std::string write_qube(const ScratchFolder &folder, const std::string &name, const QubeProduct &product,
                              int64_t skipped = 0) {
    folder.write(name + ".QUB", std::string(static_cast<size_t>(skipped), '#') + product.data());
    return folder.write(name + ".LBL", "RECORD_TYPE = UNDEFINED\n^QUBE = (\"" + name + ".QUB\", " +
                                           std::to_string(skipped + 1) + " <BYTES>)\n" + product.object() + "END\n");
}
