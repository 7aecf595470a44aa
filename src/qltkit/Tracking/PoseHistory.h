// The poses of the last two seconds, how the tracker fares, and where forward is: all that readers
// need, so that none of them waits or asks a clock.
//
// Threads: one writes poses and reports losses; any may do the rest.
#pragma once

#include <qltkit/Tracking/Pose.h>
#include <qltkit/Tracking/PredictionTerms.h>

#include "Tracking/SeqlockRing.h"

namespace qltkit
{

/// A pose as the reports gave it, before any recentring. The time stands first, because the search
/// reads nothing else.
struct PastPose
{
    std::int64_t timeNs = 0;
    std::int64_t deviceTimeUs = 0;
    std::uint64_t reportNumber = 0;
    qlt::Quaternion orientation;
    qlt::Vec3 angularVelocity;
    std::uint32_t sequence = 0;
};

/// The same, and what predicts from it. One line of the cache has the first part, a second one the
/// rest.
struct PoseRecord
{
    PastPose pose;
    PredictionTerms terms;
    std::uint32_t unused = 0; // makes the record a whole number of words
};

class PoseHistory
{
public:
    static constexpr std::int64_t MAX_AHEAD_NS = 100000000;
    static constexpr std::int64_t OVERDUE_NS = 100000000;

    PoseHistory();

    /// The times of successive records must grow.
    void Publish(const PoseRecord& record) noexcept;

    void Lose(std::int64_t nowNs) noexcept { SetState(PoseState::Lost, nowNs); }

    /// Holds the last pose if the next one is overdue.
    void HoldIfOverdue(std::int64_t nowNs) noexcept;

    Pose Latest() const noexcept;
    Pose At(std::int64_t timeNs) const noexcept;

    /// False while there is no pose.
    bool Recentre() noexcept;

private:
    static constexpr std::int64_t SIZE = 2048;

    /// The oldest records are about to be overwritten, so readers leave so many alone.
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
    bool ReadPair(std::int64_t index, PastPose& pose, PastPose& next) const noexcept;
    std::int64_t FindAfter(std::int64_t timeNs, std::int64_t guess, std::int64_t oldest,
                           std::int64_t newest) const noexcept;
    bool IsLater(std::int64_t index, std::int64_t timeNs) const noexcept;
    Pose PoseOf(const PastPose& record, bool clamped) const noexcept;
    void SetState(PoseState state, std::int64_t sinceNs) noexcept;

    SeqlockRing<PoseRecord, SIZE> mRing;
    std::atomic<std::int64_t> mState{0}; // PoseState and since when, in one word
    std::atomic<std::uint64_t> mHeading; // the turn of the recentring, two floats
};

} // namespace qltkit
