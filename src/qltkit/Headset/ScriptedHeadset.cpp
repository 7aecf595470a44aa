#include <qltkit/Headset/ScriptedHeadset.h>

#include <qltkit/Capture/Recording.h>
#include <qltkit/Error.h>

#include "Headset/ScriptPlayer.h"
#include "Headset/ScriptTimeline.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <utility>

namespace qltkit
{

namespace
{

constexpr std::uint16_t HEADSET_VENDOR_ID = 0x04B4;
constexpr std::uint16_t HEADSET_PRODUCT_ID = 0x00F1;
constexpr std::uint8_t INTERRUPT_TRANSFER = 3;
constexpr std::uint8_t ENDPOINT_ADDRESS = 0x81;

constexpr std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t KEPT_NS = 100000000;
constexpr std::int64_t BEFORE_BEGIN_NS = -1000000;

/// Sleeps last this long after Close, so that polling loops do not spin.
constexpr std::int64_t CLOSED_SLEEP_NS = 1000000;

/// The longest single wait. Longer waits overflow in some libraries.
constexpr std::int64_t MAX_WAIT_NS = 3600000000000;

/// True when there is nothing more to read.
bool IsLast(const ScriptedRead& read) { return read.isGone && read.isOver; }

HeadsetScript Checked(HeadsetScript script)
{
    if (const auto fault = FindFault(script))
    {
        throw Error("script: " + fault->list + "[" + std::to_string(fault->index) + "]." +
                    fault->field + " " + fault->text);
    }
    return script;
}

} // namespace

class ScriptedHeadset::Impl
{
public:
    Impl(HeadsetScript script, Pace pace);

    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index);
    std::uint32_t CountDevices();
    std::int64_t NowNs();
    void SleepNs(std::int64_t durationNs);
    void Close();
    bool IsOver() const;
    ScriptedTruth Truth() const;

    /// Performs a read of a device that was opened after `plugging` plug events.
    bool Read(std::size_t plugging, std::uint8_t* buffer, std::uint32_t& length);

private:
    class Device;
    class EndPoint;

    using Lock = std::unique_lock<std::mutex>;

    bool IsRealTime() const { return mPace == Pace::RealTime; }
    std::int64_t ScriptNs();
    const BusState& Bus();
    bool IsFound();
    bool WaitUntil(Lock& lock, std::int64_t scriptNs);
    void SleepFast(Lock& lock, std::int64_t durationNs);
    void Publish(const ScriptedRead& read);

    const HeadsetScript mScript;
    const Pace mPace;
    const ScriptTimeline mTimeline;

    mutable std::mutex mMutex; // guards the members below
    std::condition_variable mChanged;
    ScriptPlayer mPlayer;
    ScriptedRead mNext;   // the result of the next read
    ScriptedTruth mTruth; // the truth of the last whole report
    bool mIsClosed = false;
    bool mIsOver = false;                  // the last read of the script has been made
    std::int64_t mBeginNs = NEVER;         // RealTime: by the machine's clock
    std::int64_t mNowNs = BEFORE_BEGIN_NS; // Fastest: at the end of the last read
    std::int64_t mBusNs = 0;               // Fastest: the script's time on the bus
    std::int64_t mWakeNs = NEVER;          // Fastest: when the first sleeper wakes up
    std::size_t mOpen = 0;                 // number of open headsets
};

class ScriptedHeadset::Impl::EndPoint final : public qlt::UsbEndPoint
{
public:
    /// A null `owner` makes an endpoint of a device that sends nothing.
    EndPoint(Impl* owner, std::size_t plugging)
        : mOwner(owner)
        , mPlugging(plugging)
    {
    }

    std::uint8_t Attributes() const override { return INTERRUPT_TRANSFER; }
    std::uint8_t Address() const override { return ENDPOINT_ADDRESS; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        if (mOwner == nullptr)
        {
            length = 0;
            return false;
        }
        return mOwner->Read(mPlugging, buffer, length);
    }

private:
    Impl* const mOwner;
    const std::size_t mPlugging;
};

class ScriptedHeadset::Impl::Device final : public qlt::VendorUsbDevice
{
public:
    Device(Impl& owner, std::uint16_t vendorId, std::uint16_t productId, bool isHeadset,
           std::size_t plugging)
        : mOwner(owner)
        , mVendorId(vendorId)
        , mProductId(productId)
        , mIsHeadset(isHeadset)
        , mEndPoint(isHeadset ? &owner : nullptr, plugging)
    {
        mOwner.mOpen += mIsHeadset ? 1 : 0;
    }

