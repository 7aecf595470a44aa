#pragma once

#include <qltkit/Tracking/Pose.h>
#include <qltkit/Tracking/PredictionTerms.h>

#include "Tracking/SeqlockRing.h"

namespace qltkit
{

/// A pose before any recentring. The time is the first member, because the search reads nothing
/// else.
struct PastPose
{
    std::int64_t timeNs = 0;
    std::int64_t deviceTimeUs = 0;
    std::uint64_t reportNumber = 0;
    qlt::Quaternion orientation;
    qlt::Vec3 angularVelocity;
    std::uint32_t sequence = 0;
};

/// A pose and the terms of a prediction from it. The first cache line holds the pose, and the
/// second one holds the rest.
struct PoseRecord
{
    PastPose pose;
    PredictionTerms terms;
    std::uint32_t unused = 0; // fills the record to a whole number of words
};

/// Holds the poses of the last two seconds, the state of the tracker and the forward direction.
/// Readers need nothing else, so they never wait and read no clock.
///
/// Threads: one thread calls Publish and Lose; any thread may call the rest.
class PoseHistory
{
public:
    static constexpr std::int64_t MAX_AHEAD_NS = 100000000;
    static constexpr std::int64_t OVERDUE_NS = 100000000;

    PoseHistory();

    /// Adds a record. The times of successive records must increase.
    void Publish(const PoseRecord& record) noexcept;

    /// Sets the state Lost.
    void Lose(std::int64_t nowNs) noexcept { SetState(PoseState::Lost, nowNs); }

    /// Sets the state Held when the next pose is overdue.
    void HoldIfOverdue(std::int64_t nowNs) noexcept;

    Pose Latest() const noexcept;
    Pose At(std::int64_t timeNs) const noexcept;

    /// Reads the pose with the number `next`, counted from 0, or the oldest pose after it that
    /// still exists, and moves `next` behind it. Returns false when there is none.
    bool TakeNext(std::uint64_t& next, Pose& pose) const noexcept;

    /// Makes the newest heading the forward direction. Returns false while there is no pose.
    bool Recentre() noexcept;

private:
    static constexpr std::int64_t SIZE = 2048;

    /// Readers do not use this number of oldest records, because the writer may overwrite them
    /// soon.
    static constexpr std::int64_t RESERVE = 16;

    static std::int64_t WordOf(PoseState state, std::int64_t sinceNs)
    {
        return sinceNs * 4 + static_cast<std::int64_t>(state);
    }
    static PoseState StateOf(std::int64_t word) { return static_cast<PoseState>(word & 3); }
    static std::int64_t SinceOf(std::int64_t word) { return (word - (word & 3)) / 4; }

    template <typename Part>
    bool ReadNewest(Part& part, std::int64_t& index) const noexcept;

    bool ReadPast(std::int64_t timeNs, std::int64_t newest, std::int64_t newestNs, PastPose& pose,
                  bool& clamped) const noexcept;
    bool ReadAhead(std::int64_t timeNs, std::int64_t newest, std::int64_t newestNs, PastPose& pose,
                   bool& clamped) const noexcept;
    bool ReadPair(std::int64_t index, PastPose& pose, PastPose& next) const noexcept;
    std::int64_t FindAfter(std::int64_t timeNs, std::int64_t guess, std::int64_t oldest,
                           std::int64_t newest) const noexcept;
    bool IsLater(std::int64_t index, std::int64_t timeNs) const noexcept;
    Pose PoseOf(const PastPose& record, bool clamped) const noexcept;
    void SetState(PoseState state, std::int64_t sinceNs) noexcept;

    SeqlockRing<PoseRecord, SIZE> mRing;
    std::atomic<std::int64_t> mState{0}; // PoseState and its beginning in one word
    std::atomic<std::uint64_t> mHeading; // the turn of the recentring as two floats
};

} // namespace qltkit
