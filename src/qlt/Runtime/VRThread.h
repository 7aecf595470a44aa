// The base of a worker: one thread, a stop event and a started event.
//
//   owner                          worker
//   Init(), Start(true, forever)   Run(): prepare, signal mStartedEvent
//   ... Start returns              loop: test mStopEvent in every pass
//   Stop(true)                     stop event seen: release everything, return
//
// A worker is started once in its life: no event is ever reset, so a second Start meets the stop
// request of the first. The owner deletes a worker through its most derived type, on the thread
// that started it; only the two events cross between the threads. An exception that leaves Run ends
// the process.
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

    /// Creates the two events; once, before Start.
    void Init();

    /// Launches Run and, with `wait`, waits until it has signalled that it is ready. Throws
    /// VRExceptionTimeout when that takes longer than `timeoutMs`; the thread then runs on. Ends
    /// the process when a thread is already held.
    void Start(bool wait, std::uint32_t timeoutMs);

    /// Asks Run to return, once, and with `join` waits for it. Nothing when not started, already
    /// asked, or disabled.
    void Stop(bool join);

    /// Waits for Run to return. Nothing when no thread is held; std::system_error from the thread
    /// itself.
    void Join();

protected:
    /// Ends the thread, as End does. The destructor of a derived class must call End itself if Run
    /// uses its members.
    ~VRThread();

    /// Stops and joins, also when a Stop that did not join has come before.
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
