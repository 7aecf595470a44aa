// A headset tracker with a scripted USB host.
#pragma once

#include <qlt/Sensors/Hmd.h>

#include "fakes/EventLog.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <iostream>
#include <optional>

/// It also captures what the library prints.
struct ScriptedHeadset
{
    /// Returns when the tracker has looked for the device once.
    explicit ScriptedHeadset(const ScriptedDevice& device = {})
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        host.Plug(device);
        hmd.emplace(host, clock);
        clock.WaitForSleep(1);
    }

    void Start(qlt::TrackerListener& toListener)
    {
        listener = &toListener;
        hmd->AddListener(*listener);
        hmd->Start();
    }

    /// Sends a report. All of its events have been raised when this returns.
    void Deliver(const ScriptedUsbHost::Report& report)
    {
        host.QueueRead(report);
        host.WaitForIdle();
    }

    /// Ends the tracker and collects what was printed.
    void End()
    {
        host.Unplug();
        clock.KeepAwake();
        if (listener != nullptr)
        {
            hmd->Stop();
            hmd->RemoveListener(*listener);
        }
        hmd.reset();
        EXPECT_EQ(host.opened, host.closed);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        std::cout << (testing::Test::HasFailure() ? out : ""); // the output includes the failures
    }

    ScriptedUsbHost host;
    ManualClock clock;
    EventLog log;
    std::optional<qlt::Hmd> hmd;
    qlt::TrackerListener* listener = nullptr;
    std::string out, err;
};
