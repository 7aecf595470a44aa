#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/Clock.h>
#include <qlt/Sensors/Tracker.h>

#include <atomic>

namespace qlt
{

/// A tracker without hardware. It makes a fixed, smooth motion and raises every event about a
/// thousand times a second. After a Stop and a Start the motion continues where it stopped.
///
/// At the simulated time t, in steps of 0.001 s, the orientation is the rotation by t radians about
/// x. The position is zero. The other events carry sines and cosines of t, so that each axis of
/// each event differs.
class QLT_API SimulatorTracker : public Tracker
{
public:
    /// Takes its pace from the machine's own clock: it sleeps for one millisecond between two
    /// events.
    SimulatorTracker();

    /// Takes its pace from another clock, which must outlive the tracker.
    explicit SimulatorTracker(Clock& clock);
    ~SimulatorTracker() override;

protected:
    /// Raises events until the tracker is stopped.
    void DoProcess() override;

private:
    void RaiseEvents(float t);

    std::atomic<float> mSimulatedTime{0.0f}; // seconds; the threads of a second Start share it
    Clock& mClock;
};

} // namespace qlt
