// Tests with the fake host service, which the real loader finds beside their program.
#pragma once

#include "Runtime/DynamicLibrary.h"

#include "fakes/host_service/HostServiceScript.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

class HostServiceFixture : public testing::Test
{
protected:
    // The notification types, as the service numbers them.
    static constexpr std::uint32_t DEVICE_AVAILABLE = 1;
    static constexpr std::uint32_t DEVICE_WITHDRAWN = 2;
    static constexpr std::uint32_t CLIENT_AVAILABLE = 4;
    static constexpr std::uint32_t CLIENT_WITHDRAWN = 5;
    static constexpr std::uint32_t CAMERA_AVAILABLE = 7;
    static constexpr std::uint32_t CAMERA_WITHDRAWN = 8;
    static constexpr std::uint32_t SCENE_AVAILABLE = 12;
    static constexpr std::uint32_t SCENE_WITHDRAWN = 13;

    HostServiceFixture() { script.Reset(); }

    /// The ledger balances, whatever the test did.
    ~HostServiceFixture() override
    {
        EXPECT_EQ(script.Lent(), 0u);
        EXPECT_EQ(script.Connected(), 0u);
        EXPECT_EQ(script.Mistakes(), 0u);
    }

    static HostServiceScript& Script()
    {
        qlt::LibraryHandle library = qlt::LoadInstalledLibrary("vr_host_client_lib");
        const auto get =
            reinterpret_cast<GetHostServiceScript>(qlt::FindFunction(library, HOST_SERVICE_SCRIPT));
        return *get();
    }

    /// Waits until `condition` holds; false after a long time.
    template <typename Condition>
    static bool Eventually(const Condition& condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition())
        {
            if (std::chrono::steady_clock::now() > deadline)
            {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return true;
    }

    /// Notifies, and waits until it has been read and given back.
    void Tell(HostSource source, std::uint32_t type)
    {
        script.Notify(source, type);
        ASSERT_TRUE(Eventually([&] { return script.Pending() == 0 && script.Lent() == 0; }));
    }

    bool HasConnections(std::size_t count)
    {
        return Eventually([&] { return script.Connected() == count; });
    }

    /// Announces everything: manager, client, device, camera and scene are then connected.
    void ConnectAll()
    {
        Tell(HostSource::MANAGER, CLIENT_AVAILABLE);
        Tell(HostSource::CLIENT, DEVICE_AVAILABLE);
        Tell(HostSource::DEVICE, CAMERA_AVAILABLE);
        Tell(HostSource::DEVICE, SCENE_AVAILABLE);
        ASSERT_TRUE(HasConnections(5));
    }

    /// The calls whose names end with one of `endings`, in their order.
    std::vector<std::string> Calls(const std::vector<std::string>& endings)
    {
        std::vector<std::string> calls;
        script.VisitCalls([](void* context, const char* function)
                          { static_cast<std::vector<std::string>*>(context)->push_back(function); },
                          &calls);
        std::vector<std::string> matching;
        for (const std::string& call : calls)
        {
            for (const std::string& ending : endings)
            {
                const bool ends =
                    call.size() >= ending.size() &&
                    call.compare(call.size() - ending.size(), ending.size(), ending) == 0;
                if (ends)
                {
                    matching.push_back(call);
                }
            }
        }
        return matching;
    }

    HostServiceScript& script = Script();
};
