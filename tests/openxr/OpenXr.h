// The runtime as a program uses it: it has every function by its name, an instance, and helpers for
// most tests.
#pragma once

#include "Api/Functions.h"
#include "Api/Runtime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace qltxr
{

constexpr XrPosef IDENTITY = {{0.0f, 0.0f, 0.0f, 1.0f}, {0.0f, 0.0f, 0.0f}};
constexpr XrTime SOME_TIME = 1000000000;

struct OpenXr
{
#define QLT_XR_MEMBER(name, extension)                                                             \
    PFN_xr##name name = reinterpret_cast<PFN_xr##name>(FindFunction("xr" #name).function);
    QLT_XR_FUNCTIONS(QLT_XR_MEMBER)
#undef QLT_XR_MEMBER

    static XrInstanceCreateInfo InstanceInfo()
    {
        XrInstanceCreateInfo info{XR_TYPE_INSTANCE_CREATE_INFO};
        std::strcpy(info.applicationInfo.applicationName, "a test");
        info.applicationInfo.apiVersion = XR_MAKE_VERSION(1, 0, 0);
        return info;
    }

    XrResult MakeInstance(const std::vector<const char*>& extensions)
    {
        XrInstanceCreateInfo info = InstanceInfo();
        info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
        info.enabledExtensionNames = extensions.data();
        return CreateInstance(&info, &instance);
    }

    XrPath Path(const std::string& text) const
    {
        XrPath path = XR_NULL_PATH;
        EXPECT_EQ(StringToPath(instance, text.c_str(), &path), XR_SUCCESS) << text;
        return path;
    }

    /// Returns the session states that wait in the queue of events.
    std::vector<XrSessionState> States() const
    {
        std::vector<XrSessionState> states;
        XrEventDataBuffer event{XR_TYPE_EVENT_DATA_BUFFER};
        while (PollEvent(instance, &event) == XR_SUCCESS)
        {
            if (event.type == XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED)
            {
                states.push_back(
                    reinterpret_cast<const XrEventDataSessionStateChanged&>(event).state);
            }
        }
        return states;
    }

    XrResult Begin() const
    {
        const XrSessionBeginInfo info{XR_TYPE_SESSION_BEGIN_INFO, nullptr,
                                      XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO};
        return BeginSession(session, &info);
    }

    XrSpace ReferenceSpace(XrReferenceSpaceType type, const XrPosef& pose = IDENTITY) const
    {
        const XrReferenceSpaceCreateInfo info{XR_TYPE_REFERENCE_SPACE_CREATE_INFO, nullptr, type,
                                              pose};
        XrSpace space = XR_NULL_HANDLE;
        EXPECT_EQ(CreateReferenceSpace(session, &info, &space), XR_SUCCESS);
        return space;
    }

    XrResult End(const std::vector<const XrCompositionLayerBaseHeader*>& layers,
                 XrTime time = SOME_TIME) const
    {
        const XrFrameEndInfo info{XR_TYPE_FRAME_END_INFO,
                                  nullptr,
                                  time,
                                  XR_ENVIRONMENT_BLEND_MODE_OPAQUE,
                                  static_cast<std::uint32_t>(layers.size()),
                                  layers.data()};
        return EndFrame(session, &info);
    }

    XrInstance instance = XR_NULL_HANDLE;
    XrSession session = XR_NULL_HANDLE;
};

/// A fixture with an instance that has every extension of the runtime. The user has no
/// configuration.
class OpenXrTest : public testing::Test, public OpenXr
{
protected:
    OpenXrTest()
    {
        setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
        EXPECT_EQ(MakeInstance({"XR_KHR_opengl_enable", "XR_KHR_convert_timespec_time",
                                "XR_KHR_visibility_mask", "XR_KHR_composition_layer_depth",
                                "XR_MND_headless", "XR_EXT_local_floor"}),
                  XR_SUCCESS);
    }

    ~OpenXrTest() override
    {
        if (TheRuntime().instance != nullptr)
        {
            EXPECT_EQ(DestroyInstance(instance), XR_SUCCESS);
        }
        EXPECT_EQ(TheRuntime().handles.Size(), 0u);
    }

    XrResult CreateHeadless()
    {
        const XrSessionCreateInfo info{XR_TYPE_SESSION_CREATE_INFO, nullptr, 0, SYSTEM_ID};
        return CreateSession(instance, &info, &session);
    }
};

/// A fixture with a headless session that runs.
class HeadlessTest : public OpenXrTest
{
protected:
    HeadlessTest()
    {
        EXPECT_EQ(CreateHeadless(), XR_SUCCESS);
        EXPECT_EQ(Begin(), XR_SUCCESS);
    }
};

} // namespace qltxr
