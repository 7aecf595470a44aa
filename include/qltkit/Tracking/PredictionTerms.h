#pragma once

#include <qlt/Math/Vector.h>
#include <qltkit/Export.h>

#include <array>
#include <cmath>
#include <cstddef>

namespace qltkit
{

/// The terms of a prediction, small enough to be stored with each report: how long the angular
/// velocity lasts, and how much it changes. All terms are linear in time between the horizons of
/// 20, 50 and 100 ms. The default terms predict with a constant angular velocity. A plain value;
/// any thread may read it.
struct PredictionTerms
{
    /// The number of horizons.
    static constexpr std::size_t HORIZONS = 3;

    /// The horizons in seconds.
    static constexpr std::array<double, HORIZONS> AHEAD_SECONDS = {0.02, 0.05, 0.1};

    /// Half of the angular acceleration about the body's axes in rad/s^2: the first value applies
    /// at once, and each other value applies at its horizon.
    std::array<qlt::Vec3, HORIZONS + 1> bend;

    /// The part of the angular velocity that lasts until each horizon. It starts at 1 for the
    /// present.
    std::array<float, HORIZONS> lasting = {1.0f, 1.0f, 1.0f};

    /// Returns the turn in `seconds` of a body that has the angular velocity `rate`. `rate` is in
    /// rad/s about the body's axes, and `seconds` is clamped to 0 .. 0.1. The result is a rotation
    /// vector in radians about the same axes: (rate * lasting + bend * t) * t, with the terms at
    /// the time t.
    qlt::Vec3 Turn(const qlt::Vec3& rate, double seconds) const
    {
        const float t =
            seconds > 0.0 ? static_cast<float>(std::fmin(seconds, AHEAD_SECONDS[2])) : 0.0f;
        if (t <= 0.02f)
        {
            return Turn(rate, t, bend[0], bend[1], 1.0f, lasting[0], t * 50.0f);
        }
        if (t <= 0.05f)
        {
            return Turn(rate, t, bend[1], bend[2], lasting[0], lasting[1],
                        (t - 0.02f) * (1.0f / 0.03f));
        }
        return Turn(rate, t, bend[2], bend[3], lasting[1], lasting[2], (t - 0.05f) * 20.0f);
    }

private:
    static qlt::Vec3 Turn(const qlt::Vec3& rate, float t, const qlt::Vec3& bendA,
                          const qlt::Vec3& bendB, float lastingA, float lastingB, float share)
    {
        const float lasting = lastingA + (lastingB - lastingA) * share;
        return (rate * lasting + (bendA + (bendB - bendA) * share) * t) * t;
    }
};

/// The errors of predictions for each horizon, as root mean squares in radians. An error is the
/// angle between the predicted orientation and the orientation that was measured later. A plain
/// value; any thread may read it.
struct QLTKIT_API PredictionErrors
{
    /// The error at each horizon.
    std::array<double, PredictionTerms::HORIZONS> radians{};

    /// The error for `seconds` ahead, which is clamped to 0 .. 0.1. Between two horizons it grows
    /// with the square of the time, as an unknown angular acceleration makes it grow. It is 0 for
    /// the present.
    double At(double seconds) const;
};

} // namespace qltkit
