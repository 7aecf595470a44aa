#include "Headset/ScriptPlayer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Headset/Random.h"
#include "Headset/ScriptTimeline.h"

namespace qltkit
{

namespace
{

using Kind = HeadsetScript::EventKind;

constexpr std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();
constexpr std::uint32_t PERIOD_US = 1000;
constexpr std::uint32_t FIRST_SEQUENCE = 1;
constexpr std::uint32_t FIRST_TIME_US = 1000000;

/// A longer gap in a recording is a restart of its clock and no pause.
constexpr std::uint32_t MAX_GAP_US = 10000000;

/// Keeps the random numbers of the host apart from the random numbers of the sensors, which use the
/// script's seed.
constexpr std::uint64_t HOST_SEED = 0x9E3779B97F4A7C15;

} // namespace

ScriptPlayer::ScriptPlayer(const HeadsetScript& script)
    : mScript(script)
    , mEndNs(script.seconds > 0.0 ? ToNs(script.seconds) : NEVER)
    , mMotion(script)
    , mSensors(script)
    , mHostRandom(script.seed ^ HOST_SEED)
    , mUnplugNs(NextUnplugNs())
    , mDriftPpm(script.driftPpm)
{
}

const ScriptedRead& ScriptPlayer::Next()
{
    if (mRepeatsNow > 0)
    {
        --mRepeatsNow;
        return mRead;
    }
    while (!mIsOver && (mIsPlugged || PlugIn()))
    {
        const std::int64_t ns = std::llround(mTimeNs);
        if (!HappenUntil(ns))
        {
            return Gone(mUnplugNs);
        }
        if (IsAtEnd(ns))
        {
            mIsOver = true;
            return Gone(std::min(ns, mEndNs));
        }
        if (MakeReport(ns))
        {
            return mRead;
        }
    }
    mIsOver = true;
    return Gone(mRead.arrivalNs);
}

bool ScriptPlayer::IsRecorded() const { return mScript.motion == HeadsetScript::Motion::Recording; }

bool ScriptPlayer::IsAtEnd(std::int64_t ns) const
{
    return ns >= mEndNs || (IsRecorded() && mSample >= mScript.recording.size());
}

const ScriptedRead& ScriptPlayer::Gone(std::int64_t ns)
{
    mRead.length = 0;
    mRead.isGone = true;
    mRead.isOver =
        mIsOver || std::none_of(mScript.events.begin() + static_cast<std::ptrdiff_t>(mNextEvent),
                                mScript.events.end(),
                                [](const auto& event) { return event.kind == Kind::Plug; });
    mRead.arrivalNs = std::max(mRead.arrivalNs, ns);
    return mRead;
}

/// Advances to the next plug event. Returns false when there is none.
bool ScriptPlayer::PlugIn()
{
    while (mNextEvent < mScript.events.size() && !mIsPlugged)
    {
        Happen(mScript.events[mNextEvent++]);
    }
    if (mIsPlugged)
    {
        mRead.isGone = false;
        ++mRead.plugging;
        mUnplugNs = NextUnplugNs();
        mIsFresh = true;
        mSequenceOffset = mClockOffset = 0;
    }
    return mIsPlugged;
}

/// Performs all events until `ns`. Returns false when one of them has unplugged the headset.
bool ScriptPlayer::HappenUntil(std::int64_t ns)
{
    while (mIsPlugged && mNextEvent < mScript.events.size() &&
           ToNs(mScript.events[mNextEvent].atS) <= ns)
    {
        Happen(mScript.events[mNextEvent++]);
    }
    return mIsPlugged;
}

void ScriptPlayer::Happen(const HeadsetScript::Event& event)
{
    const std::int64_t ns = ToNs(event.atS);
    switch (event.kind)
    {
    case Kind::Unplug:
        mIsPlugged = false;
        mStallEndNs = mDrops = mRepeats = 0;
        mShortLength.reset();
        break;
    case Kind::Plug:
        mIsPlugged = true;
        AdvanceTo(ns);
        break;
    case Kind::Stall:
        mStallEndNs = std::max(mStallEndNs, ns + ToNs(event.forS));
        break;
    case Kind::ShortRead:
        mShortLength = static_cast<std::uint32_t>(event.amount);
        break;
    case Kind::SequenceJump:
        mSequenceOffset += static_cast<std::uint32_t>(event.amount);
        break;
    case Kind::Repeat:
        mRepeats += event.amount;
        break;
    case Kind::Drop:
        mDrops += event.amount;
        break;
    case Kind::ClockJump:
        mClockOffset += static_cast<std::uint32_t>(event.amount);
        break;
    case Kind::ClockDrift:
        mDriftPpm = event.ppm;
        break;
    case Kind::Stick:
        mSensors.Stick(event.sensor, event.axis, ns + ToNs(event.forS));
        break;
    case Kind::ForeignPlug:
    case Kind::ForeignUnplug:
        break; // no effect on this headset
    }
}

/// Makes a report. Returns false when the report never arrives.
bool ScriptPlayer::MakeReport(std::int64_t ns)
{
    Sense(ns);
    Number(mRead.report);
    Advance();
    const std::int64_t arrivalNs = ArrivalOf(ns);
    if (arrivalNs >= std::min(mUnplugNs, mEndNs))
    {
        return false;
    }
    if (mDrops > 0)
    {
        --mDrops;
        return false;
    }
    mRead.arrivalNs = arrivalNs;
    mRead.truth.arrivalNs = arrivalNs;
    mRead.length = std::exchange(mShortLength, std::nullopt).value_or(qlt::SENSOR_REPORT_SIZE);
    mRepeatsNow = std::exchange(mRepeats, 0);
    return true;
}

void ScriptPlayer::Sense(std::int64_t ns)
{
    SensorValues values;
    ScriptedTruth& truth = mRead.truth;
    truth.sampleNs = ns;
    if (IsRecorded())
    {
        mRead.report = mScript.recording[mSample];
        values = SensorsIn(mRead.report);
    }
    else
    {
        truth.isKnown = true;
        truth.angles = mMotion.At(static_cast<double>(ns) / 1e9);
        truth.orientation = OrientationOf(truth.angles);
        values = SensorsOn(truth.angles, static_cast<double>(ns) / 1e6);
        const auto sample = static_cast<std::uint32_t>(mSample);
        PutU32(mRead.report, SEQUENCE_OFFSET, sample);
        PutU32(mRead.report, DEVICE_TIME_OFFSET, sample * PERIOD_US);
        PutOrientation(mRead.report, truth.orientation);
    }
    mSensors.Spoil(values, ns);
    PutSensors(mRead.report, values);
}

/// Gives a report its sequence number and its device time, from its own numbers and the offsets.
void ScriptPlayer::Number(qlt::SensorReport& report)
{
    const std::uint32_t sequence = U32In(report, SEQUENCE_OFFSET);
    const std::uint32_t timeUs = U32In(report, DEVICE_TIME_OFFSET);
    if (std::exchange(mIsFresh, false))
    {
        const auto first = [this](std::size_t offset, std::uint32_t otherwise)
        { return IsRecorded() ? U32In(mScript.recording.front(), offset) : otherwise; };
        mSequenceOffset += first(SEQUENCE_OFFSET, FIRST_SEQUENCE) - sequence;
        mClockOffset +=
            mScript.clockStartUs.value_or(first(DEVICE_TIME_OFFSET, FIRST_TIME_US)) - timeUs;
    }
    PutU32(report, SEQUENCE_OFFSET, sequence + mSequenceOffset);
    PutU32(report, DEVICE_TIME_OFFSET, timeUs + mClockOffset);
    mRead.truth.sequence = sequence + mSequenceOffset;
}

/// Advances to the next sample.
void ScriptPlayer::Advance()
{
    std::uint32_t stepUs = PERIOD_US;
    const auto& recording = mScript.recording;
    if (IsRecorded() && mSample + 1 < recording.size())
    {
        const std::uint32_t gapUs = U32In(recording[mSample + 1], DEVICE_TIME_OFFSET) -
                                    U32In(recording[mSample], DEVICE_TIME_OFFSET);
        stepUs = gapUs <= MAX_GAP_US ? gapUs : PERIOD_US;
    }
    mTimeNs += stepUs * 1000.0 / (1.0 + mDriftPpm * 1e-6);
    ++mSample;
}

/// Advances to the first sample that is not before `ns`. A headset takes a sample as soon as it is
/// plugged in.
void ScriptPlayer::AdvanceTo(std::int64_t ns)
{
    if (!IsRecorded())
    {
        mTimeNs = std::max(mTimeNs, static_cast<double>(ns));
    }
    while (mTimeNs < static_cast<double>(ns) && mSample < mScript.recording.size())
    {
        Advance();
    }
}

std::int64_t ScriptPlayer::ArrivalOf(std::int64_t ns)
{
    double lateNs = 0.0;
    if (mScript.lateMs > 0.0 && Uniform(mHostRandom, 0.0, 1.0) < mScript.lateShare)
    {
        lateNs = Uniform(mHostRandom, 0.0, mScript.lateMs * 1e6);
    }
    return std::max({mRead.arrivalNs, mStallEndNs, ns + static_cast<std::int64_t>(lateNs)});
}

std::int64_t ScriptPlayer::NextUnplugNs() const
{
    const auto unplug = std::find_if(
        mScript.events.begin() + static_cast<std::ptrdiff_t>(mNextEvent), mScript.events.end(),
        [](const auto& event) { return event.kind == Kind::Unplug; });
    return unplug == mScript.events.end() ? NEVER : ToNs(unplug->atS);
}

} // namespace qltkit
