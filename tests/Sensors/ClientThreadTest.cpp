#include "Sensors/ClientThread.h"

#include <qlt/Runtime/VRException.h>

#include "fakes/HostServiceFixture.h"
#include "fakes/OpenHandles.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

using Names = std::vector<std::string>;

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

const Names DROP_CAMERA_AND_SCENE = {"VRHostDeviceCamera_destroy", "VRHostDeviceScene_destroy"};
const Names DROP_DEVICE = {"VRHostDeviceCamera_destroy", "VRHostDeviceScene_destroy",
                           "VRHostDevice_destroy"};
const Names DROP_CLIENT = {"VRHostDeviceCamera_destroy", "VRHostDeviceScene_destroy",
                           "VRHostDevice_destroy", "VRHostClient_destroy"};

} // namespace

TEST_F(ClientThreadTest, ConnectsAsTheServiceAnnouncesAndDropsAtTheEnd)
{
    Start();
    EXPECT_EQ(scene.Get(), nullptr);
    ConnectAll();
    EXPECT_NE(scene.Get(), nullptr);
    thread->Stop(true);
    EXPECT_EQ(script.Connected(), 1u); // the manager runs until its owner goes
    EXPECT_EQ(Calls({"_stop"}), Names{});
    thread.reset();
    EXPECT_EQ(
        Calls({"Manager_create", "Manager_start", "connectClient", "connectDevice", "connectCamera",
               "connectScene", "_destroy", "_stop"}),
        (Names{"VRHostClientManager_create", "VRHostClientManager_start",
               "VRHostClientManager_connectClient", "VRHostClient_connectDevice",
               "VRHostDevice_connectCamera", "VRHostDevice_connectScene",
               "VRHostDeviceCamera_destroy", "VRHostDeviceScene_destroy", "VRHostDevice_destroy",
               "VRHostClient_destroy", "VRHostClientManager_stop", "VRHostClientManager_destroy"}));
}

TEST_F(ClientThreadTest, AThreadThatNeverStartedStopsItsManagerAllTheSame)
{
    thread = std::make_unique<qlt::ClientThread>(scene);
    thread.reset();
    EXPECT_EQ(Calls({"_start", "_stop", "_destroy"}),
              (Names{"VRHostClientManager_stop", "VRHostClientManager_destroy"}));
}

// What goes, in which order, and what stays; and everything comes back when it is announced again.
TEST_F(ClientThreadTest, EveryWithdrawalDropsWhatHangsOnIt)
{
    const struct
    {
        HostSource source;
        std::uint32_t type;
        Names dropped;
    } rows[] = {
        {HostSource::DEVICE, SCENE_WITHDRAWN, DROP_CAMERA_AND_SCENE},
        {HostSource::DEVICE, CAMERA_WITHDRAWN, DROP_CAMERA_AND_SCENE},
        {HostSource::CLIENT, DEVICE_WITHDRAWN, DROP_DEVICE},
        {HostSource::MANAGER, CLIENT_WITHDRAWN, DROP_CLIENT},
    };
    Start();
    for (const auto& row : rows)
    {
        for (const auto& [source, type] : {std::pair(HostSource::MANAGER, CLIENT_AVAILABLE),
                                           {HostSource::CLIENT, DEVICE_AVAILABLE},
                                           {HostSource::DEVICE, CAMERA_AVAILABLE},
                                           {HostSource::DEVICE, SCENE_AVAILABLE}})
        {
            Tell(source, type); // what is there ignores it
        }
        ASSERT_TRUE(HasConnections(5));
        script.Reset();
        Tell(row.source, row.type);
        EXPECT_TRUE(HasConnections(5 - row.dropped.size()));
        EXPECT_EQ(Calls({"_destroy"}), row.dropped);
        EXPECT_EQ(scene.Get(), nullptr);
    }
}

