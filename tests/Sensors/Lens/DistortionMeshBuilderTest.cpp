#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "Sensors/Lens/DistortConstants.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"
#include "fakes/PlainLens.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>

namespace
{

using qlt::DistortionMeshBuilder;
using qlt::Params;
using Reports = std::vector<std::string>;

/// The current arrays of a mesh. The pointers stay valid when the mesh is built again.
struct Arrays
{
    explicit Arrays(const DistortionMeshBuilder& mesh)
        : position(mesh.GetPosition())
        , textures{mesh.GetTextureR(), mesh.GetTextureG(), mesh.GetTextureB()}
        , indices(mesh.GetIndices())
    {
    }

    bool HoldTheBitsOf(const plain::Mesh& expected) const
    {
        const auto same = [](const void* array, const auto& values)
        { return std::memcmp(array, values.data(), values.size() * sizeof values[0]) == 0; };
        return same(position, expected.position) && same(textures[0], expected.texture[0]) &&
               same(textures[1], expected.texture[1]) && same(textures[2], expected.texture[2]) &&
               same(indices, expected.indices);
    }

    const qlt::Vec3* position;
    const qlt::Vec2* textures[3];
    const int* indices;
};

} // namespace

TEST(DistortionMeshBuilderTest, EveryGridEqualsThePlainMeshToTheLastBit)
{
    const plain::Lens lens = plain::HeadsetLens();
    for (const auto& [resX, resY] :
         {std::pair(1, 1), {2, 2}, {7, 5}, {41, 47}, {64, 64}, {256, 256}})
    {
        for (const bool list : {true, false})
        {
            for (const auto eye : {Params::EYE_LEFT, Params::EYE_RIGHT})
            {
                plain::Mesh expected;
                plain::BuildMesh(lens, resX, resY, eye, list, expected);
                DistortionMeshBuilder mesh(resX, resY, eye, list);
                mesh.BuildMesh();
                EXPECT_EQ(mesh.GetNumVertices(), (resX + 1) * (resY + 1));
                EXPECT_EQ(mesh.GetNumIndices(), static_cast<int>(expected.indices.size()));
                EXPECT_TRUE(Arrays(mesh).HoldTheBitsOf(expected)) << resX << " " << list << eye;
            }
        }
    }
}

// With these offsets no two rows are mirrored. The radii of the rows pass every knot and both ends
// of the tables. An engine may still draw from the arrays of the first build.
TEST(DistortionMeshBuilderTest, ASecondBuildFollowsTheSharedConstantsInFreshArrays)
{
    using namespace qlt::DistortConstants;
    for (const float offsetMm : {0.0f, 7.056f, -35.28f, 70.56f})
    {
        plain::Lens lens = plain::HeadsetLens();
        plain::Mesh expected;
        plain::BuildMesh(lens, 33, 21, Params::EYE_LEFT, true, expected);
        DistortionMeshBuilder mesh(33, 21, Params::EYE_LEFT, true);
        mesh.BuildMesh();
        const Arrays before(mesh);
        SetForAllLenses(offsetMm, 100.0f, 60.0f);
        lens.offsetY = DISTORT_OFFSET_Y;
        lens.scale = DISTORT_SCALE;
        mesh.BuildMesh();
        mesh.BuildMesh();
        EXPECT_TRUE(before.HoldTheBitsOf(expected));
        plain::BuildMesh(lens, 33, 21, Params::EYE_LEFT, true, expected);
        EXPECT_TRUE(Arrays(mesh).HoldTheBitsOf(expected)) << offsetMm;
        SetForAllLenses(0.0f, 126.02f, 64.644f);
    }
}

TEST(DistortionMeshBuilderTest, AnInvalidEyeIsReportedOnceABuildAndCountsAsLeft)
{
    AssertionRecorder assertions;
    plain::Mesh left;
    plain::BuildMesh(plain::HeadsetLens(), 7, 5, Params::EYE_LEFT, true, left);
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
        EXPECT_TRUE(Arrays(mesh).HoldTheBitsOf(left));
    }
}

TEST(DistortionMeshBuilderTest, ResolutionsBelowOneAreReportedAndSurvived)
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
