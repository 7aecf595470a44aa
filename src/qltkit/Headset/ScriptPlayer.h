// Performs a script: one read of the headset after another, each with the moment at which it ends.
// It knows no thread and no clock, so the same script gives the same reads everywhere.
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

/// How a read ends.
struct ScriptedRead
{
    qlt::SensorReport report{};
    std::uint32_t length = 0;   // how much of the report; 64 is all
    bool isGone = false;        // the headset is unplugged, and nothing is read
    bool isOver = false;        // for good
    std::size_t plugging = 0;   // as BusState
    std::int64_t arrivalNs = 0; // never before that of the read before
    ScriptedTruth truth;
};

class ScriptPlayer
{
public:
    /// `script`, which must outlive this, has no fault.
    explicit ScriptPlayer(const HeadsetScript& script);

    /// The next read; after the last one the same without an end. Valid until the next call.
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
    std::int64_t mUnplugNs = 0; // the next one

    // The next sample of the head: its number, its time, and what is added to its own numbers.
    std::size_t mSample = 0;
    double mTimeNs = 0.0;
    double mDriftPpm;
    bool mIsFresh = true; // the numbers begin again with it
    std::uint32_t mSequenceOffset = 0;
    std::uint32_t mClockOffset = 0;

    // What waits for the next report.
    std::int64_t mStallEndNs = 0;
    std::int64_t mDrops = 0;
    std::int64_t mRepeats = 0;
    std::optional<std::uint32_t> mShortLength;

    std::int64_t mRepeatsNow = 0; // of mRead
    ScriptedRead mRead;
};

} // namespace qltkit
