#include "source/RecordingPlayer.h"

#include <algorithm>
#include <thread>

namespace
{

class InterruptEndPoint final : public qlt::UsbEndPoint
{
public:
    explicit InterruptEndPoint(RecordingPlayer& player)
        : mPlayer(player)
    {
    }

    std::uint8_t Attributes() const override { return 3; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        return mPlayer.ReadReport(buffer, length);
    }

private:
    RecordingPlayer& mPlayer;
};

class RecordedHeadset final : public qlt::VendorUsbDevice
{
public:
    explicit RecordedHeadset(RecordingPlayer& player)
        : mEndPoint(player)
    {
    }

    std::uint16_t VendorId() const override { return 0x04B4; }
    std::uint16_t ProductId() const override { return 0x00F1; }
    std::uint8_t EndPointCount() const override { return 2; }
    qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return mEndPoint; }

private:
    InterruptEndPoint mEndPoint;
};

} // namespace

RecordingPlayer::RecordingPlayer(const Recording& recording, Pace pace)
    : mRecording(recording)
    , mPace(pace)
    , mNowNs((recording.timesUs.front() - 1000) * 1000)
{
}

std::unique_ptr<qlt::VendorUsbDevice> RecordingPlayer::OpenFirst()
{
    return std::make_unique<RecordedHeadset>(*this);
}

std::int64_t RecordingPlayer::NowNs() { return mNowNs; }

void RecordingPlayer::SleepNs(std::int64_t durationNs)
{
    std::unique_lock<std::mutex> lock(mMutex);
    mClosing.wait_for(lock, std::chrono::nanoseconds(durationNs), [this] { return mClosed; });
}

void RecordingPlayer::Close()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mClosed = true;
    mClosing.notify_all();
}

bool RecordingPlayer::ReadReport(std::uint8_t* buffer, std::uint32_t& length)
{
    if (mNext == mRecording.reports.size() || length < Recording::REPORT_SIZE)
    {
        length = 0;
        return false;
    }
    const std::int64_t timeUs = mRecording.timesUs[mNext];
    if (mNext == 0)
    {
        mStart = std::chrono::steady_clock::now();
    }
    if (mPace == Pace::Recorded)
    {
        const auto due = mStart + std::chrono::microseconds(mRecording.playedUs[mNext]);
        std::this_thread::sleep_for(due - std::chrono::steady_clock::now());
    }
    std::copy(mRecording.reports[mNext].begin(), mRecording.reports[mNext].end(), buffer);
    length = Recording::REPORT_SIZE;
    mNowNs = timeUs * 1000;
    ++mNext;
    return true;
}

void RecordingTracker::WaitForStop() const
{
    while (!ShouldStop())
    {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}
