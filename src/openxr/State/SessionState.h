// The states of a session and the changes between them. Every change is queued as an event, in the
// order that programs rely on. The caller serialises all operations.
#pragma once

#include "State/EventQueue.h"
#include "State/Failure.h"

namespace qltxr
{

class SessionState
{
public:
    /// A headless session becomes focused without frames and ends without STOPPING.
    SessionState(EventQueue& events, XrSession session, bool headless)
        : mEvents(events)
        , mSession(session)
        , mHeadless(headless)
    {
    }

    /// Enters IDLE and READY.
    void Create(XrTime now);

    void Begin(XrTime now);

    /// Enters IDLE. After an exit request it then enters EXITING, and otherwise READY.
    void End(XrTime now);

    void RequestExit(XrTime now);

    /// Call it when the program has sent a frame. The first frame leads to FOCUSED.
    void FrameEnded(XrTime now);

    bool IsRunning() const { return mRunning; }
    bool IsFocused() const { return mState == XR_SESSION_STATE_FOCUSED; }

    /// True while the drawing of the program is visible.
    bool IsVisible() const { return mState == XR_SESSION_STATE_VISIBLE || IsFocused(); }

private:
    void Enter(XrSessionState state, XrTime now);
    void Focus(XrTime now);

    EventQueue& mEvents;
    const XrSession mSession;
    const bool mHeadless;
    XrSessionState mState = XR_SESSION_STATE_UNKNOWN;
    bool mRunning = false;
    bool mExiting = false;
};

} // namespace qltxr
