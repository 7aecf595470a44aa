#include <qltkit/Headset/RecordingPlayer.h>

#include "Headset/Sleeper.h"

#include <algorithm>

namespace qltkit
{

struct RecordingPlayer::State
{
    /// Gives the next report at its time, and nothing after the last report.
    bool ReadReport(std::uint8_t* buffer, std::uint32_t& length)
    {
        const auto& reports = recording.reports;
        const bool hasNext = !over && length >= qlt::SENSOR_REPORT_SIZE;
        length = 0;
        if (!hasNext)
        {
            return false;
        }
        if (next == 0)
        {
            start = std::chrono::steady_clock::now();
        }
        if (pace == Pace::Recorded)
        {
            sleeper.SleepUntil(start + std::chrono::microseconds(recording.playedUs[next]));
        }
        if (sleeper.IsAwake())
        {
            return false;
        }
        std::copy(reports[next].begin(), reports[next].end(), buffer);
        length = qlt::SENSOR_REPORT_SIZE;
        nowNs = recording.timesUs[next] * 1000;
        ++next;
        over = next == reports.size();
        return true;
    }

    State(const Recording& theRecording, Pace thePace)
        : recording(theRecording)
        , pace(thePace)
        , nowNs((recording.timesUs.front() - 1000) * 1000)
    {
    }

    const Recording& recording;
    const Pace pace;
    std::atomic<std::int64_t> nowNs;
    std::atomic<bool> over{false};
    Sleeper sleeper;
    std::size_t next = 0; // only the reading thread uses this member and those below
    std::chrono::steady_clock::time_point start;
};

class RecordingPlayer::EndPoint final : public qlt::UsbEndPoint
{
public:
    explicit EndPoint(State& state)
        : mState(state)
    {
    }

    std::uint8_t Attributes() const override { return 3; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        return mState.ReadReport(buffer, length);
    }

private:
    State& mState;
};

class RecordingPlayer::Device final : public qlt::VendorUsbDevice
{
public:
    explicit Device(State& state)
        : mEndPoint(state)
    {
    }

    std::uint16_t VendorId() const override { return 0x04B4; }
    std::uint16_t ProductId() const override { return 0x00F1; }
    std::uint8_t EndPointCount() const override { return 2; }
    qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return mEndPoint; }

private:
    RecordingPlayer::EndPoint mEndPoint;
};

RecordingPlayer::RecordingPlayer(const Recording& recording, Pace pace)
    : mState(std::make_unique<State>(recording, pace))
{
}

RecordingPlayer::RecordingPlayer(Recording&& recording, Pace pace)
    : mOwn(std::make_unique<Recording>(std::move(recording)))
    , mState(std::make_unique<State>(*mOwn, pace))
{
}

RecordingPlayer::~RecordingPlayer() = default;

std::unique_ptr<qlt::VendorUsbDevice> RecordingPlayer::OpenFirst()
{
    return mState->sleeper.IsAwake() || IsOver() ? nullptr : std::make_unique<Device>(*mState);
}

std::int64_t RecordingPlayer::NowNs() { return mState->nowNs; }

void RecordingPlayer::SleepNs(std::int64_t durationNs) { mState->sleeper.SleepNs(durationNs); }

void RecordingPlayer::Close() { mState->sleeper.WakeAll(); }

bool RecordingPlayer::IsOver() const { return mState->over; }

RecordingTracker::RecordingTracker(RecordingPlayer& player)
    : Hmd(player, player)
{
}

RecordingTracker::~RecordingTracker() = default;

} // namespace qltkit
