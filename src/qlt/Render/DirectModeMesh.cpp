#include "Render/DirectModeMesh.h"

#include <qlt/Math/MathUtil.h>

#include "Sensors/Lens/DistortionRow.h"
#include "Sensors/Lens/LensSplines.h"

namespace qlt
{
namespace
{

constexpr int SIZE = DirectModeMesh::SIZE;
constexpr float DEPTH = 0.5f; // the depth of every vertex

/// SIZE evenly spaced values from `first` to `last`.
std::vector<float> Lines(float first, float last)
{
    std::vector<float> lines(SIZE);
    for (int i = 0; i < SIZE; ++i)
    {
        lines[i] = MathUtil::lerp(first, last, static_cast<float>(i) / float{SIZE - 1});
    }
    return lines;
}

std::vector<std::uint32_t> Triangles()
{
    std::vector<std::uint32_t> indices;
    indices.reserve(std::size_t{6} * (SIZE - 1) * (SIZE - 1));
    for (std::uint32_t j = 1; j < SIZE; ++j)
    {
        for (std::uint32_t i = 1; i < SIZE; ++i)
        {
            const std::uint32_t corner = SIZE * j + i;
            const std::uint32_t above = corner - SIZE;
            indices.insert(indices.end(),
                           {above - 1, above, corner, above - 1, corner, corner - 1});
        }
    }
    return indices;
}

} // namespace

DirectModeMesh BuildDirectModeMesh(Params::Eye eye)
{
    const bool isRight = eye == Params::EYE_RIGHT;
    const std::vector<float> columns = isRight ? Lines(0.0f, 1.0f) : Lines(-1.0f, 0.0f);
    const std::vector<float> lines = Lines(-1.0f, 1.0f);
    DistortionRow row(HeadsetLens(), eye, lines);
    std::vector<Vec3> place(SIZE);
    std::vector<Vec2> red(SIZE);
    std::vector<Vec2> green(SIZE);
    std::vector<Vec2> blue(SIZE);

    DirectModeMesh mesh;
    mesh.vertices.reserve(std::size_t{SIZE} * SIZE);
    for (const float y : lines)
    {
        row.MoveTo(y);
        row.GetPosition(lines, y, place.data());
        row.GetTextures(red.data(), green.data(), blue.data());
        for (std::size_t i = 0; i < SIZE; ++i)
        {
            const float weight = place[i].z() > -1.0f ? 1.0f : 0.0f;
            mesh.vertices.push_back(
                {Vec3(columns[i], -y, DEPTH), red[i], green[i], blue[i], weight});
        }
    }
    mesh.indices = Triangles();
    return mesh;
}

} // namespace qlt
