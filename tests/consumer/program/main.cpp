// This program uses the installed library: a constant, the simulator's events through its own
// listener, and an exception that passes through the library. It fails when one of them is wrong.
#include <qlt/qlt.h>
#include <qltkit/qltkit.h>

#include <atomic>
#include <iostream>
#include <thread>

namespace
{

/// Expects the simulator's rotation about x and a time that increases.
struct Listener final : qlt::TrackerListener
{
    void OnOrientationEvent(const qlt::Quaternion& orientation, float time) override
    {
        isRight = isRight && (time == 0.0f || orientation.x() > 0.0f) && orientation.y() == 0.0f;
        ++events;
    }

    std::atomic<bool> isRight{true};
    std::atomic<int> events{0};
};

bool Tracks()
{
    qlt::SimulatorTracker tracker;
    Listener listener;
    tracker.AddListener(listener);
    tracker.Start();
    while (listener.events < 20)
    {
        std::this_thread::yield();
    }
    tracker.Stop();
    tracker.RemoveListener(listener);
    return listener.isRight;
}

struct BrokenClock final : qlt::Clock
{
    std::int64_t NowNs() override { throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT); }
    void SleepNs(std::int64_t) override {}
};

bool ExceptionsPass()
{
    BrokenClock clock;
    try
    {
        const qlt::SensorFusion fusion(clock);
    }
    catch (const VRException& exception)
    {
        return dynamic_cast<const VRExceptionTimeout*>(&exception) != nullptr &&
               exception.message == "Error VR_STATUS_ERROR_TIMEOUT (17)";
    }
    return false;
}

/// The kit's library makes the first report of a software headset, which has sequence number 1.
bool TheKitWorks() { return qltkit::SoftwareHeadset(1, true).Next().report[0] == 1; }

} // namespace

int main()
{
    std::cout << qlt::Params::HMD_NAME << std::endl;
    return Tracks() && ExceptionsPass() && TheKitWorks() ? 0 : 1;
}
