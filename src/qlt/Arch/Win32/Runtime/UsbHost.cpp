// The machine's own USB host on Windows. It is a client of the USB chip vendor's driver.
#include <qlt/Runtime/Usb.h>

#include "Runtime/Check.h"
#include "Runtime/UsbDescriptors.h"
#include "UsbDriver.h"

#include <atomic>

#define QLT_SOURCE_FILE L"Arch/Win32/Runtime/UsbHost"

namespace qlt
{
namespace
{

constexpr std::uint8_t DEVICE_DESCRIPTOR = 1;
constexpr std::uint8_t CONFIGURATION_DESCRIPTOR = 2;
constexpr std::uint8_t READ_FROM = 0x80;         // a bit in an endpoint's address
constexpr std::uint32_t READ_TIMEOUT_MS = 10000; // the driver itself has no time limit

/// One pipe of an open file. Each transfer shares it, so the use count tells whether there are
/// transfers.
struct Pipe
{
    std::shared_ptr<DriverFile> file;
    UsbEndPointRecord record;
};

class PipeTransfer final : public UsbTransfer
{
public:
    PipeTransfer(std::shared_ptr<Pipe> pipe, std::uint8_t* buffer, std::uint32_t length,
                 HANDLE event)
        : mPipe(std::move(pipe))
    {
        mHeader.endPoint = mPipe->record.address;
        mOverlapped.hEvent = event;
        if (!mPipe->file->StartRead(mHeader, buffer, length, mOverlapped))
        {
            mPipe.reset();
        }
    }

    ~PipeTransfer() override
    {
        if (mPipe == nullptr)
        {
            return;
        }
        if (!HasOverlappedIoCompleted(&mOverlapped))
        {
            mPipe->file->AbortPipe(mPipe->record.address);
        }
        mPipe->file->WaitForEnd(mOverlapped, mEnded);
    }

    PipeTransfer(const PipeTransfer&) = delete;
    PipeTransfer& operator=(const PipeTransfer&) = delete;

    bool Wait(std::uint32_t timeoutMs) override
    {
        // The wait takes the signal of the event, so remember the end.
        mEnded = mEnded || (mPipe != nullptr &&
                            WaitForSingleObject(mOverlapped.hEvent, timeoutMs) == WAIT_OBJECT_0);
        return mEnded;
    }

    bool Finish(std::uint32_t& length) override
    {
        length = 0;
        if (mPipe == nullptr)
        {
            return false;
        }
        const std::optional<std::uint32_t> count = mPipe->file->WaitForEnd(mOverlapped, mEnded);
        mPipe.reset();
        if (!count || mHeader.ntStatus != 0 || mHeader.usbStatus != 0)
        {
            return false;
        }
        length = *count;
        return true;
    }

private:
    std::shared_ptr<Pipe> mPipe; // null when nothing is in flight
    bool mEnded = false;
    OVERLAPPED mOverlapped{};
    TransferHeader mHeader;
};

class PipeEndPoint final : public UsbEndPoint
{
public:
    PipeEndPoint(std::shared_ptr<DriverFile> file, const UsbEndPointRecord& record)
        : mPipe(std::make_shared<Pipe>(Pipe{std::move(file), record}))
        , mReadEvent(MakeEvent())
    {
    }

    ~PipeEndPoint() override
    {
        // Closing the file does not end the transfers in flight. Abort only when there are some,
        // because other programs may read from the same pipe.
        if (mPipe.use_count() > 1)
        {
            AbortTransfers();
        }
    }

    PipeEndPoint(const PipeEndPoint&) = delete;
    PipeEndPoint& operator=(const PipeEndPoint&) = delete;

    std::uint8_t Attributes() const override { return mPipe->record.attributes; }

    std::uint8_t Address() const override { return mPipe->record.address; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        const std::uint32_t wanted = length;
        length = 0;
        if (!IsReadFrom() || mReadEvent == nullptr)
        {
            return false;
        }
        PipeTransfer transfer(mPipe, buffer, wanted, mReadEvent.get());
        // The destructor ends a transfer that has not ended by then.
        return transfer.Wait(READ_TIMEOUT_MS) && transfer.Finish(length);
    }

