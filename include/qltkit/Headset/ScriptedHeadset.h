#pragma once

#include <qltkit/Export.h>
#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/HeadsetScript.h>
#include <qltkit/Headset/Source.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace qltkit
{

/// The true values behind a report, for tests of filters. Times are in nanoseconds of the headset's
/// NowNs. A plain value.
struct ScriptedTruth
{
    /// The sequence number of the report.
    std::uint32_t sequence = 0;

    /// The moment of the report's values.
    std::int64_t sampleNs = 0;

    /// The moment at which the host should get the report.
    std::int64_t arrivalNs = 0;

    /// True when the members below are known. They are not known for a recording.
    bool isKnown = false;

    /// The true angles of the head and their rates.
    HeadAngles angles;

    /// The true rotation from body to world as w, x, y, z.
    std::array<double, 4> orientation{};
};

/// A headset in software that follows a script. It is the USB host on which a tracker finds the
/// headset, and the clock of that tracker:
///
///     qltkit::ScriptedHeadset headset(qltkit::LoadHeadsetScript("bad_cable.json"));
///     qlt::Hmd hmd(headset, headset);
///
/// The same script gives the same bytes on every system. Devices that are open at the same time
/// share one stream of reports. The headset must outlive its trackers and its devices. Any thread
/// may call any operation at any time.
class QLTKIT_API ScriptedHeadset final : public Source
{
public:
    /// The pace of the script.
    enum class Pace
    {
        /// The script begins when a device is first looked for, and runs by the machine's clock. A
        /// report that nobody has read after 100 ms is lost.
        RealTime,

        /// Every read returns at once, no report is lost, and the script's time advances with the
        /// reads. While the headset is unplugged, a sleep advances the script to the next change.
        Fastest,
    };

    /// Throws Error when the points or the events of the script are out of order, and when an event
    /// cannot happen.
    explicit ScriptedHeadset(HeadsetScript script, Pace pace = Pace::RealTime);

    /// No device may be open any more, and no other operation may run.
    ~ScriptedHeadset() override;

    ScriptedHeadset(const ScriptedHeadset&) = delete;
    ScriptedHeadset& operator=(const ScriptedHeadset&) = delete;

    /// Opens the device at index 0. Null when nothing is plugged in and after Close.
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;

    /// The number of devices that are plugged in now: 0 to 2. A foreign device comes before the
    /// headset.
    std::uint32_t CountDevices() override;

    /// Opens the device at `index`. Null when there is none, after the end of the script and after
    /// Close. Reads of a foreign device fail.
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override;

    /// Returns "scripted headset".
    std::string Name() const override;

    /// The current time in nanoseconds. RealTime: the machine's clock. Fastest: the script's time
    /// at the end of the last read, or -1 ms before the first read.
    std::int64_t NowNs() override;

    /// Ends early at Close. With Fastest it also ends when the script's time reaches the end of the
    /// sleep, and when no headset is open.
    void SleepNs(std::int64_t durationNs) override;

    /// Does the same as Source::Close, and also ends the reads in progress.
    void Close() override;

    /// True when the last read of the script has been made. Any thread.
    bool IsOver() const override;

    /// The true values behind the last whole report that was read.
    ScriptedTruth Truth() const;

private:
    class Impl;

    const std::unique_ptr<Impl> mImpl;
};

/// Makes a headset from a file: from a script when its name ends in ".json", and otherwise from the
/// reports of a recording as LoadRecording reads it. Throws Error when the file cannot be read. Any
/// thread.
QLTKIT_API std::unique_ptr<ScriptedHeadset>
OpenScriptedHeadset(const std::string& file,
                    ScriptedHeadset::Pace pace = ScriptedHeadset::Pace::RealTime);

} // namespace qltkit
