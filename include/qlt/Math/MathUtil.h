#pragma once

#include <qlt/Export.h>

#include <vector>

namespace qlt
{

/// Scalar helpers in single precision. The orders of the arguments differ: `clamp` takes the value
/// first, `lerp` and `percentage` take the two ends first. Any thread may use them.
class QLT_API MathUtil
{
public:
    /// Converts degrees to radians: deg * 0.017453292.
    QLT_INLINE static constexpr float Deg2Rad(float deg) { return deg * 0.017453292f; }

    /// Converts radians to degrees: rad * 57.29578.
    QLT_INLINE static constexpr float Rad2Deg(float rad) { return rad * 57.29578f; }

    /// Returns `x` limited to [a, b]. An `a` above `b` is reported as an assertion.
    static float clamp(float x, float a, float b);

    /// Returns (1 - t) * a + b * t. A `t` outside [0, 1] is reported as an assertion, and so is an
    /// `a` above `b`. The result follows the formula all the same. deliberate: interpolation does
    /// not need the second check, but clients rely on its report.
    static float lerp(float a, float b, float t);

    /// (x - a) / (b - a), so `a` gives 0 and `b` gives 1. An `a` that is not below `b` is reported
    /// as an assertion, and so is an `x` outside [a, b]; the result follows the formula all the
    /// same.
    static float percentage(float a, float b, float x);

    /// p[0] x^8 + p[1] x^7 + ... + p[8]. A number of coefficients other than nine is reported as an
    /// assertion. The operation reads nine coefficients in any case, so never pass fewer.
    static float Polynom(const std::vector<float>& p, float x);
};

} // namespace qlt
