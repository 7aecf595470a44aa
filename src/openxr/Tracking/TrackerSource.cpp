#include "Tracking/TrackerSource.h"

#include <qltkit/Headset/ScriptedHeadset.h>

#include <exception>
#include <filesystem>

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

/// A headset script by its file, or what the kit knows by its name.
std::unique_ptr<qltkit::Source> Open(const std::string& source)
{
    const std::filesystem::path file(source);
    if (file.extension() == ".json")
    {
        return std::make_unique<qltkit::ScriptedHeadset>(qltkit::LoadHeadsetScript(file));
    }
    return qltkit::OpenSource(source);
}

} // namespace

TrackerSource::TrackerSource(const std::string& source)
    : mSource(source)
    , mTracker(Open(source)) // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it takes the source
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
