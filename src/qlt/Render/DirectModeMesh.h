// The mesh with which the direct-mode renderer draws one eye. It covers the eye's half of the
// display and holds the source coordinates of the three colours.
#pragma once

#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <cstdint>
#include <vector>

namespace qlt
{

/// A vertex in the layout that the vertex shader reads.
struct DirectModeVertex
{
    Vec3 position; // the coordinates are those of clip space, y up
    Vec2 red;      // the coordinates are those of the eye's image, 0 to 1, v down
    Vec2 green;
    Vec2 blue;
    float weight; // 1 inside the lens; 0 outside, where the picture is black
};
static_assert(sizeof(DirectModeVertex) == 40, "the input layout's stride");

struct DirectModeMesh
{
    static constexpr int SIZE = 256; // vertices in a row, and rows in the mesh

    std::vector<DirectModeVertex> vertices; // row after row, from the top
    std::vector<std::uint32_t> indices;     // three for each triangle
};

DirectModeMesh BuildDirectModeMesh(Params::Eye eye);

} // namespace qlt
