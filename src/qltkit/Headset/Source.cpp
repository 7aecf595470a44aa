#include <qltkit/Headset/Source.h>

#include <qltkit/Error.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include "Headset/SimulatedSource.h"

#include <filesystem>

namespace qltkit
{
namespace
{

/// A source from a given host and clock. If the clock is the machine's, its sleeps can be ended.
class HostSource final : public Source
{
public:
    HostSource(qlt::UsbHost& host, qlt::Clock& clock)
        : mHost(host)
        , mClock(clock)
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        return mSleeper.IsAwake() ? nullptr : mHost.OpenFirst();
    }

    std::uint32_t CountDevices() override { return mHost.CountDevices(); }

    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override
    {
        return mSleeper.IsAwake() ? nullptr : mHost.Open(index);
    }

    std::string Name() const override { return mHost.Name(); }
    std::string Problem() const override { return mHost.Problem(); }
    std::int64_t NowNs() override { return mClock.NowNs(); }

    void SleepNs(std::int64_t durationNs) override
    {
        if (mSleeper.IsAwake() || &mClock == &qlt::Clock::System())
        {
            mSleeper.SleepNs(durationNs);
        }
        else
        {
            mClock.SleepNs(durationNs);
        }
    }

    void Close() override { mSleeper.WakeAll(); }

private:
    qlt::UsbHost& mHost;
    qlt::Clock& mClock;
    Sleeper mSleeper;
};

} // namespace

bool Source::IsOver() const { return false; }

std::unique_ptr<Source> OpenSource(const std::string& name)
{
    const std::filesystem::path file(name);
    if (name == "headset")
    {
        return SourceOf(qlt::UsbHost::System());
    }
    if (name == "simulator")
    {
        return std::make_unique<SimulatedSource>();
    }
    const std::string ending = std::filesystem::path(name).extension().string();
    if (ending != ".json" && ending != ".mcap" && ending != ".bin")
    {
        throw Error("\"" + name +
                    "\" is neither \"headset\" nor \"simulator\" nor a file that ends in .json, "
                    ".mcap or .bin");
    }
    return OpenScriptedHeadset(name);
}

std::unique_ptr<Source> SourceOf(qlt::UsbHost& host)
{
    return SourceOf(host, qlt::Clock::System());
}

std::unique_ptr<Source> SourceOf(qlt::UsbHost& host, qlt::Clock& clock)
{
    return std::make_unique<HostSource>(host, clock);
}

} // namespace qltkit
