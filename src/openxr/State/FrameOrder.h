// The order of xrWaitFrame, xrBeginFrame and xrEndFrame. The caller serialises all operations.
#pragma once

#include "State/Failure.h"

#include <cstdint>

namespace qltxr
{

class FrameOrder
{
public:
    /// As in a session that has just begun.
    void Reset() { *this = FrameOrder(); }

    /// A wait may go on once the frame that was waited for before has been begun. Its end does not
    /// matter.
    bool MayWait() const { return mWaits == mBegins; }

    /// A wait goes on, before it has slept.
    void StartWait() { ++mWaits; }

    /// It has slept: its frame may be begun.
    void FinishWait() { mReady = true; }

    /// XR_FRAME_DISCARDED when the frame before was never ended.
    XrResult Begin()
    {
        Require(mReady, XR_ERROR_CALL_ORDER_INVALID);
        mReady = false;
        ++mBegins;
        const bool discarded = mInProgress;
        mInProgress = true;
        return discarded ? XR_FRAME_DISCARDED : XR_SUCCESS;
    }

    /// An end that fails later leaves the frame in progress, so this and Finish are two steps.
    void RequireBegun() const { Require(mInProgress, XR_ERROR_CALL_ORDER_INVALID); }
    void Finish() { mInProgress = false; }

private:
    std::uint64_t mWaits = 0;
    std::uint64_t mBegins = 0;
    bool mReady = false;
    bool mInProgress = false;
};

} // namespace qltxr
