// Gets orientations from the kit's head tracker, and opens the source that the user has chosen.
#pragma once

#include "Tracking/PoseSource.h"

#include <qltkit/Tracking/HeadTracker.h>

namespace qltxr
{

/// The user's choice of a source and of a filter.
struct SourceSettings
{
    std::string name; // a name for qltkit::OpenSource; an empty name is the headset
    qltkit::PoseFilter filter = qltkit::PoseFilter::Kit;
};

class TrackerSource final : public PoseSource
{
public:
    /// Throws qltkit::Error when there is no source of that name.
    explicit TrackerSource(const SourceSettings& settings);

    HeadMoment At(XrTime time) const override;
    std::string Describe() const override;
    std::uint64_t Reports() const override { return mTracker.Latest().reportNumber; }

private:
    const std::string mName;
    const qltkit::HeadTracker mTracker;
};

/// Opens the source. When there is no source of that name, it writes a sentence to `complaint` and
/// returns a head at rest.
std::unique_ptr<PoseSource> OpenPoseSource(const SourceSettings& settings, std::string& complaint);

} // namespace qltxr
