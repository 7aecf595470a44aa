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
        /// The first eye of a loop.
        EYE_BEGIN = 0,

        /// The left eye.
        EYE_LEFT = 0,

        /// The right eye.
        EYE_RIGHT = 1,

        /// The number of eyes, which ends a loop.
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

    /// The width of the panel with the halves of both eyes, in pixels.
    static const int HMD_RESOLUTION_X;

    /// The height of the panel in pixels.
    static const int HMD_RESOLUTION_Y;

    /// The width of the panel in millimetres.
    static const float HMD_SCREEN_SIZE_HORZ;

    /// The ratio of width to height of the panel.
    static const float HMD_ASPECT_RATIO;

    /// The horizontal field of view of one eye in degrees.
    static const float EYE_FOV_DEG;

    /// The vertical field of view of one eye in degrees. It is larger than the horizontal one,
    /// because an eye's half of the panel is taller than wide.
    static const float EYE_FOV_Y_DEG;

    /// The ratio of width to height of an eye's half of the panel.
    static const float EYE_ASPECT_RATIO;

    /// True when engines have to apply the lens pre-distortion.
    static const bool EYE_DISTORT;

    /// The stretch of the eye image over the viewport.
    static const float EYE_STRETCH;

    /// The width of the eye image in pixels.
    static const int EYE_RESOLUTION;

    /// The interpupillary distance of the default user.
    static const float USER_IPD_M;

    /// The upward distance from the neck of the default user to the eyes.
    static const float USER_NECK_EYE_V_M;

    /// The forward distance from the neck of the default user to the eyes.
    static const float USER_NECK_EYE_H_M;

    /// The zero of the gyroscope for each axis of the tracker's frame, in rad/s. A calibrated
    /// sample is (sample - position offset) * magnitude offset, component by component.
    static const Vec3 GYROSCOPE_POSITION_OFFSET;

    /// The scale of the gyroscope.
    static const Vec3 GYROSCOPE_MAGNITUDE_OFFSET;

    /// The zero of the accelerometer in g.
    static const Vec3 ACCELEROMETER_POSITION_OFFSET;

    /// The scale of the accelerometer.
    static const Vec3 ACCELEROMETER_MAGNITUDE_OFFSET;

    /// The zero of the magnetometer in gauss.
    static const Vec3 MAGNETOMETER_POSITION_OFFSET;

    /// A second scale of the gyroscope. deliberate: no factor scales the magnetometer, because this
    /// is part of the interface.
    static const Vec3 MAGNETOMETER_MAGNITUDE_OFFSET;
};

} // namespace qlt
