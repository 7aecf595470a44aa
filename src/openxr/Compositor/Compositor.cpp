#include "Compositor/Compositor.h"

#include "Compositor/SteadyTime.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace qltxr
{

namespace
{

constexpr XrDuration MS = 1000000;
constexpr XrDuration FIRST_LEAD = 5 * MS;
constexpr XrDuration MAX_LEAD = 80 * MS; // predictions for later times are not useful

/// Returns a time that is enough for a picture that takes as long as the last ones, and for a
/// thread that wakes up late.
XrDuration NextLead(XrDuration lead, XrDuration drawTime)
{
    const XrDuration needed = drawTime + drawTime / 4 + MS;
    const XrDuration next = needed > lead ? needed : lead - (lead - needed) / 32;
    return std::min(next, MAX_LEAD);
}

} // namespace

Compositor::Compositor(std::unique_ptr<Graphics> graphics, const HeadModel& head, FrameClock& clock)
    : mGraphics(std::move(graphics))
    , mHead(head)
    , mClock(clock)
    , mFormats(mGraphics->Formats())
    , mHasOutput(mGraphics->HasOutput())
    , mLead(FIRST_LEAD)
    , mThread([this] { Run(); })
{
    Lock lock(mMutex);
    mDone.wait(lock, [this] { return mEntered || mFailure != XR_SUCCESS; });
    if (mFailure != XR_SUCCESS)
    {
        lock.unlock();
        mThread.join();
        throw Failure{mFailure};
    }
}

Compositor::~Compositor() { Stop(); }

void Compositor::Stop()
{
    {
        const Lock lock(mMutex);
        mStopping = true;
    }
    mWork.notify_all();
    if (mThread.joinable())
    {
        mThread.join();
    }
}

void Compositor::Run()
{
    Lock lock(mMutex);
    try
    {
        mGraphics->Enter();
        mEntered = true;
        mDone.notify_all();
        Loop(lock);
    }
    catch (const std::exception&)
    {
        mFailure = XR_ERROR_GRAPHICS_DEVICE_INVALID;
    }
    mStopping = true;
    mFrames = {}; // releases the images while they can still be deleted
    mTasks.clear();
    mGraphics->Leave();
    mDone.notify_all();
}

void Compositor::Loop(Lock& lock)
{
    const auto hasWork = [this] { return mStopping || !mTasks.empty(); };
    while (!mStopping)
    {
        const XrTime displayTime = mClock.NextAfter(std::max(Now() + mLead, mLastDisplayTime));
        const bool isDue = mHasOutput
                               ? !mWork.wait_until(lock, ToTimePoint(displayTime - mLead), hasWork)
                               : (mWork.wait(lock, hasWork), false);
        if (isDue)
        {
            Compose(lock, displayTime);
        }
        else if (!mStopping)
        {
            RunTasks(lock);
        }
    }
}

void Compositor::RunOnThread(const Task& task)
{
    Lock lock(mMutex);
    Require(!mStopping, XR_ERROR_SESSION_LOST);
    bool done = false;
    std::exception_ptr error;
    mTasks.emplace_back(
        [&](Lock& onThread)
        {
            try
            {
                task(onThread);
            }
            catch (...)
            {
                error = std::current_exception();
            }
            done = true;
        });
    mWork.notify_all();
    mDone.wait(lock, [this, &done] { return done || mStopping; });
    Require(done, XR_ERROR_SESSION_LOST);
    if (error)
    {
        std::rethrow_exception(error);
    }
}

void Compositor::RunTasks(Lock& lock)
{
    std::vector<Task> tasks;
    tasks.swap(mTasks);
    for (const Task& task : tasks)
    {
        task(lock);
    }
    mDone.notify_all();
}

std::shared_ptr<ImageSet> Compositor::CreateImages(const XrSwapchainCreateInfo& info,
                                                   std::uint32_t count)
{
    std::shared_ptr<ImageSet> images;
    RunOnThread([&](Lock&) { images = mGraphics->CreateImages(info, count); });
    return images;
}

void Compositor::Submit()
{
    const Lock lock(mMutex);
    ++mCounts.submitted;
    mCounts.dropped += mHasWaiting ? 1 : 0;
    std::swap(mFilling, mWaiting);
    mHasWaiting = true;
}

void Compositor::Blank()
{
    const Lock lock(mMutex);
    mHasWaiting = false;
    mHasShown = false;
}

bool Compositor::IsReading(const ImageSet& images, std::uint32_t image) const
{
    const Frame& frame = mFrames[mShown];
    for (std::uint32_t i = 0; mHasShown && i < frame.layerCount; ++i)
    {
        for (const LayerView& view : frame.layers[i].views)
        {
            if (view.source.images.get() == &images && view.source.image == image)
            {
                return true;
            }
        }
    }
    return false;
}

bool Compositor::WaitUntilUnread(const ImageSet& images, std::uint32_t image, XrTime deadline)
{
    Lock lock(mMutex);
    const auto isFree = [&] { return mStopping || !mIsDrawing || !IsReading(images, image); };
    if (!mDone.wait_until(lock, ToTimePoint(deadline), isFree))
    {
        return false;
    }
    mShownIsTaken = mShownIsTaken || IsReading(images, image);
    return true;
}

// A frame that is not completely drawn waits for the next picture. It does not wait when the
// program already overwrites the frame before it.
void Compositor::TakeNewest()
{
    if (!mHasWaiting)
    {
        return;
    }
    const bool mayWait = mHasShown && !mShownIsTaken;
    if (mayWait && !mGraphics->IsComplete(mFrames[mWaiting]))
    {
        return;
    }
    std::swap(mWaiting, mShown);
    mHasWaiting = false;
    mHasShown = true;
    mShownIsTaken = false;
}

Viewer Compositor::ViewerAt(XrTime time) const { return {mHead.At(time).pose, mHead.Wearer()}; }

void Compositor::Draw(Lock& lock, XrTime displayTime)
{
    TakeNewest();
    const XrDuration scan = mGraphics->ScanTime();
    Composition composition;
    composition.frame = mHasShown ? &mFrames[mShown] : nullptr;
    mIsDrawing = true;
    lock.unlock();
    composition.scanStart = ViewerAt(displayTime);
    composition.scanEnd = scan > 0 ? ViewerAt(displayTime + scan) : composition.scanStart;
    mGraphics->Draw(composition);
    lock.lock();
    mIsDrawing = false;
    mDone.notify_all();
}

void Compositor::Compose(Lock& lock, XrTime displayTime)
{
    const bool isBlack = !mHasShown && !mHasWaiting;
    XrTime shown = 0;
    WindowEvents events;
    if (!isBlack || !mIsBlack)
    {
        const XrTime begin = Now();
        Draw(lock, displayTime);
        mCounts.drawTime = Now() - begin;
        CountDisplayTimes(displayTime);
        lock.unlock();
        shown = mGraphics->Present();
        lock.lock();
        mLead = NextLead(mLead, mCounts.drawTime);
    }
    mIsBlack = isBlack;
    mLastDisplayTime = displayTime;
    lock.unlock();
    events = mGraphics->PollWindow();
    lock.lock();
    mWindowEvents.closed = mWindowEvents.closed || events.closed;
    mWindowEvents.recentre = mWindowEvents.recentre || events.recentre;
    if (shown != 0)
    {
        mClock.Observe(shown);
    }
}

void Compositor::CountDisplayTimes(XrTime displayTime)
{
    const XrDuration period = mClock.Period();
    if (mLastDisplayTime != 0 && !mIsBlack)
    {
        const XrDuration step = displayTime - mLastDisplayTime + period / 2;
        mCounts.missed += static_cast<std::uint64_t>(step / period - 1);
    }
    ++mCounts.composed;
}

Picture Compositor::TakePicture()
{
    Picture picture;
    RunOnThread(
        [&](Lock& lock)
        {
            // This takes the newest frame even when its drawing is not complete.
            mShownIsTaken = true;
            Draw(lock, mClock.NextAfter(Now() + mLead));
            picture = mGraphics->ReadPicture();
        });
    return picture;
}

WindowEvents Compositor::TakeWindowEvents()
{
    const Lock lock(mMutex);
    return std::exchange(mWindowEvents, {});
}

CompositorCounts Compositor::Counts() const
{
    const Lock lock(mMutex);
    return mCounts;
}

} // namespace qltxr
