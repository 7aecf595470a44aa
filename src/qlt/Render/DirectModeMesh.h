// The mesh of the direct-mode renderer: half of the display, with the source coordinates of the
// three colours.
#pragma once

#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <cstdint>
#include <vector>

namespace qlt
{

/// As the vertex shader reads it.
struct DirectModeVertex
{
    Vec3 position; // in clip space, y up
    Vec2 red;      // in the eye's image, 0 to 1, v down
    Vec2 green;
    Vec2 blue;
    float weight; // 1 inside the lens, 0 outside, where the picture is black
};
static_assert(sizeof(DirectModeVertex) == 40, "the input layout's stride");

struct DirectModeMesh
{
    static constexpr int SIZE = 256; // vertices a row, and rows

    std::vector<DirectModeVertex> vertices; // rows from the top
    std::vector<std::uint32_t> indices;     // triangles
};

DirectModeMesh BuildDirectModeMesh(Params::Eye eye);

} // namespace qlt
