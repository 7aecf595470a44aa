#include "Sensors/SceneDescriptor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{

/// A descriptor of `objects` entries in memory that claims to have `claimed`. Every 4 bytes after
/// the count hold their offset as a float, so that a wrong offset shows.
std::vector<unsigned char> Descriptor(std::size_t objects, std::uint64_t claimed)
{
    std::vector<unsigned char> bytes(32 + 40 * objects);
    for (std::size_t at = 0; at < bytes.size(); at += 4)
    {
        const auto value = static_cast<float>(at);
        std::memcpy(&bytes[at], &value, 4);
    }
    std::memcpy(&bytes[24], &claimed, 8);
    return bytes;
}

} // namespace

TEST(SceneDescriptorTest, EachObjectIsReadAtItsPlace)
{
    const auto bytes = Descriptor(3, 3);
    for (std::uint64_t i = 0; i < 3; ++i)
    {
        const auto pose = qlt::ReadObjectPose(bytes.data(), i);
        ASSERT_TRUE(pose.has_value());
        const auto start = static_cast<float>(32 + 40 * i);
        EXPECT_EQ(pose->position.x(), start + 8);
        EXPECT_EQ(pose->position.y(), start + 12);
        EXPECT_EQ(pose->position.z(), start + 16);
        EXPECT_EQ(pose->orientation.w(), start + 20);
        EXPECT_EQ(pose->orientation.x(), start + 24);
        EXPECT_EQ(pose->orientation.y(), start + 28);
        EXPECT_EQ(pose->orientation.z(), start + 32);
        EXPECT_EQ(pose->confidence, start + 36);
    }
}

TEST(SceneDescriptorTest, WhatIsNotThereIsNotRead)
{
    const auto three = Descriptor(3, 3);
    for (const std::uint64_t index :
         {3ull, 4ull, 0x0666666666666667ull, 0x8000000000000000ull, ~0ull})
    {
        EXPECT_FALSE(qlt::ReadObjectPose(three.data(), index).has_value()) << index;
    }
    EXPECT_FALSE(qlt::ReadObjectPose(Descriptor(0, 0).data(), 0).has_value());
    EXPECT_FALSE(qlt::ReadObjectPose(nullptr, 0).has_value());
}

// 40 times these indices, plus the rest, wraps around to the descriptor's own first bytes.
TEST(SceneDescriptorTest, AnAbsurdCountDoesNotWrapAround)
{
    const auto bytes = Descriptor(3, ~0ull);
    for (const std::uint64_t index : {0x0666666666666666ull, 0x0666666666666667ull, ~0ull - 1})
    {
        EXPECT_FALSE(qlt::ReadObjectPose(bytes.data(), index).has_value()) << index;
    }
    EXPECT_TRUE(qlt::ReadObjectPose(bytes.data(), 2).has_value());
}
