// Plays sensor reports to an Hmd, one read after another, with a clock that goes by their device
// time.
#pragma once

#include <qlt/Sensors/Hmd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

class RecordingHost final : public qlt::UsbHost, public qlt::Clock
{
public:
    using Report = std::array<std::uint8_t, 64>;

    /// Two parallel arrays; the clock begins a millisecond before the first time.
    RecordingHost(const std::vector<Report>& reports, const std::vector<std::int64_t>& timesNs)
        : mReports(reports)
        , mTimesNs(timesNs)
        , mNowNs(timesNs.front() - 1000000)
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        return std::make_unique<Device>(*this);
    }

    std::int64_t NowNs() override { return mNowNs; }

    void SleepNs(std::int64_t) override
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mClosed; });
    }

    /// Ends the sleeps, so that the tracker can be destroyed.
    void Close()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mClosed = true;
        mChanged.notify_all();
    }

private:
    class Device final : public qlt::VendorUsbDevice, public qlt::UsbEndPoint
    {
    public:
        explicit Device(RecordingHost& host)
            : mHost(host)
        {
        }
        std::uint16_t VendorId() const override { return 0x04B4; }
        std::uint16_t ProductId() const override { return 0x00F1; }
        std::uint8_t EndPointCount() const override { return 2; }
        UsbEndPoint& EndPoint(std::uint8_t) override { return *this; }
        std::uint8_t Attributes() const override { return 3; }
        bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
        {
            const std::size_t next = mHost.mNext++;
            length = next < mHost.mReports.size() ? 64 : 0;
            if (length != 0)
            {
                mHost.mNowNs = mHost.mTimesNs[next];
                std::copy(mHost.mReports[next].begin(), mHost.mReports[next].end(), buffer);
            }
            return length != 0;
        }

    private:
        RecordingHost& mHost;
    };

    const std::vector<Report>& mReports;
    const std::vector<std::int64_t>& mTimesNs;
    std::size_t mNext = 0;
    std::atomic<std::int64_t> mNowNs;
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mClosed = false;
};

/// Plays all reports to a real headset tracker and returns the orientation after each.
inline std::vector<qlt::Quaternion> Replay(const std::vector<RecordingHost::Report>& reports,
                                           const std::vector<std::int64_t>& timesNs)
{
    struct Tracker : qlt::Hmd
    {
        explicit Tracker(RecordingHost& host)
            : Hmd(host, host)
        {
        }
        using Hmd::ShouldStop;
    };
    /// Holds the last event until the tracker is being stopped, so that nothing is read past it.
    struct Collector : qlt::TrackerListener
    {
        explicit Collector(std::size_t reports)
            : count(reports)
        {
            orientations.reserve(count);
        }
        void OnOrientationEvent(const qlt::Quaternion& q, float) override
        {
            orientations.push_back(q);
            if (orientations.size() == count)
            {
                done = true;
                while (!tracker->ShouldStop())
                {
                    std::this_thread::yield();
                }
            }
        }
        const std::size_t count;
        std::vector<qlt::Quaternion> orientations;
        Tracker* tracker = nullptr;
        std::atomic<bool> done{false};
    };
    RecordingHost host(reports, timesNs);
    Tracker tracker(host);
    Collector collector(reports.size());
    collector.tracker = &tracker;
    tracker.AddListener(collector);
    tracker.Start();
    while (!collector.done)
    {
        std::this_thread::yield();
    }
    tracker.Stop();
    tracker.RemoveListener(collector);
    host.Close();
    return std::move(collector.orientations);
}
