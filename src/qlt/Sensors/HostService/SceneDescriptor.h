// The host service's scene descriptor: the poses of the tracked objects, in memory that the service
// lends. Little-endian:
//   24         u64 object count
//   32 + 40 i  8 bytes not read, 3 x f32 position, 4 x f32 orientation w x y z, f32 confidence
//
// The memory is the service's word for it: the count and the index are checked here, in one place.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

#include <cstdint>
#include <optional>

namespace qlt
{

struct ObjectPose
{
    Vec3 position; // metres
    Quaternion orientation;
    float confidence = 0.0f;
};

/// The pose of object `index`; nothing for an index at or past the count, or without a descriptor.
std::optional<ObjectPose> ReadObjectPose(const void* descriptor, std::uint64_t index);

} // namespace qlt
