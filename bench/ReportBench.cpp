// The cost of bringing a report from the endpoint to a listener, compared to the sum of its three
// parts alone: decode, fuse and the seven notifications. "ratio" must be at most 1.15.
// "allocations" counts the allocations of all measured reports.
#include "Paired.h"
#include "fakes/AllocationCounter.h"

#include <qlt/Sensors/Hmd.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include <qlt/Sensors/SensorReport.h>

#include <condition_variable>
#include <functional>
#include <mutex>

namespace
{

constexpr std::size_t REPORTS = 2000;

/// A headset that delivers one round of reports as fast as they are read, and then waits. It is
/// also a clock that advances one millisecond each time it is read.
class RoundHeadset final : public qlt::UsbHost, public qlt::Clock
{
public:
    explicit RoundHeadset(const std::vector<qlt::SensorReport>& reports)
        : mReports(reports)
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        return std::make_unique<Device>(*this);
    }

    std::int64_t NowNs() override { return mNowNs += 1000000; }

    void SleepNs(std::int64_t) override
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mClosed; });
    }

    /// Returns the seconds from the first read of a round to the first read of the next one.
    double RunRound()
    {
        return RunOnReader(
            [this]
            {
                mNext = 0;
                mRoundStart = SteadyClock::now();
                return 0.0;
            });
    }

    /// Calls `work` between two rounds on the reading thread, so that the same core does it.
    /// Returns its result.
    double RunOnReader(std::function<double()> work)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mWork = std::move(work);
        mDone = false;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mDone; });
        return mSeconds;
    }

    /// Releases the reader permanently.
    void Close()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mClosed = true;
        mChanged.notify_all();
    }

private:
    using SteadyClock = std::chrono::steady_clock;

    class ReportEndPoint final : public qlt::UsbEndPoint
    {
    public:
        explicit ReportEndPoint(RoundHeadset& headset)
            : mHeadset(headset)
        {
        }

        std::uint8_t Attributes() const override { return 3; }

        bool TransferData(std::uint8_t* buffer, std::uint32_t&) override
        {
            if (mHeadset.mNext == mHeadset.mReports.size())
            {
                mHeadset.EndRound();
            }
            const qlt::SensorReport& report = mHeadset.mReports[mHeadset.mNext];
            mHeadset.mNext = mHeadset.mNext + 1;
            std::copy(report.begin(), report.end(), buffer);
            return true;
        }

    private:
        RoundHeadset& mHeadset;
    };

    class Device final : public qlt::VendorUsbDevice
    {
    public:
        explicit Device(RoundHeadset& headset)
            : mEndPoint(headset)
        {
        }

        std::uint16_t VendorId() const override { return 0x04B4; }
        std::uint16_t ProductId() const override { return 0x00F1; }
        std::uint8_t EndPointCount() const override { return 2; }
        qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return mEndPoint; }

    private:
        ReportEndPoint mEndPoint;
    };

    /// Stores the duration of the round and runs the work that arrives before the next round.
    void EndRound()
    {
        const SteadyClock::time_point end = SteadyClock::now();
        mSeconds = std::chrono::duration<double>(end - mRoundStart).count();
        while (mNext == mReports.size())
        {
            std::unique_lock<std::mutex> lock(mMutex);
            mDone = true;
            mChanged.notify_all();
            mChanged.wait(lock, [this] { return !mDone || mClosed; });
            if (mClosed)
            {
                mNext = 0;
                return;
            }
            mSeconds = mWork();
        }
    }

    const std::vector<qlt::SensorReport>& mReports;
    std::size_t mNext = REPORTS; // no round has begun yet
    std::int64_t mNowNs = 0;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::function<double()> mWork;
    bool mDone = false;
    bool mClosed = false;
    double mSeconds = 0.0;
    SteadyClock::time_point mRoundStart;
};

