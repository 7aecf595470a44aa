// A process of its own, in which every allocation counts.
#include "fakes/AllocationCounter.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

TEST(AllocationTest, AReportIsDeliveredWithoutAny)
{
    ScriptedHeadset headset;
    std::vector<long> counts; // so far, at every report
    counts.reserve(10000);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion&) { counts.push_back(AllocationCount()); };
    for (std::uint32_t i = 0; i < 10000; ++i)
    {
        headset.host.QueueRead(ReportWriter(i, i * 1000));
    }
    headset.Start(listener);
    headset.host.WaitForIdle();
    headset.End();
    EXPECT_EQ(counts.at(9999) - counts[1], 0);
    EXPECT_GT(counts[0], 0);
}
