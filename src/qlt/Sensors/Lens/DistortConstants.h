// The lens constants that all DistortionFunction objects of the process share. They are initialised
// at compile time. SetForAllLenses rewrites them without a lock, so no thread may evaluate a
// distortion meanwhile.
#pragma once

namespace qlt::DistortConstants
{

/// The horizontal field of view of one eye in radians, and the height of the panel in millimetres.
/// They never change.
extern const float EYE_FOV_RAD;
extern const float HMD_SCREEN_SIZE_VERT;

/// The lens centre lies LENS_CENTER_OFFSET_X outwards from the middle of the eye's viewport. A
/// point farther than LENS_EDGE_RADIUS from the lens centre is outside the lens and has the depth
/// OUTSIDE_DEPTH. Distances are in viewport units. These constants never change.
constexpr float LENS_CENTER_OFFSET_X = 0x1.978272p-7f;
constexpr float LENS_EDGE_RADIUS = 0x1.fdb6dap-1f;
constexpr float OUTSIDE_DEPTH = -1.1f;

/// The vertical offset of the lens centre from the middle of the eye's viewport, in millimetres and
/// in viewport units (the viewport spans -1 .. 1).
extern float DISTORT_OFFSET_Y_MM;
extern float DISTORT_OFFSET_Y;

/// The conditions of the measurement: the field of view of the tables in radians, and the panel
/// width of their scale in millimetres.
extern float DISTORT_FOV_RAD;
extern float DISTORT_WIDTH_MM;

/// These values result from the others: the width relative to half the panel's width, the field of
/// view relative to the eye's, and the quotient of both.
extern float DISTORT_WIDTH_RATIO;
extern float DISTORT_FOV_RATIO;
extern float DISTORT_SCALE;

/// Sets all constants that can change, for every lens of the process.
void SetForAllLenses(float offsetYMm, float fovDeg, float widthMm);

} // namespace qlt::DistortConstants
