// The extensions that the runtime offers.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qltxr
{

struct OfferedExtension
{
    const char* name;
    std::uint32_t version;
};

const std::vector<OfferedExtension>& OfferedExtensions();

/// Returns true when the runtime offers this extension. The comparison is case-sensitive.
bool IsOffered(std::string_view name);

} // namespace qltxr
