// Orientations of the kit's head tracker, and how the user's choice of a source becomes one.
#pragma once

#include "Tracking/PoseSource.h"

#include <qltkit/Tracking/HeadTracker.h>

namespace qltxr
{

/// What the user has chosen.
struct SourceSettings
{
    std::string name; // as the kit names it, or the file of a headset script; empty: the headset
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

/// A still source, and a sentence in `complaint`, when there is no source of that name.
std::unique_ptr<PoseSource> OpenPoseSource(const SourceSettings& settings, std::string& complaint);

} // namespace qltxr
