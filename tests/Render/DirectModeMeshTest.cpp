#include "Render/DirectModeMesh.h"

#include "fakes/Hash.h"
#include "fakes/PlainLens.h"

#include <gtest/gtest.h>

#include <cstring>

// What the plain code in fakes/PlainLens.h makes of the headset's tables, on every system.
TEST(DirectModeMeshTest, BothEyesHaveTheirBits)
{
    const plain::Lens lens = plain::HeadsetLens();
    const std::uint64_t hashes[] = {0xE330F1C3B993C657, 0x2F04E61F31DECC3C};
    for (const int eye : {0, 1})
    {
        const plain::DirectModeMesh expected = plain::BuildDirectModeMesh(lens, eye);
        const qlt::DirectModeMesh mesh =
            qlt::BuildDirectModeMesh(static_cast<qlt::Params::Eye>(eye));
        ASSERT_EQ(mesh.vertices.size(), 65536u);
        EXPECT_EQ(mesh.indices.size(), 390150u);
        EXPECT_EQ(mesh.indices, expected.indices);
        EXPECT_EQ(std::memcmp(mesh.vertices.data(), expected.vertices.data(),
                              expected.vertices.size() * sizeof(float)),
                  0);
        EXPECT_EQ(Hash(std::pair(expected.vertices.data(), expected.vertices.size())), hashes[eye]);
    }
}
