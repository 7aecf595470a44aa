// The functions that programs call, by the names of the registry without their prefix; the list is
// made of the registry's headers when this is built. They throw Failure; what programs get is a
// function around each of them that does not throw.
#pragma once

#define XR_USE_GRAPHICS_API_OPENGL
#define XR_USE_TIMESPEC
#include <ctime>
#include <generated/OpenXrFunctions.h>
#include <openxr/openxr.h>
#include <openxr/openxr_platform.h>

#include <string_view>
#include <type_traits>

namespace qltxr
{

#define QLT_XR_DECLARE(name, extension) std::remove_pointer_t<PFN_xr##name> name;
QLT_XR_FUNCTIONS(QLT_XR_DECLARE)
#undef QLT_XR_DECLARE

/// The function of a name like "xrCreateInstance", and the extension that it belongs to, which is
/// empty for the core; a null function for a name that the runtime does not have.
struct NamedFunction
{
    PFN_xrVoidFunction function = nullptr;
    std::string_view extension;
};
NamedFunction FindFunction(std::string_view name);

} // namespace qltxr
