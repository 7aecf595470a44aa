// A headset that comes and goes, at any moment.
#include "fakes/OpenHandles.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

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
    {
        ScriptedHeadset headset;
        headset.Start(headset.log);
        std::size_t reports = 0;
        for (int cycle = 0; cycle < 1000; ++cycle)
        {
            headset.host.Unplug();
            Until([&] { return headset.host.opened == headset.host.closed; });
            headset.host.Plug({});
            const auto moment = random() % 4;
            if (moment == 0) // never seen
            {
                continue;
            }
            headset.clock.Cycle(); // just opened
            if (moment == 2)       // with a read that waits
            {
                headset.host.WaitForIdle();
            }
            for (auto i = moment == 3 ? random() % 3 : 0; i > 0; --i) // in the middle of reports
            {
                headset.host.QueueRead(ReportWriter(static_cast<std::uint32_t>(++reports)));
                headset.log.WaitFor(7 * reports);
            }
        }
        headset.End(); // all are closed
        EXPECT_GT(headset.host.opened, 500);
    }
    EXPECT_LE(CountOpenHandles(), handles + 2 * RUNTIME_HANDLES);
    EXPECT_EQ(CountThreads(), threads);
}
