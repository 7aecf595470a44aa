#include "Settings/StatusPublisher.h"

#include "Compositor/SteadyTime.h"
#include "Settings/Log.h"

#include <nlohmann/json.hpp>

namespace qltxr
{

namespace
{

constexpr auto INTERVAL = std::chrono::milliseconds(250);
constexpr int PATIENCE = 6; // the number of intervals in which a headset may appear
constexpr double NS_PER_MS = 1e6;

} // namespace

StatusPublisher::StatusPublisher(const HeadModel& head, const FrameClock& clock,
                                 const Compositor* compositor,
                                 const std::atomic<std::uint64_t>& frames)
    : mHead(head)
    , mClock(clock)
    , mCompositor(compositor)
    , mFrames(frames)
    , mThread([this] { Run(); })
{
}

StatusPublisher::~StatusPublisher()
{
    {
        const std::lock_guard lock(mMutex);
        mStopping = true;
    }
    mStop.notify_all();
    mThread.join();
}

void StatusPublisher::Run()
{
    std::string said;
    int rounds = 0;
    std::unique_lock lock(mMutex);
    do
    {
        mText.Write(Describe());
        const std::string source = mHead.Source().Describe();
        if (++rounds > PATIENCE && source != said)
        {
            Say("the head's orientation comes from: " + source);
            said = source;
        }
    } while (!mStop.wait_for(lock, INTERVAL, [this] { return mStopping; }));
}

std::string StatusPublisher::Describe() const
{
    const CompositorCounts counts =
        mCompositor != nullptr ? mCompositor->Counts() : CompositorCounts{};
    const nlohmann::json status = {
        {"pid", ProcessId()},
        {"program", ProgramName()},
        {"source", mHead.Source().Describe()},
        {"reports", mHead.Source().Reports()},
        {"output", mCompositor != nullptr ? mCompositor->DescribeOutput() : "none, it is headless"},
        {"period_ms", static_cast<double>(mClock.Period()) / NS_PER_MS},
        {"frames", mFrames.load()},
        {"dropped", counts.dropped},
        {"pictures", counts.composed},
        {"missed", counts.missed},
        {"draw_ms", static_cast<double>(counts.drawTime) / NS_PER_MS},
        {"time_ns", Now()},
        {"sentences", LastSentences()}};
    return status.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace qltxr
