// A speed as a ratio: what is measured runs in turns with what it is compared to, in one run, so
// that a busy machine slows both.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// The seconds that one call takes.
template <typename Work>
double Seconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Reports "ratio", the median of `ours()` over the median of `theirs()`, which both return seconds
/// for `items` items; besides, nanoseconds per item of each.
template <typename Ours, typename Theirs>
void RunPaired(benchmark::State& state, double items, const Ours& ours, const Theirs& theirs)
{
    std::vector<double> a;
    std::vector<double> b;
    for (auto _ : state)
    {
        a.push_back(ours());
        b.push_back(theirs());
        state.SetIterationTime(a.back());
    }
    state.counters["ratio"] = Median(a) / Median(b);
    state.counters["ours_ns"] = Median(a) / items * 1e9;
    state.counters["theirs_ns"] = Median(b) / items * 1e9;
}
