// The lens of an eye as tangents: what each point of the panel shows of the eye's field of view,
// colour by colour, and how far the lens reaches.
#pragma once

#include <qlt/Sensors/Params.h>

#include <openxr/openxr.h>

#include <array>
#include <cstdint>
#include <vector>

namespace qltxr
{

/// A vertex of the mesh that is drawn over the eye's half of the panel. A tangent is that of the
/// angle from straight ahead: x to the right, y up.
struct LensVertex
{
    std::array<float, 2> position; // -1 to 1 over the half
    std::array<float, 2> red;
    std::array<float, 2> green;
    std::array<float, 2> blue;
    std::array<float, 2> inLens; // relative to the lens's centre; its length is 1 at the edge
};

struct LensMesh
{
    std::vector<LensVertex> vertices;
    std::vector<std::uint32_t> indices; // triangles, which face both ways
};

LensMesh BuildLensMesh(qlt::Params::Eye eye);

/// What a program has to draw: everything that the lens shows.
XrFovf FieldOfView(qlt::Params::Eye eye);

struct VisibilityMask
{
    std::vector<XrVector2f> vertices; // tangents
    std::vector<std::uint32_t> indices;
};

/// The three forms of the lens's edge, widened by what late re-projection may bring into sight.
VisibilityMask HiddenMask(qlt::Params::Eye eye);
VisibilityMask VisibleMask(qlt::Params::Eye eye);
VisibilityMask EdgeLoop(qlt::Params::Eye eye);

} // namespace qltxr
