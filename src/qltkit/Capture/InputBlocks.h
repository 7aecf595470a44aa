#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace qltkit
{

inline constexpr std::size_t INPUT_BLOCK_SIZE = 65536;

/// Reads a file as ReadInput does, and passes it on in blocks. Every block but the last ones has
/// INPUT_BLOCK_SIZE bytes.
void ReadBlocks(const std::string& path, const std::function<void(std::string_view)>& take);

} // namespace qltkit
