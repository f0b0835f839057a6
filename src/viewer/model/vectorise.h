// Loops compiled twice: for any processor of the kind, and for the wider vectors of those that have them.
#pragma once

#if defined(__x86_64__)

template <typename Loop>
[[gnu::target("avx2")]] auto run_with_avx2(Loop loop) {
    return loop();
}

// Calls `loop`, a lambda that is marked always_inline, in the best form that this machine can run. Products and sums
// are never fused: every form gives the same bits.
template <typename Loop>
auto run_vectorised(Loop loop) {
    static const bool has_avx2 = __builtin_cpu_supports("avx2") != 0;
    return has_avx2 ? run_with_avx2(loop) : loop();
}

#else

template <typename Loop>
auto run_vectorised(Loop loop) {
    return loop();
}

#endif
