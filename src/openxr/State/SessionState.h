// The states of a session and what moves it from one to the next. Every step is queued as an event
// in the order that programs count on. The caller serialises all operations.
#pragma once

#include "State/EventQueue.h"
#include "State/Failure.h"

namespace qltxr
{

class SessionState
{
public:
    /// A headless session needs no frames to become focused, and no stopping to end.
    SessionState(EventQueue& events, XrSession session, bool headless)
        : mEvents(events)
        , mSession(session)
        , mHeadless(headless)
    {
    }

    /// IDLE, READY.
    void Create(XrTime now);

    void Begin(XrTime now);

    /// IDLE, and then EXITING after an exit request, or else READY.
    void End(XrTime now);

    void RequestExit(XrTime now);

    /// The program has sent a frame: the first one takes the session to FOCUSED.
    void FrameEnded(XrTime now);

    bool IsRunning() const { return mRunning; }
    bool IsFocused() const { return mState == XR_SESSION_STATE_FOCUSED; }

    /// True while what the program draws is to be seen.
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
