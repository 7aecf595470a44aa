#include "Runtime/VRUsbStreamAsync.h"

#include "Runtime/FrameHeader.h"
#include "Runtime/LogLine.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>

namespace
{

using qlt::LogLevel;
using qlt::LogLine;

constexpr std::uint32_t STOP_WAIT_MS = 10; // it also sets the pace of the stream
constexpr std::uint32_t TRANSFER_WAIT_MS = 1000;
constexpr std::uint32_t PACKET_SIZE = 512;
constexpr std::uint32_t STATISTICS_PASSES = 60;

std::vector<std::uint32_t> MakeBuffer(std::uint32_t bytes)
{
    return std::vector<std::uint32_t>((bytes + 3) / 4);
}

/// deliberate: times are unsigned milliseconds since the hour began, so the elapsed time and the
/// rate jump when the hour changes.
struct Statistics
{
    std::uint32_t startMs = 0;
    std::uint32_t count = 0;
    std::uint32_t bytes = 0; // wraps at 2^32
    std::uint32_t elapsedMs = 0;
    float rate = 0.0f; // megabytes per second

    void Add(std::uint32_t received, std::uint32_t nowMs)
    {
        elapsedMs = nowMs - startMs;
        ++count;
        bytes += received;
        rate = static_cast<float>(bytes) / static_cast<float>(elapsedMs) * 1000.0f / 1000000.0f;
    }

    void Print() const
    {
        LogLine(LogLevel::Info) << "Time: " << elapsedMs << ", Count: " << count
                                << ", Bytes: " << bytes << ", Mb/s: " << rate;
    }
};

/// deliberate: after a header that is not at the beginning, standard error keeps printing
/// hexadecimal numbers. This is part of the interface.
void Print(const qlt::HeaderSearch& search)
{
    using Beginning = qlt::HeaderSearch::Beginning;
    if (search.beginning == Beginning::NoSignature)
    {
        LogLine(LogLevel::Error) << "error head_sig is not valid";
    }
    const std::uint32_t wrongAtBeginning = search.beginning == Beginning::WrongSum ? 1 : 0;
    for (std::uint32_t i = 0; i < search.wrongSums + wrongAtBeginning; ++i)
    {
        LogLine(LogLevel::Error) << "error head checksum is not valid";
    }
    if (!search.found)
    {
        LogLine(LogLevel::Error) << "error could not find new header";
    }
    else if (search.beginning != Beginning::Header)
    {
        std::cerr << std::hex;
        LogLine(LogLevel::Error) << "found header offset (0x" << qlt::FRAME_SIGNATURE << ") at 0x"
                                 << search.offset;
    }
}

/// Prints the result of the search. Returns the offset of the first header in bytes, or 0 when
/// there is none.
std::uint32_t NextHeader(const std::uint32_t* words, std::uint32_t length)
{
    const qlt::HeaderSearch search = qlt::FindHeader(words, length);
    Print(search);
    return search.offset;
}

} // namespace

std::uint32_t VRUsbStreamAsync::SystemHourClock()
{
    using namespace std::chrono;
    return static_cast<std::uint32_t>((system_clock::now().time_since_epoch() % hours(1)) /
                                      milliseconds(1));
}

VRUsbStreamAsync::VRUsbStreamAsync(std::uint16_t vendorId, std::uint16_t productId,
                                   std::uint8_t endPointAddress, std::uint32_t frameSize,
                                   qlt::UsbHost& host, HourClock clock)
    : mVendorId(vendorId)
    , mProductId(productId)
    , mEndPointAddress(endPointAddress)
    , mFrameSize(frameSize)
    , mHost(host)
    , mClock(clock)
{
}

VRUsbStreamAsync::~VRUsbStreamAsync() { End(); }

void VRUsbStreamAsync::SetTrashEnabled(bool enabled) { mTrashEnabled = enabled; }

VREvent VRUsbStreamAsync::CreateFrameConsumerEvent(const std::wstring& name)
{
    mFrameConsumerEvent.Create(name, false);
    return mFrameConsumerEvent;
}

const std::uint8_t* VRUsbStreamAsync::GetCurrentFrame() const { return mCurrentFrame; }

/// Throws an exception without a text, because it ends the process anyway.
void VRUsbStreamAsync::Open()
{
    mDevice = mHost.OpenFirst();
    const std::uint32_t count = mHost.CountDevices();
    bool found = false;
    // deliberate: only the vendor of the first device is compared.
    if (count != 0 && mDevice != nullptr && mDevice->VendorId() == mVendorId)
    {
        for (std::uint32_t i = 0; i <= count && !found; ++i)
        {
            mDevice.reset(); // close it before the next one is opened
            mDevice = mHost.Open(i);
            found = mDevice != nullptr && mDevice->ProductId() == mProductId;
        }
    }
    for (std::uint8_t i = 1; found && i < mDevice->EndPointCount() && mEndPoint == nullptr; ++i)
    {
        qlt::UsbEndPoint& endPoint = mDevice->EndPoint(i);
        mEndPoint = endPoint.Address() == mEndPointAddress ? &endPoint : nullptr;
    }
    if (mEndPoint == nullptr)
    {
        throw std::exception();
    }
}

