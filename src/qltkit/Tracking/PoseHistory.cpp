#include "Tracking/PoseHistory.h"

#include <algorithm>
#include <cmath>

namespace qltkit
{
namespace
{

using qlt::Quaternion;
using qlt::Vec3;

/// The usual time between two reports, from which the search for a moment begins.
constexpr double REPORT_PERIOD_NS = 1e6;

/// The part of the forward axis that is horizontal, below which the axis tells no heading: about
/// one degree from the vertical.
constexpr float LEAST_HORIZONTAL = 0.02f;

/// The turn about the vertical by twice the angle whose cosine and sine these are.
struct Heading
{
    float cosine = 1.0f;
    float sine = 0.0f;
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

/// The product with the turn on the left.
Quaternion Turned(const Heading& h, const Quaternion& q)
{
    return {h.cosine * q.w() - h.sine * q.y(), h.cosine * q.x() + h.sine * q.z(),
            h.cosine * q.y() + h.sine * q.w(), h.cosine * q.z() - h.sine * q.x()};
}

/// The turn about the vertical that makes a head with this orientation face forward. A head that
/// looks straight up has its heading where its top points away from, one that looks straight down
/// where its top points to.
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

/// On the shorter way from `a` (share 0) to `b` (share 1).
Quaternion Slerp(const Quaternion& a, const Quaternion& b, float share)
{
    const float dot = a.w() * b.w() + a.v().Dot(b.v());
    const float cosine = std::min(std::fabs(dot), 1.0f);
    float ofA = 1.0f - share;
    float ofB = share;
    if (cosine < 0.9995f) // else the chord is as good as the arc
    {
        const float angle = std::acos(cosine);
        ofA = std::sin(ofA * angle);
        ofB = std::sin(ofB * angle);
    }
    Quaternion q = a * ofA + b * (dot < 0.0f ? -ofB : ofB);
    q.Normalize();
    return q;
}

void MoveTo(PoseRecord& record, const PoseRecord& next, std::int64_t timeNs)
{
    const auto share = static_cast<float>(static_cast<double>(timeNs - record.timeNs) /
                                          static_cast<double>(next.timeNs - record.timeNs));
    const auto deviceStepUs = static_cast<double>(next.deviceTimeUs - record.deviceTimeUs);
    record.deviceTimeUs += std::llround(static_cast<double>(share) * deviceStepUs);
    record.orientation = Slerp(record.orientation, next.orientation, share);
    record.angularVelocity += (next.angularVelocity - record.angularVelocity) * share;
    record.timeNs = timeNs;
}

/// By the turn that the angular velocity makes in that time.
void MoveAhead(PoseRecord& record, std::int64_t aheadNs)
{
    const Vec3 half = record.angularVelocity * (0.5e-9f * static_cast<float>(aheadNs));
    const float angle = half.Length();
    const float scale = angle > 1e-4f ? std::sin(angle) / angle : 1.0f;
    record.orientation = record.orientation * Quaternion(std::cos(angle), half * scale);
    record.orientation.Normalize();
    record.deviceTimeUs += aheadNs / 1000;
    record.timeNs += aheadNs;
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
        SetState(PoseState::Tracking, record.timeNs);
    }
}

void PoseHistory::HoldIfOverdue(std::int64_t nowNs) noexcept
{
    std::int64_t state = mState.load(std::memory_order_relaxed);
    PoseRecord newest;
    std::int64_t index = 0;
    if (StateOf(state) == PoseState::Tracking && ReadNewest(newest, index) &&
        nowNs - newest.timeNs > OVERDUE_NS)
    {
        mState.compare_exchange_strong(state, WordOf(PoseState::Held, newest.timeNs),
                                       std::memory_order_release, std::memory_order_relaxed);
    }
}

Pose PoseHistory::Latest() const noexcept
{
    PoseRecord record;
    std::int64_t index = 0;
    return ReadNewest(record, index) ? PoseOf(record, false) : Pose();
}

Pose PoseHistory::At(std::int64_t timeNs) const noexcept
{
    PoseRecord record;
    std::int64_t newest = 0;
    bool clamped = true;
    do
    {
        if (!ReadNewest(record, newest))
        {
            Pose none;
            none.clamped = true;
            return none;
        }
        if (timeNs >= record.timeNs)
        {
            const std::int64_t lastNs = record.timeNs + MAX_AHEAD_NS;
            MoveAhead(record, std::min(timeNs, lastNs) - record.timeNs);
            return PoseOf(record, timeNs > lastNs);
        }
    } while (!ReadPast(timeNs, newest, record, clamped));
    return PoseOf(record, clamped);
}

bool PoseHistory::Recentre() noexcept
{
    PoseRecord record;
    std::int64_t index = 0;
    if (!ReadNewest(record, index))
    {
        return false;
    }
    mHeading.store(Packed(TurnToForward(record.orientation)), std::memory_order_relaxed);
    return true;
}

/// False while there is none.
bool PoseHistory::ReadNewest(PoseRecord& record, std::int64_t& index) const noexcept
{
    std::uint64_t count = mRing.Count();
    while (count != 0 && !mRing.Read(count - 1, record))
    {
        count = mRing.Count();
    }
    index = static_cast<std::int64_t>(count) - 1;
    return count != 0;
}

/// Turns `record`, the newest one, into that of an earlier moment; `clamped` when even the oldest
/// one is later. False when the writer has overtaken the reading.
bool PoseHistory::ReadPast(std::int64_t timeNs, std::int64_t newest, PoseRecord& record,
                           bool& clamped) const noexcept
{
    const std::int64_t oldest = std::max<std::int64_t>(0, newest + 1 + RESERVE - SIZE);
    const std::int64_t after = FindAfter(timeNs, oldest, newest, record.timeNs);
    clamped = after == oldest;
    PoseRecord next;
    if (!mRing.Read(static_cast<std::uint64_t>(after), next))
    {
        return false;
    }
    if (clamped)
    {
        record = next;
        return true;
    }
    if (!mRing.Read(static_cast<std::uint64_t>(after - 1), record))
    {
        return false;
    }
    MoveTo(record, next, timeNs);
    return true;
}

/// The first record in `oldest` .. `newest` that is later than the moment, as the newest one is.
/// Reports come regularly, so that the first guess is nearly always right or next to it.
std::int64_t PoseHistory::FindAfter(std::int64_t timeNs, std::int64_t oldest, std::int64_t newest,
                                    std::int64_t newestNs) const noexcept
{
    const double periods =
        (static_cast<double>(newestNs) - static_cast<double>(timeNs)) / REPORT_PERIOD_NS;
    std::int64_t low = oldest - 1; // not later than the moment, or not there
    std::int64_t high = newest;    // later
    std::int64_t step = 1;
    std::int64_t probe = newest - static_cast<std::int64_t>(std::min(periods, 1e6));
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

/// A record that has been overwritten counts as one of long ago.
bool PoseHistory::IsLater(std::int64_t index, std::int64_t timeNs) const noexcept
{
    std::int64_t recordNs = 0;
    return mRing.Read(static_cast<std::uint64_t>(index), recordNs) && recordNs > timeNs;
}

Pose PoseHistory::PoseOf(const PoseRecord& record, bool clamped) const noexcept
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
    if (pose.state == PoseState::NeverSeen) // the first record's state is about to be told
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
