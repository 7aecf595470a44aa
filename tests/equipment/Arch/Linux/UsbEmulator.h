// USB devices that only this process sees. umockdev redirects the file accesses of libusb. This
// class answers the requests to the devices as the kernel would. Run the program under
// umockdev-wrapper.
#pragma once

#include "equipment/EmulatedBus.h"

#include <atomic>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <umockdev.h>

class UsbEmulator final : public EmulatedBus
{
public:
    UsbEmulator();
    ~UsbEmulator() override;

    void Plug(std::uint16_t vendorId, std::uint16_t productId) override;
    void Unplug() override;
    void Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds) override;
    std::size_t Pending(std::uint8_t endPoint) override;

    /// The memory for transfers in flight, as the kernel's usbfs_memory_mb.
    void LimitBytes(std::size_t bytes) { mByteLimit = bytes; }

    /// From now on the calling thread may not open the devices, even as root.
    void ForbidOpening();

    /// The nodes in /dev of the devices that received a request. The first device that was plugged
    /// in is "001/002".
    std::set<std::string> Touched();

    /// Another program has claimed the devices.
    void ClaimElsewhere();

private:
    struct Request
    {
        UMockdevIoctlClient* client;
        void* address; // the address in the client
        std::uint8_t endPoint;
        void* buffer;
        int size;
        bool hasEnded = false;
        int status = 0;
        int length = 0;

        void End(int withStatus, int withLength)
        {
            hasEnded = true;
            status = withStatus;
            length = withLength;
        }
    };
    struct Answer
    {
        Bytes bytes;
        bool succeeds;
    };

    static gboolean OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self);
    static void OnClosed(UMockdevIoctlBase*, UMockdevIoctlClient* client, UsbEmulator* self);

    /// The caller holds the mutex. The result is 0 or an errno.
    int Handle(UMockdevIoctlClient* client, unsigned long request, void* argument);
    int Submit(UMockdevIoctlClient* client, void* address);
    int Reap(UMockdevIoctlClient* client, void* place);
    void EndAnswered(std::uint8_t endPoint);
    bool IsPlugged(UMockdevIoctlClient* client) const;

    UMockdevTestbed* mTestbed;
    UMockdevIoctlBase* mIoctls;
    std::atomic<std::size_t> mByteLimit{SIZE_MAX};
    std::mutex mMutex;                           // guards everything below
    int mPlugs = 1;                              // the root hub is number 1
    std::map<std::string, std::string> mPlugged; // the paths in /sys, by the nodes in /dev
    std::map<std::string, UMockdevIoctlClient*> mClaims;
    std::set<std::string> mTouched;
    std::list<Request> mRequests; // all requests that the client has not reaped yet
    std::map<std::uint8_t, std::deque<Answer>> mAnswers;
};