    ~Device() override
    {
        const Lock lock(mOwner.mMutex);
        mOwner.mOpen -= mIsHeadset ? 1 : 0;
        mOwner.mChanged.notify_all();
    }

    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    std::uint16_t VendorId() const override { return mVendorId; }
    std::uint16_t ProductId() const override { return mProductId; }
    std::uint8_t EndPointCount() const override { return 2; }
    qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return mEndPoint; }

private:
    Impl& mOwner;
    const std::uint16_t mVendorId;
    const std::uint16_t mProductId;
    const bool mIsHeadset;
    Impl::EndPoint mEndPoint;
};

ScriptedHeadset::Impl::Impl(HeadsetScript script, Pace pace)
    : mScript(Checked(std::move(script)))
    , mPace(pace)
    , mTimeline(mScript, mScript.seconds > 0.0 ? ToNs(mScript.seconds) : NEVER)
    , mPlayer(mScript)
    , mNext(mPlayer.Next())
{
}

std::int64_t ScriptedHeadset::Impl::ScriptNs()
{
    if (!IsRealTime())
    {
        return mBusNs;
    }
    const std::int64_t nowNs = qlt::Clock::System().NowNs();
    mBeginNs = std::min(mBeginNs, nowNs);
    return nowNs - mBeginNs;
}

const BusState& ScriptedHeadset::Impl::Bus() { return mTimeline.At(ScriptNs()); }

/// True when a search for a headset finds this one now.
bool ScriptedHeadset::Impl::IsFound()
{
    const BusState& bus = Bus();
    return bus.isPlugged && bus.foreign == nullptr && !mIsOver;
}

std::uint32_t ScriptedHeadset::Impl::CountDevices()
{
    const Lock lock(mMutex);
    const BusState& bus = Bus();
    return (bus.foreign != nullptr ? 1U : 0U) + (bus.isPlugged && !mIsOver ? 1U : 0U);
}

std::unique_ptr<qlt::VendorUsbDevice> ScriptedHeadset::Impl::Open(std::uint32_t index)
{
    const Lock lock(mMutex);
    const BusState& bus = Bus();
    if (mIsClosed)
    {
        return nullptr;
    }
    if (bus.foreign != nullptr && index == 0)
    {
        return std::make_unique<Device>(*this, bus.foreign->vendorId, bus.foreign->productId, false,
                                        bus.plugging);
    }
    const std::uint32_t own = bus.foreign != nullptr ? 1 : 0;
    if (!bus.isPlugged || mIsOver || index != own)
    {
        return nullptr;
    }
    return std::make_unique<Device>(*this, HEADSET_VENDOR_ID, HEADSET_PRODUCT_ID, true,
                                    bus.plugging);
}

bool ScriptedHeadset::Impl::Read(std::size_t plugging, std::uint8_t* buffer, std::uint32_t& length)
{
    Lock lock(mMutex);
    const std::int64_t oldestNs = IsRealTime() ? ScriptNs() - KEPT_NS : mBusNs;
    while (!IsLast(mNext) && (mNext.plugging < plugging ||
                              (mNext.plugging == plugging && mNext.arrivalNs < oldestNs)))
    {
        mNext = mPlayer.Next();
    }
    const std::uint32_t room = std::exchange(length, 0);
    if (mIsClosed || mNext.plugging != plugging)
    {
        return false;
    }
    const ScriptedRead read = mNext;
    if (!IsLast(mNext))
    {
        mNext = mPlayer.Next();
    }
    if (IsRealTime() && !WaitUntil(lock, read.arrivalNs))
    {
        return false;
    }
    Publish(read);
    length = std::min(room, read.length);
    std::copy_n(read.report.begin(), length, buffer);
    return length != 0;
}

/// Stores the results of a finished read.
void ScriptedHeadset::Impl::Publish(const ScriptedRead& read)
{
    mIsOver = mIsOver || IsLast(mNext);
    if (read.length == qlt::SENSOR_REPORT_SIZE)
    {
        mTruth = read.truth;
        mTruth.sampleNs += IsRealTime() ? mBeginNs : 0;
        mTruth.arrivalNs += IsRealTime() ? mBeginNs : 0;
    }
    mNowNs = read.arrivalNs;
    mBusNs = std::max(mBusNs, read.arrivalNs);
    if (mNowNs >= mWakeNs)
    {
        mWakeNs = NEVER;
        mChanged.notify_all();
    }
}

