// Scalar helpers in single precision. Mind the argument orders: `clamp` takes the value first,
// `lerp` and `percentage` take the two ends first. Any thread may use them.
#pragma once

#include <qlt/Export.h>

#include <vector>

namespace qlt
{

class QLT_API MathUtil
{
public:
    QLT_INLINE static constexpr float Deg2Rad(float deg) { return deg * 0.017453292f; }
    QLT_INLINE static constexpr float Rad2Deg(float rad) { return rad * 57.29578f; }

    /// `x` limited to [a, b]. Asserts a <= b.
    static float clamp(float x, float a, float b);

    /// (1 - t) * a + b * t. Asserts a <= b (deliberate, although interpolation would not need it)
    /// and t in [0, 1]; computes all the same.
    static float lerp(float a, float b, float t);

    /// Where `x` lies between a (0) and b (1). Asserts a < b and x in [a, b]; computes all the
    /// same.
    static float percentage(float a, float b, float x);

    /// p[0] x^8 + p[1] x^7 + ... + p[8], nine coefficients. Asserts the count and reads nine all
    /// the same: never pass fewer.
    static float Polynom(const std::vector<float>& p, float x);
};

} // namespace qlt
