#include "State/SessionState.h"

namespace qltxr
{

void SessionState::Enter(XrSessionState state, XrTime now)
{
    mState = state;
    mEvents.SessionState(mSession, state, now);
}

void SessionState::Create(XrTime now)
{
    Enter(XR_SESSION_STATE_IDLE, now);
    Enter(XR_SESSION_STATE_READY, now);
}

void SessionState::Focus(XrTime now)
{
    Enter(XR_SESSION_STATE_SYNCHRONIZED, now);
    Enter(XR_SESSION_STATE_VISIBLE, now);
    Enter(XR_SESSION_STATE_FOCUSED, now);
}

void SessionState::Begin(XrTime now)
{
    Require(!mRunning, XR_ERROR_SESSION_RUNNING);
    Require(mState == XR_SESSION_STATE_READY, XR_ERROR_SESSION_NOT_READY);
    mRunning = true;
    mExiting = false;
    if (mHeadless)
    {
        Focus(now);
    }
}

void SessionState::FrameEnded(XrTime now)
{
    if (mState == XR_SESSION_STATE_READY)
    {
        Focus(now);
    }
}

// deliberate: before its first frame, a program may wait for STOPPING without sending a frame. The
// order of the states demands SYNCHRONIZED before STOPPING, so SYNCHRONIZED does not wait for a
// frame here.
void SessionState::RequestExit(XrTime now)
{
    Require(mRunning, XR_ERROR_SESSION_NOT_RUNNING);
    if (mState == XR_SESSION_STATE_STOPPING)
    {
        return;
    }
    mExiting = true;
    if (mState == XR_SESSION_STATE_FOCUSED)
    {
        Enter(XR_SESSION_STATE_VISIBLE, now);
    }
    Enter(XR_SESSION_STATE_SYNCHRONIZED, now);
    Enter(XR_SESSION_STATE_STOPPING, now);
}

void SessionState::End(XrTime now)
{
    Require(mRunning, XR_ERROR_SESSION_NOT_RUNNING);
    Require(mState == XR_SESSION_STATE_STOPPING, XR_ERROR_SESSION_NOT_STOPPING);
    mRunning = false;
    Enter(XR_SESSION_STATE_IDLE, now);
    Enter(mExiting ? XR_SESSION_STATE_EXITING : XR_SESSION_STATE_READY, now);
}

} // namespace qltxr
