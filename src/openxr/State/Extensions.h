// The extensions that the runtime offers, and those that an instance has enabled.
#pragma once

#include "State/Failure.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qltxr
{

// This extension is newer than the registry's headers on some systems.
constexpr const char* LOCAL_FLOOR_NAME = "XR_EXT_local_floor";
constexpr std::uint32_t LOCAL_FLOOR_VERSION = 1;
constexpr auto REFERENCE_SPACE_TYPE_LOCAL_FLOOR = static_cast<XrReferenceSpaceType>(1000426000);

constexpr const char* CONVERT_TIMESPEC_NAME = "XR_KHR_convert_timespec_time";

/// Returns the number of an extension in the registry, or 0 when the headers of the build do not
/// have it.
std::uint32_t ExtensionNumber(std::string_view name);

class EnabledExtensions
{
public:
    void Add(std::string_view name) { mNames.emplace_back(name); }
    bool Has(std::string_view name) const;

    /// Returns true when an enumeration value belongs to the core or to an enabled extension.
    bool Defines(std::int64_t value) const;

private:
    std::vector<std::string> mNames;
};

enum class Enumeration
{
    ViewConfigurationType,
    EnvironmentBlendMode,
    ReferenceSpaceType,
};

/// Throws `unsupported` for a value that the registry has and the instance may use, and
/// XR_ERROR_VALIDATION_FAILURE for any other.
[[noreturn]] void RefuseValue(const EnabledExtensions& enabled, Enumeration enumeration,
                              std::int64_t value, XrResult unsupported);

} // namespace qltxr
