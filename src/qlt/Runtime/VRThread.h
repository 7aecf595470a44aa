// The base class of a worker: one thread, a stop event and a started event.
//
//   owner                          worker
//   Init(), Start(true, forever)   Run(): prepares itself, signals mStartedEvent
//   ... Start returns              loop: tests mStopEvent in every pass
//   Stop(true)                     sees the stop event, releases everything, returns
//
// Start a worker only once. No event is ever reset, so a second Run would see the stop request of
// the first one. The owner deletes a worker through its most derived type, on the thread that
// started it. The two threads share only the two events. An exception that leaves Run ends the
// process.
#pragma once

#include "Runtime/VREvent.h"

#include <cstdint>
#include <thread>

class VRThread
{
public:
    VRThread() = default;
    VRThread(const VRThread&) = delete;
    VRThread& operator=(const VRThread&) = delete;

    /// Creates the two events. Call it once, before Start.
    void Init();

    /// Starts Run on a new thread. With `wait` it returns when Run has signalled that it is ready.
    /// Throws VRExceptionTimeout when that takes longer than `timeoutMs` milliseconds; the thread
    /// then continues. Ends the process when the worker already has a thread.
    void Start(bool wait, std::uint32_t timeoutMs);

    /// Asks Run to return, and with `join` waits for it. It does nothing when the worker was not
    /// started, was already asked, or has mStopDisabled set.
    void Stop(bool join);

    /// Waits for Run to return. It does nothing without a thread. Throws std::system_error when the
    /// worker itself calls it.
    void Join();

protected:
    /// Ends the thread, as End does. The destructor of a derived class must call End itself if Run
    /// uses its members.
    ~VRThread();

    /// Stops and joins the thread, even after a Stop that did not join.
    void End();

    /// The body of the thread.
    virtual void Run() = 0;

    VREvent mStopEvent;
    VREvent mStartedEvent;
    std::uint8_t mStopDisabled = 0;

private:
    bool mStarted = false;
    bool mStopRequested = false;
    std::thread mThread;
};
