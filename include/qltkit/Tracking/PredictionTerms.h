#pragma once

#include <qlt/Math/Vector.h>
#include <qltkit/Export.h>

#include <array>
#include <cmath>
#include <cstddef>

namespace qltkit
{

/// What a prediction is made of, small enough to be kept for each report: how long the rate lasts,
/// and how much it changes. Between the horizons of 20, 50 and 100 ms, all of it is linear in time.
/// The default predicts with a constant rate. A plain value.
struct PredictionTerms
{
    static constexpr std::size_t HORIZONS = 3;
    static constexpr std::array<double, HORIZONS> AHEAD_SECONDS = {0.02, 0.05, 0.1};

    /// Half of the angular acceleration about the body's axes that counts at once and until each
    /// horizon, rad/s^2.
    std::array<qlt::Vec3, HORIZONS + 1> bend;

    /// The part of the rate that lasts until each horizon; at once it is all of it.
    std::array<float, HORIZONS> lasting = {1.0f, 1.0f, 1.0f};

    /// How far a body that has the angular velocity `rate` (rad/s, its own axes) turns in
    /// `seconds`, as a rotation vector in the same axes. `seconds` is clamped to 0 .. 0.1.
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

/// The angles, in radians, between what was predicted for each horizon and what then came, as roots
/// of mean squares. A plain value.
struct QLTKIT_API PredictionErrors
{
    std::array<double, PredictionTerms::HORIZONS> radians{};

    /// For `seconds` ahead, clamped to 0 .. 0.1; between the horizons it grows with the square of
    /// the time.
    double At(double seconds) const;
};

} // namespace qltkit