/// A listener that reads a value of every event.
class Sink final : public qlt::TrackerListener
{
public:
    void OnAccelerometerEvent(const qlt::Vec3& v, float) override { mSum += v.x(); }
    void OnGyroscopeEvent(const qlt::Vec3& v, float) override { mSum += v.x(); }
    void OnMagnetometerEvent(const qlt::Vec3& v, float) override { mSum += v.x(); }
    void OnQuaternionEvent(const qlt::Quaternion& q, float) override { mSum += q.x(); }
    void OnTemperatureEvent(float temperature, float) override { mSum += temperature; }
    void OnOrientationEvent(const qlt::Quaternion& q, float) override { mSum += q.x(); }
    void OnPositionEvent(const qlt::Vec3& v, float) override { mSum += v.x(); }

private:
    float mSum = 0.0f;
};

/// A tracker that raises events on the calling thread when its operations are called.
class Notifier final : public qlt::Tracker
{
public:
    ~Notifier() override { EndProcessing(); }

    void Notify(const qlt::SensorSample& sample, const qlt::Quaternion& fused)
    {
        NotifyAccelerometerEvent(sample.accelerometer, 0.0f);
        NotifyGyroscopeEvent(sample.gyroscope, 0.0f);
        NotifyMagnetometerEvent(sample.magnetometer, 0.0f);
        NotifyQuaternionEvent(sample.quaternion, 0.0f);
        NotifyTemperatureEvent(sample.temperature, 0.0f);
        NotifyPositionEvent(sample.position, 0.0f);
        NotifyOrientationEvent(fused, 0.0f);
    }

protected:
    void DoProcess() override {}
};

std::vector<qlt::SensorReport> MakeReports()
{
    std::vector<qlt::SensorReport> reports;
    qltkit::SoftwareHeadset headset(1, false);
    for (std::size_t i = 0; i < REPORTS; ++i)
    {
        reports.push_back(headset.Next().report);
    }
    return reports;
}

/// Runs the three parts one after another, each for all reports.
class Parts
{
public:
    explicit Parts(const std::vector<qlt::SensorReport>& reports)
        : mReports(reports)
        , mClock(reports)
        , mFusion(mClock)
        , mSamples(reports.size())
    {
        mNotifier.AddListener(mSink);
        mNotifier.Start();
    }

    ~Parts()
    {
        mNotifier.Stop();
        mNotifier.RemoveListener(mSink);
    }

    double Run()
    {
        const double decode = Seconds(
            [this]
            {
                for (std::size_t i = 0; i < mReports.size(); ++i)
                {
                    mSamples[i] = qlt::DecodeSensorReport(mReports[i]);
                }
            });
        const double fuse = Seconds(
            [this]
            {
                for (const qlt::SensorSample& sample : mSamples)
                {
                    mFusion.Fuse(sample.accelerometer, sample.gyroscope, sample.magnetometer, 0.0f);
                }
            });
        const double notify = Seconds(
            [this]
            {
                for (const qlt::SensorSample& sample : mSamples)
                {
                    mNotifier.Notify(sample, mFusion.GetQuaternion());
                }
            });
        return decode + fuse + notify;
    }

private:
    const std::vector<qlt::SensorReport>& mReports;
    RoundHeadset mClock;
    qlt::SensorFusion mFusion;
    std::vector<qlt::SensorSample> mSamples;
    Sink mSink;
    Notifier mNotifier;
};

void WholeReport(benchmark::State& state)
{
    const std::vector<qlt::SensorReport> reports = MakeReports();
    RoundHeadset headset(reports);
    qlt::Hmd hmd(headset, headset);
    Sink sink;
    hmd.AddListener(sink);
    hmd.Start();
    Parts parts(reports);
    headset.RunRound();

    long allocations = 0;
    RunPaired(
        state, REPORTS,
        [&]
        {
            const long before = AllocationCount();
            const double seconds = headset.RunRound();
            allocations += AllocationCount() - before;
            return seconds;
        },
        [&] { return headset.RunOnReader([&] { return parts.Run(); }); });
    state.counters["allocations"] = static_cast<double>(allocations);

    headset.Close();
    hmd.Stop();
    hmd.RemoveListener(sink);
}

BENCHMARK(WholeReport)->UseManualTime()->Iterations(201);

} // namespace
