#include <qlt/Runtime/Usb.h>

namespace qlt
{
namespace
{

/// A machine without a USB driver for the headset.
class EmptyUsbHost final : public UsbHost
{
public:
    std::unique_ptr<VendorUsbDevice> OpenFirst() override { return nullptr; }
};

} // namespace

UsbHost& UsbHost::System()
{
    static EmptyUsbHost host;
    return host;
}

} // namespace qlt
