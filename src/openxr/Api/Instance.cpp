// The functions of an instance and of the system.
#include "Api/ExtensionList.h"
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "Api/SessionControl.h"
#include "State/ResultText.h"
#include "State/Structures.h"

#include <qlt/Sensors/Params.h>

#include <algorithm>

namespace qltxr
{

namespace
{

void RequireApiVersion(XrVersion version)
{
    Require(XR_VERSION_MAJOR(version) == 1 && XR_VERSION_MINOR(version) == 0,
            XR_ERROR_API_VERSION_UNSUPPORTED);
}

void RequireApplicationNames(const XrApplicationInfo& info)
{
    const std::string_view name = FixedText(info.applicationName, sizeof(info.applicationName));
    const std::string_view engine = FixedText(info.engineName, sizeof(info.engineName));
    Require(!name.empty() && engine.data() != nullptr, XR_ERROR_NAME_INVALID);
}

EnabledExtensions TakeExtensions(const XrInstanceCreateInfo& info)
{
    EnabledExtensions enabled;
    Require(info.enabledExtensionCount == 0 || info.enabledExtensionNames != nullptr,
            XR_ERROR_VALIDATION_FAILURE);
    for (std::uint32_t i = 0; i < info.enabledExtensionCount; ++i)
    {
        const char* name = info.enabledExtensionNames[i];
        RequirePointer(name);
        Require(IsOffered(name), XR_ERROR_EXTENSION_NOT_PRESENT);
        enabled.Add(name);
    }
    return enabled;
}

/// True for a function that programs may call without an instance.
bool IsGlobal(std::string_view name)
{
    return name == "xrEnumerateInstanceExtensionProperties" ||
           name == "xrEnumerateApiLayerProperties" || name == "xrCreateInstance";
}

bool IsAvailable(const NamedFunction& function, const Instance& instance)
{
    return function.function != nullptr &&
           (function.extension.empty() || instance.extensions.Has(function.extension));
}

} // namespace

XrResult XRAPI_CALL GetInstanceProcAddr(XrInstance handle, const char* name,
                                        PFN_xrVoidFunction* function)
{
    RequirePointer(function);
    *function = nullptr;
    RequirePointer(name);
    const NamedFunction found = FindFunction(name);
    if (handle == XR_NULL_HANDLE)
    {
        Require(IsGlobal(name), XR_ERROR_HANDLE_INVALID);
    }
    else
    {
        const Lock lock = LockRuntime();
        if (!IsAvailable(found, Get<Instance>(handle)))
        {
            return XR_ERROR_FUNCTION_UNSUPPORTED; // loaders ask for every function that exists
        }
    }
    *function = found.function;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateApiLayerProperties(std::uint32_t capacity, std::uint32_t* count,
                                                XrApiLayerProperties* properties)
{
    AnswerCount(capacity, count, properties, 0);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateInstanceExtensionProperties(const char* layer, std::uint32_t capacity,
                                                         std::uint32_t* count,
                                                         XrExtensionProperties* properties)
{
    Require(layer == nullptr, XR_ERROR_API_LAYER_NOT_PRESENT);
    const std::vector<OfferedExtension>& offered = OfferedExtensions();
    if (!AnswerCount(capacity, count, properties, offered.size()))
    {
        return XR_SUCCESS;
    }
    for (std::size_t i = 0; i < offered.size(); ++i)
    {
        RequireType(&properties[i], XR_TYPE_EXTENSION_PROPERTIES);
    }
    for (std::size_t i = 0; i < offered.size(); ++i)
    {
        WriteText(properties[i].extensionName, offered[i].name);
        properties[i].extensionVersion = offered[i].version;
    }
    return XR_SUCCESS;
}

XrResult XRAPI_CALL CreateInstance(const XrInstanceCreateInfo* info, XrInstance* handle)
{
    RequireType(info, XR_TYPE_INSTANCE_CREATE_INFO);
    RequirePointer(handle);
    Require(info->createFlags == 0, XR_ERROR_VALIDATION_FAILURE);
    RequireApiVersion(info->applicationInfo.apiVersion);
    RequireApplicationNames(info->applicationInfo);
    // deliberate: the runtime does not look at the names of API layers. The loader has put these
    // layers in front of this function, and it leaves their names in the structure.
    EnabledExtensions extensions = TakeExtensions(*info);
    const Lock lock = LockRuntime();
    Runtime& runtime = TheRuntime();
    Require(runtime.instance == nullptr, XR_ERROR_LIMIT_REACHED);
    runtime.instance = std::make_unique<Instance>(runtime.handles);
    runtime.instance->extensions = std::move(extensions);
    *handle = runtime.instance->handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroyInstance(XrInstance handle)
{
    Lock lock = LockRuntime();
    const std::unique_ptr<Session> session = TakeSession(Get<Instance>(handle));
    TheRuntime().instance.reset();
    lock.unlock(); // the session is destroyed without the lock
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetInstanceProperties(XrInstance handle, XrInstanceProperties* properties)
{
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequireType(properties, XR_TYPE_INSTANCE_PROPERTIES);
    properties->runtimeVersion =
        XR_MAKE_VERSION(QLT_VERSION_MAJOR, QLT_VERSION_MINOR, QLT_VERSION_PATCH);
    WriteText(properties->runtimeName, "Quelta");
    return XR_SUCCESS;
}

XrResult XRAPI_CALL PollEvent(XrInstance handle, XrEventDataBuffer* event)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequirePointer(event);
    if (instance.session != nullptr)
    {
        HandleWindowEvents(instance);
    }
    return instance.events.Poll(*event) ? XR_SUCCESS : XR_EVENT_UNAVAILABLE;
}

XrResult XRAPI_CALL ResultToString(XrInstance handle, XrResult value,
                                   char buffer[XR_MAX_RESULT_STRING_SIZE])
{
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequirePointer(buffer);
    WriteResultText(value, *reinterpret_cast<char(*)[XR_MAX_RESULT_STRING_SIZE]>(buffer));
    return XR_SUCCESS;
}

XrResult XRAPI_CALL StructureTypeToString(XrInstance handle, XrStructureType value,
                                          char buffer[XR_MAX_STRUCTURE_NAME_SIZE])
{
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequirePointer(buffer);
    WriteStructureText(value, *reinterpret_cast<char(*)[XR_MAX_STRUCTURE_NAME_SIZE]>(buffer));
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetSystem(XrInstance handle, const XrSystemGetInfo* info, XrSystemId* id)
{
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequireType(info, XR_TYPE_SYSTEM_GET_INFO);
    RequirePointer(id);
    Require(info->formFactor == XR_FORM_FACTOR_HEAD_MOUNTED_DISPLAY,
            XR_ERROR_FORM_FACTOR_UNSUPPORTED);
    *id = SYSTEM_ID;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetSystemProperties(XrInstance handle, XrSystemId id,
                                        XrSystemProperties* properties)
{
    constexpr std::uint32_t VENDOR_ID = 0x04B4; // the headset's identifier on the USB
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequireType(properties, XR_TYPE_SYSTEM_PROPERTIES);
    RequireSystem(id);
    properties->systemId = id;
    properties->vendorId = VENDOR_ID;
    WriteText(properties->systemName, qlt::Params::HMD_NAME);
    properties->graphicsProperties = {MAX_SWAPCHAIN_SIZE, MAX_SWAPCHAIN_SIZE, MAX_LAYERS};
    properties->trackingProperties = {XR_TRUE, XR_FALSE};
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateEnvironmentBlendModes(XrInstance handle, XrSystemId id,
                                                   XrViewConfigurationType type,
                                                   std::uint32_t capacity, std::uint32_t* count,
                                                   XrEnvironmentBlendMode* modes)
{
    const Lock lock = LockRuntime();
    const Instance& instance = Get<Instance>(handle);
    RequireSystem(id);
    RequireViewConfiguration(instance, type);
    constexpr XrEnvironmentBlendMode MODE = XR_ENVIRONMENT_BLEND_MODE_OPAQUE;
    return AnswerValues(capacity, count, modes, &MODE, 1);
}

XrResult XRAPI_CALL EnumerateViewConfigurations(XrInstance handle, XrSystemId id,
                                                std::uint32_t capacity, std::uint32_t* count,
                                                XrViewConfigurationType* types)
{
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequireSystem(id);
    constexpr XrViewConfigurationType TYPE = XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO;
    return AnswerValues(capacity, count, types, &TYPE, 1);
}

XrResult XRAPI_CALL GetViewConfigurationProperties(XrInstance handle, XrSystemId id,
                                                   XrViewConfigurationType type,
                                                   XrViewConfigurationProperties* properties)
{
    const Lock lock = LockRuntime();
    const Instance& instance = Get<Instance>(handle);
    RequireType(properties, XR_TYPE_VIEW_CONFIGURATION_PROPERTIES);
    RequireSystem(id);
    RequireViewConfiguration(instance, type);
    properties->viewConfigurationType = type;
    // Each layer contains the field of view that it was drawn with.
    properties->fovMutable = XR_TRUE;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateViewConfigurationViews(XrInstance handle, XrSystemId id,
                                                    XrViewConfigurationType type,
                                                    std::uint32_t capacity, std::uint32_t* count,
                                                    XrViewConfigurationView* views)
{
    const Lock lock = LockRuntime();
    const Instance& instance = Get<Instance>(handle);
    RequireSystem(id);
    RequireViewConfiguration(instance, type);
    if (!AnswerCount(capacity, count, views, VIEW_COUNT))
    {
        return XR_SUCCESS;
    }
    for (std::uint32_t i = 0; i < VIEW_COUNT; ++i)
    {
        RequireType(&views[i], XR_TYPE_VIEW_CONFIGURATION_VIEW);
    }
    const auto size = static_cast<std::uint32_t>(qlt::Params::EYE_RESOLUTION);
    for (std::uint32_t i = 0; i < VIEW_COUNT; ++i)
    {
        views[i].recommendedImageRectWidth = size;
        // The lens shows about as much vertically as horizontally.
        views[i].recommendedImageRectHeight = size;
        views[i].maxImageRectWidth = MAX_SWAPCHAIN_SIZE;
        views[i].maxImageRectHeight = MAX_SWAPCHAIN_SIZE;
        views[i].recommendedSwapchainSampleCount = 1;
        views[i].maxSwapchainSampleCount = 1;
    }
    return XR_SUCCESS;
}

XrResult XRAPI_CALL StringToPath(XrInstance handle, const char* text, XrPath* path)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequirePointer(text);
    RequirePointer(path);
    *path = instance.paths.NumberOf(text);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL PathToString(XrInstance handle, XrPath path, std::uint32_t capacity,
                                 std::uint32_t* count, char* buffer)
{
    const Lock lock = LockRuntime();
    return AnswerText(capacity, count, buffer, Get<Instance>(handle).paths.TextOf(path));
}

XrResult XRAPI_CALL GetOpenGLGraphicsRequirementsKHR(XrInstance handle, XrSystemId id,
                                                     XrGraphicsRequirementsOpenGLKHR* requirements)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequireType(requirements, XR_TYPE_GRAPHICS_REQUIREMENTS_OPENGL_KHR);
    RequireSystem(id);
    requirements->minApiVersionSupported = XR_MAKE_VERSION(3, 3, 0);
    requirements->maxApiVersionSupported = XR_MAKE_VERSION(4, 6, 0);
    instance.requirementsAsked = true;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL ConvertTimespecTimeToTimeKHR(XrInstance handle, const timespec* from,
                                                 XrTime* time)
{
    constexpr XrTime NS_PER_S = 1000000000;
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequirePointer(from);
    RequirePointer(time);
    Require(from->tv_sec >= 0 && from->tv_nsec >= 0 && from->tv_nsec < NS_PER_S &&
                (from->tv_sec > 0 || from->tv_nsec > 0) &&
                from->tv_sec <= (INT64_MAX - from->tv_nsec) / NS_PER_S,
            XR_ERROR_TIME_INVALID);
    *time = from->tv_sec * NS_PER_S + from->tv_nsec;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL ConvertTimeToTimespecTimeKHR(XrInstance handle, XrTime time, timespec* to)
{
    constexpr XrTime NS_PER_S = 1000000000;
    const Lock lock = LockRuntime();
    Get<Instance>(handle);
    RequirePointer(to);
    Require(time > 0, XR_ERROR_TIME_INVALID);
    to->tv_sec = time / NS_PER_S;
    to->tv_nsec = time % NS_PER_S;
    return XR_SUCCESS;
}

} // namespace qltxr
