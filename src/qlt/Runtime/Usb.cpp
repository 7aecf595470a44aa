// The defaults of the USB interfaces, for operations that an implementation does not override.
#include <qlt/Runtime/Usb.h>

namespace qlt
{
namespace
{

/// A transfer that could not start.
class FailedTransfer final : public UsbTransfer
{
public:
    bool Wait(std::uint32_t) override { return false; }

    bool Finish(std::uint32_t& length) override
    {
        length = 0;
        return false;
    }
};

} // namespace

UsbTransfer::~UsbTransfer() = default;

UsbEndPoint::~UsbEndPoint() = default;

std::uint8_t UsbEndPoint::Address() const { return 0; }

void UsbEndPoint::SetTransferSize(std::uint32_t) {}

std::unique_ptr<UsbTransfer> UsbEndPoint::BeginTransfer(std::uint8_t*, std::uint32_t, void*)
{
    return std::make_unique<FailedTransfer>();
}

void UsbEndPoint::AbortTransfers() {}

VendorUsbDevice::~VendorUsbDevice() = default;

UsbHost::~UsbHost() = default;

std::uint32_t UsbHost::CountDevices() { return 1; }

std::unique_ptr<VendorUsbDevice> UsbHost::Open(std::uint32_t index)
{
    return index == 0 ? OpenFirst() : nullptr;
}

std::string UsbHost::Name() const { return {}; }

std::string UsbHost::Problem() const { return {}; }

} // namespace qlt
