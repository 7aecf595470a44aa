#include "Tracking/PoseHistory.h"

#include <algorithm>
#include <cmath>

namespace qltkit
{
namespace
{

using qlt::Quaternion;
using qlt::Vec3;

/// The usual time between two reports. The search for a moment starts with a guess from it.
constexpr std::int64_t REPORT_PERIOD_NS = 1000000;

/// When the horizontal part of the forward axis is shorter than this, the axis defines no heading.
/// The axis is then within about one degree of the vertical.
constexpr float LEAST_HORIZONTAL = 0.02f;

/// Slerp computes the arc when the cosine of half the angle is below this (3.6 degrees).
constexpr float NEARLY_PARALLEL = 0.9995f;

/// A turn about the vertical, as the cosine and the sine of half its angle.
struct Heading
{
    float cosine = 1.0f;
    float sine = 0.0f;
};

/// Storage for a value that a reader fills at once. It does not run the initialisers of the
/// members, because they would take a third of the time of a read.
template <typename Value>
union Unset
{
    Unset() {} // NOLINT(modernize-use-equals-default): the default would be deleted

    Value value;
};

std::uint64_t Packed(const Heading& heading)
{
    const std::array<float, 2> parts = {heading.cosine, heading.sine};
    std::uint64_t word = 0;
    std::memcpy(&word, parts.data(), sizeof word);
    return word;
}

Heading Unpacked(std::uint64_t word)
{
    std::array<float, 2> parts{};
    std::memcpy(parts.data(), &word, sizeof word);
    return {parts[0], parts[1]};
}

/// Returns the product turn * q.
Quaternion Turned(const Heading& h, const Quaternion& q)
{
    return {h.cosine * q.w() - h.sine * q.y(), h.cosine * q.x() + h.sine * q.z(),
            h.cosine * q.y() + h.sine * q.w(), h.cosine * q.z() - h.sine * q.x()};
}

/// Computes the turn about the vertical that makes a head with this orientation face forward. When
/// the head looks straight up, its heading is the opposite direction of its top. When it looks
/// straight down, its heading is the direction of its top.
Heading TurnToForward(const Quaternion& q)
{
    Vec3 forward = Quaternion::Rotate(q, Vec3(0.0f, 0.0f, -1.0f));
    if (std::hypot(forward.x(), forward.z()) < LEAST_HORIZONTAL)
    {
        const Vec3 top = Quaternion::Rotate(q, Vec3(0.0f, 1.0f, 0.0f));
        forward = forward.y() > 0.0f ? -top : top;
    }
    const double yaw =
        std::atan2(-static_cast<double>(forward.x()), -static_cast<double>(forward.z()));
    return {static_cast<float>(std::cos(0.5 * yaw)), static_cast<float>(-std::sin(0.5 * yaw))};
}

/// Interpolates on the shorter way from `a` (share 0) to `b` (share 1).
Quaternion Slerp(const Quaternion& a, const Quaternion& b, float share)
{
    const float dot = a.w() * b.w() + a.v().Dot(b.v());
    const float cosine = std::fabs(dot);
    const float sign = dot < 0.0f ? -1.0f : 1.0f;
    if (cosine > NEARLY_PARALLEL)
    {
        // The chord is accurate enough here. Its length is sqrt(1 - 2e), and 1 + e is the inverse
        // of that length.
        const float e = share * (1.0f - share) * (1.0f - cosine);
        return a * ((1.0f - share) * (1.0f + e)) + b * (sign * share * (1.0f + e));
    }
    const float angle = std::acos(cosine);
    Quaternion q = a * std::sin((1.0f - share) * angle) + b * (sign * std::sin(share * angle));
    q.Normalize();
    return q;
}

/// Moves the pose to a moment between it and the next pose.
void MoveTo(PastPose& pose, const PastPose& next, std::int64_t timeNs)
{
    const auto share =
        static_cast<float>(timeNs - pose.timeNs) / static_cast<float>(next.timeNs - pose.timeNs);
    const auto deviceStepUs = static_cast<float>(next.deviceTimeUs - pose.deviceTimeUs);
    pose.deviceTimeUs += static_cast<std::int64_t>(share * deviceStepUs);
    pose.orientation = Slerp(pose.orientation, next.orientation, share);
    pose.angularVelocity += (next.angularVelocity - pose.angularVelocity) * share;
    pose.timeNs = timeNs;
}

/// Returns the rotation by |turn| radians about `turn`.
Quaternion RotationOf(const Vec3& turn)
{
    const Vec3 half = turn * 0.5f;
    const float x = half.Length2();
    if (x > 1.0f)
    {
        const float angle = std::sqrt(x);
        return {std::cos(angle), half * (std::sin(angle) / angle)};
    }
    // These are the series of the cosine and of sin(a) / a. The omitted terms are below 3e-7. In
    // double precision this computation would take most of the time of a prediction.
    const float xx = x * x;
    const float cosine =
        1.0f - x * (1.0f / 2) + xx * (1.0f / 24 - x * (1.0f / 720) + xx * (1.0f / 40320));
    const float sinc =
        1.0f - x * (1.0f / 6) + xx * (1.0f / 120 - x * (1.0f / 5040) + xx * (1.0f / 362880));
    return {cosine, half * sinc};
}

/// Moves the pose to a moment after the last pose.
void MoveAhead(PastPose& pose, const PredictionTerms& terms, std::int64_t aheadNs)
{
    const Vec3 turn = terms.Turn(pose.angularVelocity, static_cast<double>(aheadNs) * 1e-9);
    pose.orientation = pose.orientation * RotationOf(turn);
    pose.deviceTimeUs += aheadNs / 1000;
    pose.timeNs += aheadNs;
}

} // namespace

PoseHistory::PoseHistory()
    : mHeading(Packed({}))
{
}

void PoseHistory::Publish(const PoseRecord& record) noexcept
{
    mRing.Publish(record);
    if (StateOf(mState.load(std::memory_order_relaxed)) != PoseState::Tracking)
    {
        SetState(PoseState::Tracking, record.pose.timeNs);
    }
}

void PoseHistory::HoldIfOverdue(std::int64_t nowNs) noexcept
{
    std::int64_t state = mState.load(std::memory_order_relaxed);
    std::int64_t newestNs = 0;
    std::int64_t index = 0;
    if (StateOf(state) == PoseState::Tracking && ReadNewest(newestNs, index) &&
        nowNs - newestNs > OVERDUE_NS)
    {
        mState.compare_exchange_strong(state, WordOf(PoseState::Held, newestNs),
                                       std::memory_order_release, std::memory_order_relaxed);
    }
}

Pose PoseHistory::Latest() const noexcept
{
    PastPose pose;
    std::int64_t index = 0;
    return ReadNewest(pose, index) ? PoseOf(pose, false) : Pose();
}

Pose PoseHistory::At(std::int64_t timeNs) const noexcept
{
    std::int64_t newestNs = 0;
    std::int64_t newest = 0;
    while (ReadNewest(newestNs, newest))
    {
        Unset<PastPose> pose;
        bool clamped = false;
        if (timeNs < newestNs ? ReadPast(timeNs, newest, newestNs, pose.value, clamped)
                              : ReadAhead(timeNs, newest, newestNs, pose.value, clamped))
        {
            return PoseOf(pose.value, clamped);
        }
    }
    Pose none;
    none.clamped = true;
    return none;
}

bool PoseHistory::TakeNext(std::uint64_t& next, Pose& pose) const noexcept
{
    for (std::uint64_t count = mRing.Count(); next < count; count = mRing.Count())
    {
        constexpr std::uint64_t KEPT = SIZE - RESERVE;
        next = std::max(next, count - std::min(count, KEPT));
        PastPose past;
        if (mRing.Read(next++, past))
        {
            pose = PoseOf(past, false);
            return true;
        }
    }
    return false;
}

bool PoseHistory::Recentre() noexcept
{
    PastPose pose;
    std::int64_t index = 0;
    if (!ReadNewest(pose, index))
    {
        return false;
    }
    mHeading.store(Packed(TurnToForward(pose.orientation)), std::memory_order_relaxed);
    return true;
}

/// Reads the newest record. Returns false while there is none.
template <typename Part>
bool PoseHistory::ReadNewest(Part& part, std::int64_t& index) const noexcept
{
    std::uint64_t count = mRing.Count();
    while (count != 0 && !mRing.Read(count - 1, part))
    {
        count = mRing.Count();
    }
    index = static_cast<std::int64_t>(count) - 1;
    return count != 0;
}

/// Reads the pose at a moment before the newest pose. Sets `clamped` when even the oldest pose is
/// later. Returns false when the writer has overwritten a record during the read.
inline bool PoseHistory::ReadPast(std::int64_t timeNs, std::int64_t newest, std::int64_t newestNs,
                                  PastPose& pose, bool& clamped) const noexcept
{
    const std::int64_t oldest = std::max<std::int64_t>(0, newest + 1 + RESERVE - SIZE);
    std::int64_t guess = oldest;
    if (timeNs > newestNs - SIZE * REPORT_PERIOD_NS)
    {
        guess = std::max(oldest, newest - 1 - (newestNs - timeNs) / REPORT_PERIOD_NS);
    }
    // Reports arrive regularly, so the guess is nearly always right.
    Unset<PastPose> next;
    if (ReadPair(guess, pose, next.value) && timeNs >= pose.timeNs && timeNs < next.value.timeNs)
    {
        MoveTo(pose, next.value, timeNs);
        return true;
    }
    const std::int64_t after = FindAfter(timeNs, guess, oldest, newest);
    clamped = after == oldest;
    if (clamped)
    {
        return mRing.Read(static_cast<std::uint64_t>(after), pose);
    }
    if (!ReadPair(after - 1, pose, next.value))
    {
        return false;
    }
    MoveTo(pose, next.value, timeNs);
    return true;
}

/// Reads the pose at the time of the newest pose or later. Sets `clamped` when the moment is too
/// late. Returns false when the writer has overwritten the record during the read.
inline bool PoseHistory::ReadAhead(std::int64_t timeNs, std::int64_t newest, std::int64_t newestNs,
                                   PastPose& pose, bool& clamped) const noexcept
{
    Unset<PoseRecord> record;
    if (!mRing.Read(static_cast<std::uint64_t>(newest), record.value))
    {
        return false;
    }
    const std::int64_t lastNs = newestNs + MAX_AHEAD_NS;
    clamped = timeNs > lastNs;
    pose = record.value.pose;
    MoveAhead(pose, record.value.terms, std::min(timeNs, lastNs) - newestNs);
    return true;
}

inline bool PoseHistory::ReadPair(std::int64_t index, PastPose& pose, PastPose& next) const noexcept
{
    return mRing.Read(static_cast<std::uint64_t>(index), pose) &&
           mRing.Read(static_cast<std::uint64_t>(index + 1), next);
}

/// Finds the first pose in `oldest` .. `newest` that is later than the moment. The newest pose is
/// always later. The search starts at the guess with growing steps and ends with halving steps.
std::int64_t PoseHistory::FindAfter(std::int64_t timeNs, std::int64_t guess, std::int64_t oldest,
                                    std::int64_t newest) const noexcept
{
    std::int64_t low = oldest - 1; // this pose is not later than the moment, or it is overwritten
    std::int64_t high = newest;    // this pose is later
    std::int64_t step = 1;
    std::int64_t probe = guess;
    while (high - low > 1)
    {
        probe = std::clamp(probe, low + 1, high - 1);
        const bool later = IsLater(probe, timeNs);
        (later ? high : low) = probe;
        probe = step < high - low ? probe + (later ? -step : step) : low + (high - low) / 2;
        step *= 2;
    }
    return high;
}

/// An overwritten pose counts as not later.
bool PoseHistory::IsLater(std::int64_t index, std::int64_t timeNs) const noexcept
{
    std::int64_t poseNs = 0;
    return mRing.Read(static_cast<std::uint64_t>(index), poseNs) && poseNs > timeNs;
}

inline Pose PoseHistory::PoseOf(const PastPose& record, bool clamped) const noexcept
{
    const std::int64_t state = mState.load(std::memory_order_acquire);
    Pose pose;
    pose.orientation =
        Turned(Unpacked(mHeading.load(std::memory_order_relaxed)), record.orientation);
    pose.angularVelocity = record.angularVelocity;
    pose.timeNs = record.timeNs;
    pose.deviceTimeUs = record.deviceTimeUs;
    pose.reportNumber = record.reportNumber;
    pose.sequence = record.sequence;
    pose.state = StateOf(state);
    pose.sinceNs = SinceOf(state);
    pose.clamped = clamped;
    if (pose.state ==
        PoseState::NeverSeen) // the writer has not stored the first record's state yet
    {
        pose.state = PoseState::Tracking;
        pose.sinceNs = record.timeNs;
    }
    return pose;
}

void PoseHistory::SetState(PoseState state, std::int64_t sinceNs) noexcept
{
    mState.store(WordOf(state, sinceNs), std::memory_order_release);
}

} // namespace qltkit
