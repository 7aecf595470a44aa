#include "Sensors/Lens/DistortionRow.h"

#include "Runtime/Check.h"
#include "Sensors/Lens/DistortConstants.h"
#include "Sensors/Lens/LensSplines.h"

#include <limits>

#include <emmintrin.h> // SSE2, which every 64-bit x86 has

#define QLT_SOURCE_FILE L"Sensors/Params"

namespace qlt
{

using namespace DistortConstants;

namespace
{

/// Evaluates ((cubic h + quad) h + lin) h + value for the colours `first` and `first` + 1.
template <typename Segment>
__m128d Horner(const Segment& s, std::size_t first, __m128d h)
{
    __m128d sum = _mm_mul_pd(_mm_loadu_pd(&s.cubic[first]), h);
    sum = _mm_mul_pd(_mm_add_pd(sum, _mm_loadu_pd(&s.quad[first])), h);
    sum = _mm_mul_pd(_mm_add_pd(sum, _mm_loadu_pd(&s.lin[first])), h);
    return _mm_add_pd(sum, _mm_loadu_pd(&s.value[first]));
}

/// Clamps a scaled coordinate to [-1, 1] and maps it to [0, 1].
__m128 Coordinate(__m128 x)
{
    const __m128 one = _mm_set1_ps(1.0f);
    // With this order of the operands a NaN passes through, as it does in MathUtil::clamp.
    const __m128 clamped = _mm_min_ps(one, _mm_max_ps(_mm_set1_ps(-1.0f), x));
    // Multiply by one half, which is exact, instead of dividing by 2.
    return _mm_mul_ps(_mm_add_ps(clamped, one), _mm_set1_ps(0.5f));
}

} // namespace

DistortionRow::DistortionRow(const LensSplines& lens, Params::Eye eye, const std::vector<float>& xs)
    : mPoints(xs.size())
    , mSegments(lens.red.Knots() + 1)
    , mDx((mPoints + 3) / 4 * 4)
    , mRadius(mDx.size())
    , mScales(4 * mPoints)
{
    QLT_CHECK(eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT);
    const CubicSpline* const splines[] = {&lens.red, &lens.green, &lens.blue};
    const std::size_t knots = splines[0]->Knots();
    const double* x = splines[0]->X();
    constexpr double INF = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k <= knots; ++k)
    {
        // Segment 0 lies before the first knot, and segment k lies after knot k - 1. The first and
        // the last segment are parabolas.
        const std::size_t piece = k == 0 ? 0 : k - 1;
        const bool isEnd = k == 0 || k == knots;
        Segment& segment = mSegments[k];
        segment.lower = k == 0 ? -INF : x[k - 1];
        segment.upper = k == knots ? INF : x[k];
        segment.knot = x[piece];
        for (std::size_t c = 0; c < 3; ++c)
        {
            segment.cubic[c] = isEnd ? 0.0 : splines[c]->Cubic()[piece];
            segment.quad[c] = splines[c]->Quad()[piece];
            segment.lin[c] = splines[c]->Lin()[piece];
            segment.value[c] = splines[c]->Y()[piece];
        }
    }
    const float centerX = eye == Params::EYE_RIGHT ? LENS_CENTER_OFFSET_X : -LENS_CENTER_OFFSET_X;
    for (std::size_t i = 0; i < mPoints; ++i)
    {
        mDx[i] = xs[i] - centerX;
    }
}

void DistortionRow::MoveTo(float y)
{
    mDy = y - DISTORT_OFFSET_Y;
    const float scaled = mDy * (1.0f / Params::EYE_ASPECT_RATIO);
    const float scaled2 = scaled * scaled;
    if (!mEvaluated || scaled2 != mScaledDy2)
    {
        mScaledDy2 = scaled2;
        mEvaluated = true;
        EvaluateScales();
    }
}

void DistortionRow::EvaluateScales()
{
    const __m128 dy2 = _mm_set1_ps(mScaledDy2);
    for (std::size_t i = 0; i < mRadius.size(); i += 4)
    {
        const __m128 dx = _mm_loadu_ps(&mDx[i]);
        _mm_storeu_ps(&mRadius[i], _mm_sqrt_ps(_mm_add_ps(_mm_mul_ps(dx, dx), dy2)));
    }
    const __m128 divisor = _mm_set1_ps(DISTORT_SCALE);
    const Segment* segment = mSegments.data();
    for (std::size_t i = 0; i < mPoints; ++i)
    {
        const auto r = static_cast<double>(mRadius[i]);
        // Neighbours mostly share a segment, so begin the search at the current one.
        while (segment->upper < r)
        {
            ++segment;
        }
        while (r <= segment->lower)
        {
            --segment;
        }
        const __m128d h = _mm_set1_pd(r - segment->knot);
        const __m128 redGreen = _mm_cvtpd_ps(Horner(*segment, 0, h));
        const __m128 blue = _mm_cvtpd_ps(Horner(*segment, 2, h));
        _mm_storeu_ps(&mScales[4 * i], _mm_div_ps(_mm_movelh_ps(redGreen, blue), divisor));
    }
}

void DistortionRow::GetPosition(const std::vector<float>& xs, float y, Vec3* position) const
{
    for (std::size_t i = 0; i < mPoints; ++i)
    {
        position[i] = Vec3(xs[i], y, mRadius[i] > LENS_EDGE_RADIUS ? OUTSIDE_DEPTH : 0.0f);
    }
}

void DistortionRow::GetTextures(Vec2* red, Vec2* green, Vec2* blue) const
{
    const __m128 dy = _mm_set1_ps(mDy);
    for (std::size_t i = 0; i < mPoints; ++i)
    {
        const __m128 scale = _mm_loadu_ps(&mScales[4 * i]);
        const __m128 u = Coordinate(_mm_mul_ps(_mm_set1_ps(mDx[i]), scale));
        const __m128 v = Coordinate(_mm_mul_ps(dy, scale));
        const __m128 redGreen = _mm_unpacklo_ps(u, v);
        _mm_storel_pi(reinterpret_cast<__m64*>(&red[i]), redGreen);
        _mm_storeh_pi(reinterpret_cast<__m64*>(&green[i]), redGreen);
        _mm_storel_pi(reinterpret_cast<__m64*>(&blue[i]), _mm_unpackhi_ps(u, v));
    }
}

} // namespace qlt
