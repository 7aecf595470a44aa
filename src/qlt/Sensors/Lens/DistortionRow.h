// Rows of lens distortion, many times faster than point by point and equal to the last bit: radius,
// depth and table segment are computed once for the three colours, and once for two rows above and
// below the lens centre. DistortionFunction::Distortion is what a value means.
#pragma once

#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <array>
#include <cstddef>
#include <vector>

namespace qlt
{

struct LensSplines;

class DistortionRow
{
public:
    /// Rows of points at `xs` for one eye, with the shared constants as they are now. Asserts a
    /// valid eye; any but the right one counts as left. `lens` is needed for this call only.
    DistortionRow(const LensSplines& lens, Params::Eye eye, const std::vector<float>& xs);

    /// Makes `y` the current row.
    void MoveTo(float y);

    /// The current row's vertices (xs[i], y, depth), and the texture coordinates of its colours.
    void GetPosition(const std::vector<float>& xs, float y, Vec3* position) const;
    void GetTextures(Vec2* red, Vec2* green, Vec2* blue) const;

private:
    /// The radii in (lower, upper], and the polynomials of the three colours there, side by side;
    /// the fourth is nothing.
    struct Segment
    {
        double lower;
        double upper;
        double knot; // that the polynomials count from
        std::array<double, 4> cubic;
        std::array<double, 4> quad;
        std::array<double, 4> lin;
        std::array<double, 4> value;
    };

    void EvaluateScales();

    std::size_t mPoints;
    std::vector<Segment> mSegments;
    std::vector<float> mDx; // from the lens centre; padded to whole vectors, as the radii are
    float mDy = 0.0f;
    float mScaledDy2 = 0.0f;
    bool mEvaluated = false; // mRadius and mScales belong to mScaledDy2
    std::vector<float> mRadius;
    std::vector<float> mScales; // red, green, blue and nothing of each point
};

} // namespace qlt