TEST_F(ClientThreadTest, IgnoresASecondAnnouncementAWithdrawalOfNothingAndUnknownTypes)
{
    Start();
    Tell(HostSource::MANAGER, CLIENT_WITHDRAWN);
    Tell(HostSource::MANAGER, CLIENT_AVAILABLE);
    Tell(HostSource::CLIENT, DEVICE_WITHDRAWN);
    Tell(HostSource::CLIENT, DEVICE_AVAILABLE);
    Tell(HostSource::DEVICE, CAMERA_WITHDRAWN);
    Tell(HostSource::DEVICE, SCENE_WITHDRAWN);
    Tell(HostSource::DEVICE, SCENE_AVAILABLE);
    Tell(HostSource::DEVICE, CAMERA_AVAILABLE);
    ASSERT_TRUE(HasConnections(5));
    const auto connected = scene.Get();
    script.Reset();
    for (const HostSource source : {HostSource::MANAGER, HostSource::CLIENT, HostSource::DEVICE})
    {
        // Each source has its own numbers: those of the others mean nothing to it.
        for (std::uint32_t type = 0; type < 16; ++type)
        {
            const bool withdrawal = (source == HostSource::MANAGER && type == CLIENT_WITHDRAWN) ||
                                    (source == HostSource::CLIENT && type == DEVICE_WITHDRAWN) ||
                                    (source == HostSource::DEVICE &&
                                     (type == CAMERA_WITHDRAWN || type == SCENE_WITHDRAWN));
            if (!withdrawal)
            {
                Tell(source, type);
            }
        }
        Tell(source, 0xFFFFFFFF);
    }
    EXPECT_EQ(script.Connected(), 5u);
    EXPECT_EQ(Calls({"connectClient", "connectDevice", "connectCamera", "connectScene"}), Names{});
    EXPECT_EQ(scene.Get(), connected);
}

// One signal, several notifications: the later ones must not wait for the next signal.
TEST_F(ClientThreadTest, OneWakeningReadsAllThatIsPending)
{
    Start();
    Tell(HostSource::MANAGER, CLIENT_AVAILABLE);
    Tell(HostSource::CLIENT, DEVICE_AVAILABLE);
    script.Reset();
    script.Notify(HostSource::DEVICE, CAMERA_AVAILABLE, true);
    script.Notify(HostSource::DEVICE, 99, true);
    script.Notify(HostSource::DEVICE, SCENE_AVAILABLE, true);
    script.Notify(HostSource::DEVICE, CAMERA_WITHDRAWN, false);
    ASSERT_TRUE(Eventually([&] { return Calls({"_destroy"}).size() == 2; }));
    EXPECT_EQ(Calls({"connectCamera", "connectScene", "_destroy", "deleteHandle"}),
              (Names{"VRHostDevice_connectCamera", "VRHostDevice_deleteHandle",
                     "VRHostDevice_deleteHandle", "VRHostDevice_connectScene",
                     "VRHostDevice_deleteHandle", "VRHostDevice_deleteHandle",
                     "VRHostDeviceCamera_destroy", "VRHostDeviceScene_destroy"}));
}

TEST_F(ClientThreadTest, ASceneLivesAsLongAsItIsRead)
{
    Start();
    ConnectAll();
    auto held = scene.Get();
    auto descriptor = held->GetCurrentDescriptor();
    ASSERT_TRUE(descriptor.has_value());
    script.Notify(HostSource::MANAGER, CLIENT_WITHDRAWN);
    ASSERT_TRUE(HasConnections(2)); // the manager, and the scene
    EXPECT_EQ(scene.Get(), nullptr);
    EXPECT_EQ(Calls({"Scene_destroy"}), Names{});
    EXPECT_TRUE(held->GetCurrentDescriptor().has_value());
    descriptor->holder.GiveBack();
    descriptor->holder.GiveBack(); // once is enough
    held.reset();
    EXPECT_EQ(Calls({"Scene_destroy"}).size(), 1u);
}

TEST_F(ClientThreadTest, AThousandConnectionsLeaveNoHandleBehind)
{
    Start();
    std::size_t before = 0;
    for (int i = 0; i < 1000; ++i)
    {
        ConnectAll();
        script.Notify(HostSource::MANAGER, CLIENT_WITHDRAWN);
        ASSERT_TRUE(HasConnections(1));
        script.Reset();
        before = i == 0 ? CountOpenHandles() : before;
    }
    EXPECT_GT(before, 0u);
    EXPECT_EQ(CountOpenHandles(), before);
}

TEST_F(ClientThreadTest, WithoutTheLibraryItWaitsForItsEnd)
{
    const qlt::HostService none;
    qlt::ClientThread alone(scene, none);
    alone.Init();
    alone.Start(true, qlt::WAIT_FOREVER);
    EXPECT_EQ(scene.Get(), nullptr);
    alone.Stop(true);
    EXPECT_EQ(Calls({"_create"}), Names{});
}

