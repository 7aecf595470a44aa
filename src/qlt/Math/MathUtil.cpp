#define QLT_EMIT_INLINE
#include <qlt/Math/MathUtil.h>

#include "Runtime/Check.h"

#define QLT_SOURCE_FILE L"Math/MathUtil"

namespace qlt
{

float MathUtil::clamp(float x, float a, float b)
{
    QLT_CHECK(a <= b);
    if (x <= a)
    {
        return a;
    }
    return x >= b ? b : x;
}

float MathUtil::lerp(float a, float b, float t)
{
    QLT_CHECK(a <= b);
    const float value = (1.0f - t) * a + b * t;
    QLT_CHECK(t >= 0 && t <= 1);
    return value;
}

float MathUtil::percentage(float a, float b, float x)
{
    QLT_CHECK(a < b);
    QLT_CHECK(x >= a && x <= b);
    return (x - a) / (b - a);
}

float MathUtil::Polynom(const std::vector<float>& p, float x)
{
    QLT_CHECK(p.size() == 9);
    const float* c = p.data();
    const float x2 = x * x;
    const float x3 = x * x2;
    const float x4 = x2 * x2;
    const float x5 = x * x4;
    const float x6 = x2 * x4;
    const float x7 = x3 * x4;
    const float x8 = x4 * x4;
    // The order of this sum decides the bits of the result.
    return c[1] * x7 + c[0] * x8 + c[2] * x6 + c[3] * x5 + c[4] * x4 + c[5] * x3 + c[6] * x2 +
           c[7] * x + c[8];
}

} // namespace qlt
