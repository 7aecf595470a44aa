// A fixture with the fake host service, which the real loader finds beside the test program.
#pragma once

#include <qlt/Runtime/VRException.h>

#include "Runtime/DynamicLibrary.h"

#include "fakes/host_service/HostServiceScript.h"

#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class HostServiceFixture : public testing::Test
{
protected:
    /// A notification: its source, and its type as the service numbers them.
    using News = std::pair<HostSource, std::uint32_t>;
    static constexpr News CLIENT_AVAILABLE{HostSource::MANAGER, 4};
    static constexpr News CLIENT_WITHDRAWN{HostSource::MANAGER, 5};
    static constexpr News DEVICE_AVAILABLE{HostSource::CLIENT, 1};
    static constexpr News DEVICE_WITHDRAWN{HostSource::CLIENT, 2};
    static constexpr News CAMERA_AVAILABLE{HostSource::DEVICE, 7};
    static constexpr News CAMERA_WITHDRAWN{HostSource::DEVICE, 8};
    static constexpr News SCENE_AVAILABLE{HostSource::DEVICE, 12};
    static constexpr News SCENE_WITHDRAWN{HostSource::DEVICE, 13};

    HostServiceFixture() { script.Reset(); }

    /// Whatever a test did, nothing is lent or connected at its end, and no handle was wrong.
    ~HostServiceFixture() override
    {
        EXPECT_EQ(script.Lent(), 0u);
        EXPECT_EQ(script.Connected(), 0u);
        EXPECT_EQ(script.Mistakes(), 0u);
    }

    /// Waits until `condition` holds. False when it takes too long.
    template <typename Condition>
    static bool Eventually(const Condition& condition)
    {
        // Use the clock, because some systems return at once from such a short sleep.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition() && std::chrono::steady_clock::now() < end)
        {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return condition();
    }

    void Notify(const News& n, bool quiet = false) { script.Notify(n.first, n.second, quiet); }

    /// Sends each notification, and waits until it has been read and given back.
    void Tell(const std::vector<News>& all)
    {
        for (const News& news : all)
        {
            Notify(news);
            ASSERT_TRUE(Eventually([&] { return script.Pending() == 0 && script.Lent() == 0; }));
        }
    }

    bool HasConnections(std::size_t count)
    {
        return Eventually([&] { return script.Connected() == count; });
    }

    /// Announces everything: manager, client, device, camera and scene are then connected.
    void ConnectAll()
    {
        Tell({CLIENT_AVAILABLE, DEVICE_AVAILABLE, CAMERA_AVAILABLE, SCENE_AVAILABLE});
        ASSERT_TRUE(HasConnections(5));
    }

    /// The calls whose names contain one of the `parts`, such as "_start|_stop", in their order. A
    /// space follows each name.
    std::string Calls(const std::string& parts)
    {
        std::string all;
        script.VisitCalls([](void* calls, const char* function)
                          { static_cast<std::string*>(calls)->append(function + 6).append(" "); },
                          &all);
        const std::regex wanted("\\w*(" + parts + ")\\w* ");
        std::string matching;
        for (std::sregex_iterator call(all.begin(), all.end(), wanted), end; call != end; ++call)
        {
            matching += call->str();
        }
        return matching;
    }

    /// The status and the text of the exception that `call` throws.
    template <typename Call>
    static std::string FailureOf(const Call& call)
    {
        try
        {
            call();
        }
        catch (const VRException& e)
        {
            return std::to_string(e.status) + " " + e.what();
        }
        return "";
    }

    qlt::LibraryHandle library = qlt::LoadInstalledLibrary("vr_host_client_lib");
    HostServiceScript& script =
        *reinterpret_cast<GetHostServiceScript>(qlt::FindFunction(library, HOST_SERVICE_SCRIPT))();
};
