// The only function that the library exports, and the structures through which the loader and the
// runtime negotiate. The registry's older headers do not declare these structures.
#include "Api/Functions.h"

#include <cstddef>
#include <cstdint>

namespace qltxr
{

namespace
{

enum class LoaderStructure : std::int32_t
{
    LoaderInfo = 1,
    RuntimeRequest = 3,
};

constexpr std::uint32_t STRUCTURE_VERSION = 1;
constexpr std::uint32_t INTERFACE_VERSION = 1;
constexpr XrVersion API_VERSION = XR_MAKE_VERSION(1, 0, XR_VERSION_PATCH(XR_CURRENT_API_VERSION));

struct LoaderInfo
{
    LoaderStructure structType;
    std::uint32_t structVersion;
    std::size_t structSize;
    std::uint32_t minInterfaceVersion;
    std::uint32_t maxInterfaceVersion;
    XrVersion minApiVersion;
    XrVersion maxApiVersion;
};

struct RuntimeRequest
{
    LoaderStructure structType;
    std::uint32_t structVersion;
    std::size_t structSize;
    std::uint32_t runtimeInterfaceVersion;
    XrVersion runtimeApiVersion;
    PFN_xrGetInstanceProcAddr getInstanceProcAddr;
};

static_assert(sizeof(LoaderInfo) == 40 && sizeof(RuntimeRequest) == 40, "as the loader has them");

template <typename Structure>
bool IsOf(const Structure* structure, LoaderStructure type)
{
    return structure != nullptr && structure->structType == type &&
           structure->structVersion == STRUCTURE_VERSION &&
           structure->structSize == sizeof(Structure);
}

/// The patch version does not matter. The loader offers ranges such as 1.0.0 to 1.1023.4095.
bool HasApi(const LoaderInfo& info)
{
    constexpr XrVersion LOWEST = XR_MAKE_VERSION(1, 0, 0);
    constexpr XrVersion HIGHEST = XR_MAKE_VERSION(1, 0, 0xFFFFFFFF);
    return info.minApiVersion <= HIGHEST && info.maxApiVersion >= LOWEST;
}

} // namespace

} // namespace qltxr

extern "C" __attribute__((visibility("default"))) XrResult XRAPI_CALL
xrNegotiateLoaderRuntimeInterface(const qltxr::LoaderInfo* info, qltxr::RuntimeRequest* request)
{
    using namespace qltxr;
    if (!IsOf(info, LoaderStructure::LoaderInfo) ||
        !IsOf(request, LoaderStructure::RuntimeRequest) ||
        info->minInterfaceVersion > INTERFACE_VERSION ||
        info->maxInterfaceVersion < INTERFACE_VERSION || !HasApi(*info))
    {
        return XR_ERROR_INITIALIZATION_FAILED;
    }
    request->runtimeInterfaceVersion = INTERFACE_VERSION;
    request->runtimeApiVersion = API_VERSION;
    request->getInstanceProcAddr =
        reinterpret_cast<PFN_xrGetInstanceProcAddr>(FindFunction("xrGetInstanceProcAddr").function);
    return XR_SUCCESS;
}
