// MeshOfBothEyes compares the lens mesh of both eyes, 256 x 256 cells, to the same mesh computed
// point by point, both in fresh arrays. "ratio" must be at most 0.30. FirstMesh compares a first
// build to the allocation and the touching of its memory alone. "ratio" must be at most 1.5.
#include "Paired.h"

#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "fakes/PlainLens.h"

#include <cstring>
#include <memory>
#include <optional>

namespace
{

constexpr int RESOLUTION = 256;

template <typename Element>
bool Equal(const std::vector<Element>& plain, const void* ours)
{
    return std::memcmp(plain.data(), ours, plain.size() * sizeof(Element)) == 0;
}

bool Equal(const plain::Mesh& plain, const qlt::DistortionMeshBuilder& ours)
{
    return Equal(plain.position, ours.GetPosition()) &&
           Equal(plain.texture[0], ours.GetTextureR()) &&
           Equal(plain.texture[1], ours.GetTextureG()) &&
           Equal(plain.texture[2], ours.GetTextureB()) && Equal(plain.indices, ours.GetIndices());
}

void MeshOfBothEyes(benchmark::State& state)
{
    std::optional<qlt::DistortionMeshBuilder> left;
    std::optional<qlt::DistortionMeshBuilder> right;
    plain::Mesh plainLeft;
    plain::Mesh plainRight;
    const auto ours = [&]
    {
        // A builder keeps the arrays of all its builds, so each round uses new builders.
        left.emplace(RESOLUTION, RESOLUTION, qlt::Params::EYE_LEFT, true);
        right.emplace(RESOLUTION, RESOLUTION, qlt::Params::EYE_RIGHT, true);
        left->BuildMesh();
        right->BuildMesh();
    };
    const auto theirs = [&]
    {
        const plain::Lens lens = plain::HeadsetLens();
        plainLeft = plain::Mesh();
        plainRight = plain::Mesh();
        plain::BuildMesh(lens, RESOLUTION, RESOLUTION, 0, true, plainLeft);
        plain::BuildMesh(lens, RESOLUTION, RESOLUTION, 1, true, plainRight);
    };
    ours();
    theirs();
    RunPaired(
        state, 2 * RESOLUTION * RESOLUTION, [&] { return Seconds(ours); },
        [&] { return Seconds(theirs); });
    if (!Equal(plainLeft, *left) || !Equal(plainRight, *right))
    {
        state.SkipWithError("the meshes differ");
    }
}
BENCHMARK(MeshOfBothEyes)->UseManualTime()->Iterations(101);

// All blocks stay allocated until the end. A block that is freed and allocated again would cause no
// page faults.
void FirstMesh(benchmark::State& state)
{
    using Block = std::unique_ptr<char[]>;
    constexpr std::size_t PAGE = 4096;
    constexpr std::size_t VERTICES = (RESOLUTION + 1) * (RESOLUTION + 1);
    constexpr std::size_t TEXTURE = VERTICES * 8;
    constexpr std::size_t INDICES = 24 * RESOLUTION * RESOLUTION;
    std::vector<std::unique_ptr<qlt::DistortionMeshBuilder>> meshes;
    std::vector<Block> blocks;
    const auto ours = [&]
    {
        meshes.push_back(std::make_unique<qlt::DistortionMeshBuilder>(RESOLUTION, RESOLUTION,
                                                                      qlt::Params::EYE_LEFT, true));
        meshes.back()->BuildMesh();
    };
    const auto touch = [&]
    {
        for (const std::size_t size : {VERTICES * 12, TEXTURE, TEXTURE, TEXTURE, INDICES})
        {
            blocks.push_back(Block(new char[size]));
            for (std::size_t i = 0; i < size; i += PAGE)
            {
                blocks.back()[i] = 1;
            }
            benchmark::ClobberMemory();
        }
    };
    RunPaired(
        state, RESOLUTION * RESOLUTION, [&] { return Seconds(ours); },
        [&] { return Seconds(touch); });
}
BENCHMARK(FirstMesh)->UseManualTime()->Iterations(41);

} // namespace
