#pragma once

#include <qltkit/Headset/HeadsetScript.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include "Headset/FaultySensors.h"
#include "Headset/ScriptMotion.h"
#include "Headset/SensorBytes.h"

#include <cstdint>
#include <optional>
#include <random>

namespace qltkit
{

/// The result of a read.
struct ScriptedRead
{
    qlt::SensorReport report{};
    std::uint32_t length = 0;   // bytes of the report; 64 is the whole report
    bool isGone = false;        // the headset is unplugged, so the read fails
    bool isOver = false;        // the script has ended
    std::size_t plugging = 0;   // the same number as in BusState
    std::int64_t arrivalNs = 0; // it never decreases
    ScriptedTruth truth;
};

/// Plays a script: it makes one read of the headset after another, each with the moment at which it
/// ends. It uses no thread and no clock, so the same script gives the same reads everywhere.
class ScriptPlayer
{
public:
    /// `script` must have no fault and must outlive this object.
    explicit ScriptPlayer(const HeadsetScript& script);

    /// Makes the next read. After the last read it returns the last one again, as often as it is
    /// called. The reference is valid until the next call.
    const ScriptedRead& Next();

private:
    bool IsRecorded() const;
    bool IsAtEnd(std::int64_t ns) const;
    const ScriptedRead& Gone(std::int64_t ns);
    bool PlugIn();
    bool HappenUntil(std::int64_t ns);
    void Happen(const HeadsetScript::Event& event);
    bool MakeReport(std::int64_t ns);
    void Sense(std::int64_t ns);
    void Number(qlt::SensorReport& report);
    void Advance();
    void AdvanceTo(std::int64_t ns);
    std::int64_t ArrivalOf(std::int64_t ns);
    std::int64_t NextUnplugNs() const;

    const HeadsetScript& mScript;
    const std::int64_t mEndNs;
    ScriptMotion mMotion;
    FaultySensors mSensors;
    std::mt19937_64 mHostRandom;

    std::size_t mNextEvent = 0;
    bool mIsPlugged = true;
    bool mIsOver = false;
    std::int64_t mUnplugNs = 0; // the time of the next unplug

    // The next sample of the head: its number, its time, and the offsets of its sequence number and
    // its clock.
    std::size_t mSample = 0;
    double mTimeNs = 0.0;
    double mDriftPpm;
    bool mIsFresh = true; // the numbers restart with it
    std::uint32_t mSequenceOffset = 0;
    std::uint32_t mClockOffset = 0;

    // Effects of events on the next reports.
    std::int64_t mStallEndNs = 0;
    std::int64_t mDrops = 0;
    std::int64_t mRepeats = 0;
    std::optional<std::uint32_t> mShortLength;

    std::int64_t mRepeatsNow = 0; // repetitions of mRead that are left
    ScriptedRead mRead;
};

} // namespace qltkit
