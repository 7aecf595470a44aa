// The source of the head's orientation. Any thread may call, also several at once.
#pragma once

#include "State/Rigid.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qltxr
{

/// The state of the head at one time. The y axis points up.
struct HeadMoment
{
    Turn orientation;
    Vector angularVelocity{}; // in radians per second, about the axes of the world
    bool known = false;       // an orientation has been measured at least once
    bool tracked = false;     // the orientation is measured and not held
};

class PoseSource
{
public:
    virtual ~PoseSource() = default;

    /// The state at a time of the steady clock in nanoseconds. The call neither waits nor
    /// allocates.
    virtual HeadMoment At(XrTime time) const = 0;

    /// Describes the source and its state to a person.
    virtual std::string Describe() const = 0;

    /// The number of reports so far. It is 0 for a source without reports.
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
