// The time that a capture adds to each report. The benchmark copies reports from an endpoint's
// buffer with and without a capture. "added_ns" must be at most 60. "allocations" counts the
// allocations of all reports on the thread that adds them.
#include "Paired.h"
#include "fakes/AllocationCounter.h"

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include <filesystem>

namespace
{

constexpr std::size_t REPORTS = 2000;

/// Copies the reports of a round into a tracker's buffer, as an endpoint would, and returns the
/// seconds.
template <typename Tap>
double RunRound(const std::vector<qltkit::CaptureReport>& reports, const Tap& tap)
{
    qltkit::CaptureReport buffer{};
    return Seconds(
        [&]
        {
            for (const qltkit::CaptureReport& report : reports)
            {
                buffer = report;
                benchmark::DoNotOptimize(buffer.data());
                benchmark::ClobberMemory();
                tap(buffer.data());
            }
        });
}

void CaptureTap(benchmark::State& state)
{
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "qlt_bench.mcap";
    std::vector<qltkit::CaptureReport> reports;
    qltkit::SoftwareHeadset headset(1, false);
    for (std::size_t i = 0; i < REPORTS; ++i)
    {
        reports.push_back(headset.Next().report);
    }
    qltkit::CaptureWriter writer(path);
    long allocations = 0;
    std::vector<double> tapped;
    std::vector<double> plain;
    for (auto _ : state)
    {
        writer.Flush(); // now the ring has room, and the writer's thread sleeps
        const long before = ThreadAllocationCount();
        const double seconds =
            RunRound(reports, [&](const std::uint8_t* report) { writer.AddReport(report); });
        allocations += ThreadAllocationCount() - before;
        tapped.push_back(seconds);
        plain.push_back(RunRound(reports, [](const std::uint8_t*) {}));
        state.SetIterationTime(tapped.back());
    }
    state.counters["added_ns"] = (Median(tapped) - Median(plain)) / REPORTS * 1e9;
    state.counters["allocations"] = static_cast<double>(allocations);
    state.counters["dropped"] = static_cast<double>(writer.DroppedReports());
    writer.Close();
    std::filesystem::remove(path);
}

BENCHMARK(CaptureTap)->UseManualTime()->Iterations(401);

} // namespace
