// Plays a recording to a real headset tracker: the USB host that the tracker finds a headset on,
// and the clock that goes by the recording's device time.
#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/Hmd.h>

#include "source/Recording.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

class RecordingPlayer final : public qlt::UsbHost, public qlt::Clock
{
public:
    enum class Pace
    {
        Recorded,
        Fastest,
    };

    /// `recording` must outlive this.
    RecordingPlayer(const Recording& recording, Pace pace);

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;

    /// The device time of the last report read; 1 ms before the first until then.
    std::int64_t NowNs() override;

    /// Ends early at Close.
    void SleepNs(std::int64_t durationNs) override;

    void Close();

    /// Hands out the next report, at its time; nothing past the end. For the endpoint.
    bool ReadReport(std::uint8_t* buffer, std::uint32_t& length);

private:
    const Recording& mRecording;
    const Pace mPace;
    std::size_t mNext = 0; // only the reading thread touches it
    std::chrono::steady_clock::time_point mStart;
    std::atomic<std::int64_t> mNowNs;
    std::mutex mMutex; // guards mClosed
    std::condition_variable mClosing;
    bool mClosed = false;
};

/// The headset tracker on a recording. Its end is met from inside the last report's last event,
/// before the tracker would find the headset gone.
class RecordingTracker final : public qlt::Hmd
{
public:
    explicit RecordingTracker(RecordingPlayer& player)
        : Hmd(player, player)
    {
    }

    /// For a listener: holds the processing thread until the tracker is being stopped.
    void WaitForStop() const;
};
