// Where the head's orientation comes from. Any thread may call, several at once.
#pragma once

#include "State/Rigid.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qltxr
{

/// A moment of the head's motion, in axes whose y points up.
struct HeadMoment
{
    Turn orientation;
    Vector angularVelocity{}; // radians per second, in the world's axes
    bool known = false;       // that is, an orientation was ever seen
    bool tracked = false;     // it is a measured one, not one that is held
};

class PoseSource
{
public:
    virtual ~PoseSource() = default;

    /// At a moment of the steady clock, in nanoseconds; neither waits nor allocates.
    virtual HeadMoment At(XrTime time) const = 0;

    /// For people: where the orientations come from, and how the source is.
    virtual std::string Describe() const = 0;

    /// How many reports have come so far; 0 for a source without reports.
    virtual std::uint64_t Reports() const { return 0; }
};

/// A head that looks straight ahead and does not move.
class StillSource final : public PoseSource
{
public:
    HeadMoment At(XrTime) const override { return {Turn{}, Vector{}, true, false}; }
    std::string Describe() const override { return "still"; }
};

} // namespace qltxr
