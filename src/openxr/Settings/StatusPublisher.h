// A thread that publishes the status of a session four times a second, for `qlt openxr status`. It
// also prints the source of the head's orientation whenever the source changes. The status is a
// JSON text with these fields: pid, program, source, reports, output, period_ms, frames, dropped,
// pictures, missed, draw_ms, time_ns and sentences.
#pragma once

#include "Compositor/Compositor.h"
#include "Setup/System.h"

#include <atomic>

namespace qltxr
{

class StatusPublisher
{
public:
    /// `compositor` is null for a headless session. All arguments must outlive this object.
    StatusPublisher(const HeadModel& head, const FrameClock& clock, const Compositor* compositor,
                    const std::atomic<std::uint64_t>& frames);
    ~StatusPublisher();
    StatusPublisher(const StatusPublisher&) = delete;
    StatusPublisher& operator=(const StatusPublisher&) = delete;

private:
    void Run();
    std::string Describe() const;

    const HeadModel& mHead;
    const FrameClock& mClock;
    const Compositor* const mCompositor;
    const std::atomic<std::uint64_t>& mFrames;
    const PublishedText mText;
    std::mutex mMutex; // guards mStopping
    std::condition_variable mStop;
    bool mStopping = false;
    std::thread mThread;
};

} // namespace qltxr
