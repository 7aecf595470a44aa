// The scale factors of a lens as functions of the distance from its centre, one spline for each
// colour.
#pragma once

#include "Sensors/Lens/CubicSpline.h"

namespace qlt
{

struct LensSplines
{
    CubicSpline red;
    CubicSpline green;
    CubicSpline blue;
};

/// The lens of the Quelta Orbel Ixo. The first call fits it. Any thread.
const LensSplines& HeadsetLens();

} // namespace qlt
