// The user's head: a source of orientations, a neck, and the forward heading. Any thread may call,
// also several at once.
#pragma once

#include "State/Spaces.h"
#include "Tracking/PoseSource.h"

#include <atomic>

namespace qltxr
{

class HeadModel
{
public:
    HeadModel(std::unique_ptr<PoseSource> source, const Person& person)
        : mSource(std::move(source))
        , mPerson(person)
    {
    }

    /// The state of the head in LOCAL.
    Head At(XrTime time) const;

    /// Makes the heading at `time` the forward direction. Returns the new origin of LOCAL in the
    /// old LOCAL.
    Rigid Recentre(XrTime time);

    const Person& Wearer() const { return mPerson; }
    const PoseSource& Source() const { return *mSource; }

private:
    const std::unique_ptr<PoseSource> mSource;
    const Person mPerson;
    std::atomic<double> mForward{0.0}; // the heading of LOCAL in the source's axes, in radians
};

} // namespace qltxr
