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

/// The letters' case counts.
bool IsOffered(std::string_view name);

} // namespace qltxr
