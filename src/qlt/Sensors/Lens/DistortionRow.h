// Computes the lens distortion of whole rows of points. The values equal those of
// DistortionFunction::Distortion to the last bit, but the computation is many times faster. The
// three colours share radius, depth and table segment, and so do two mirrored rows above and below
// the lens centre.
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
    /// Prepares rows of points at `xs` for one eye. Asserts a valid eye; every eye but the right
    /// one counts as left. The shared constants must not change while the object is in use. Only
    /// this call uses `lens`.
    DistortionRow(const LensSplines& lens, Params::Eye eye, const std::vector<float>& xs);

    /// Makes `y` the current row.
    void MoveTo(float y);

    /// Give the vertices (xs[i], y, depth) of the current row, and the texture coordinates of its
    /// three colours.
    void GetPosition(const std::vector<float>& xs, float y, Vec3* position) const;
    void GetTextures(Vec2* red, Vec2* green, Vec2* blue) const;

private:
    /// The polynomials of the three colours for the radii in (lower, upper], side by side. The
    /// fourth lane is padding.
    struct Segment
    {
        double lower;
        double upper;
        double knot; // h is the distance of a radius from it
        std::array<double, 4> cubic;
        std::array<double, 4> quad;
        std::array<double, 4> lin;
        std::array<double, 4> value;
    };

    void EvaluateScales();

    std::size_t mPoints;
    std::vector<Segment> mSegments;
    // The distance from the lens centre; it is padded to whole vectors, like the radii.
    std::vector<float> mDx;
    float mDy = 0.0f;
    float mScaledDy2 = 0.0f;
    bool mEvaluated = false; // mRadius and mScales belong to mScaledDy2
    std::vector<float> mRadius;
    std::vector<float> mScales; // red, green, blue and padding for each point
};

} // namespace qlt
