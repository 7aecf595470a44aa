// A thread that publishes how a session fares, four times a second, for `qlt openxr status`, and
// says where the head's orientation comes from, whenever that has changed. The fields of the JSON
// text: pid, program, source, reports, output, period_ms, frames, dropped, pictures, missed,
// draw_ms, time_ns and sentences.
#pragma once

#include "Compositor/Compositor.h"
#include "Setup/System.h"

#include <atomic>

namespace qltxr
{

class StatusPublisher
{
public:
    /// The compositor is null for a headless session. All must outlive this.
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
