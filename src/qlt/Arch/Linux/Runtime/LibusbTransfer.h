// Reads over libusb. The transfers of one endpoint share a pipe: those that the kernel has, and
// behind them in their order those that it had no memory for yet.
//
// Callers wait, libusb's event thread ends transfers; both meet under the pipe's mutex. A transfer
// that has ended needs neither libusb nor the open device any more.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <condition_variable>
#include <deque>
#include <libusb.h>
#include <memory>
#include <mutex>
#include <set>

namespace qlt
{

class LibusbTransfer;

struct LibusbPipe
{
    LibusbPipe(libusb_device_handle* openDevice, std::uint8_t endPoint, std::uint8_t endPointType);

    /// Ends all transfers; they have failed when it returns.
    void Abort();

    /// Hands the kernel what it takes. With the mutex locked.
    void SubmitWaiting();

    libusb_device_handle* const device;
    const std::uint8_t address;
    const std::uint8_t type;
    std::mutex mutex; // guards everything below, and the states of the transfers
    std::condition_variable ended;
    std::set<LibusbTransfer*> inFlight;
    std::deque<LibusbTransfer*> waiting;
};

class LibusbTransfer final : public UsbTransfer
{
public:
    /// Begins at once. `event` is an eventfd or null.
    LibusbTransfer(std::shared_ptr<LibusbPipe> pipe, std::uint8_t* buffer, std::uint32_t length,
                   void* event);
    ~LibusbTransfer() override;

    LibusbTransfer(const LibusbTransfer&) = delete;
    LibusbTransfer& operator=(const LibusbTransfer&) = delete;

    bool Wait(std::uint32_t timeoutMs) override;
    bool Finish(std::uint32_t& length) override;

    /// Asks for an early end, which Finish waits for.
    void Cancel();

private:
    friend struct LibusbPipe;

    static void LIBUSB_CALL OnEnd(libusb_transfer* transfer);
    void End(bool succeeded, int length);

    const std::shared_ptr<LibusbPipe> mPipe;
    const int mEvent;
    libusb_transfer* mTransfer; // null from the end on
    bool mRefused = true;       // until it has begun
    bool mSucceeded = false;
    std::uint32_t mLength = 0;
};

} // namespace qlt
