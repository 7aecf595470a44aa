// Declares the functions that programs call. Their names are those of the registry without the
// prefix. The build makes the list from the registry's headers. The functions throw Failure.
// Programs call a wrapper around each of them, and the wrapper does not throw.
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

/// The function of a name like "xrCreateInstance" and its extension. The extension is empty for the
/// core. The function is null for a name that the runtime does not have.
struct NamedFunction
{
    PFN_xrVoidFunction function = nullptr;
    std::string_view extension;
};
NamedFunction FindFunction(std::string_view name);

} // namespace qltxr
