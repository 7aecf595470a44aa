#include "Runtime/VRThread.h"

VRThread::~VRThread() { End(); }

void VRThread::Init()
{
    mStopEvent.Create(L"", true);
    mStartedEvent.Create(L"", true);
}

void VRThread::Start(bool wait, std::uint32_t timeoutMs)
{
    mThread = std::thread([this] { Run(); });
    mStarted = true;
    if (wait && !mStopRequested)
    {
        mStartedEvent.Wait(timeoutMs);
    }
}

void VRThread::Stop(bool join)
{
    if (mStopDisabled != 0 || !mStarted || mStopRequested)
    {
        return;
    }
    mStopEvent.Set();
    mStopRequested = true;
    if (join)
    {
        Join();
    }
}

void VRThread::End()
{
    Stop(true);
    if (mStopRequested) // an earlier Stop did not join
    {
        Join();
    }
}

void VRThread::Join()
{
    if (mThread.joinable())
    {
        mThread.join();
    }
    mStarted = false;
    mStopRequested = false;
}
