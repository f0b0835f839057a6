// Run conversion between representations, beside a plain copy of as many source bytes in the same run.
#include "oa/binrep.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int64_t source_bytes = 16 << 20;

// Ordinary values: no exponent or first byte is 0.
const std::vector<uint8_t> &source() {
    static const std::vector<uint8_t> bytes = [] {
        std::vector<uint8_t> made(source_bytes);
        std::mt19937 random(1);
        for (uint8_t &byte : made)
            byte = static_cast<uint8_t>(random() | 0x44);
        return made;
    }();
    return bytes;
}

void copy(benchmark::State &state) {
    std::vector<uint8_t> target(source_bytes);
    for (auto _ : state) {
        memcpy(target.data(), source().data(), source_bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * source_bytes);
}
BENCHMARK(copy);

void run(benchmark::State &state, const char *src, const char *dst) {
    const BinrepPlan plan = OalPlanBinrep(OalFindBinrepDescrip(src), OalFindBinrepDescrip(dst));
    const int64_t count = source_bytes / plan.src->size;
    std::vector<uint8_t> target(static_cast<size_t>(count) * plan.dst->size);
    for (auto _ : state) {
        BinrepConvertRun(plan, source().data(), target.data(), count);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * count * plan.src->size);
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK_CAPTURE(run, swap_2, "MSB_INT2", "LSB_INT2");
BENCHMARK_CAPTURE(run, swap_4, "IEEE_REAL4", "PC_REAL4");
BENCHMARK_CAPTURE(run, swap_8, "IEEE_REAL8", "PC_REAL8");
BENCHMARK_CAPTURE(run, widen_1_to_2, "UINT1", "LSB_INT2");
BENCHMARK_CAPTURE(run, widen_2_to_4, "MSB_INT2", "LSB_INT4");
BENCHMARK_CAPTURE(run, widen_2_to_8, "LSB_INT2", "LSB_INT8");
BENCHMARK_CAPTURE(run, vax_f, "VAXF_REAL4", "PC_REAL4");
BENCHMARK_CAPTURE(run, vax_d, "VAXD_REAL8", "PC_REAL8");
BENCHMARK_CAPTURE(run, vax_g, "VAXG_REAL8", "PC_REAL8");
BENCHMARK_CAPTURE(run, by_layout_ieee_10, "IEEE_REAL10", "PC_REAL8");
BENCHMARK_CAPTURE(run, by_layout_vax_h, "VAXH_REAL16", "PC_REAL8");
BENCHMARK_CAPTURE(run, by_layout_int_3, "MSB_INT3", "LSB_INT4");

void swap_in_place(benchmark::State &state) {
    const BinrepPlan plan = OalPlanBinrep(OalFindBinrepDescrip("MSB_INT2"), OalFindBinrepDescrip("LSB_INT2"));
    std::vector<uint8_t> bytes = source();
    for (auto _ : state) {
        BinrepConvertRun(plan, bytes.data(), bytes.data(), source_bytes / 2);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * source_bytes);
}
BENCHMARK(swap_in_place);

void one_value(benchmark::State &state) {
    const BinrepDescrip *src = OalFindBinrepDescrip("MSB_INT2");
    const BinrepDescrip *dst = OalFindBinrepDescrip("LSB_INT8");
    int64_t value = 0;
    for (auto _ : state) {
        BinrepConvert(source().data(), &value, src, dst);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(one_value);

}  // namespace

BENCHMARK_MAIN();
