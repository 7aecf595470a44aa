// The lens constants that every DistortionFunction of the process shares. They have their defaults
// from before the program's first line and may be rewritten, without a lock, while nobody evaluates
// a distortion.
#pragma once

namespace qlt::DistortConstants
{

/// Horizontal field of view of one eye, radians, and the panel's height, millimetres. Fixed.
extern const float EYE_FOV_RAD;
extern const float HMD_SCREEN_SIZE_VERT;

/// How far the lens centre lies outwards from the middle of the eye's viewport, in viewport units;
/// the distance from it beyond which a point is outside the lens; the depth that says so. Fixed.
constexpr float LENS_CENTER_OFFSET_X = 0x1.978272p-7f;
constexpr float LENS_EDGE_RADIUS = 0x1.fdb6dap-1f;
constexpr float OUTSIDE_DEPTH = -1.1f;

/// Vertical offset of the lens centre from the middle of the eye's viewport: millimetres, and in
/// viewport units (the viewport spans -1 .. 1).
extern float DISTORT_OFFSET_Y_MM;
extern float DISTORT_OFFSET_Y;

/// The field of view for which the tables were measured, radians, and the panel width against which
/// they are scaled, millimetres.
extern float DISTORT_FOV_RAD;
extern float DISTORT_WIDTH_MM;

/// What follows from them: half the panel's width and the eye's field of view are 1.
extern float DISTORT_WIDTH_RATIO;
extern float DISTORT_FOV_RATIO;
extern float DISTORT_SCALE;

/// Rewrites all of the variable constants; every lens of the process follows.
void SetForAllLenses(float offsetYMm, float fovDeg, float widthMm);

} // namespace qlt::DistortConstants
