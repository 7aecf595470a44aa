#pragma once

namespace qltkit
{

/// Radians per degree.
constexpr double RAD_PER_DEG = 0.017453292519943295;

} // namespace qltkit
