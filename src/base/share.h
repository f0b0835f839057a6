// A loop's work shared by threads.
#pragma once

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <thread>
#include <vector>

// Calls `work(first, last)` for ranges that together are 0 to `items`, each once, by several threads when the work is
// about `bytes` large. `work` throws nothing, and touches neither the libraries' state nor another range's results.
template <typename Work>
void util_share(int64_t items, int64_t bytes, const Work &work) {
    constexpr int64_t least_shared_bytes = int64_t{4} << 20;  // fewer are done before another thread has started
    constexpr int64_t most_threads = 4;
    const int64_t threads =
        bytes >= least_shared_bytes ? std::clamp<int64_t>(std::thread::hardware_concurrency(), 1, most_threads) : 1;
    std::vector<std::jthread> helpers;
    int64_t first = 0;
    try {
        helpers.reserve(static_cast<size_t>(threads));
        for (int64_t i = 1; i < threads; ++i) {
            const int64_t last = items / threads * i;
            helpers.emplace_back(work, first, last);
            first = last;
        }
    } catch (const std::system_error &) {
        // No more threads are to be had: the rest is done here.
    }
    work(first, items);
}
