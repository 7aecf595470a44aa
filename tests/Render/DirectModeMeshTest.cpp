#include "Render/DirectModeMesh.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/HashOf.h"

#include <gtest/gtest.h>

// The hashes are those of a mesh that was made vertex by vertex with the plain lens. Direct mode's
// own test compares each pixel of the picture with that lens.
TEST(DirectModeMeshTest, EachEyesMeshHasItsBits)
{
    AssertionRecorder assertions;
    const std::pair<qlt::Params::Eye, std::uint64_t> eyes[] = {
        {qlt::Params::EYE_LEFT, 0xE330F1C3B993C657}, {qlt::Params::EYE_RIGHT, 0x2F04E61F31DECC3C}};
    for (const auto& [eye, hash] : eyes)
    {
        const qlt::DirectModeMesh mesh = qlt::BuildDirectModeMesh(eye);
        EXPECT_EQ(mesh.vertices.size(), 256u * 256u);
        EXPECT_EQ(sizeof mesh.vertices[0], 10 * sizeof(float));
        EXPECT_EQ(HashOf(mesh.vertices), hash);
        EXPECT_EQ(mesh.indices.size(), 6u * 255u * 255u);
        EXPECT_EQ(HashOf(mesh.indices), 0x018D23C0398681FFU);
    }
    EXPECT_TRUE(assertions.Take().empty());
}
