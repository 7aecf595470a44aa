// Degrees, as people give them, and radians.
#pragma once

namespace qltkit
{

constexpr double RAD_PER_DEG = 0.017453292519943295;

} // namespace qltkit
