#include "VirtualHeadset.h"

#include "VirtualHeadsetInstaller.h"

#include <cstring>
#include <system_error>
#include <windows.h>

using virtual_headset::Counts;
using virtual_headset::Order;

VirtualHeadset::VirtualHeadset(std::uint32_t device)
    : mDevice(device)
    , mDriver(OpenVirtualHeadsetDriver())
{
    for (mDevice = 0; mDevice < virtual_headset::DEVICE_COUNT; ++mDevice)
    {
        Send(virtual_headset::RESET, {});
    }
    mDevice = device;
}

VirtualHeadset::~VirtualHeadset()
{
    Unplug(); // or whoever looks next would find it
    CloseHandle(mDriver);
}

void VirtualHeadset::Plug(std::uint16_t vendorId, std::uint16_t productId, std::uint32_t status)
{
    Order order;
    order.status = status;
    order.vendorId = vendorId;
    order.productId = productId;
    Send(virtual_headset::PLUG, order);
}

void VirtualHeadset::Unplug() { Send(virtual_headset::UNPLUG, {}); }

void VirtualHeadset::Configure(const std::vector<std::uint8_t>& bytes)
{
    Send(virtual_headset::CONFIGURE, {}, bytes.data(), bytes.size());
}

void VirtualHeadset::Push(std::uint32_t pipe, const void* bytes, std::size_t length,
                          std::uint32_t status)
{
    Order order;
    order.pipe = pipe;
    order.status = status;
    Send(virtual_headset::PUSH, order, bytes, length);
}

Counts VirtualHeadset::Count()
{
    Counts counts{};
    Send(virtual_headset::COUNT, {}, nullptr, 0, &counts);
    return counts;
}

void VirtualHeadset::Send(std::uint32_t command, const Order& order, const void* bytes,
                          std::size_t length, Counts* counts)
{
    std::vector<std::uint8_t> buffer(sizeof(order) + length);
    auto* record = reinterpret_cast<Order*>(buffer.data());
    *record = order;
    record->device = mDevice;
    if (length > 0)
    {
        std::memcpy(record + 1, bytes, length);
    }
    DWORD count = 0;
    if (!DeviceIoControl(mDriver, command, buffer.data(), static_cast<DWORD>(buffer.size()), counts,
                         counts != nullptr ? sizeof(*counts) : 0, &count, nullptr))
    {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                "an order to the virtual headset");
    }
}
