// The order of xrWaitFrame, xrBeginFrame and xrEndFrame. The caller serialises all operations.
#pragma once

#include "State/Failure.h"

#include <cstdint>

namespace qltxr
{

class FrameOrder
{
public:
    /// Returns to the state of a session that has just begun.
    void Reset() { *this = FrameOrder(); }

    /// A wait may continue when the frame of the previous wait has been begun. That frame need not
    /// be ended.
    bool MayWait() const { return mWaits == mBegins; }

    /// Call it when a wait continues, before it sleeps.
    void StartWait() { ++mWaits; }

    /// Call it when the wait has slept. The program may then begin the frame.
    void FinishWait() { mReady = true; }

    /// Begins the frame. Returns XR_FRAME_DISCARDED when the previous frame was not ended.
    XrResult Begin()
    {
        Require(mReady, XR_ERROR_CALL_ORDER_INVALID);
        mReady = false;
        ++mBegins;
        const bool discarded = mInProgress;
        mInProgress = true;
        return discarded ? XR_FRAME_DISCARDED : XR_SUCCESS;
    }

    /// An end has two steps, this one and Finish. When an end fails between them, the frame stays
    /// in progress.
    void RequireBegun() const { Require(mInProgress, XR_ERROR_CALL_ORDER_INVALID); }
    void Finish() { mInProgress = false; }

private:
    std::uint64_t mWaits = 0;
    std::uint64_t mBegins = 0;
    bool mReady = false;
    bool mInProgress = false;
};

} // namespace qltxr
