// A headset that comes and goes, at any moment.
#include <qlt/Sensors/Hmd.h>

#include "fakes/EventLog.h"
#include "fakes/ManualClock.h"
#include "fakes/OpenHandles.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

TEST(UnplugTest, AThousandTimesLeavesNothingBehind)
{
    const std::uint32_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::thread([] {}).join(); // with the first thread comes a sanitizer's own
    const std::size_t handles = CountOpenHandles();
    const std::size_t threads = CountThreads();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    ScriptedUsbHost host;
    {
        ManualClock clock;
        EventLog log;
        qlt::Hmd hmd(host, clock);
        clock.WaitForSleep(1);
        hmd.AddListener(log);
        hmd.Start();
        std::size_t reports = 0;
        for (int cycle = 0; cycle < 1000; ++cycle)
        {
            host.Plug({});
            switch (random() % 4)
            {
            case 0: // never seen
                break;
            case 1: // just opened
                clock.Cycle();
                break;
            case 2: // with a read that waits
                clock.Cycle();
                host.WaitForIdle();
                break;
            default: // in the middle of reports
                clock.Cycle();
                for (auto i = random() % 3; i > 0; --i)
                {
                    host.QueueRead(ReportWriter(static_cast<std::uint32_t>(++reports)));
                    log.WaitFor(7 * reports);
                }
                break;
            }
            host.Unplug();
            Until([&] { return host.opened == host.closed; });
        }
        clock.KeepAwake();
        hmd.Stop();
        hmd.RemoveListener(log);
    }
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(host.opened, host.closed);
    EXPECT_GT(host.opened, 500);
    // One of the Windows runtime's locks takes a handle when it is first contended, and keeps it; a
    // cycle that left one behind would leave a thousand.
    EXPECT_LT(CountOpenHandles(), handles + 20);
    EXPECT_EQ(CountThreads(), threads);
}
