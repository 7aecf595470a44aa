// A process of its own, in which every allocation counts.
#include "fakes/AllocationCounter.h"
#include "fakes/RecordingHost.h"
#include "fakes/ReportWriter.h"

#include <gtest/gtest.h>

namespace
{

/// Notes the allocations so far at every report.
struct Counter : qlt::TrackerListener
{
    void OnOrientationEvent(const qlt::Quaternion&, float) override
    {
        if (reports < 10000)
        {
            counts[reports++] = AllocationCount();
        }
    }
    long counts[10000] = {};
    std::atomic<std::size_t> reports{0};
};

} // namespace

TEST(AllocationTest, AReportIsDeliveredWithoutAny)
{
    std::vector<RecordingHost::Report> reports;
    std::vector<std::int64_t> times;
    for (std::uint32_t i = 0; i < 10001; ++i)
    {
        reports.push_back(ReportWriter(i, i * 1000));
        times.push_back(i * std::int64_t(1000000));
    }
    RecordingHost host(reports, times);
    qlt::Hmd hmd(host, host);
    Counter counter;
    hmd.AddListener(counter);
    hmd.Start();
    while (counter.reports < 10000)
    {
        std::this_thread::yield();
    }
    hmd.Stop();
    hmd.RemoveListener(counter);
    host.Close();
    EXPECT_EQ(counter.counts[9999] - counter.counts[1], 0);
    EXPECT_GT(counter.counts[0], 0);
}
