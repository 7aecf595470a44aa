// The lens of an eye as tangents. For each point of the panel and each colour, they give the
// direction in the eye's field of view. They also show where the lens ends.
#pragma once

#include <qlt/Sensors/Params.h>

#include <openxr/openxr.h>

#include <array>
#include <cstdint>
#include <vector>

namespace qltxr
{

/// A vertex of the mesh that is drawn over the eye's half of the panel. Tangents are those of the
/// angles to the forward direction: x to the right, y up.
struct LensVertex
{
    std::array<float, 2> position; // -1 to 1 over the eye's half of the panel
    std::array<float, 2> red;
    std::array<float, 2> green;
    std::array<float, 2> blue;
    // The position relative to the lens's centre; its length is 1 at the edge.
    std::array<float, 2> inLens;
};

struct LensMesh
{
    std::vector<LensVertex> vertices;
    std::vector<std::uint32_t> indices; // three for each triangle; the triangles face both ways
};

LensMesh BuildLensMesh(qlt::Params::Eye eye);

/// The field of view that a program must draw. It contains everything that the lens shows.
XrFovf FieldOfView(qlt::Params::Eye eye);

struct VisibilityMask
{
    std::vector<XrVector2f> vertices; // the coordinates are tangents
    std::vector<std::uint32_t> indices;
};

/// The three forms of the visibility mask. The visible area has a margin for the late
/// re-projection.
VisibilityMask HiddenMask(qlt::Params::Eye eye);
VisibilityMask VisibleMask(qlt::Params::Eye eye);
VisibilityMask EdgeLoop(qlt::Params::Eye eye);

} // namespace qltxr
