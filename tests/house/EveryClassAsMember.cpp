// This file is only compiled, with strict warnings. Objects of every class with a default
// constructor may be members of an aggregate, and elements of an array that is initialised with
// empty braces. The same holds for an application's own trackers, listeners, hosts and clocks.
#include <qlt/qlt.h>

namespace
{

struct Tracker final : qlt::Tracker
{
    void DoProcess() override {}
};

struct Host final : qlt::UsbHost
{
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override { return nullptr; }
};

struct Clock final : qlt::Clock
{
    std::int64_t NowNs() override { return 0; }
    void SleepNs(std::int64_t) override {}
};

template <typename... Classes>
struct App
{
    template <typename Class>
    struct Part
    {
        Class object;
        int number;
    };

    template <typename Class>
    static int Make()
    {
        const Part<Class> part = {};
        const Part<Class> parts[2] = {};
        const Class objects[2] = {};
        return part.number + parts[0].number + (&objects[0] != nullptr ? 1 : 0);
    }

    static int MakeAll() { return (Make<Classes>() + ...); }
};

} // namespace

int main()
{
    return App<qlt::Vec2, qlt::Vec3, qlt::Quaternion, qlt::Matrix, qlt::Params, qlt::DistortParams,
               qlt::DistortionFunction, qlt::SensorFusion, qlt::SimulatorTracker, qlt::Hmd,
               qlt::TrackerListener, qlt::Camera, NvidiaRenderer, Tracker, Host, Clock>::MakeAll();
}
