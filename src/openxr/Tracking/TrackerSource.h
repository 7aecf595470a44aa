// Orientations of the kit's head tracker, and how the user's choice of a source becomes one.
#pragma once

#include "Tracking/PoseSource.h"

#include <qltkit/Tracking/HeadTracker.h>

namespace qltxr
{

class TrackerSource final : public PoseSource
{
public:
    /// `source` as qltkit::OpenSource names it. qltkit::Error when there is no such source.
    explicit TrackerSource(const std::string& source);

    HeadMoment At(XrTime time) const override;
    std::string Describe() const override;
    std::uint64_t Reports() const override { return mTracker.Latest().reportNumber; }

private:
    const std::string mSource;
    const qltkit::HeadTracker mTracker;
};

/// The source of that name, or the headset when it is empty. A still one, and a sentence in
/// `complaint`, when the name is not understood.
std::unique_ptr<PoseSource> OpenPoseSource(const std::string& source, std::string& complaint);

} // namespace qltxr
