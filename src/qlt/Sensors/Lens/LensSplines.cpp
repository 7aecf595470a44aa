#include "Sensors/Lens/LensSplines.h"

#include "Sensors/Lens/DistortionTables.h"

namespace qlt
{
namespace
{

CubicSpline Fit(const DistortionTables::Table& scales)
{
    using DistortionTables::RADIUS;
    CubicSpline spline;
    spline.SetPoints({RADIUS.begin(), RADIUS.end()}, {scales.begin(), scales.end()});
    return spline;
}

} // namespace

const LensSplines& HeadsetLens()
{
    // The splines are never destroyed, because static objects of an engine may build meshes until
    // the process ends.
    static const auto* const lens = new LensSplines{
        Fit(DistortionTables::RED), Fit(DistortionTables::GREEN), Fit(DistortionTables::BLUE)};
    return *lens;
}

} // namespace qlt
