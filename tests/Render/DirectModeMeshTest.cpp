#include "Render/DirectModeMesh.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/PlainLens.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(DirectModeMeshTest, EachEyesMeshEqualsThePlainOneToTheLastBit)
{
    AssertionRecorder assertions;
    for (const auto eye : {qlt::Params::EYE_LEFT, qlt::Params::EYE_RIGHT})
    {
        const plain::DirectModeMesh expected =
            plain::BuildDirectModeMesh(plain::HeadsetLens(), eye);
        const qlt::DirectModeMesh mesh = qlt::BuildDirectModeMesh(eye);
        ASSERT_EQ(sizeof mesh.vertices[0] * mesh.vertices.size(),
                  sizeof(float) * expected.vertices.size());
        EXPECT_EQ(std::memcmp(mesh.vertices.data(), expected.vertices.data(),
                              sizeof(float) * expected.vertices.size()),
                  0);
        EXPECT_EQ(mesh.indices, expected.indices);
    }
    EXPECT_TRUE(assertions.Take().empty());
}
