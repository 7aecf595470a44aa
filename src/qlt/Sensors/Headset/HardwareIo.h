// The connection of an Hmd to its device. It finds the device and reads its reports.
//
// Threads: the connection watcher, a thread of this class, connects. The tracker's processing
// thread reads and disconnects. Any thread may call IsConnected. The mutex guards the connection
// (flag, device and endpoint). A read holds the mutex while it waits.
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
        NotConnected, // returned at once
        Incomplete,   // the length was wrong, and Read has disconnected
        Whole,
    };

    /// Starts the connection watcher at once. `host` and `clock` must outlive the object.
    HardwareIo(UsbHost& host, Clock& clock);

    /// Waits for the watcher's current sleep, then closes the device.
    ~HardwareIo();

    HardwareIo(const HardwareIo&) = delete;
    HardwareIo& operator=(const HardwareIo&) = delete;

    bool IsConnected() const;

    /// Waits for a report and reads it into `report`. Only the processing thread calls it.
    ReadResult Read(SensorReport& report);

    /// The time stamp in seconds for the events of the next report. Each call advances it by one
    /// report. Only the processing thread calls it.
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
    UsbEndPoint* mEndPoint = nullptr; // owned by mUSBDevice
    mutable std::recursive_mutex mMutex;
    std::thread mWatcher;
};

} // namespace qlt
