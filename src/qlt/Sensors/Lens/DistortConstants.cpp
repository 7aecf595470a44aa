#include "Sensors/Lens/DistortConstants.h"

#include <qlt/Math/MathUtil.h>

#include "Math/FloatMath.h"

namespace qlt::DistortConstants
{
namespace
{

/// Half of the panel's width in millimetres.
constexpr float HALF_WIDTH_MM = 62.72f;

} // namespace

const float EYE_FOV_RAD = MathUtil::Deg2Rad(126.5f);
const float HMD_SCREEN_SIZE_VERT = 125.44f / (2560.0f / 1440.0f);

float DISTORT_OFFSET_Y_MM = 0.0f;
float DISTORT_OFFSET_Y = 0.0f;
float DISTORT_FOV_RAD = MathUtil::Deg2Rad(126.02f);
float DISTORT_WIDTH_MM = 64.644f;
float DISTORT_WIDTH_RATIO = 64.644f / HALF_WIDTH_MM;
// SetForAllLenses computes these from the values above. They are written out here, because a
// tangent is not a constant expression.
float DISTORT_FOV_RATIO = 0x1.fab544p-1f;
float DISTORT_SCALE = (64.644f / HALF_WIDTH_MM) / 0x1.fab544p-1f;

void SetForAllLenses(float offsetYMm, float fovDeg, float widthMm)
{
    DISTORT_OFFSET_Y_MM = offsetYMm;
    DISTORT_OFFSET_Y = DISTORT_OFFSET_Y_MM * 2.0f / HMD_SCREEN_SIZE_VERT;
    DISTORT_FOV_RAD = MathUtil::Deg2Rad(fovDeg);
    DISTORT_WIDTH_MM = widthMm;
    DISTORT_FOV_RATIO = Tan(DISTORT_FOV_RAD * 0.5f) / Tan(EYE_FOV_RAD * 0.5f);
    DISTORT_WIDTH_RATIO = DISTORT_WIDTH_MM / HALF_WIDTH_MM;
    DISTORT_SCALE = DISTORT_WIDTH_RATIO / DISTORT_FOV_RATIO;
}

} // namespace qlt::DistortConstants
