// Computes the place of a layer's picture for the current pose of the head. Each eye has one
// homography, which maps tangents to picture coordinates.
#pragma once

#include "State/Layers.h"

#include <array>

namespace qltxr
{

/// A 3 x 3 matrix, row by row. With (a, b, c) = matrix * (tangent x, tangent y, -1), the place in
/// the picture is (a / c, b / c). It is 0 to 1 from the lower left corner. A point with c <= 0
/// shows nothing.
using Homography = std::array<float, 9>;

/// The pose of the head at the time of display, and the measures of the user.
struct Viewer
{
    Rigid head;
    Person person;
};

/// Computes the homography of a layer. Returns false when the eye does not see the layer.
bool PictureOf(const Layer& layer, std::uint32_t eye, const Viewer& viewer, Homography& homography);

/// The position of an eye in VIEW.
Rigid EyeInHead(std::uint32_t eye, const Person& person);

} // namespace qltxr
