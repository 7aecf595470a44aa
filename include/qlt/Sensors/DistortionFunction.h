// The lens model of the headset: where a rendered eye image is to be sampled so that the picture
// looks right through the lens. Radial, with a measured table for each colour channel.
//
// An initialised object may be asked from several threads. Initialize(DistortParams&) also rewrites
// constants that all objects of the process share, without a lock: never while any thread evaluates
// a distortion.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <memory>
#include <vector>

namespace qlt
{

class CubicSpline;

/// A measured lens: at each radius (distance from the lens centre in units of half the eye
/// viewport's width, strictly increasing) the scale factor of each channel. The four arrays have
/// equal lengths of at least 2.
struct DistortParams
{
    std::vector<double> radius;
    std::vector<double> red;
    std::vector<double> green;
    std::vector<double> blue;
    double offsetYMm = 0.0; // the lens centre above the middle of the viewport
    double fovDeg = 0.0;    // for which the tables were measured
    double widthMm = 0.0;   // of the panel, against which the tables are scaled
};

class QLT_API DistortionFunction
{
public:
    /// Without tables: call one of the Initialize first.
    DistortionFunction();
    ~DistortionFunction();
    DistortionFunction(const DistortionFunction&) = delete;
    DistortionFunction& operator=(const DistortionFunction&) = delete;

    /// The tables of the Quelta Orbel Ixo. Asserts that this is the first call; leaves the shared
    /// constants as they are.
    void Initialize();

    /// Other tables, as often as wanted. deliberate: also sets offset, field of view and width for
    /// every DistortionFunction of the process.
    void Initialize(DistortParams& params);

    /// For a point of the eye's viewport, x and y in [-1, 1], x right, y up: the texture coordinate
    /// (u, v) in [0, 1] and the depth, 0 inside the lens and -1.1 outside. Asserts an initialised
    /// object and a valid eye (any but the right one counts as left); an invalid colour asserts and
    /// gives zeros.
    Vec3 Distortion(const Vec2& position, Params::Eye eye, Params::Color color);

private:
    float radiusForPosition(const Vec2& position, Params::Eye eye, float offsetX, float offsetY,
                            float scaleY);

    bool mIsInitialized;
    std::unique_ptr<CubicSpline> mSplineR;
    std::unique_ptr<CubicSpline> mSplineG;
    std::unique_ptr<CubicSpline> mSplineB;
};

} // namespace qlt
