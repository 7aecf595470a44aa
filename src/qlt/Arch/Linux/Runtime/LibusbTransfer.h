// Reads over libusb. The transfers of one endpoint share a pipe. The pipe lists the transfers that
// the kernel has accepted. It also lists, oldest first, the transfers for which the kernel has no
// memory yet.
//
// Callers wait for transfers and libusb's event thread ends them; both lock the mutex of the pipe.
// A transfer that has ended needs neither libusb nor the open device. A pipe keeps one libusb
// transfer for the next read, so that a sequence of reads allocates nothing.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <condition_variable>
#include <libusb.h>
#include <memory>
#include <mutex>
#include <vector>

namespace qlt
{

class LibusbTransfer;

struct LibusbPipe
{
    LibusbPipe(libusb_device_handle* openDevice, std::uint8_t endPoint, std::uint8_t endPointType);
    ~LibusbPipe();

    LibusbPipe(const LibusbPipe&) = delete;
    LibusbPipe& operator=(const LibusbPipe&) = delete;

    /// Ends all transfers. They have failed when it returns.
    void Abort();

    /// Passes waiting transfers to the kernel until it refuses one. The caller holds the mutex.
    void SubmitWaiting();

    /// Allocate gives the spare transfer or a new one, and null without memory. Release makes a
    /// transfer the spare one. The caller holds the mutex.
    libusb_transfer* Allocate();
    void Release(libusb_transfer* transfer);

    libusb_device_handle* const device;
    const std::uint8_t address;
    const std::uint8_t type;
    std::mutex mutex; // guards everything below, and the states of the transfers
    std::condition_variable ended;
    std::vector<LibusbTransfer*> inFlight;
    std::vector<LibusbTransfer*> waiting; // oldest first
    libusb_transfer* spare = nullptr;
};

class LibusbTransfer final : public UsbTransfer
{
public:
    /// Begins the read at once. `event` is an eventfd or null.
    LibusbTransfer(std::shared_ptr<LibusbPipe> pipe, std::uint8_t* buffer, std::uint32_t length,
                   NativeEventHandle event);
    ~LibusbTransfer() override;

    LibusbTransfer(const LibusbTransfer&) = delete;
    LibusbTransfer& operator=(const LibusbTransfer&) = delete;

    bool Wait(std::uint32_t timeoutMs) override;
    bool Finish(std::uint32_t& length) override;

    /// Asks for an early end. Finish waits for it.
    void Cancel();

private:
    friend struct LibusbPipe;

    static void LIBUSB_CALL OnEnd(libusb_transfer* transfer);
    void End(bool succeeded, int length);

    const std::shared_ptr<LibusbPipe> mPipe;
    const int mEvent;
    libusb_transfer* mTransfer = nullptr; // null after the end
    bool mRefused = true;                 // false after the read has begun
    bool mSucceeded = false;
    std::uint32_t mLength = 0;
};

} // namespace qlt
