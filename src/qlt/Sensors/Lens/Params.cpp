#include <qlt/Sensors/Params.h>

namespace qlt
{
namespace
{

/// The ends of the accelerometer's calibrated range.
constexpr Vec3 ACCELEROMETER_MAX(0.899628f, 0.891145f, 0.83435f);
constexpr Vec3 ACCELEROMETER_MIN(-0.911915f, -0.933461f, -0.999473f);

constexpr float ASPECT_RATIO = 2560.0f / 1440.0f;

constexpr float Middle(float max, float min) { return 0.5f * (max + min); }

constexpr float HalfRange(float max, float min) { return 0.5f * (max - min); }

} // namespace

const char* const Params::HMD_NAME = "Quelta Orbel Ixo";

const int Params::HMD_RESOLUTION_X = 2560;
const int Params::HMD_RESOLUTION_Y = 1440;
const float Params::HMD_SCREEN_SIZE_HORZ = 125.44f;
const float Params::HMD_ASPECT_RATIO = ASPECT_RATIO;

const float Params::EYE_FOV_DEG = 126.5f;
// The value is Rad2Deg(2 * atan(tan(EYE_FOV_RAD / 2) / EYE_ASPECT_RATIO)), which is not a constant
// expression. It is larger than EYE_FOV_DEG, because an eye's half of the panel is taller than
// wide.
const float Params::EYE_FOV_Y_DEG = 0x1.0776a4p+7f;
const float Params::EYE_ASPECT_RATIO = ASPECT_RATIO * 0.5f;
const bool Params::EYE_DISTORT = true;
const float Params::EYE_STRETCH = 3.0f;
const int Params::EYE_RESOLUTION = 1024;

const float Params::USER_IPD_M = 0.0625f;
const float Params::USER_NECK_EYE_V_M = 0.075f;
const float Params::USER_NECK_EYE_H_M = 0.0805f;

const Vec3 Params::GYROSCOPE_POSITION_OFFSET(-0.001826629f, -0.005334f, -0.00497886f);
const Vec3 Params::GYROSCOPE_MAGNITUDE_OFFSET(1.0f, 1.0f, 1.0f);
const Vec3
    Params::ACCELEROMETER_POSITION_OFFSET(Middle(ACCELEROMETER_MAX.x(), ACCELEROMETER_MIN.x()),
                                          Middle(ACCELEROMETER_MAX.y(), ACCELEROMETER_MIN.y()),
                                          Middle(ACCELEROMETER_MAX.z(), ACCELEROMETER_MIN.z()));
const Vec3
    Params::ACCELEROMETER_MAGNITUDE_OFFSET(HalfRange(ACCELEROMETER_MAX.x(), ACCELEROMETER_MIN.x()),
                                           HalfRange(ACCELEROMETER_MAX.y(), ACCELEROMETER_MIN.y()),
                                           HalfRange(ACCELEROMETER_MAX.z(), ACCELEROMETER_MIN.z()));
const Vec3 Params::MAGNETOMETER_POSITION_OFFSET(0.0f, 0.0f, 0.0f);
const Vec3 Params::MAGNETOMETER_MAGNITUDE_OFFSET(1.0f, 1.0f, 1.0f);

} // namespace qlt
