#include "OpenXr.h"

#include <openxr/openxr_reflection.h>

#include <array>
#include <set>

namespace qltxr
{

namespace
{

struct LoaderInfo
{
    std::int32_t type = 1;
    std::uint32_t version = 1;
    std::size_t size = 40;
    std::uint32_t minInterface = 1;
    std::uint32_t maxInterface = 1;
    XrVersion minApi = XR_MAKE_VERSION(1, 0, 0);
    XrVersion maxApi = XR_MAKE_VERSION(1, 0x3ff, 0xfff);
};

struct RuntimeRequest
{
    std::int32_t type = 3;
    std::uint32_t version = 1;
    std::size_t size = 40;
    std::uint32_t interfaceVersion = 0;
    XrVersion apiVersion = 0;
    PFN_xrGetInstanceProcAddr function = nullptr;
};

} // namespace

extern "C" XrResult xrNegotiateLoaderRuntimeInterface(const LoaderInfo*, RuntimeRequest*);

TEST(NegotiationTest, TheLoaderGetsVersionOneAndTheFunctionThatFindsAllOthers)
{
    const LoaderInfo info;
    RuntimeRequest request;
    ASSERT_EQ(xrNegotiateLoaderRuntimeInterface(&info, &request), XR_SUCCESS);
    EXPECT_EQ(request.interfaceVersion, 1u);
    EXPECT_EQ(XR_VERSION_MAJOR(request.apiVersion), 1);
    EXPECT_EQ(XR_VERSION_MINOR(request.apiVersion), 0);
    PFN_xrVoidFunction create = nullptr;
    EXPECT_EQ(request.function(XR_NULL_HANDLE, "xrCreateInstance", &create), XR_SUCCESS);
    EXPECT_NE(create, nullptr);
}

TEST(NegotiationTest, AnotherVersionOrStructureIsRefused)
{
    std::array<LoaderInfo, 6> infos;
    infos[0].type = 2;
    infos[1].version = 2;
    infos[2].size = 48;
    infos[3].minInterface = infos[3].maxInterface = 2;
    infos[4].minApi = XR_MAKE_VERSION(1, 1, 0);
    infos[5].maxApi = XR_MAKE_VERSION(0, 9, 0);
    RuntimeRequest request;
    for (const LoaderInfo& info : infos)
    {
        EXPECT_EQ(xrNegotiateLoaderRuntimeInterface(&info, &request),
                  XR_ERROR_INITIALIZATION_FAILED)
            << &info - infos.data();
    }
    request.size = 32;
    const LoaderInfo good;
    EXPECT_EQ(xrNegotiateLoaderRuntimeInterface(&good, &request), XR_ERROR_INITIALIZATION_FAILED);
    EXPECT_EQ(xrNegotiateLoaderRuntimeInterface(nullptr, &request), XR_ERROR_INITIALIZATION_FAILED);
}

TEST(InstanceCreationTest, EachBrokenRuleHasItsResult)
{
    const OpenXr xr;
    XrInstance instance = XR_NULL_HANDLE;
    const auto create = [&](auto change)
    {
        XrInstanceCreateInfo info = OpenXr::InstanceInfo();
        change(info);
        return xr.CreateInstance(&info, &instance);
    };
    const char* unknown = "xr_khr_opengl_enable"; // upper and lower case differ
    constexpr XrVersion OTHERS[] = {XR_MAKE_VERSION(1, 1, 0), XR_MAKE_VERSION(2, 0, 0), 1, 0};
    for (const XrVersion version : OTHERS)
    {
        EXPECT_EQ(create([&](auto& info) { info.applicationInfo.apiVersion = version; }),
                  XR_ERROR_API_VERSION_UNSUPPORTED);
    }
    EXPECT_EQ(create([](auto& info) { info.type = XR_TYPE_SESSION_CREATE_INFO; }),
              XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(create([](auto& info) { info.createFlags = 1; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(create([](auto& info) { info.applicationInfo.applicationName[0] = '\0'; }),
              XR_ERROR_NAME_INVALID);
    EXPECT_EQ(create([](auto& info) { std::memset(info.applicationInfo.engineName, 'x', 128); }),
              XR_ERROR_NAME_INVALID);
    EXPECT_EQ(create(
                  [&](auto& info)
                  {
                      info.enabledExtensionCount = 1;
                      info.enabledExtensionNames = &unknown;
                  }),
              XR_ERROR_EXTENSION_NOT_PRESENT);
    EXPECT_EQ(TheRuntime().instance, nullptr);
}

TEST(InstanceCreationTest, ThereIsOneAtATimeAndItsHandleDiesWithIt)
{
    const OpenXr xr;
    XrInstanceCreateInfo info = OpenXr::InstanceInfo();
    const char* layer = "a layer that the loader has put in front";
    info.enabledApiLayerCount = 1;
    info.enabledApiLayerNames = &layer;
    XrInstanceProperties properties{XR_TYPE_INSTANCE_PROPERTIES};
    for (int round = 0; round < 20; ++round)
    {
        XrInstance first = XR_NULL_HANDLE;
        XrInstance second = XR_NULL_HANDLE;
        ASSERT_EQ(xr.CreateInstance(&info, &first), XR_SUCCESS);
        EXPECT_EQ(xr.CreateInstance(&info, &second), XR_ERROR_LIMIT_REACHED);
        EXPECT_EQ(xr.GetInstanceProperties(first, &properties), XR_SUCCESS);
        EXPECT_STREQ(properties.runtimeName, "Quelta");
        EXPECT_EQ(xr.DestroyInstance(first), XR_SUCCESS);
        EXPECT_EQ(xr.GetInstanceProperties(first, &properties), XR_ERROR_HANDLE_INVALID);
        EXPECT_EQ(xr.DestroyInstance(first), XR_ERROR_HANDLE_INVALID);
    }
}

class InstanceTest : public OpenXrTest
{
};

TEST_F(InstanceTest, FunctionsAreFoundByNameWhenTheirExtensionIsEnabled)
{
    PFN_xrVoidFunction function = nullptr;
    EXPECT_EQ(GetInstanceProcAddr(instance, "xrGetVisibilityMaskKHR", &function), XR_SUCCESS);
    EXPECT_NE(function, nullptr);
    EXPECT_EQ(GetInstanceProcAddr(instance, "xrNothing", &function), XR_ERROR_FUNCTION_UNSUPPORTED);
    EXPECT_EQ(function, nullptr);
    EXPECT_EQ(GetInstanceProcAddr(XR_NULL_HANDLE, "xrGetSystem", &function),
              XR_ERROR_HANDLE_INVALID);
    EXPECT_EQ(GetInstanceProcAddr(instance, nullptr, &function), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(GetInstanceProcAddr(instance, "xrGetSystem", nullptr), XR_ERROR_VALIDATION_FAILURE);

    DestroyInstance(instance);
    ASSERT_EQ(MakeInstance({}), XR_SUCCESS);
    EXPECT_EQ(GetInstanceProcAddr(instance, "xrGetVisibilityMaskKHR", &function),
              XR_ERROR_FUNCTION_UNSUPPORTED);
}

TEST_F(InstanceTest, EveryFunctionOfTheCoreIsThere)
{
    std::size_t core = 0;
#define QLT_XR_COUNT(name, extension) core += std::string(extension).empty() ? 1 : 0;
    QLT_XR_FUNCTIONS(QLT_XR_COUNT)
#undef QLT_XR_COUNT
    EXPECT_EQ(core, 55u); // the number in the registry's chapter on 1.0
}

TEST_F(InstanceTest, NumbersWithoutANameAreSpelledOut)
{
    char text[XR_MAX_RESULT_STRING_SIZE];
    const auto result = [&](int value)
    {
        EXPECT_EQ(ResultToString(instance, static_cast<XrResult>(value), text), XR_SUCCESS);
        return std::string(text);
    };
    EXPECT_EQ(result(XR_ERROR_PATH_INVALID), "XR_ERROR_PATH_INVALID");
    EXPECT_EQ(result(123456), "XR_UNKNOWN_SUCCESS_123456");
    EXPECT_EQ(result(INT32_MIN), "XR_UNKNOWN_FAILURE_-2147483648");
    EXPECT_EQ(result(0x7FFFFFFF), "XR_UNKNOWN_SUCCESS_2147483647");
    EXPECT_EQ(StructureTypeToString(instance, XR_TYPE_VIEW, text), XR_SUCCESS);
    EXPECT_STREQ(text, "XR_TYPE_VIEW");
    EXPECT_EQ(StructureTypeToString(instance, static_cast<XrStructureType>(99999), text),
              XR_SUCCESS);
    EXPECT_STREQ(text, "XR_UNKNOWN_STRUCTURE_TYPE_99999");
}

TEST_F(InstanceTest, TheSystemIsTheHeadset)
{
    XrSystemGetInfo info{XR_TYPE_SYSTEM_GET_INFO, nullptr, XR_FORM_FACTOR_HEAD_MOUNTED_DISPLAY};
    XrSystemId id = XR_NULL_SYSTEM_ID;
    ASSERT_EQ(GetSystem(instance, &info, &id), XR_SUCCESS);
    XrSystemProperties properties{XR_TYPE_SYSTEM_PROPERTIES};
    ASSERT_EQ(GetSystemProperties(instance, id, &properties), XR_SUCCESS);
    EXPECT_STREQ(properties.systemName, "Quelta Orbel Ixo");
    EXPECT_GE(properties.graphicsProperties.maxLayerCount, 16u);
    EXPECT_TRUE(properties.trackingProperties.orientationTracking);
    EXPECT_FALSE(properties.trackingProperties.positionTracking);
    EXPECT_EQ(GetSystemProperties(instance, 0, &properties), XR_ERROR_SYSTEM_INVALID);
    for (const int factor : {0, 2, 0x7fffffff})
    {
        info.formFactor = static_cast<XrFormFactor>(factor);
        EXPECT_EQ(GetSystem(instance, &info, &id), XR_ERROR_FORM_FACTOR_UNSUPPORTED);
    }
}

// The number 1000037000 belongs to an extension that is not enabled.
TEST_F(InstanceTest, AViewConfigurationIsRefusedAsItsKindDemands)
{
    XrViewConfigurationProperties properties{XR_TYPE_VIEW_CONFIGURATION_PROPERTIES};
    const std::pair<int, XrResult> cases[] = {
        {XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, XR_SUCCESS},
        {XR_VIEW_CONFIGURATION_TYPE_PRIMARY_MONO, XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED},
        {1000037000, XR_ERROR_VALIDATION_FAILURE},
        {77, XR_ERROR_VALIDATION_FAILURE},
        {0x7FFFFFFF, XR_ERROR_VALIDATION_FAILURE}};
    for (const auto& [type, expected] : cases)
    {
        EXPECT_EQ(GetViewConfigurationProperties(
                      instance, SYSTEM_ID, static_cast<XrViewConfigurationType>(type), &properties),
                  expected)
            << type;
    }
}

TEST_F(InstanceTest, TheTwoCallIdiomWritesOnlyWhatFits)
{
    std::uint32_t count = 99;
    EXPECT_EQ(EnumerateInstanceExtensionProperties(nullptr, 0, &count, nullptr), XR_SUCCESS);
    EXPECT_EQ(count, 6u);
    std::vector<XrExtensionProperties> list(count, {XR_TYPE_EXTENSION_PROPERTIES});
    EXPECT_EQ(EnumerateInstanceExtensionProperties(nullptr, 3, &count, list.data()),
              XR_ERROR_SIZE_INSUFFICIENT);
    EXPECT_EQ(count, 6u);
    EXPECT_EQ(EnumerateInstanceExtensionProperties(nullptr, count, nullptr, list.data()),
              XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(EnumerateInstanceExtensionProperties(nullptr, count, &count, nullptr),
              XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(EnumerateInstanceExtensionProperties("layer", 0, &count, nullptr),
              XR_ERROR_API_LAYER_NOT_PRESENT);
    ASSERT_EQ(EnumerateInstanceExtensionProperties(nullptr, count, &count, list.data()),
              XR_SUCCESS);
    std::set<std::string> names;
    for (const XrExtensionProperties& one : list)
    {
        EXPECT_EQ(one.type, XR_TYPE_EXTENSION_PROPERTIES);
        EXPECT_GT(one.extensionVersion, 0u);
        names.insert(one.extensionName);
    }
    EXPECT_EQ(names.size(), list.size());
    list[2].type = XR_TYPE_UNKNOWN;
    EXPECT_EQ(EnumerateInstanceExtensionProperties(nullptr, count, &count, list.data()),
              XR_ERROR_VALIDATION_FAILURE);
}

TEST_F(InstanceTest, PathsFollowTheRules)
{
    const std::string longest = "/" + std::string(XR_MAX_PATH_LENGTH - 2, 'a');
    for (const std::string& good :
         {std::string("/a"), std::string("/user/hand/left"), std::string("/.f"), std::string("/f."),
          std::string("/.....ok"), std::string("/a-b_c.9"), longest})
    {
        const XrPath path = Path(good);
        EXPECT_EQ(Path(good), path) << good;
        char text[XR_MAX_PATH_LENGTH];
        std::uint32_t count = 0;
        EXPECT_EQ(PathToString(instance, path, sizeof(text), &count, text), XR_SUCCESS);
        EXPECT_EQ(text, good);
        EXPECT_EQ(count, good.size() + 1);
    }
    XrPath path = XR_NULL_PATH;
    for (const std::string& bad :
         {std::string(), std::string("a"), std::string("/"), std::string("/a/"), std::string("//a"),
          std::string("/a//b"), std::string("/A"), std::string("/a b"), std::string("/."),
          std::string("/a/.."), std::string("/\xc3\xa4"), longest + "a"})
    {
        EXPECT_EQ(StringToPath(instance, bad.c_str(), &path), XR_ERROR_PATH_FORMAT_INVALID) << bad;
    }
    std::uint32_t count = 0;
    EXPECT_EQ(PathToString(instance, XR_NULL_PATH, 0, &count, nullptr), XR_ERROR_PATH_INVALID);
    EXPECT_EQ(PathToString(instance, 1234567, 0, &count, nullptr), XR_ERROR_PATH_INVALID);
    for (int i = 0; i < 1000; ++i)
    {
        Path("/path/" + std::to_string(i));
    }
}

TEST_F(InstanceTest, TimesAreThoseOfTheMonotonicClock)
{
    timespec parts{};
    XrTime time = 0;
    for (const XrTime exact :
         {XrTime{1}, XrTime{999999999}, XrTime{1234567890123456789}, INT64_MAX})
    {
        ASSERT_EQ(ConvertTimeToTimespecTimeKHR(instance, exact, &parts), XR_SUCCESS);
        ASSERT_EQ(ConvertTimespecTimeToTimeKHR(instance, &parts, &time), XR_SUCCESS);
        EXPECT_EQ(time, exact);
    }
    EXPECT_EQ(ConvertTimeToTimespecTimeKHR(instance, 0, &parts), XR_ERROR_TIME_INVALID);
    for (const timespec bad : {timespec{0, 0}, timespec{-1, 5}, timespec{1, 1000000000}})
    {
        EXPECT_EQ(ConvertTimespecTimeToTimeKHR(instance, &bad, &time), XR_ERROR_TIME_INVALID);
    }
}

} // namespace qltxr
