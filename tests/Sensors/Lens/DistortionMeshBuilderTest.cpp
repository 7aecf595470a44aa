#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "Sensors/Lens/DistortConstants.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"
#include "fakes/Hash.h"
#include "fakes/PlainLens.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace
{

using qlt::DistortionMeshBuilder;
using qlt::Params;
using Reports = std::vector<std::string>;

using Arrays =
    std::tuple<const qlt::Vec3*, const qlt::Vec2*, const qlt::Vec2*, const qlt::Vec2*, const int*>;

Arrays ArraysOf(const DistortionMeshBuilder& mesh)
{
    return {mesh.GetPosition(), mesh.GetTextureR(), mesh.GetTextureG(), mesh.GetTextureB(),
            mesh.GetIndices()};
}

/// Of these arrays, as large as those that the mesh has now.
std::uint64_t HashOf(const Arrays& arrays, const DistortionMeshBuilder& mesh)
{
    const auto n = static_cast<std::size_t>(mesh.GetNumVertices());
    const auto& [position, red, green, blue, indices] = arrays;
    return Hash(std::pair(position, n), std::pair(red, n), std::pair(green, n), std::pair(blue, n),
                std::pair(indices, static_cast<std::size_t>(mesh.GetNumIndices())));
}

std::uint64_t HashOf(const DistortionMeshBuilder& mesh) { return HashOf(ArraysOf(mesh), mesh); }

std::uint64_t HashOf(const plain::Mesh& mesh)
{
    const auto all = [](const auto& values) { return std::pair(values.data(), values.size()); };
    return Hash(all(mesh.position), all(mesh.texture[0]), all(mesh.texture[1]),
                all(mesh.texture[2]), all(mesh.indices));
}

std::vector<int> Indices(const DistortionMeshBuilder& mesh)
{
    return {mesh.GetIndices(), mesh.GetIndices() + mesh.GetNumIndices()};
}

} // namespace

// What the plain code in fakes/PlainLens.h makes of the headset's tables, on every system.
TEST(DistortionMeshBuilderTest, EveryGridHasItsBits)
{
    const struct
    {
        int resX;
        int resY;
        std::uint64_t hashes[4]; // left list, left strip, right list, right strip
    } rows[] = {
        {1, 1, {0x3D1AD518474F5496, 0x85A21F996965F5F5, 0x3D1AD518474F5496, 0x85A21F996965F5F5}},
        {2, 2, {0x8E03C118F9B82F2D, 0xEB7D70210346F089, 0x569B17939F5FEEC0, 0x1581E1665793A084}},
        {7, 5, {0xCD5C4258CC67AB7A, 0x4C6F65538BA0F315, 0xA6F1CDAA157F4923, 0x94FDC30C07C465AC}},
        {41, 47, {0x5EC250F855B79F28, 0x599B5BF2F0472586, 0xF93F1703F1EBAB00, 0x2C8141B13982D74E}},
        {64, 64, {0xAB1041632D59E37D, 0xFB73BE078FE24FCD, 0x38FF0F83BCB10ECF, 0x399AACC9469CBD7F}},
        {256,
         256,
         {0xFF4B289B543976E9, 0xCA9CEA4E36F41B18, 0xD0B4898AD7413B1A, 0x48543512530F0663}},
    };
    const plain::Lens lens = plain::HeadsetLens();
    for (const auto& row : rows)
    {
        for (int i = 0; i < 4; ++i)
        {
            const bool list = i % 2 == 0;
            plain::Mesh plainMesh;
            plain::BuildMesh(lens, row.resX, row.resY, i / 2, list, plainMesh);
            EXPECT_EQ(HashOf(plainMesh), row.hashes[i]) << row.resX << " " << i;
            DistortionMeshBuilder mesh(row.resX, row.resY, static_cast<Params::Eye>(i / 2), list);
            mesh.BuildMesh();
            EXPECT_EQ(HashOf(mesh), row.hashes[i]) << row.resX << " " << i;
        }
    }
}

TEST(DistortionMeshBuilderTest, SmallGridsHaveTheirIndices)
{
    DistortionMeshBuilder list(1, 1, Params::EYE_LEFT, true);
    DistortionMeshBuilder strip(1, 1, Params::EYE_LEFT, false);
    DistortionMeshBuilder joined(2, 2, Params::EYE_RIGHT, false);
    EXPECT_EQ(list.GetNumVertices(), 0);
    EXPECT_EQ(list.GetPosition(), nullptr);
    list.BuildMesh();
    strip.BuildMesh();
    joined.BuildMesh();
    EXPECT_EQ(list.GetNumVertices(), 4);
    EXPECT_EQ(Indices(list), (std::vector<int>{0, 2, 1, 2, 1, 3}));
    EXPECT_EQ(Indices(strip), (std::vector<int>{0, 2, 1, 3}));
    EXPECT_EQ(Indices(joined), (std::vector<int>{0, 3, 1, 4, 2, 5, 5, 3, 3, 6, 4, 7, 5, 8}));
    for (int i = 0; i < 4; ++i)
    {
        const qlt::Vec3 corner(i % 2 == 0 ? -1.0f : 1.0f, i < 2 ? -1.0f : 1.0f, -1.1f);
        EXPECT_EQ(Bits(list.GetPosition()[i]), Bits(corner));
    }
}

