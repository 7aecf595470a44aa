// The functions of the frame loop.
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "Settings/Log.h"
#include "Settings/PictureFile.h"
#include "State/Structures.h"

#include <thread>

namespace qltxr
{

namespace
{

/// Returns a running session. Throws when the session has ended, because that may happen while the
/// program waits.
Session& RunningSession(XrSession handle)
{
    Session& session = Get<Session>(handle);
    Require(session.state.IsRunning(), XR_ERROR_SESSION_NOT_RUNNING);
    return session;
}

/// Waits until the program has begun the frame that it waited for before.
void WaitForBegin(Lock& lock, XrSession handle)
{
    while (!RunningSession(handle).order.MayWait())
    {
        TheRuntime().changed.wait(lock);
    }
}

void RequireBlendMode(const Instance& instance, XrEnvironmentBlendMode mode)
{
    if (mode != XR_ENVIRONMENT_BLEND_MODE_OPAQUE)
    {
        RefuseValue(instance.extensions, Enumeration::EnvironmentBlendMode, mode,
                    XR_ERROR_ENVIRONMENT_BLEND_MODE_UNSUPPORTED);
    }
}

void Submit(Session& session)
{
    session.order.Finish();
    session.state.FrameEnded(Now());
    ++session.frames;
    if (session.compositor != nullptr)
    {
        session.compositor->Submit();
    }
}

/// Handles the last frame that the user wants. It writes the picture of this frame if the user
/// wants one, and asks the program to exit.
void Finish(Lock& lock, XrSession handle, Session& session)
{
    const std::string file = session.configuration.pictureFile;
    const std::shared_ptr<Compositor> compositor = session.compositor;
    if (compositor != nullptr && !file.empty())
    {
        lock.unlock(); // TakePicture waits for the compositor
        const Picture picture = compositor->TakePicture();
        if (!WritePicture(file, picture))
        {
            Say("the picture " + file + " cannot be written");
        }
        lock.lock();
    }
    RunningSession(handle).state.RequestExit(Now());
}

} // namespace

XrResult XRAPI_CALL WaitFrame(XrSession handle, const XrFrameWaitInfo* info, XrFrameState* state)
{
    Lock lock = LockRuntime();
    Get<Session>(handle);
    RequireTypeIfAny(info, XR_TYPE_FRAME_WAIT_INFO);
    RequireType(state, XR_TYPE_FRAME_STATE);
    WaitForBegin(lock, handle);
    Session& session = RunningSession(handle);
    session.order.StartWait();
    const FramePacer::Slot slot = session.pacer.Next(session.clock, Now());
    lock.unlock();
    std::this_thread::sleep_until(ToTimePoint(slot.wakeTime));
    lock.lock();
    Session& after = RunningSession(handle); // the session may have ended meanwhile
    after.order.FinishWait();
    state->predictedDisplayTime = slot.displayTime;
    state->predictedDisplayPeriod = after.clock.Period();
    state->shouldRender = after.state.IsVisible() && after.compositor != nullptr;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL BeginFrame(XrSession handle, const XrFrameBeginInfo* info)
{
    const Lock lock = LockRuntime();
    Get<Session>(handle);
    RequireTypeIfAny(info, XR_TYPE_FRAME_BEGIN_INFO);
    const XrResult result = RunningSession(handle).order.Begin();
    TheRuntime().changed.notify_all();
    return result;
}

XrResult XRAPI_CALL EndFrame(XrSession handle, const XrFrameEndInfo* info)
{
    Lock lock = LockRuntime();
    Get<Session>(handle);
    RequireType(info, XR_TYPE_FRAME_END_INFO);
    Session& session = RunningSession(handle);
    session.order.RequireBegun();
    Require(info->displayTime > 0, XR_ERROR_TIME_INVALID);
    RequireBlendMode(*TheRuntime().instance, info->environmentBlendMode);
    Frame& frame =
        session.compositor != nullptr ? session.compositor->NextFrame() : session.headlessFrame;
    TakeLayers(TheRuntime().handles, TheRuntime().instance->extensions, *info, frame);
    Submit(session);
    if (session.frames == session.configuration.frames)
    {
        Finish(lock, handle, session);
    }
    return XR_SUCCESS;
}

} // namespace qltxr
