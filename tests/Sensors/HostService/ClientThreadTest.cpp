#include "Sensors/HostService/ClientThread.h"

#include "fakes/HostServiceFixture.h"
#include "fakes/OpenHandles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <tuple>

namespace
{

class ClientThreadTest : public HostServiceFixture
{
protected:
    void Start()
    {
        thread = std::make_unique<qlt::ClientThread>(scene);
        thread->Init();
        thread->Start(true, qlt::WAIT_FOREVER);
    }

    ~ClientThreadTest() override { thread.reset(); }

    qlt::CurrentScene scene;
    std::unique_ptr<qlt::ClientThread> thread;
};

using ClientThreadDeathTest = ClientThreadTest;

} // namespace

TEST_F(ClientThreadTest, ConnectsWhenTheServiceAnnouncesAndDropsEverythingAtTheEnd)
{
    {
        const qlt::ClientThread neverStarted(scene);
    }
    EXPECT_EQ(Calls("_start|_stop|_destroy"), "ClientManager_stop ClientManager_destroy ");
    script.Reset();
    Start();
    EXPECT_EQ(scene.Get(), nullptr);
    ConnectAll();
    EXPECT_NE(scene.Get(), nullptr);
    thread->Stop(true);
    EXPECT_EQ(script.Connected(), 1u); // the manager runs until its owner goes
    EXPECT_EQ(Calls("_stop"), "");
    thread.reset();
    EXPECT_EQ(Calls("_create|_start|_connect|_destroy|_stop"),
              "ClientManager_create ClientManager_start ClientManager_connectClient "
              "Client_connectDevice Device_connectCamera Device_connectScene "
              "DeviceCamera_destroy DeviceScene_destroy Device_destroy Client_destroy "
              "ClientManager_stop ClientManager_destroy ");
}

// Each row has the dropped connections in their order and the number of those that stay. All of
// them come back when they are announced again.
TEST_F(ClientThreadTest, EveryWithdrawalDropsTheConnectionsThatDependOnIt)
{
    const std::tuple<News, std::size_t, std::string> rows[] = {
        {SCENE_WITHDRAWN, 3, "DeviceCamera_destroy DeviceScene_destroy "},
        {CAMERA_WITHDRAWN, 3, "DeviceCamera_destroy DeviceScene_destroy "},
        {DEVICE_WITHDRAWN, 2, "DeviceCamera_destroy DeviceScene_destroy Device_destroy "},
        {CLIENT_WITHDRAWN, 1,
         "DeviceCamera_destroy DeviceScene_destroy Device_destroy Client_destroy "},
    };
    Start();
    for (const auto& [news, left, dropped] : rows)
    {
        ConnectAll(); // connections that exist ignore it
        script.Reset();
        Tell({news});
        EXPECT_TRUE(HasConnections(left));
        EXPECT_EQ(Calls("_destroy"), dropped);
        EXPECT_EQ(scene.Get(), nullptr);
    }
}

TEST_F(ClientThreadTest, IgnoresASecondAnnouncementAWithdrawalOfNothingAndUnknownTypes)
{
    Start();
    Tell({CLIENT_WITHDRAWN, CLIENT_AVAILABLE, DEVICE_WITHDRAWN, DEVICE_AVAILABLE, CAMERA_WITHDRAWN,
          SCENE_WITHDRAWN, SCENE_AVAILABLE, CAMERA_AVAILABLE});
    ASSERT_TRUE(HasConnections(5));
    const auto connected = scene.Get();
    script.Reset();
    const std::vector<News> withdrawals = {CLIENT_WITHDRAWN, DEVICE_WITHDRAWN, CAMERA_WITHDRAWN,
                                           SCENE_WITHDRAWN};
    for (const HostSource source : {HostSource::MANAGER, HostSource::CLIENT, HostSource::DEVICE})
    {
        // Each source has its own numbers and ignores those of the others.
        for (std::uint32_t type = 0; type < 16; ++type)
        {
            const News news(source, type);
            if (std::count(withdrawals.begin(), withdrawals.end(), news) == 0)
            {
                Tell({news});
            }
        }
        Tell({{source, 0xFFFFFFFF}});
    }
    EXPECT_EQ(script.Connected(), 5u);
    EXPECT_EQ(Calls("_connect"), "");
    EXPECT_EQ(scene.Get(), connected);
}

// One signal may stand for several notifications; the later ones must not wait for the next signal.
TEST_F(ClientThreadTest, OneSignalReadsEveryPendingNotification)
{
    Start();
    Tell({CLIENT_AVAILABLE, DEVICE_AVAILABLE});
    script.Reset();
    for (const News& news : {CAMERA_AVAILABLE, News(HostSource::DEVICE, 99), SCENE_AVAILABLE})
    {
        Notify(news, true);
    }
    Notify(CAMERA_WITHDRAWN);
    const std::string expected = "Device_connectCamera Device_deleteHandle Device_deleteHandle "
                                 "Device_connectScene Device_deleteHandle Device_deleteHandle "
                                 "DeviceCamera_destroy DeviceScene_destroy ";
    Eventually([&] { return Calls("_destroy|_connect|deleteHandle").size() >= expected.size(); });
    EXPECT_EQ(Calls("_destroy|_connect|deleteHandle"), expected);
}