TEST_F(ClientThreadTest, AManagerThatIsNotCreatedIsReported)
{
    const auto expectRefused = [this](const qlt::HostService& service, int status)
    {
        try
        {
            const qlt::ClientThread refused(scene, service);
            FAIL();
        }
        catch (const VRException& e)
        {
            EXPECT_EQ(e.status, status);
            EXPECT_STREQ(e.what(), "Cannot create the client manage");
        }
    };
    qlt::HostService incomplete = qlt::HostService::System();
    ASSERT_TRUE(incomplete.installed && incomplete.complete);
    incomplete.complete = false;
    expectRefused(incomplete, VR_STATUS_ERROR_NOT_SUPPORTED);
    script.Fail("VRHostClientManager_create", 77); // outside the list, and kept
    expectRefused(qlt::HostService::System(), 77);
}

TEST_F(ClientThreadTest, AManagerWithoutAHandleCannotBeStopped)
{
    script.GiveZero("VRHostClientManager_create");
    thread = std::make_unique<qlt::ClientThread>(scene);
    try
    {
        thread->Shutdown();
        FAIL();
    }
    catch (const VRException& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_NULL_PTR);
    }
}

TEST_F(ClientThreadTest, AManagerThatDoesNotStopIsReportedAndDestroyed)
{
    Start();
    ConnectAll();
    script.Fail("VRHostClientManager_stop", 16);
    try
    {
        thread->Shutdown();
        FAIL();
    }
    catch (const VRException& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_DEVICE_CORRUPTED);
        EXPECT_STREQ(e.what(), "Cannot stop the client manage");
    }
    thread.reset(); // nothing is stopped twice
    EXPECT_EQ(Calls({"_stop"}).size(), 1u);
}

namespace
{

struct Failure
{
    const char* function;
    bool zero;        // succeeds without a result, instead of failing
    const char* text; // of the exception that ends the process
};

/// Printed by GoogleTest as the test's parameter.
void PrintTo(const Failure& failure, std::ostream* out)
{
    *out << failure.function << (failure.zero ? " gives zero" : " fails");
}

class ClientThreadDeathTest : public ClientThreadTest, public testing::WithParamInterface<Failure>
{
};

} // namespace

// On the worker nothing is caught.
TEST_P(ClientThreadDeathTest, AFailureOnTheWorkerEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Failure& failure = GetParam();
    const auto run = [&]
    {
        if (failure.zero)
        {
            script.GiveZero(failure.function);
        }
        else
        {
            script.Fail(failure.function, 23);
        }
        Start();
        ConnectAll();
        script.Notify(HostSource::MANAGER, CLIENT_WITHDRAWN);
        Eventually([] { return false; }); // the end comes while it waits
    };
    EXPECT_DEATH(run(), failure.text);
}

constexpr const char* NULL_POINTER = "Error VR_STATUS_ERROR_NULL_PTR \\(2\\)";

INSTANTIATE_TEST_SUITE_P(
    Every, ClientThreadDeathTest,
    testing::Values(
        Failure{"VRHostClientManager_start", false, "Cannot start the client manage"},
        Failure{"VRHostClientManager_start", true, NULL_POINTER},
        Failure{"VRHostClientManager_connectClient", false, "Cannot connect to the servic"},
        Failure{"VRHostClientManager_connectClient", true, NULL_POINTER},
        Failure{"VRHostClientManager_deleteHandle", false, "Error VR_STATUS_ERROR_EVENT \\(23\\)"},
        Failure{"VRHostClient_getNotificationHandle", false,
                "Cannot get the client notification handl"},
        Failure{"VRHostClient_getNotificationHandle", true, NULL_POINTER},
        Failure{"VRHostClient_connectDevice", false, "Cannot connect to the devic"},
        Failure{"VRHostClient_destroy", false, "Cannot disconnect from the servic"},
        Failure{"VRHostDevice_getNotificationHandle", false,
                "Cannot get the device notification handl"},
        Failure{"VRHostDevice_connectCamera", false, "Cannot connect to the device camer"},
        Failure{"VRHostDevice_connectScene", false, "Cannot connect to the device scen"},
        Failure{"VRHostDevice_connectScene", true, NULL_POINTER},
        Failure{"VRHostDevice_destroy", false, "Cannot disconnect from the devic"},
        Failure{"VRHostDeviceCamera_getNotificationHandle", false,
                "Cannot get the device notification handl"},
        Failure{"VRHostDeviceScene_getNotificationHandle", false,
                "Cannot get the device scene notification handl"},
        Failure{"VRHost_getHandlePtr", false, "Cannot get handle pointe"}));
