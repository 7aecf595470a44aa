// Uses the library as it is installed: constants, arithmetic, the simulator's events, the filter,
// and an exception that passes through the library. Names what is wrong, and then fails.
#include <qlt/qlt.h>

#include <cmath>
#include <condition_variable>
#include <iostream>
#include <mutex>

namespace
{

int gFailures = 0;

void Expect(bool condition, const char* what)
{
    if (!condition)
    {
        std::cerr << "not so: " << what << '\n';
        ++gFailures;
    }
}

bool IsNear(float a, double b) { return std::fabs(static_cast<double>(a) - b) < 1e-5; }

/// Turns a quarter about y: x becomes -z.
void CheckRotation()
{
    const qlt::Quaternion quarter =
        qlt::Quaternion::RotationQuaternion(1.57079633f, qlt::Vec3(0.0f, 2.0f, 0.0f));
    const qlt::Vec3 turned = qlt::Quaternion::Rotate(quarter, qlt::Vec3(1.0f, 0.0f, 0.0f));
    Expect(IsNear(turned.x(), 0.0) && IsNear(turned.y(), 0.0) && IsNear(turned.z(), -1.0),
           "a quarter turn about y brings x to -z");
}

/// Expects the simulator's rotation about x, by one radian per second.
class Listener final : public qlt::TrackerListener
{
public:
    void OnOrientationEvent(const qlt::Quaternion& orientation, float time) override
    {
        const double half = 0.5 * static_cast<double>(time);
        const std::lock_guard<std::mutex> lock(mMutex);
        mRight = mRight && IsNear(orientation.w(), std::cos(half)) &&
                 IsNear(orientation.x(), std::sin(half));
        ++mEvents;
        mChanged.notify_all();
    }

    bool WaitForEvents(int count)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [&] { return mEvents >= count; });
        return mRight;
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    int mEvents = 0;
    bool mRight = true;
};

void CheckSimulator()
{
    qlt::SimulatorTracker tracker;
    Listener listener;
    tracker.AddListener(listener);
    Expect(tracker.Start() && tracker.IsTracking(), "the simulator starts");
    Expect(listener.WaitForEvents(20), "the simulator turns about x");
    Expect(tracker.Stop() && !tracker.IsTracking(), "the simulator stops");
    tracker.RemoveListener(listener);
}

/// Advances by a millisecond with every look, until it is told to fail.
class StepClock final : public qlt::Clock
{
public:
    std::int64_t NowNs() override
    {
        if (fails)
        {
            throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT);
        }
        return mNowNs += 1000000;
    }

    void SleepNs(std::int64_t) override {}

    bool fails = false;

private:
    std::int64_t mNowNs = 0;
};

/// A radian per second about the vertical; the mean with the rest before it halves the first step.
void CheckFusion()
{
    constexpr double HALF_ANGLE = 0.5 * 99.5 * 0.001;
    StepClock clock;
    qlt::SensorFusion fusion(clock);
    const qlt::Vec3 turn(0.0f, 1.0f, 0.0f);
    const qlt::Vec3 up(0.0f, 1.0f, 0.001f); // exactly upright, there is no axis to correct about
    for (int i = 0; i < 100; ++i)
    {
        fusion.Fuse(up, turn, qlt::Vec3(), 0.0f);
    }
    const qlt::Quaternion fused = fusion.GetQuaternion();
    Expect(IsNear(fused.w(), std::cos(HALF_ANGLE)) && IsNear(fused.y(), std::sin(HALF_ANGLE)),
           "a hundred steps of a millisecond turn by 0.0995 radians");

    clock.fails = true;
    try
    {
        fusion.Fuse(up, turn, qlt::Vec3(), 0.0f);
        Expect(false, "the clock's exception comes through the library");
    }
    catch (const VRException& exception)
    {
        Expect(dynamic_cast<const VRExceptionTimeout*>(&exception) != nullptr &&
                   exception.message == "Error VR_STATUS_ERROR_TIMEOUT (17)",
               "the exception is a time-out");
    }
}

} // namespace

int main()
{
    std::cout << qlt::Params::HMD_NAME << '\n';
    CheckRotation();
    CheckSimulator();
    CheckFusion();
    return gFailures == 0 ? 0 : 1;
}
