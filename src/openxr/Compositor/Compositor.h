// The thread that keeps the panel lit: for each picture of the display it takes the program's
// newest complete frame, turns it to where the head will be, and draws it through the lenses. It
// goes on at the display's pace whatever the program does.
//
// Any thread may call, but for the two operations on the next frame, which one lock of the caller
// guards. The thread ends with Stop or with the object.
#pragma once

#include "Compositor/FrameClock.h"
#include "Graphics/Graphics.h"
#include "Tracking/HeadModel.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace qltxr
{

struct CompositorCounts
{
    std::uint64_t composed = 0;  // pictures for the display
    std::uint64_t submitted = 0; // frames of the program
    std::uint64_t dropped = 0;   // of them, those that were never shown
    std::uint64_t missed = 0;    // display times without a picture of their own
    XrDuration drawTime = 0;     // of the last picture
};

class Compositor
{
public:
    /// Throws Failure when the graphics cannot be used on the new thread.
    Compositor(std::unique_ptr<Graphics> graphics, const HeadModel& head, FrameClock& clock);
    ~Compositor();
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    void Stop();

    /// XR_ERROR_SESSION_LOST after Stop.
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info, std::uint32_t count);

    const std::vector<std::int64_t>& Formats() const { return mFormats; }

    /// The frame that the program is about to hand over, to be filled; Submit hands it over.
    Frame& NextFrame() { return mFrames[mFilling]; }
    void Submit();

    /// Black, until the next frame.
    void Blank();

    /// Until the image is not being read, or the deadline has passed, which gives false. From then
    /// on the program may draw into it.
    bool WaitUntilUnread(const ImageSet& images, std::uint32_t image, XrTime deadline);

    /// The newest frame, composed for the next display time.
    Picture TakePicture();

    /// What the user has done to the window since the last call.
    WindowEvents TakeWindowEvents();

    CompositorCounts Counts() const;
    std::string DescribeOutput() const { return mGraphics->DescribeOutput(); }

private:
    using Lock = std::unique_lock<std::mutex>;
    using Task = std::function<void(Lock&)>;

    void Run();
    void Loop(Lock& lock);
    void RunOnThread(const Task& task);
    void RunTasks(Lock& lock);
    void Compose(Lock& lock, XrTime displayTime);
    void Draw(Lock& lock, XrTime displayTime);
    void TakeNewest();
    bool IsReading(const ImageSet& images, std::uint32_t image) const;
    Viewer ViewerAt(XrTime time) const;
    void CountDisplayTimes(XrTime displayTime);

    const std::unique_ptr<Graphics> mGraphics;
    const HeadModel& mHead;
    FrameClock& mClock;
    const std::vector<std::int64_t> mFormats;
    const bool mHasOutput;

    mutable std::mutex mMutex; // guards everything below
    std::condition_variable mWork;
    std::condition_variable mDone;
    std::vector<Task> mTasks;
    bool mEntered = false;
    bool mStopping = false;
    XrResult mFailure = XR_SUCCESS;
    std::array<Frame, 3> mFrames; // one is filled, one waits, one is shown
    std::size_t mFilling = 0;     // guarded by the caller's lock, too
    std::size_t mWaiting = 1;
    std::size_t mShown = 2;
    bool mHasWaiting = false;
    bool mHasShown = false;
    bool mShownIsTaken = false; // the program draws into it again
    bool mIsDrawing = false;
    bool mIsBlack = false; // and the display shows that already
    XrTime mLastDisplayTime = 0;
    XrDuration mLead = 0; // before a display time, to begin with its picture
    WindowEvents mWindowEvents;
    CompositorCounts mCounts;
    std::thread mThread;
};

} // namespace qltxr
