// Measures a speed as a ratio. The measured operation and its reference run in turns, so that a
// busy machine slows both.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// Returns the seconds that one call takes.
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

/// Reports "ratio", the median of `ours()` divided by the median of `theirs()`. Each call returns
/// the seconds for `items` items. Also reports the nanoseconds per item of both.
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
