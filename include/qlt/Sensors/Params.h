// The constants of the headset, its optics and its default user. All of them are
// constant-initialised, so that they may be read from any thread and from the initialisers of other
// static objects.
//
// Names ending in _M are metres, in _DEG degrees; screen sizes are millimetres.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

class QLT_API Params
{
public:
    /// Any other value than the two eyes is invalid; operations that take an eye say what they do
    /// with one.
    enum Eye : int
    {
        EYE_BEGIN = 0,
        EYE_LEFT = 0,
        EYE_RIGHT = 1,
        EYE_COUNT = 2,
    };

    /// The colour channels for which the lens was measured separately.
    enum Color : int
    {
        COLOR_RED = 0,
        COLOR_GREEN = 1,
        COLOR_BLUE = 2,
    };

    static const char* const HMD_NAME;

    /// The panel, both eyes together: pixels, width in millimetres, width over height.
    static const int HMD_RESOLUTION_X;
    static const int HMD_RESOLUTION_Y;
    static const float HMD_SCREEN_SIZE_HORZ;
    static const float HMD_ASPECT_RATIO;

    /// One eye: fields of view, width over height of its half of the panel, whether engines are to
    /// apply the lens pre-distortion, and how large and stretched an eye image they should render.
    static const float EYE_FOV_DEG;
    static const float EYE_FOV_Y_DEG;
    static const float EYE_ASPECT_RATIO;
    static const bool EYE_DISTORT;
    static const float EYE_STRETCH;
    static const int EYE_RESOLUTION;

    /// The default user: interpupillary distance, vertical and forward distance from neck to eyes.
    static const float USER_IPD_M;
    static const float USER_NECK_EYE_V_M;
    static const float USER_NECK_EYE_H_M;

    /// The sensors' calibration, per axis of the tracker's frame and in decoded units: rad/s, g,
    /// gauss. A sample becomes (sample - position offset) * magnitude offset.
    static const Vec3 GYROSCOPE_POSITION_OFFSET;
    static const Vec3 GYROSCOPE_MAGNITUDE_OFFSET;
    static const Vec3 ACCELEROMETER_POSITION_OFFSET;
    static const Vec3 ACCELEROMETER_MAGNITUDE_OFFSET;
    static const Vec3 MAGNETOMETER_POSITION_OFFSET;
    static const Vec3 MAGNETOMETER_MAGNITUDE_OFFSET;
};

} // namespace qlt
