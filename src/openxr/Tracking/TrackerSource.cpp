#include "Tracking/TrackerSource.h"

#include <exception>

namespace qltxr
{

namespace
{

const char* StateText(qltkit::PoseState state)
{
    switch (state)
    {
    case qltkit::PoseState::Tracking:
        return "tracking";
    case qltkit::PoseState::Held:
        return "its reports are overdue";
    case qltkit::PoseState::Lost:
        return "unplugged";
    default:
        return "no report yet, the head is still";
    }
}

} // namespace

TrackerSource::TrackerSource(const std::string& source)
    : mSource(source)
    , mTracker(source)
{
}

// A headset that is not there yet counts as one that is held still: programs draw nothing for a
// head that they know nothing of.
HeadMoment TrackerSource::At(XrTime time) const
{
    const qltkit::Pose pose = mTracker.At(time);
    const qlt::Quaternion& q = pose.orientation;
    const qlt::Vec3& v = pose.angularVelocity;
    const Turn turn{q.w(), q.x(), q.y(), q.z()};
    const bool tracked = pose.state == qltkit::PoseState::Tracking;
    return {turn, tracked ? turn * Vector{v.x(), v.y(), v.z()} : Vector{}, true, tracked};
}

std::string TrackerSource::Describe() const
{
    return mSource + ", " + StateText(mTracker.Latest().state);
}

std::unique_ptr<PoseSource> OpenPoseSource(const std::string& source, std::string& complaint)
{
    try
    {
        return std::make_unique<TrackerSource>(source.empty() ? "headset" : source);
    }
    catch (const std::exception& error)
    {
        complaint = "the head is still: " + std::string(error.what());
        return std::make_unique<StillSource>();
    }
}

} // namespace qltxr