/// Waits for a moment of the script. Returns false when the headset was closed during the wait.
bool ScriptedHeadset::Impl::WaitUntil(Lock& lock, std::int64_t scriptNs)
{
    for (std::int64_t leftNs = scriptNs - ScriptNs(); leftNs > 0 && !mIsClosed;
         leftNs = scriptNs - ScriptNs())
    {
        mChanged.wait_for(lock, std::chrono::nanoseconds(std::min(leftNs, MAX_WAIT_NS)));
    }
    return !mIsClosed;
}

std::int64_t ScriptedHeadset::Impl::NowNs()
{
    if (IsRealTime())
    {
        return qlt::Clock::System().NowNs();
    }
    const Lock lock(mMutex);
    return mNowNs;
}

void ScriptedHeadset::Impl::SleepNs(std::int64_t durationNs)
{
    Lock lock(mMutex);
    if (mIsClosed)
    {
        lock.unlock();
        qlt::Clock::System().SleepNs(std::min(durationNs, CLOSED_SLEEP_NS));
        return;
    }
    durationNs = std::min(durationNs, MAX_WAIT_NS);
    if (!IsRealTime())
    {
        SleepFast(lock, durationNs);
        return;
    }
    mChanged.wait_for(lock, std::chrono::nanoseconds(durationNs), [this] { return mIsClosed; });
}

void ScriptedHeadset::Impl::SleepFast(Lock& lock, std::int64_t durationNs)
{
    const auto longest = std::chrono::nanoseconds(durationNs);
    const std::int64_t wakeNs = mNowNs + durationNs;
    const auto isAwake = [this, wakeNs]
    {
        mWakeNs = std::min(mWakeNs, wakeNs);
        return mIsClosed || mOpen == 0 || mNowNs >= wakeNs;
    };
    // A reader may be slower than the script, or it may not read at all.
    mChanged.wait_for(lock, longest, isAwake);
    if (mOpen > 0 || mIsClosed || IsFound())
    {
        return;
    }
    const auto change = mIsOver ? std::nullopt : mTimeline.NextChange(mBusNs);
    if (change)
    {
        mBusNs = *change;
        return;
    }
    mChanged.wait_for(lock, longest, [this] { return mIsClosed; });
}

void ScriptedHeadset::Impl::Close()
{
    const Lock lock(mMutex);
    mIsClosed = true;
    mChanged.notify_all();
}

bool ScriptedHeadset::Impl::IsOver() const
{
    const Lock lock(mMutex);
    return mIsOver;
}

ScriptedTruth ScriptedHeadset::Impl::Truth() const
{
    const Lock lock(mMutex);
    return mTruth;
}

ScriptedHeadset::ScriptedHeadset(HeadsetScript script, Pace pace)
    : mImpl(std::make_unique<Impl>(std::move(script), pace))
{
}

ScriptedHeadset::~ScriptedHeadset() = default;

std::unique_ptr<qlt::VendorUsbDevice> ScriptedHeadset::OpenFirst() { return mImpl->Open(0); }

std::uint32_t ScriptedHeadset::CountDevices() { return mImpl->CountDevices(); }

std::unique_ptr<qlt::VendorUsbDevice> ScriptedHeadset::Open(std::uint32_t index)
{
    return mImpl->Open(index);
}

std::string ScriptedHeadset::Name() const { return "scripted headset"; }

std::int64_t ScriptedHeadset::NowNs() { return mImpl->NowNs(); }

void ScriptedHeadset::SleepNs(std::int64_t durationNs) { mImpl->SleepNs(durationNs); }

void ScriptedHeadset::Close() { mImpl->Close(); }

bool ScriptedHeadset::IsOver() const { return mImpl->IsOver(); }

ScriptedTruth ScriptedHeadset::Truth() const { return mImpl->Truth(); }

std::unique_ptr<ScriptedHeadset> OpenScriptedHeadset(const std::string& file,
                                                     ScriptedHeadset::Pace pace)
{
    HeadsetScript script;
    if (std::filesystem::path(file).extension() == ".json")
    {
        script = LoadHeadsetScript(file);
    }
    else
    {
        script.motion = HeadsetScript::Motion::Recording;
        script.recording = LoadRecording(file).reports;
    }
    return std::make_unique<ScriptedHeadset>(std::move(script), pace);
}

} // namespace qltkit
