#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <memory>
#include <vector>

namespace qlt
{

class CubicSpline;

/// The tables of a measured lens: the scale factor of each colour channel at each radius. A radius
/// is the distance from the lens centre in units of half the eye viewport's width. Radii increase
/// strictly. The four arrays have the same length of at least 2.
struct DistortParams
{
    /// The radii at which the lens was measured.
    std::vector<double> radius;

    /// The scale factor of red at each radius.
    std::vector<double> red;

    /// The scale factor of green at each radius.
    std::vector<double> green;

    /// The scale factor of blue at each radius.
    std::vector<double> blue;

    /// The height of the lens centre above the middle of the viewport in millimetres.
    double offsetYMm = 0.0;

    /// The field of view in degrees for which the tables were measured.
    double fovDeg = 0.0;

    /// The width of the panel in millimetres, against which the tables are scaled.
    double widthMm = 0.0;
};

/// The lens model of the headset. It says where a rendered eye image has to be sampled so that the
/// picture looks right through the lens. The model is radial and has a measured table for each
/// colour channel.
///
/// Several threads may use an initialised object at once. Initialize(DistortParams&) also changes
/// constants that all lenses of the process share, and takes no lock: no thread may evaluate a
/// distortion meanwhile.
class QLT_API DistortionFunction
{
public:
    /// Creates a function without tables. Call one of the Initialize operations before Distortion.
    DistortionFunction();
    ~DistortionFunction();
    DistortionFunction(const DistortionFunction&) = delete;
    DistortionFunction& operator=(const DistortionFunction&) = delete;

    /// Loads the tables of the Quelta Orbel Ixo and leaves the shared constants as they are. A call
    /// on an initialised object is reported as an assertion and loads them again.
    void Initialize();

    /// Loads other tables. It may be called again. deliberate: it also sets the offset, the field
    /// of view and the width for every lens of the process, because they share these constants.
    void Initialize(DistortParams& params);

    /// Gives (u, v, depth) for a point of the eye's viewport. The eye image is sampled at the
    /// texture coordinate (u, v), each in [0, 1]. The depth is 0 inside the lens and -1.1 outside.
    /// `position` has x (right) and y (up) in [-1, 1]. An uninitialised object and an invalid eye
    /// are reported as assertions; every eye but the right one counts as left. An invalid colour is
    /// reported as an assertion and gives zeros.
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
