// A tracker without hardware: a fixed, smooth motion, every event about a thousand times a second.
// The motion goes on where it stopped when the tracker is started again.
#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/Clock.h>
#include <qlt/Sensors/Tracker.h>

#include <atomic>

namespace qlt
{

class QLT_API SimulatorTracker : public Tracker
{
public:
    /// Paced by the machine's own clock.
    SimulatorTracker();

    /// Paced by another clock, which must outlive this.
    explicit SimulatorTracker(Clock& clock);
    ~SimulatorTracker() override;

protected:
    void DoProcess() override;

private:
    void RaiseEvents(float t);

    std::atomic<float> mSimulatedTime{0.0f}; // seconds; a Start upon a Start shares it
    Clock& mClock;
};

} // namespace qlt
