#include "VirtualHeadset.h"

#include "VirtualHeadsetControl.h"

#include <memory>
#include <string>
#include <system_error>
#include <type_traits>
#include <windows.h>

#include <setupapi.h>

namespace
{

constexpr wchar_t SERVICE[] = L"VirtualHeadset";
constexpr wchar_t HARDWARE[] = L"root\\virtual_headset\0"; // a list with one entry
constexpr int PATIENCE = 500;                              // times 20 ms

/// The set-up class of USB devices.
constexpr GUID USB_CLASS = {
    0x36FC9E60, 0xC465, 0x11CF, {0x80, 0x56, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};

void Require(bool success, const char* what)
{
    if (!success)
    {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
    }
}

struct ServiceCloser
{
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using Service = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, ServiceCloser>;

std::wstring DriverPath()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1) + L"virtual_headset.sys";
}

/// Registers the driver as a service at its current path, because the Wine prefix may be older than
/// the build.
Service InstallService()
{
    const std::wstring path = DriverPath();
    const Service manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    Require(manager != nullptr, "open the service manager");
    Service service(CreateServiceW(manager.get(), SERVICE, SERVICE, SERVICE_ALL_ACCESS,
                                   SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START,
                                   SERVICE_ERROR_NORMAL, path.c_str(), nullptr, nullptr, nullptr,
                                   nullptr, nullptr));
    if (service == nullptr)
    {
        service.reset(OpenServiceW(manager.get(), SERVICE, SERVICE_ALL_ACCESS));
        Require(service != nullptr, "open the driver's service");
        Require(ChangeServiceConfigW(service.get(), SERVICE_NO_CHANGE, SERVICE_NO_CHANGE,
                                     SERVICE_NO_CHANGE, path.c_str(), nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr),
                "change the driver's service");
    }
    return service;
}

void SetProperty(HDEVINFO list, SP_DEVINFO_DATA& device, DWORD property, const wchar_t* text,
                 std::size_t size)
{
    Require(SetupDiSetDeviceRegistryPropertyW(list, &device, property,
                                              reinterpret_cast<const BYTE*>(text),
                                              static_cast<DWORD>(size)),
            "describe a device");
}

/// Creates a device without a bus for the driver. It does nothing when the device exists.
void InstallDevice(std::uint32_t index)
{
    const std::wstring id = L"ROOT\\VIRTUAL_HEADSET\\000" + std::to_wstring(index);
    const std::unique_ptr<void, decltype(&SetupDiDestroyDeviceInfoList)> list(
        SetupDiCreateDeviceInfoList(&USB_CLASS, nullptr), SetupDiDestroyDeviceInfoList);
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    if (!SetupDiCreateDeviceInfoW(list.get(), id.c_str(), &USB_CLASS, L"Virtual headset", nullptr,
                                  0, &device))
    {
        Require(GetLastError() == ERROR_DEVINST_ALREADY_EXISTS, "make a device");
        return;
    }
    SetProperty(list.get(), device, SPDRP_HARDWAREID, HARDWARE, sizeof(HARDWARE));
    Require(SetupDiRegisterDeviceInfo(list.get(), &device, 0, nullptr, nullptr, nullptr),
            "register a device");
    SetProperty(list.get(), device, SPDRP_SERVICE, SERVICE, sizeof(SERVICE));
}

HANDLE Open()
{
    return CreateFileW(L"\\\\.\\VirtualHeadset", GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
}

bool HasDevices(HANDLE driver)
{
    virtual_headset::Order order;
    virtual_headset::Counts counts{};
    DWORD count = 0;
    return DeviceIoControl(driver, virtual_headset::COUNT, &order, sizeof(order), &counts,
                           sizeof(counts), &count, nullptr) &&
           counts.devices == virtual_headset::DEVICE_COUNT;
}

} // namespace

void* OpenVirtualHeadsetDriver()
{
    HANDLE driver = Open();
    if (driver == INVALID_HANDLE_VALUE)
    {
        const Service service = InstallService();
        for (std::uint32_t i = 0; i < virtual_headset::DEVICE_COUNT; ++i)
        {
            InstallDevice(i);
        }
        Require(StartServiceW(service.get(), 0, nullptr) ||
                    GetLastError() == ERROR_SERVICE_ALREADY_RUNNING,
                "start the driver");
        driver = Open();
    }
    Require(driver != INVALID_HANDLE_VALUE, "open the driver");
    // The devices appear one after the other.
    for (int i = 0; i < PATIENCE && !HasDevices(driver); ++i)
    {
        Sleep(20);
    }
    return driver;
}