// Not only the tables count: the shared constants do, where no two rows face each other any more
// and where the rows' radii pass every knot and both ends. An engine may still draw from the mesh
// of before.
TEST(DistortionMeshBuilderTest, ASecondBuildFollowsTheSharedConstantsInFreshArrays)
{
    using namespace qlt::DistortConstants;
    plain::Lens lens = plain::HeadsetLens();
    for (const float offsetMm : {0.0f, 7.056f, -35.28f, 70.56f})
    {
        DistortionMeshBuilder mesh(33, 21, Params::EYE_LEFT, true);
        mesh.BuildMesh();
        const Arrays before = ArraysOf(mesh);
        const std::uint64_t hashBefore = HashOf(mesh);
        SetForAllLenses(offsetMm, 100.0f, 60.0f);
        lens.offsetY = DISTORT_OFFSET_Y;
        lens.scale = DISTORT_SCALE;
        mesh.BuildMesh();
        mesh.BuildMesh();
        EXPECT_EQ(HashOf(before, mesh), hashBefore);
        plain::Mesh expected;
        plain::BuildMesh(lens, 33, 21, 0, true, expected);
        EXPECT_EQ(HashOf(mesh), HashOf(expected)) << offsetMm;
        SetForAllLenses(0.0f, 126.02f, 64.644f);
    }
}

TEST(DistortionMeshBuilderTest, AnInvalidEyeIsReportedOnceABuildAndCountsAsLeft)
{
    AssertionRecorder assertions;
    DistortionMeshBuilder left(7, 5, Params::EYE_LEFT, true);
    left.BuildMesh();
    EXPECT_EQ(assertions.Take(), Reports{});
    for (const int eye : {-1, 2})
    {
        DistortionMeshBuilder mesh(7, 5, static_cast<Params::Eye>(eye), true);
        for (int build = 0; build < 2; ++build)
        {
            mesh.BuildMesh();
            EXPECT_EQ(
                assertions.TakeTexts(),
                Reports{"eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT|Sensors/Params"});
        }
        EXPECT_EQ(HashOf(mesh), HashOf(left));
    }
}

TEST(DistortionMeshBuilderTest, OddResolutionsAreReportedAndSurvived)
{
    const std::tuple<int, int, bool, int, int> rows[] = {
        {0, 0, true, 1, 0},   {0, 0, false, 1, 0},        {0, 3, false, 4, 10},
        {3, 0, true, 4, 0},   {-1, 5, true, 0, 0},        {5, -1, false, 0, 0},
        {-1, -1, true, 0, 0}, {-2, -2, true, 1, 24},      {-3, -3, false, 4, 4},
        {-5, 2, false, 0, 0}, {2, INT32_MIN, true, 0, 0}, {INT32_MIN, INT32_MIN, true, 0, 0},
    };
    for (const auto& [resX, resY, list, vertices, indices] : rows)
    {
        SCOPED_TRACE(std::to_string(resX) + "x" + std::to_string(resY));
        AssertionRecorder assertions;
        {
            DistortionMeshBuilder mesh(resX, resY, Params::EYE_LEFT, list);
            Reports expected = {"mResX > 0|Sensors/DistortionMeshBuilder",
                                "mResY > 0|Sensors/DistortionMeshBuilder"};
            expected.resize(resY <= 0 ? 2 : 1);
            expected.erase(expected.begin(), expected.begin() + (resX <= 0 ? 0 : 1));
            EXPECT_EQ(assertions.TakeTexts(), expected);
            mesh.BuildMesh();
            mesh.BuildMesh();
            EXPECT_EQ(mesh.GetNumVertices(), vertices);
            EXPECT_EQ(mesh.GetNumIndices(), indices);
            EXPECT_EQ(mesh.GetPosition() != nullptr, vertices != 0);
            EXPECT_EQ(mesh.GetIndices() != nullptr, vertices != 0);
            for (int i = 0; i < mesh.GetNumIndices(); ++i)
            {
                EXPECT_TRUE(mesh.GetIndices()[i] >= 0 && mesh.GetIndices()[i] < vertices);
            }
        }
        EXPECT_EQ(assertions.Take(), Reports{}); // all arrays or none
    }
}
