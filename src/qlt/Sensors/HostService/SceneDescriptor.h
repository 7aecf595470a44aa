// The scene descriptor of the host service: the poses of the tracked objects, in memory that the
// service lends. The layout is little-endian, with offsets in bytes:
//   24         u64 object count
//   32 + 40 i  8 bytes not read, 3 x f32 position, 4 x f32 orientation w x y z, f32 confidence
//
// The reader trusts the count that the service wrote. It is the only place that checks an index
// against the count.
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

/// The pose of object `index`. Nothing when `index` is not below the count and when `descriptor` is
/// null.
std::optional<ObjectPose> ReadObjectPose(const void* descriptor, std::uint64_t index);

} // namespace qlt
