// The connection of an Hmd to its device: it finds the device and reads its reports.
//
// Threads: the connection watcher, which it owns, connects. The tracker's processing thread reads
// and disconnects. Any thread may ask whether it is connected. The mutex guards the connection
// (flag, device and endpoint) and is held across a blocking read.
#pragma once

#include <qlt/Sensors/Hmd.h>
#include <qlt/Sensors/SensorReport.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace qlt
{

class Hmd::HardwareIo
{
public:
    enum class ReadResult
    {
        NotConnected, // at once
        Incomplete,   // a read of another length, which disconnects
        Whole,
    };

    /// Starts the connection watcher at once. Host and clock must outlive this.
    HardwareIo(UsbHost& host, Clock& clock);

    /// Waits for the watcher's current sleep, then closes the device.
    ~HardwareIo();

    HardwareIo(const HardwareIo&) = delete;
    HardwareIo& operator=(const HardwareIo&) = delete;

    bool IsConnected() const;

    /// Waits for one report and reads it into `report`. On the processing thread only.
    ReadResult Read(SensorReport& report);

    /// The time stamp, in seconds, of the next report's events. On the processing thread only.
    float NextEventTime();

private:
    void Watch();
    void Connect();
    void Disconnect();

    UsbHost& mHost;
    Clock& mClock;
    bool mConnected = false;
    std::atomic<bool> mRunning{true};
    float mEventTime = 0.0f; // only the processing thread touches it
    std::unique_ptr<VendorUsbDevice> mUSBDevice;
    UsbEndPoint* mEndPoint = nullptr; // the device's
    mutable std::recursive_mutex mMutex;
    std::thread mWatcher;
};

} // namespace qlt
