#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

/// The constants of the headset, of its optics and of its default user. They are initialised at
/// compile time, so any thread may read them, and so may the initialisers of static objects.
///
/// Names that end in _M are in metres and names that end in _DEG are in degrees. Sizes of the
/// screen are in millimetres.
class QLT_API Params
{
public:
    /// The two eyes. Every other value is invalid; each operation that takes an eye says how it
    /// treats an invalid one.
    enum Eye : int
    {
        EYE_BEGIN = 0,
        EYE_LEFT = 0,
        EYE_RIGHT = 1,
        EYE_COUNT = 2,
    };

    /// The colour channels. The lens was measured for each of them.
    enum Color : int
    {
        COLOR_RED = 0,
        COLOR_GREEN = 1,
        COLOR_BLUE = 2,
    };

    /// The name of the headset.
    static const char* const HMD_NAME;

    /// The panel with the halves of both eyes: width and height in pixels, width in millimetres,
    /// and the ratio of width to height.
    static const int HMD_RESOLUTION_X;
    static const int HMD_RESOLUTION_Y;
    static const float HMD_SCREEN_SIZE_HORZ;
    static const float HMD_ASPECT_RATIO;

    /// One eye: the horizontal and vertical field of view in degrees, the ratio of width to height
    /// of its half of the panel, whether engines have to apply the lens pre-distortion, the stretch
    /// of the eye image, and the width of the eye image in pixels.
    static const float EYE_FOV_DEG;
    static const float EYE_FOV_Y_DEG;
    static const float EYE_ASPECT_RATIO;
    static const bool EYE_DISTORT;
    static const float EYE_STRETCH;
    static const int EYE_RESOLUTION;

    /// The default user in metres: the interpupillary distance, and the upward and the forward
    /// distance from the neck to the eyes.
    static const float USER_IPD_M;
    static const float USER_NECK_EYE_V_M;
    static const float USER_NECK_EYE_H_M;

    /// The calibration of the sensors for each axis of the tracker's frame, in rad/s, g and gauss.
    /// A sample becomes (sample - position offset) * magnitude offset.
    static const Vec3 GYROSCOPE_POSITION_OFFSET;
    static const Vec3 GYROSCOPE_MAGNITUDE_OFFSET;
    static const Vec3 ACCELEROMETER_POSITION_OFFSET;
    static const Vec3 ACCELEROMETER_MAGNITUDE_OFFSET;
    static const Vec3 MAGNETOMETER_POSITION_OFFSET;
    static const Vec3 MAGNETOMETER_MAGNITUDE_OFFSET;
};

} // namespace qlt
