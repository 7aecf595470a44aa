#include "LibusbTransfer.h"

#include <qlt/Runtime/Log.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace qlt
{
namespace
{

using Lock = std::unique_lock<std::mutex>;

constexpr std::size_t USUAL_TRANSFERS = 16; // more than a camera has in flight

void AdviseOnMemory()
{
    static std::once_flag once;
    std::call_once(
        once,
        []
        {
            WriteLog(LogLevel::Error,
                     "The kernel has too little memory for the USB transfers in flight; to give it "
                     "more: echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb");
        });
}

// The event may be any eventfd and need not be in the event table, so write to it directly.
void Signal(int event)
{
    const std::uint64_t one = 1;
    if (event > 0 && write(event, &one, sizeof one) < 0)
    {
        // The write fails only when the counter is full. In that case the event is signalled
        // already.
        return;
    }
}

void TakeSignal(int event)
{
    pollfd readable{event, POLLIN, 0};
    std::uint64_t count = 0;
    if (event > 0 && poll(&readable, 1, 0) == 1 && read(event, &count, sizeof count) < 0)
    {
        return; // another waiter has taken it
    }
}

} // namespace

LibusbPipe::LibusbPipe(libusb_device_handle* openDevice, std::uint8_t endPoint,
                       std::uint8_t endPointType)
    : device(openDevice)
    , address(endPoint)
    , type(endPointType)
{
    inFlight.reserve(USUAL_TRANSFERS);
    waiting.reserve(USUAL_TRANSFERS);
}

LibusbPipe::~LibusbPipe() { libusb_free_transfer(spare); }

libusb_transfer* LibusbPipe::Allocate()
{
    libusb_transfer* const kept = std::exchange(spare, nullptr);
    return kept != nullptr ? kept : libusb_alloc_transfer(0);
}

void LibusbPipe::Release(libusb_transfer* transfer)
{
    libusb_free_transfer(std::exchange(spare, transfer));
}

void LibusbPipe::Abort()
{
    Lock lock(mutex);
    for (LibusbTransfer* transfer : waiting)
    {
        transfer->End(false, 0);
    }
    waiting.clear();
    for (LibusbTransfer* transfer : inFlight)
    {
        libusb_cancel_transfer(transfer->mTransfer);
    }
    ended.notify_all();
    ended.wait(lock, [this] { return inFlight.empty(); });
}

void LibusbPipe::SubmitWaiting()
{
    while (!waiting.empty())
    {
        LibusbTransfer& next = *waiting.front();
        const int error = libusb_submit_transfer(next.mTransfer);
        if (error == LIBUSB_ERROR_NO_MEM)
        {
            AdviseOnMemory();
            if (!inFlight.empty())
            {
                return; // the end of a transfer gives memory back
            }
        }
        waiting.erase(waiting.begin());
        if (error == LIBUSB_SUCCESS)
        {
            inFlight.push_back(&next);
        }
        else
        {
            next.End(false, 0);
        }
    }
}

LibusbTransfer::LibusbTransfer(std::shared_ptr<LibusbPipe> pipe, std::uint8_t* buffer,
                               std::uint32_t length, NativeEventHandle event)
    : mPipe(std::move(pipe))
    , mEvent(static_cast<int>(reinterpret_cast<std::intptr_t>(event)))
{
    const Lock lock(mPipe->mutex);
    mTransfer = length <= INT_MAX ? mPipe->Allocate() : nullptr;
    if (mTransfer != nullptr)
    {
        libusb_fill_bulk_transfer(mTransfer, mPipe->device, mPipe->address, buffer,
                                  static_cast<int>(length), OnEnd, this, 0);
        mTransfer->type = mPipe->type;
        mPipe->waiting.push_back(this);
        if (mPipe->waiting.size() == 1)
        {
            mPipe->SubmitWaiting();
        }
    }
    mRefused = mTransfer == nullptr;
}

LibusbTransfer::~LibusbTransfer()
{
    Cancel();
    std::uint32_t length = 0;
    LibusbTransfer::Finish(length);
}

bool LibusbTransfer::Wait(std::uint32_t timeoutMs)
{
    Lock lock(mPipe->mutex);
    if (mRefused || !mPipe->ended.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                           [this] { return mTransfer == nullptr; }))
    {
        return false;
    }
    TakeSignal(mEvent);
    return true;
}

bool LibusbTransfer::Finish(std::uint32_t& length)
{
    Lock lock(mPipe->mutex);
    mPipe->ended.wait(lock, [this] { return mTransfer == nullptr; });
    length = mLength;
    return mSucceeded;
}

void LibusbTransfer::Cancel()
{
    const Lock lock(mPipe->mutex);
    auto& waiting = mPipe->waiting;
    const auto place = std::find(waiting.begin(), waiting.end(), this);
    if (place != waiting.end())
    {
        waiting.erase(place);
        End(false, 0);
    }
    else if (mTransfer != nullptr)
    {
        libusb_cancel_transfer(mTransfer);
    }
}

void LibusbTransfer::OnEnd(libusb_transfer* transfer)
{
    LibusbTransfer& self = *static_cast<LibusbTransfer*>(transfer->user_data);
    // Hold the pipe, because the waiter may destroy the transfer and its reference to the pipe
    // before this function unlocks the mutex.
    const std::shared_ptr<LibusbPipe> pipe = self.mPipe;
    const Lock lock(pipe->mutex);
    auto& inFlight = pipe->inFlight;
    inFlight.erase(std::find(inFlight.begin(), inFlight.end(), &self));
    self.End(transfer->status == LIBUSB_TRANSFER_COMPLETED, transfer->actual_length);
    pipe->SubmitWaiting();
    pipe->ended.notify_all();
}

/// The caller holds the mutex of the pipe.
void LibusbTransfer::End(bool succeeded, int length)
{
    mPipe->Release(std::exchange(mTransfer, nullptr));
    mSucceeded = succeeded;
    mLength = static_cast<std::uint32_t>(length);
    if (!mRefused)
    {
        Signal(mEvent); // the event still exists, because its owner does not know of the end yet
    }
}

} // namespace qlt
