// The scale factors of a lens over the distance from its centre: one spline for each colour.
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

/// The lens of the Quelta Orbel Ixo, fitted at the first call and for good. Any thread.
const LensSplines& HeadsetLens();

} // namespace qlt
