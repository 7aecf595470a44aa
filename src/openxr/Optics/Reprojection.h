// Where a layer's picture is as seen from where the head is now: one homography for each eye, from
// tangents to picture coordinates.
#pragma once

#include "State/Layers.h"

#include <array>

namespace qltxr
{

/// Row by row. With (a, b, c) = matrix * (tangent x, tangent y, -1), the place in the picture is
/// (a / c, b / c), 0 to 1 from its lower left corner, and what has c <= 0 shows nothing.
using Homography = std::array<float, 9>;

/// The head at the moment of display, and who wears it.
struct Viewer
{
    Rigid head;
    Person person;
};

/// False when the layer is not to be seen by the eye.
bool PictureOf(const Layer& layer, std::uint32_t eye, const Viewer& viewer, Homography& homography);

/// The place of an eye in VIEW.
Rigid EyeInHead(std::uint32_t eye, const Person& person);

} // namespace qltxr