void VRUsbStreamAsync::Begin(Transfer& transfer, std::uint32_t length)
{
    transfer.usb = mEndPoint->BeginTransfer(transfer.Bytes(), length, transfer.event);
}

/// Moves the stream to the beginning of a frame. It reads a whole frame and searches for a header.
/// When n bytes come before the header, it reads and drops n bytes and tries again. It ends when a
/// frame begins with a header or has none.
void VRUsbStreamAsync::Trash()
{
    Transfer transfer;
    // The search reads a whole header, even when its signature is the last word.
    transfer.words = MakeBuffer(mFrameSize + qlt::FRAME_HEADER_SIZE);
    transfer.event = qlt::CreateNativeEvent(L"", false); // deliberate: stays open, see Drain
    bool validates = true;
    for (std::uint32_t length = mFrameSize; length != 0; validates = !validates)
    {
        LogLine(LogLevel::Info) << (validates ? "validating " : "trashing ") << length;
        if (length % PACKET_SIZE != 0)
        {
            LogLine(LogLevel::Info) << "warning trash len not a multiple of 512";
        }
        mEndPoint->SetTransferSize(length);
        Begin(transfer, length);
        if (!transfer.usb->Wait(TRANSFER_WAIT_MS))
        {
            LogLine(LogLevel::Error) << "error wait timeout trash_buffer";
            mEndPoint->AbortTransfers();
        }
        std::uint32_t received = length;
        if (!transfer.usb->Finish(received))
        {
            LogLine(LogLevel::Error) << "error while async transfer trash_buffer";
        }
        else if (received != length)
        {
            LogLine(LogLevel::Error) << "error incomplete trash_buffer transfer of size "
                                     << received << " expected " << length;
        }
        length = validates ? NextHeader(transfer.words.data(), length) : mFrameSize;
    }
}

void VRUsbStreamAsync::Run()
{
    Open();
    if (mTrashEnabled)
    {
        Trash();
    }
    for (Transfer& transfer : mTransfers)
    {
        transfer.words = MakeBuffer(mFrameSize);
        transfer.event = qlt::CreateNativeEvent(L"", false);
        Begin(transfer, mFrameSize);
        mPending.push_back(&transfer);
    }
    mStartedEvent.Set();
    mEndPoint->SetTransferSize(mFrameSize);
    Statistics statistics;
    statistics.startMs = mClock();
    while (qlt::WaitNativeEvent(mStopEvent.Handle(), STOP_WAIT_MS) != qlt::WAIT_SIGNALLED)
    {
        Transfer& transfer = *mPending.front();
        mPending.pop_front();
        const std::uint32_t received = Receive(transfer);
        statistics.Add(received, mClock());
        Begin(transfer, mFrameSize);
        mPending.push_back(&transfer);
        if (statistics.count % STATISTICS_PASSES == 0)
        {
            statistics.Print(); // a slow console must not delay the read
        }
    }
    Drain();
}

/// Waits for one frame and delivers it. Returns the number of bytes received.
std::uint32_t VRUsbStreamAsync::Receive(Transfer& transfer)
{
    // deliberate: the buffer is cleared before the wait, although the device may have begun to
    // write.
    std::fill(transfer.words.begin(), transfer.words.end(), 0U);
    if (!transfer.usb->Wait(TRANSFER_WAIT_MS))
    {
        LogLine(LogLevel::Error) << "error wait timeout";
        mEndPoint->AbortTransfers();
    }
    std::uint32_t received = mFrameSize;
    if (!transfer.usb->Finish(received))
    {
        LogLine(LogLevel::Error) << "error while async transfer";
    }
    else if (received == mFrameSize)
    {
        mCurrentFrame = transfer.Bytes();
        qlt::SetNativeEvent(mFrameConsumerEvent.Handle()); // Set would throw without an event
    }
    else
    {
        LogLine(LogLevel::Error) << "error incomplete transfer of size " << received << " expected "
                                 << mFrameSize;
    }
    return received;
}

/// deliberate: the events of the reads stay open until the process ends, because a process creates
/// its camera once.
void VRUsbStreamAsync::Drain()
{
    mCurrentFrame = nullptr;
    mPending.clear();
    for (Transfer& transfer : mTransfers)
    {
        if (!transfer.usb->Wait(TRANSFER_WAIT_MS))
        {
            mEndPoint->AbortTransfers();
        }
        std::uint32_t received = mFrameSize;
        transfer.usb->Finish(received);
        transfer = Transfer();
    }
    mEndPoint = nullptr;
    mDevice.reset();
}
