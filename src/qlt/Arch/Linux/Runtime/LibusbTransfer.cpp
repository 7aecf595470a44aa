#include "LibusbTransfer.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <iostream>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace qlt
{
namespace
{

using Lock = std::unique_lock<std::mutex>;

void AdviseOnMemory()
{
    static std::once_flag once;
    std::call_once(
        once,
        []
        {
            std::cerr
                << "The kernel has too little memory for the USB transfers in flight; to give it "
                   "more: echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb"
                << std::endl;
        });
}

// An event may be any eventfd, not only one of ours; so it is not the event table's to signal.
void Signal(int event)
{
    const std::uint64_t one = 1;
    if (event > 0 && write(event, &one, sizeof one) < 0)
    {
        // Only a counter that is full refuses, and then the event is signalled.
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
                return; // the end of one that is in flight gives memory back
            }
        }
        waiting.pop_front();
        if (error == LIBUSB_SUCCESS)
        {
            inFlight.insert(&next);
        }
        else
        {
            next.End(false, 0);
        }
    }
}

LibusbTransfer::LibusbTransfer(std::shared_ptr<LibusbPipe> pipe, std::uint8_t* buffer,
                               std::uint32_t length, void* event)
    : mPipe(std::move(pipe))
    , mEvent(static_cast<int>(reinterpret_cast<std::intptr_t>(event)))
    , mTransfer(length <= INT_MAX ? libusb_alloc_transfer(0) : nullptr)
{
    const Lock lock(mPipe->mutex);
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
    // The waiter may destroy the transfer, and let go of the pipe, before the lock is given back.
    const std::shared_ptr<LibusbPipe> pipe = self.mPipe;
    const Lock lock(pipe->mutex);
    pipe->inFlight.erase(&self);
    self.End(transfer->status == LIBUSB_TRANSFER_COMPLETED, transfer->actual_length);
    pipe->SubmitWaiting();
    pipe->ended.notify_all();
}

/// With the pipe's mutex locked.
void LibusbTransfer::End(bool succeeded, int length)
{
    libusb_free_transfer(mTransfer);
    mTransfer = nullptr;
    mSucceeded = succeeded;
    mLength = static_cast<std::uint32_t>(length);
    if (!mRefused)
    {
        Signal(mEvent); // while the caller cannot know yet, and so still has the event
    }
}

} // namespace qlt
