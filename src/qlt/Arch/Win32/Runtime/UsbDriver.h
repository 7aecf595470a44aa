// The user-mode side of the USB chip vendor's driver. It lists the devices of the driver and sends
// requests to an open device. The driver defines the records and the numbers.
//
// Every request has its own OVERLAPPED and its own event, so any thread may send one while reads
// are in flight on the same handle.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace qlt
{

struct HandleCloser
{
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

/// Creates an auto-reset event. Empty when the system cannot create one.
UniqueHandle MakeEvent();

/// The header of a transfer. The driver writes the two status words when the transfer ends, so the
/// header must stay in place until then.
#pragma pack(push, 1)
struct TransferHeader
{
    std::uint8_t requestType = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;
    std::uint32_t timeoutS = 0; // the time limit of a control transfer; 0 means none
    std::uint8_t reserved = 0;
    std::uint8_t endPoint = 0;
    std::uint32_t ntStatus = 0;
    std::uint32_t usbStatus = 0;
    std::uint32_t isochronousOffset = 0;
    std::uint32_t isochronousLength = 0;
    std::uint32_t bufferOffset = 0;
    std::uint32_t bufferLength = 0;
};
#pragma pack(pop)
// With two bytes of padding the driver would accept the transfer and never end it.
static_assert(sizeof(TransferHeader) == 38, "the header is packed");

/// The paths of the devices that are bound to the driver and plugged in.
std::vector<std::wstring> FindDriverDevices();

/// An open device. The same hardware may be open several times.
class DriverFile
{
public:
    /// Opens the device. Null on failure; the last error then says why.
    static std::shared_ptr<DriverFile> Open(const std::wstring& path);

    /// The descriptor of that type, cut after `maxLength` bytes. Empty when the device does not
    /// send it.
    std::vector<std::uint8_t> ReadDescriptor(std::uint8_t type, std::uint16_t maxLength) const;

    /// Ends every request on the pipe, even the requests of other programs. They have ended when it
    /// returns.
    void AbortPipe(std::uint8_t address) const;

    /// Sets how many bytes one request asks for. It is a hint, because newer drivers take any size.
    void SetTransferSize(std::uint8_t address, std::uint32_t bytes) const;

    /// Starts to read from a pipe into `data`. False when it could not start. `header`, `data` and
    /// `overlapped` must exist until the read has ended.
    bool StartRead(TransferHeader& header, std::uint8_t* data, std::uint32_t length,
                   OVERLAPPED& overlapped) const;

    /// Waits for the end of a request and gives the number of bytes received. Nothing when it
    /// failed. `signalTaken` says that a wait has already taken the signal of the event.
    std::optional<std::uint32_t> WaitForEnd(OVERLAPPED& overlapped, bool signalTaken) const;

private:
    explicit DriverFile(HANDLE file)
        : mFile(file)
    {
    }

    /// Sends `buffer` to the driver, which writes its answer into it. The result is that of
    /// WaitForEnd.
    std::optional<std::uint32_t> Request(DWORD code, std::vector<std::uint8_t>& buffer) const;

    UniqueHandle mFile;
};

} // namespace qlt
