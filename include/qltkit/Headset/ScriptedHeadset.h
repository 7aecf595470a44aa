// A headset in software that obeys a script: the USB host that a tracker finds it on, and the clock
// that the tracker lives by.
//
//     qltkit::ScriptedHeadset headset(qltkit::LoadHeadsetScript("bad_cable.json"));
//     qlt::Hmd hmd(headset, headset);
//
// The same script gives the same bytes on every system. Devices that are open at the same time
// share one stream of reports. Any thread may call anything at any time.
#pragma once

#include <qltkit/Export.h>
#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/HeadsetScript.h>
#include <qltkit/Headset/Source.h>

#include <array>
#include <cstdint>
#include <memory>

namespace qltkit
{

/// The truth about a report. Times are those of the headset's NowNs.
struct ScriptedTruth
{
    std::uint32_t sequence = 0;
    std::int64_t sampleNs = 0;  // when its values were true
    std::int64_t arrivalNs = 0; // when the host was to have it
    bool isKnown = false;       // whether the rest is; not for a recording
    HeadAngles angles;
    std::array<double, 4> orientation{}; // w, x, y, z, body to world
};

class QLTKIT_API ScriptedHeadset final : public Source
{
public:
    enum class Pace
    {
        /// The script begins when a device is first sought, and goes on by the machine's clock. A
        /// report that nobody has read after 100 ms is lost.
        RealTime,
        /// Every read ends at once, no report is lost, and time is what the reads have taken by the
        /// script. While the headset is unplugged, a sleep takes the script to the next change.
        Fastest,
    };

    /// Error when the script's points or events are out of order, or an event cannot happen.
    explicit ScriptedHeadset(HeadsetScript script, Pace pace = Pace::RealTime);
    ~ScriptedHeadset() override;

    ScriptedHeadset(const ScriptedHeadset&) = delete;
    ScriptedHeadset& operator=(const ScriptedHeadset&) = delete;

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;
    std::uint32_t CountDevices() override;
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override;
    std::string Name() const override;

    /// RealTime: the machine's clock. Fastest: the script's time at the end of the last read, and
    /// -1 ms before the first one.
    std::int64_t NowNs() override;

    /// Ends early at Close and, with Fastest, when the script's time is up or nobody can read.
    void SleepNs(std::int64_t durationNs) override;

    /// As Source: ends reads, too.
    void Close() override;

    /// Whether the script's last report has been read: every later read will fail.
    bool IsOver() const;

    /// The truth about the last whole report that was read.
    ScriptedTruth Truth() const;

private:
    class Impl;

    const std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