    void SetTransferSize(std::uint32_t bytes) override
    {
        mPipe->file->SetTransferSize(Address(), RoundUpToPackets(bytes, mPipe->record.maxPacket));
    }

    std::unique_ptr<UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                               NativeEventHandle event) override
    {
        if (!IsReadFrom())
        {
            return UsbEndPoint::BeginTransfer(buffer, length, event);
        }
        return std::make_unique<PipeTransfer>(mPipe, buffer, length, event);
    }

    void AbortTransfers() override { mPipe->file->AbortPipe(Address()); }

private:
    /// True for an endpoint that the host reads from. For any other endpoint the driver would send
    /// the buffer to the device.
    bool IsReadFrom() const { return (Address() & READ_FROM) != 0; }

    std::shared_ptr<Pipe> mPipe;
    UniqueHandle mReadEvent; // it is kept, because a thousand reads a second use it
};

/// Endpoint 0, which the driver keeps for its own requests.
class ControlEndPoint final : public UsbEndPoint
{
public:
    std::uint8_t Attributes() const override { return 0; }

    bool TransferData(std::uint8_t*, std::uint32_t& length) override
    {
        length = 0;
        return false;
    }
};

class DriverDevice final : public VendorUsbDevice
{
public:
    DriverDevice(const std::shared_ptr<DriverFile>& file, const UsbIds& ids)
        : mIds(ids)
    {
        for (const UsbEndPointRecord& record : ParseConfiguration(
                 file->ReadDescriptor(CONFIGURATION_DESCRIPTOR, MAX_CONFIGURATION_SIZE)))
        {
            mEndPoints.push_back(std::make_unique<PipeEndPoint>(file, record));
        }
    }

    std::uint16_t VendorId() const override { return mIds.vendor; }

    std::uint16_t ProductId() const override { return mIds.product; }

    std::uint8_t EndPointCount() const override
    {
        return static_cast<std::uint8_t>(mEndPoints.size() + 1);
    }

    UsbEndPoint& EndPoint(std::uint8_t index) override
    {
        QLT_CHECK(index < EndPointCount());
        if (index == 0 || index >= EndPointCount())
        {
            return mControl;
        }
        return *mEndPoints[index - 1U];
    }

private:
    UsbIds mIds;
    ControlEndPoint mControl;
    std::vector<std::unique_ptr<UsbEndPoint>> mEndPoints;
};

class DriverUsbHost final : public UsbHost
{
public:
    std::unique_ptr<VendorUsbDevice> OpenFirst() override { return Open(0); }

    std::uint32_t CountDevices() override
    {
        return static_cast<std::uint32_t>(FindDriverDevices().size());
    }

    std::unique_ptr<VendorUsbDevice> Open(std::uint32_t index) override
    {
        mProblem = ERROR_SUCCESS;
        const std::vector<std::wstring> paths = FindDriverDevices();
        if (index >= paths.size())
        {
            return nullptr;
        }
        const std::shared_ptr<DriverFile> file = DriverFile::Open(paths[index]);
        if (file == nullptr)
        {
            mProblem = GetLastError();
            return nullptr;
        }
        const std::optional<UsbIds> ids =
            ParseDeviceDescriptor(file->ReadDescriptor(DEVICE_DESCRIPTOR, DEVICE_DESCRIPTOR_SIZE));
        if (!ids)
        {
            mProblem = NO_DESCRIPTOR;
            return nullptr;
        }
        return std::make_unique<DriverDevice>(file, *ids);
    }

    std::string Name() const override { return "the vendor's USB driver"; }

    std::string Problem() const override
    {
        const DWORD problem = mProblem;
        if (problem == ERROR_SUCCESS)
        {
            return {};
        }
        return problem == NO_DESCRIPTOR
                   ? "the device does not say what it is"
                   : "the device does not open, Windows error " + std::to_string(problem);
    }

private:
    static constexpr DWORD NO_DESCRIPTOR = 0xFFFFFFFF; // this code is not an error of the system

    std::atomic<DWORD> mProblem{ERROR_SUCCESS}; // several threads may open devices at once
};

} // namespace

UsbHost& UsbHost::System()
{
    // It is never deleted, because a leaked tracker may use it.
    static UsbHost& host = *new DriverUsbHost;
    return host;
}

} // namespace qlt
