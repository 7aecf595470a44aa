#include "VirtualHeadset.h"

#include "VirtualHeadsetControl.h"

#include <cstring>
#include <system_error>
#include <windows.h>

using virtual_headset::Counts;
using virtual_headset::Order;

namespace
{

constexpr std::uint32_t FAILURE = 0xC0000001; // STATUS_UNSUCCESSFUL

Counts Send(HANDLE driver, std::uint32_t command, const Order& order = {},
            const EmulatedBus::Bytes& bytes = {})
{
    EmulatedBus::Bytes buffer(sizeof(order) + bytes.size());
    std::memcpy(buffer.data(), &order, sizeof(order));
    std::copy(bytes.begin(), bytes.end(), buffer.begin() + sizeof(order));
    Counts counts{};
    DWORD count = 0;
    if (!DeviceIoControl(driver, command, buffer.data(), static_cast<DWORD>(buffer.size()), &counts,
                         sizeof(counts), &count, nullptr))
    {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                "an order to the virtual headset");
    }
    return counts;
}

std::uint32_t PipeAt(std::uint8_t endPoint)
{
    return endPoint == virtual_headset::PIPE_ADDRESSES[0] ? 0 : 1;
}

} // namespace

VirtualHeadset::VirtualHeadset()
    : mDriver(OpenVirtualHeadsetDriver())
{
    VirtualHeadset::Unplug();
}

VirtualHeadset::~VirtualHeadset()
{
    VirtualHeadset::Unplug(); // otherwise the next search would find it
    CloseHandle(mDriver);
}

void VirtualHeadset::Plug(std::uint16_t vendorId, std::uint16_t productId)
{
    Send(mDriver, virtual_headset::PLUG, {0, answers ? 0 : FAILURE, vendorId, productId});
}

void VirtualHeadset::Unplug() { Send(mDriver, virtual_headset::RESET); }

void VirtualHeadset::Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds)
{
    Order order;
    order.pipe = PipeAt(endPoint);
    order.status = succeeds ? 0 : FAILURE;
    Send(mDriver, virtual_headset::PUSH, order, bytes);
}

std::size_t VirtualHeadset::Pending(std::uint8_t endPoint)
{
    return Send(mDriver, virtual_headset::COUNT).pending[PipeAt(endPoint)];
}

std::uint32_t VirtualHeadset::TransferSize()
{
    return Send(mDriver, virtual_headset::COUNT).transferSize;
}

std::unique_ptr<EmulatedBus> MakeEmulatedBus() { return std::make_unique<VirtualHeadset>(); }
