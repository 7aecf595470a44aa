#include "UsbDriver.h"

#include <cstring>
#include <setupapi.h>

namespace qlt
{
namespace
{

constexpr GUID DRIVER_INTERFACE = {
    0xAE18AA60, 0x7F6A, 0x11D4, {0x97, 0xDD, 0x00, 0x01, 0x02, 0x29, 0xB9, 0x59}};

constexpr DWORD CONTROL_TRANSFER = 0x220020;
constexpr DWORD SET_TRANSFER_SIZE = 0x220038;
constexpr DWORD ABORT_PIPE = 0x220044;
constexpr DWORD READ_PIPE = 0x22004B; // the data has a buffer of its own

constexpr std::uint8_t FROM_DEVICE = 0x80;
constexpr std::uint8_t GET_DESCRIPTOR = 6;
constexpr std::uint32_t CONTROL_TIMEOUT_S = 2;

/// A list of device interfaces. The destructor frees it.
struct DeviceList
{
    DeviceList()
        : list(SetupDiGetClassDevsW(&DRIVER_INTERFACE, nullptr, nullptr,
                                    DIGCF_PRESENT | DIGCF_DEVICEINTERFACE))
    {
    }
    ~DeviceList() { SetupDiDestroyDeviceInfoList(list); }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    const HDEVINFO list;
};

/// The path of a device. Empty when the device was unplugged meanwhile.
std::wstring PathOf(HDEVINFO list, SP_DEVICE_INTERFACE_DATA& device)
{
    DWORD size = 0;
    SetupDiGetDeviceInterfaceDetailW(list, &device, nullptr, 0, &size, nullptr);
    if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W))
    {
        return {};
    }
    std::vector<std::uint8_t> memory(size);
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(memory.data());
    detail->cbSize = sizeof(*detail);
    const BOOL known =
        SetupDiGetDeviceInterfaceDetailW(list, &device, detail, size, nullptr, nullptr);
    return known ? detail->DevicePath : std::wstring();
}

} // namespace

UniqueHandle MakeEvent() { return UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr)); }

std::vector<std::wstring> FindDriverDevices()
{
    std::vector<std::wstring> paths;
    const DeviceList devices;
    SP_DEVICE_INTERFACE_DATA device{};
    device.cbSize = sizeof(device);
    // The call fails after the last device, and for a list that could not be created.
    for (DWORD i = 0;
         SetupDiEnumDeviceInterfaces(devices.list, nullptr, &DRIVER_INTERFACE, i, &device); ++i)
    {
        std::wstring path = PathOf(devices.list, device);
        if (!path.empty())
        {
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

std::shared_ptr<DriverFile> DriverFile::Open(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return nullptr;
    }
    return std::shared_ptr<DriverFile>(new DriverFile(file));
}

std::vector<std::uint8_t> DriverFile::ReadDescriptor(std::uint8_t type,
                                                     std::uint16_t maxLength) const
{
    TransferHeader header;
    header.requestType = FROM_DEVICE;
    header.request = GET_DESCRIPTOR;
    header.value = static_cast<std::uint16_t>(type << 8);
    header.length = maxLength;
    header.timeoutS = CONTROL_TIMEOUT_S;
    header.bufferOffset = sizeof(header);
    header.bufferLength = maxLength;
    std::vector<std::uint8_t> buffer(sizeof(header) + maxLength);
    std::memcpy(buffer.data(), &header, sizeof(header));

    const std::optional<std::uint32_t> count = Request(CONTROL_TRANSFER, buffer);
    std::memcpy(&header, buffer.data(), sizeof(header));
    if (!count || *count < sizeof(header) || *count > buffer.size() || header.ntStatus != 0 ||
        header.usbStatus != 0)
    {
        return {};
    }
    const std::uint8_t* data = buffer.data();
    return {data + sizeof(header), data + *count};
}

void DriverFile::AbortPipe(std::uint8_t address) const
{
    std::vector<std::uint8_t> buffer = {address};
    Request(ABORT_PIPE, buffer);
}

void DriverFile::SetTransferSize(std::uint8_t address, std::uint32_t bytes) const
{
    std::vector<std::uint8_t> buffer(1 + sizeof(bytes), address);
    std::memcpy(&buffer[1], &bytes, sizeof(bytes));
    Request(SET_TRANSFER_SIZE, buffer);
}

bool DriverFile::StartRead(TransferHeader& header, std::uint8_t* data, std::uint32_t length,
                           OVERLAPPED& overlapped) const
{
    // The call succeeds at once when the data was there already.
    return DeviceIoControl(mFile.get(), READ_PIPE, &header, sizeof(header), data, length, nullptr,
                           &overlapped) ||
           GetLastError() == ERROR_IO_PENDING;
}

std::optional<std::uint32_t> DriverFile::WaitForEnd(OVERLAPPED& overlapped, bool signalTaken) const
{
    DWORD count = 0;
    while (!GetOverlappedResult(mFile.get(), &overlapped, &count, signalTaken ? FALSE : TRUE))
    {
        if (GetLastError() != ERROR_IO_INCOMPLETE)
        {
            return std::nullopt;
        }
        Sleep(1); // somebody has signalled the event before the end
    }
    return count;
}

std::optional<std::uint32_t> DriverFile::Request(DWORD code,
                                                 std::vector<std::uint8_t>& buffer) const
{
    const UniqueHandle event = MakeEvent();
    OVERLAPPED overlapped{};
    overlapped.hEvent = event.get();
    const auto size = static_cast<DWORD>(buffer.size());
    // Without an event the wait would mistake the end of a read for the end of this request.
    if (event == nullptr || (!DeviceIoControl(mFile.get(), code, buffer.data(), size, buffer.data(),
                                              size, nullptr, &overlapped) &&
                             GetLastError() != ERROR_IO_PENDING))
    {
        return std::nullopt;
    }
    return WaitForEnd(overlapped, false);
}

} // namespace qlt
