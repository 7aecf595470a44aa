// The connection of an Hmd to its device: finds it, reads its reports, hands them on.
//
// Threads: the connection watcher, which it owns, connects; the processing thread of the tracker
// reads and disconnects; anyone may ask whether it is connected. The mutex guards the connection
// (connected, device, endpoint, scales) and is held across a blocking read.
#pragma once

#include <qlt/Sensors/Hmd.h>

#include "Sensors/SensorReport.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace qlt
{

class Hmd::HardwareIo
{
public:
    /// Starts the connection watcher at once. All three must outlive this.
    HardwareIo(Hmd* hmd, UsbHost& host, Clock& clock);

    /// Waits for the watcher's current sleep, then closes the device.
    ~HardwareIo();

    HardwareIo(const HardwareIo&) = delete;
    HardwareIo& operator=(const HardwareIo&) = delete;

    bool IsConnected() const;

    /// Reads one report and raises its events; a read that is not whole disconnects. False at once
    /// when not connected. On the processing thread only.
    bool Read();

private:
    void Watch();
    void Connect();
    void Disconnect();
    void Deliver(const SensorSample& sample);

    Hmd* const mHmd;
    UsbHost& mHost;
    Clock& mClock;
    bool mConnected = false;
    std::atomic<bool> mRunning{true};
    float mEventTime = 0.0f; // only the processing thread touches it and the report
    std::unique_ptr<VendorUsbDevice> mUSBDevice;
    UsbEndPoint* mEndPoint = nullptr; // the device's
    SensorReport mReport{};
    SensorScales mScales;
    mutable std::recursive_mutex mMutex;
    std::thread mWatcher;
};

} // namespace qlt
