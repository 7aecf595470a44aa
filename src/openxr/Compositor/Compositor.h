// The thread that draws the pictures of the panel. For each picture of the display it takes the
// program's newest complete frame, turns it to the pose that the head will have, and draws it
// through the lenses. It keeps the pace of the display even when the program is slow.
//
// Any thread may call any operation, except NextFrame and Submit. One lock of the caller guards
// these two. The thread ends with Stop or with the object.
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
    std::uint64_t composed = 0;  // pictures that were made for the display
    std::uint64_t submitted = 0; // frames that the program has sent
    std::uint64_t dropped = 0;   // frames that were never shown
    std::uint64_t missed = 0;    // display times without a new picture
    XrDuration drawTime = 0;     // the duration for the last picture
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

    /// Makes the images of a swapchain. Throws XR_ERROR_SESSION_LOST after Stop.
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info, std::uint32_t count);

    const std::vector<std::int64_t>& Formats() const { return mFormats; }

    /// The next frame of the program. The caller fills it, and Submit passes it on.
    Frame& NextFrame() { return mFrames[mFilling]; }
    void Submit();

    /// Shows black until the next frame.
    void Blank();

    /// Waits until nothing reads the image, so that the program may draw into it. Returns false
    /// when the deadline passes before.
    bool WaitUntilUnread(const ImageSet& images, std::uint32_t image, XrTime deadline);

    /// Composes the newest frame for the next display time and returns the picture.
    Picture TakePicture();

    /// Returns the user's actions on the window since the last call.
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

    mutable std::mutex mMutex; // guards all members below
    std::condition_variable mWork;
    std::condition_variable mDone;
    std::vector<Task> mTasks;
    bool mEntered = false;
    bool mStopping = false;
    XrResult mFailure = XR_SUCCESS;
    std::array<Frame, 3> mFrames; // the program fills one, one waits and one is shown
    std::size_t mFilling = 0;     // the caller's lock guards it, too
    std::size_t mWaiting = 1;
    std::size_t mShown = 2;
    bool mHasWaiting = false;
    bool mHasShown = false;
    bool mShownIsTaken = false; // the program draws into the shown image again
    bool mIsDrawing = false;
    bool mIsBlack = false; // the display already shows black
    XrTime mLastDisplayTime = 0;
    XrDuration mLead = 0; // the time before a display time at which its picture begins
    WindowEvents mWindowEvents;
    CompositorCounts mCounts;
    std::thread mThread;
};

} // namespace qltxr
