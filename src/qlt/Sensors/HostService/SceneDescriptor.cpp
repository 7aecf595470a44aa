#include "Sensors/HostService/SceneDescriptor.h"

#include <cstddef>
#include <cstring>

namespace qlt
{
namespace
{

constexpr std::size_t COUNT_OFFSET = 24;
constexpr std::size_t OBJECTS_OFFSET = 32;
constexpr std::size_t OBJECT_SIZE = 40;
constexpr std::size_t POSE_OFFSET = 8; // the offset of the pose in an object

/// From this index on, the offset of an object would not fit into an address.
constexpr std::uint64_t MAX_OBJECTS = (PTRDIFF_MAX - OBJECTS_OFFSET) / OBJECT_SIZE;

} // namespace

std::optional<ObjectPose> ReadObjectPose(const void* descriptor, std::uint64_t index)
{
    if (descriptor == nullptr)
    {
        return std::nullopt;
    }
    const auto* bytes = static_cast<const unsigned char*>(descriptor);
    std::uint64_t count = 0;
    std::memcpy(&count, bytes + COUNT_OFFSET, sizeof count);
    if (index >= count || index >= MAX_OBJECTS)
    {
        return std::nullopt;
    }
    float f[8];
    std::memcpy(f, bytes + OBJECTS_OFFSET + OBJECT_SIZE * index + POSE_OFFSET, sizeof f);
    return ObjectPose{Vec3(f[0], f[1], f[2]), Quaternion(f[3], f[4], f[5], f[6]), f[7]};
}

} // namespace qlt