TEST_F(ClientThreadTest, ASceneLivesAsLongAsItIsRead)
{
    Start();
    ConnectAll();
    auto held = scene.Get();
    auto descriptor = held->GetCurrentDescriptor();
    ASSERT_TRUE(descriptor.has_value());
    Notify(CLIENT_WITHDRAWN);
    ASSERT_TRUE(HasConnections(2)); // the manager and the scene
    EXPECT_EQ(scene.Get(), nullptr);
    EXPECT_EQ(Calls("Scene_destroy"), "");
    EXPECT_TRUE(held->GetCurrentDescriptor().has_value());
    descriptor->holder.GiveBack();
    descriptor->holder.GiveBack(); // the second call does nothing
    held.reset();
    EXPECT_EQ(Calls("Scene_destroy"), "DeviceScene_destroy ");
}

TEST_F(ClientThreadTest, AThousandConnectionsLeaveNoHandleBehind)
{
    Start();
    std::size_t before = 0;
    for (int i = 0; i < 1000; ++i)
    {
        ConnectAll();
        Notify(CLIENT_WITHDRAWN);
        ASSERT_TRUE(HasConnections(1));
        script.Reset();
        before = i == 100 ? CountOpenHandles() : before;
    }
    EXPECT_GT(before, 0u);
    EXPECT_LE(CountOpenHandles(), before + RUNTIME_HANDLES);
}

TEST_F(ClientThreadTest, AManagerThatIsNotCreatedIsReported)
{
    qlt::HostService service = qlt::HostService::System();
    ASSERT_TRUE(service.installed && service.complete);
    const auto create = [&] { const qlt::ClientThread refused(scene, service); };
    service.complete = false;
    EXPECT_EQ(FailureOf(create),
              std::to_string(VR_STATUS_ERROR_NOT_SUPPORTED) + " Cannot create the client manage");
    service.complete = true;
    // This code is not in the list, and the exception keeps it.
    script.Fail("VRHostClientManager_create", 77);
    EXPECT_EQ(FailureOf(create), "77 Cannot create the client manage");
}

TEST_F(ClientThreadTest, AManagerThatCannotBeStoppedIsReportedAndDestroyed)
{
    script.Fail("VRHostClientManager_create", HostServiceScript::ZERO);
    thread = std::make_unique<qlt::ClientThread>(scene);
    EXPECT_EQ(FailureOf([&] { thread->Shutdown(); }), "2 Error VR_STATUS_ERROR_NULL_PTR (2)");
    script.Reset();
    Start();
    ConnectAll();
    script.Fail("VRHostClientManager_stop", 16);
    EXPECT_EQ(FailureOf([&] { thread->Shutdown(); }), "16 Cannot stop the client manage");
    thread.reset(); // no connection is stopped twice
    EXPECT_EQ(Calls("_stop"), "ClientManager_stop ");
}

TEST_F(ClientThreadTest, AServiceIsCompleteOnlyWithEveryFunction)
{
    std::vector<std::string> names;
    const auto load = [&](const std::string& missing)
    {
        names.clear();
        return qlt::HostService::Load(
            [&](const char* name)
            {
                names.emplace_back(name);
                return name == missing ? nullptr : qlt::FindFunction(library, name);
            });
    };
    EXPECT_TRUE(load("").complete);
    EXPECT_EQ(names.size(), 25U);
    for (const std::string& name : std::vector<std::string>(names))
    {
        const qlt::HostService service = load(name);
        EXPECT_TRUE(service.installed);
        EXPECT_FALSE(service.complete) << name;
    }
}

// The worker catches no exceptions.
TEST_F(ClientThreadDeathTest, AFailureOnTheWorkerEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The status for a null handle.
    const std::string nullPointer = "Error VR_STATUS_ERROR_NULL_PTR \\(2\\)";
    const std::string failedWait; // the text comes from the system
    const std::pair<const char*, std::string> rows[] = {
        {"VRHostClientManager_start", "Cannot start the client manage"},
        {"VRHostClientManager_start", nullPointer},
        {"VRHostClientManager_connectClient", "Cannot connect to the servic"},
        {"VRHostClientManager_connectClient", nullPointer},
        {"VRHostClientManager_deleteHandle", "Error VR_STATUS_ERROR_EVENT \\(23\\)"},
        {"VRHostClient_getNotificationHandle", "Cannot get the client notification handl"},
        {"VRHostClient_getNotificationHandle", nullPointer},
        {"VRHostClient_connectDevice", "Cannot connect to the devic"},
        {"VRHostClient_destroy", "Cannot disconnect from the servic"},
        {"VRHostDevice_getNotificationHandle", "Cannot get the device notification handl"},
        {"VRHostDevice_connectCamera", "Cannot connect to the device camer"},
        {"VRHostDevice_connectScene", "Cannot connect to the device scen"},
        {"VRHostDevice_connectScene", nullPointer},
        {"VRHostDevice_destroy", "Cannot disconnect from the devic"},
        {"VRHostDeviceCamera_getNotificationHandle", "Cannot get the device notification handl"},
        {"VRHostDeviceScene_getNotificationHandle",
         "Cannot get the device scene notification handl"},
        {"VRHost_getHandlePtr", "Cannot get handle pointe"},
        {"VRHostDevice_getNotificationHandle", failedWait},
    };
    for (const auto& row : rows)
    {
        const auto run = [&]
        {
            const auto& [function, text] = row;
            script.Fail(function, text == nullPointer  ? HostServiceScript::ZERO
                                  : text == failedWait ? HostServiceScript::NO_EVENT
                                                       : 23);
            Start();
            ConnectAll();
            Notify(CLIENT_WITHDRAWN);
            Eventually([] { return false; }); // the stop comes while the worker waits
        };
        EXPECT_DEATH(run(), row.second) << row.first;
    }
}
