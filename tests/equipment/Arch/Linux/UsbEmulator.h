// USB devices that only this process sees. umockdev redirects libusb's look at the system, and
// their requests are answered here as the kernel would. The program must run under
// umockdev-wrapper, with one emulator at a time.
//
// What is pushed goes to the oldest read of that endpoint, of whichever device it is.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <umockdev.h>
#include <vector>

class UsbEmulator
{
public:
    UsbEmulator();
    ~UsbEmulator();

    /// A device with the endpoints 0x81 (interrupt) and 0x82 (bulk), beside those already there.
    void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1);

    /// All devices are gone, what they had in flight fails, what was pushed is forgotten.
    void Unplug();

    /// Ends a read with this data and a negated errno.
    void Push(std::uint8_t endPoint, std::vector<std::uint8_t> data, int status = 0);

    /// Waits until so many reads of the endpoint are in flight.
    void WaitForInFlight(std::uint8_t endPoint, std::size_t count);
    std::size_t InFlight(std::uint8_t endPoint);

    /// How much may be in flight; the kernel's usbfs_memory_mb.
    void LimitBytes(std::size_t bytes) { mByteLimit = bytes; }

    /// For the calling thread: it may not open the devices, even as root.
    void ForbidOpening();

    /// Another program has claimed the devices.
    void ClaimElsewhere();

private:
    struct Request
    {
        UMockdevIoctlClient* client;
        void* address; // where the client has it
        std::uint8_t endPoint;
        void* buffer;
        int size;
        bool hasEnded = false;
        int status = 0;
        int length = 0;
    };
    struct Answer
    {
        std::vector<std::uint8_t> data;
        int status;
    };

    static gboolean OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self);
    static void OnClosed(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self);

    /// With the mutex locked; 0 or an errno.
    int Handle(UMockdevIoctlClient* client, unsigned long request, void* argument);
    int Submit(UMockdevIoctlClient* client, void* address);
    int Reap(UMockdevIoctlClient* client, void* place);
    void EndAnswered(std::uint8_t endPoint);
    void End(Request& request, int status, int length);
    bool IsPlugged(UMockdevIoctlClient* client) const;
    std::size_t CountInFlight(std::uint8_t endPoint) const;

    UMockdevTestbed* mTestbed;
    UMockdevIoctlBase* mIoctls;
    std::atomic<std::size_t> mByteLimit{SIZE_MAX};
    std::mutex mMutex; // guards everything below
    std::condition_variable mChanged;
    int mPlugs = 1;                              // the root hub is number 1
    std::map<std::string, std::string> mPlugged; // the places in /sys by the nodes in /dev
    std::map<std::string, UMockdevIoctlClient*> mClaims;
    std::list<Request> mRequests; // until they are reaped
    std::map<std::uint8_t, std::deque<Answer>> mAnswers;
};
