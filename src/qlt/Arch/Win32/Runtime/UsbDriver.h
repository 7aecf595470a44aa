// The user-mode side of the USB chip vendor's driver: which of its devices are there, and requests
// to an open one. The records and numbers are the driver's.
//
// Every request has an OVERLAPPED and an event of its own, so that any thread may send one while
// reads are in flight on the same handle.
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

/// An auto-reset event; empty when the system has none left.
UniqueHandle MakeEvent();

/// What goes ahead of a transfer. The driver writes the two status words at the end of it, so it
/// stays where it is until then.
#pragma pack(push, 1)
struct TransferHeader
{
    std::uint8_t requestType = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;
    std::uint32_t timeoutS = 0; // of a control transfer; 0: none
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
// With two bytes of padding the driver would take the transfer and never end it.
static_assert(sizeof(TransferHeader) == 38, "the header is packed");

/// The paths of the devices that are bound to the driver and plugged in.
std::vector<std::wstring> FindDriverDevices();

/// An open device. Several may be open for the same hardware.
class DriverFile
{
public:
    /// Null when it does not open; the last error then says why.
    static std::shared_ptr<DriverFile> Open(const std::wstring& path);

    /// The descriptor of that type, as far as the device sends it; empty when it does not.
    std::vector<std::uint8_t> ReadDescriptor(std::uint8_t type, std::uint16_t maxLength) const;

    /// Ends every request on the pipe, whoever sent it; all have ended when it returns.
    void AbortPipe(std::uint8_t address) const;

    /// A hint: newer drivers take any size as it comes.
    void SetTransferSize(std::uint8_t address, std::uint32_t bytes) const;

    /// Starts to read from a pipe into `data`; false when it could not start. Header, data and
    /// `overlapped` must stay until the end.
    bool StartRead(TransferHeader& header, std::uint8_t* data, std::uint32_t length,
                   OVERLAPPED& overlapped) const;

    /// Waits for the end of what was started: how many bytes came, nothing when it failed. With
    /// `signalTaken` the event will not tell again.
    std::optional<std::uint32_t> WaitForEnd(OVERLAPPED& overlapped, bool signalTaken) const;

private:
    explicit DriverFile(HANDLE file)
        : mFile(file)
    {
    }

    /// A short request: `buffer` goes there and comes back.
    std::optional<std::uint32_t> Request(DWORD code, std::vector<std::uint8_t>& buffer) const;

    UniqueHandle mFile;
};

} // namespace qlt
