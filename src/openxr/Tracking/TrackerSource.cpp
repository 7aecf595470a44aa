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

qltkit::HeadTrackerOptions OptionsOf(const SourceSettings& settings)
{
    qltkit::HeadTrackerOptions options;
    options.filter = settings.filter;
    return options;
}

} // namespace

TrackerSource::TrackerSource(const SourceSettings& settings)
    : mName(settings.name.empty() ? "headset" : settings.name)
    , mTracker(mName, OptionsOf(settings))
{
}

// A missing headset counts as a headset that is held still, because programs stop drawing while the
// pose is not known.
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
    return mName + ", " + StateText(mTracker.Latest().state);
}

std::unique_ptr<PoseSource> OpenPoseSource(const SourceSettings& settings, std::string& complaint)
{
    try
    {
        return std::make_unique<TrackerSource>(settings);
    }
    catch (const std::exception& error)
    {
        complaint = "the head is still: " + std::string(error.what());
        return std::make_unique<StillSource>();
    }
}

} // namespace qltxr
