#include <qlt/Sensors/DistortionFunction.h>

#include <qlt/Math/MathUtil.h>

#include "Runtime/Check.h"
#include "Sensors/Lens/DistortConstants.h"
#include "Sensors/Lens/LensSplines.h"

#include <cmath>

#define QLT_SOURCE_FILE L"Sensors/Params"

namespace qlt
{

using namespace DistortConstants;

DistortionFunction::DistortionFunction()
    : mIsInitialized(false)
    , mSplineR(std::make_unique<CubicSpline>())
    , mSplineG(std::make_unique<CubicSpline>())
    , mSplineB(std::make_unique<CubicSpline>())
{
}

DistortionFunction::~DistortionFunction() = default;

void DistortionFunction::Initialize()
{
    QLT_CHECK(!mIsInitialized);
    *mSplineR = HeadsetLens().red;
    *mSplineG = HeadsetLens().green;
    *mSplineB = HeadsetLens().blue;
    mIsInitialized = true;
}

void DistortionFunction::Initialize(DistortParams& params)
{
    mSplineR->SetPoints(params.radius, params.red);
    mSplineG->SetPoints(params.radius, params.green);
    mSplineB->SetPoints(params.radius, params.blue);
    mIsInitialized = true;
    SetForAllLenses(static_cast<float>(params.offsetYMm), static_cast<float>(params.fovDeg),
                    static_cast<float>(params.widthMm));
}

float DistortionFunction::radiusForPosition(const Vec2& position, Params::Eye eye, float offsetX,
                                            float offsetY, float scaleY)
{
    QLT_CHECK(eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT);
    const float dx = eye == Params::EYE_RIGHT ? position.x() + offsetX : position.x() - offsetX;
    const float dy = (position.y() - offsetY) * scaleY;
    return std::sqrt(dx * dx + dy * dy);
}

Vec3 DistortionFunction::Distortion(const Vec2& position, Params::Eye eye, Params::Color color)
{
    QLT_CHECK(mIsInitialized);
    QLT_CHECK(eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT);
    const float r = radiusForPosition(position, eye, -LENS_CENTER_OFFSET_X, DISTORT_OFFSET_Y,
                                      1.0f / Params::EYE_ASPECT_RATIO);
    const float depth = r > LENS_EDGE_RADIUS ? OUTSIDE_DEPTH : 0.0f;
    const CubicSpline* splines[] = {mSplineR.get(), mSplineG.get(), mSplineB.get()};
    const bool isColor = color >= Params::COLOR_RED && color <= Params::COLOR_BLUE;
    QLT_CHECK_TEXT(isColor, L"false");
    if (!isColor)
    {
        return Vec3();
    }
    const auto s = static_cast<float>((*splines[color])(static_cast<double>(r)));
    const float k = s / DISTORT_SCALE;
    const float centerX = eye == Params::EYE_RIGHT ? LENS_CENTER_OFFSET_X : -LENS_CENTER_OFFSET_X;
    const float x = (position.x() - centerX) * k;
    const float y = (position.y() - DISTORT_OFFSET_Y) * k;
    const float u = MathUtil::percentage(-1.0f, 1.0f, MathUtil::clamp(x, -1.0f, 1.0f));
    const float v = MathUtil::percentage(-1.0f, 1.0f, MathUtil::clamp(y, -1.0f, 1.0f));
    return Vec3(u, v, depth);
}

} // namespace qlt
