#include "State/Extensions.h"

#include <openxr/openxr_reflection.h>

#include <algorithm>

namespace qltxr
{

namespace
{

// An enumeration value of an extension is 1000000000, plus 1000 for each extension with a smaller
// number, plus an index.
constexpr std::int64_t EXTENSION_BASE = 1000000000;
constexpr std::int64_t EXTENSION_STEP = 1000;

struct Numbered
{
    const char* name;
    std::uint32_t number;
};

#define QLT_NUMBERED(name, number) {#name, number},
constexpr Numbered REGISTRY[] = {XR_LIST_EXTENSIONS(QLT_NUMBERED)};

#define QLT_VALUE(name, value) value,
constexpr std::int64_t VIEW_CONFIGURATIONS[] = {XR_LIST_ENUM_XrViewConfigurationType(QLT_VALUE)};
constexpr std::int64_t BLEND_MODES[] = {XR_LIST_ENUM_XrEnvironmentBlendMode(QLT_VALUE)};
constexpr std::int64_t REFERENCE_SPACES[] = {XR_LIST_ENUM_XrReferenceSpaceType(QLT_VALUE)};

// The last entry of each list is the upper bound of the enumeration, which is not one of its
// values.
template <std::size_t SIZE>
bool IsIn(const std::int64_t (&values)[SIZE], std::int64_t value)
{
    return std::find(values, values + SIZE - 1, value) != values + SIZE - 1;
}

bool IsInRegistry(Enumeration enumeration, std::int64_t value)
{
    switch (enumeration)
    {
    case Enumeration::ViewConfigurationType:
        return IsIn(VIEW_CONFIGURATIONS, value);
    case Enumeration::EnvironmentBlendMode:
        return IsIn(BLEND_MODES, value);
    default:
        return IsIn(REFERENCE_SPACES, value);
    }
}

} // namespace

std::uint32_t ExtensionNumber(std::string_view name)
{
    for (const Numbered& entry : REGISTRY)
    {
        if (name == entry.name)
        {
            return entry.number;
        }
    }
    return 0;
}

bool EnabledExtensions::Has(std::string_view name) const
{
    return std::find(mNames.begin(), mNames.end(), name) != mNames.end();
}

bool EnabledExtensions::Defines(std::int64_t value) const
{
    if (value < EXTENSION_BASE)
    {
        return true;
    }
    const std::int64_t number = (value - EXTENSION_BASE) / EXTENSION_STEP + 1;
    return std::any_of(mNames.begin(), mNames.end(),
                       [number](const std::string& name)
                       { return ExtensionNumber(name) == number; });
}

void RefuseValue(const EnabledExtensions& enabled, Enumeration enumeration, std::int64_t value,
                 XrResult unsupported)
{
    const bool known = IsInRegistry(enumeration, value) && enabled.Defines(value);
    throw Failure{known ? unsupported : XR_ERROR_VALIDATION_FAILURE};
}

} // namespace qltxr
