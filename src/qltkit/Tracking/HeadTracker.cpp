#include <qltkit/Tracking/HeadTracker.h>

#include <qlt/Runtime/VRException.h>
#include <qltkit/Error.h>

#include "Tracking/PoseWriter.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace qltkit
{
namespace
{

/// The period in which the watcher checks whether reports are overdue.
constexpr std::chrono::milliseconds WATCH_PERIOD(10);

} // namespace

class HeadTracker::Impl
{
public:
    Impl(std::unique_ptr<Source> source, const HeadTrackerOptions& options)
        : mSource(std::move(source))
        , mPerson(options.person)
        , mWriter(options, mHistory, mEvents)
        , mTap(*mSource, *mSource, mWriter)
        , mHmd(mTap, *mSource)
    {
        mHmd.AddListener(mWriter);
        mHmd.Start();
        mWatcher = std::thread([this] { Watch(); });
    }

    ~Impl()
    {
        mEvents.Stop(); // this comes first, because a handler may use every member
        StopWatcher();
        mWriter.Close();
        mSource->Close(); // otherwise the Hmd would wait for a read and for a sleep
        StopHmd();
    }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    std::optional<Pose> PollPose()
    {
        const std::lock_guard<std::mutex> lock(mPollMutex);
        Pose pose;
        return mHistory.TakeNext(mPolled, pose) ? std::optional(pose) : std::nullopt;
    }

    PoseHistory& History() { return mHistory; }
    const PoseWriter& Writer() const { return mWriter; }
    EventLine& Events() { return mEvents; }
    Source& GetSource() { return *mSource; }
    const Person& GetPerson() const { return mPerson; }
    qlt::Hmd& Core() { return mHmd; }

private:
    /// Readers of poses read no clock, so this thread checks the time for them.
    void Watch()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        while (!mStopping.wait_for(lock, WATCH_PERIOD, [this] { return mStopped; }))
        {
            mHistory.HoldIfOverdue(mSource->NowNs());
        }
    }

    void StopWatcher()
    {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mStopped = true;
            mStopping.notify_all();
        }
        mWatcher.join();
    }

    void StopHmd()
    {
        try
        {
            mHmd.Stop();
        }
        catch (const VRException&)
        {
            // The host service refuses to disconnect. The tracker has stopped anyway.
        }
        mHmd.RemoveListener(mWriter);
    }

    const std::unique_ptr<Source> mSource;
    const Person mPerson;
    PoseHistory mHistory;
    EventLine mEvents;
    PoseWriter mWriter;
    ReportTap mTap;
    qlt::Hmd mHmd;
    std::mutex mMutex; // guards mStopped
    std::condition_variable mStopping;
    bool mStopped = false;
    std::thread mWatcher;
    std::mutex mPollMutex; // guards mPolled
    std::uint64_t mPolled = 0;
};

HeadTracker::HeadTracker(const std::string& source, const HeadTrackerOptions& options)
    : HeadTracker(OpenSource(source), options)
{
}

HeadTracker::HeadTracker(qlt::UsbHost& host, const HeadTrackerOptions& options)
    : HeadTracker(SourceOf(host), options)
{
}

HeadTracker::HeadTracker(qlt::UsbHost& host, qlt::Clock& clock, const HeadTrackerOptions& options)
    : HeadTracker(SourceOf(host, clock), options)
{
}

HeadTracker::HeadTracker(std::unique_ptr<Source> source, const HeadTrackerOptions& options)
{
    if (source == nullptr)
    {
        throw Error("a head tracker needs a source of reports");
    }
    mImpl = std::make_unique<Impl>(std::move(source), options);
}

HeadTracker::~HeadTracker() = default;

Pose HeadTracker::Latest() const noexcept { return mImpl->History().Latest(); }

Pose HeadTracker::At(std::int64_t timeNs) const noexcept { return mImpl->History().At(timeNs); }

std::optional<Pose> HeadTracker::PollPose() { return mImpl->PollPose(); }

bool HeadTracker::Recentre() noexcept { return mImpl->History().Recentre(); }

double HeadTracker::PredictionError(double seconds) const noexcept
{
    return mImpl->Writer().GetErrors().At(seconds);
}

double HeadTracker::RecentPredictionError(double seconds) const noexcept
{
    return mImpl->Writer().GetRecentErrors().At(seconds);
}

std::optional<TrackerEvent> HeadTracker::PollEvent() { return mImpl->Events().Poll(); }

void HeadTracker::SetEventHandler(EventHandler handler)
{
    mImpl->Events().SetHandler(std::move(handler));
}

std::int64_t HeadTracker::NowNs() const { return mImpl->GetSource().NowNs(); }

const Person& HeadTracker::GetPerson() const noexcept { return mImpl->GetPerson(); }

qlt::Hmd& HeadTracker::Core() noexcept { return mImpl->Core(); }

} // namespace qltkit
