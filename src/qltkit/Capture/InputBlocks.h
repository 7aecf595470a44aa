#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace qltkit
{

inline constexpr std::size_t INPUT_BLOCK_SIZE = 65536;

/// Reads a file as ReadInput does, and passes it on in blocks. A block has INPUT_BLOCK_SIZE bytes;
/// the last ones may be shorter.
void ReadBlocks(const std::string& path, const std::function<void(std::string_view)>& take);

} // namespace qltkit
